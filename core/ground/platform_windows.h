// SPDX-License-Identifier: MIT
// What the entry point of the Windows build needs of its platform beyond ground/platform.h.
#pragma once

// Keeps the handle of the module whose resources hold the icon, the About box and the texts.
void KeepInstance(void* instance);
