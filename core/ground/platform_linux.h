// SPDX-License-Identifier: MIT
// What the entry point of the Linux build needs of its platform beyond ground/platform.h.
#pragma once

// Makes SIGTERM, SIGINT and SIGHUP ask for a stop of the run. The handler sets a flag that the next look at the queue
// turns into a close message. A file that grows beyond a limit is an error of writing from then on.
void InstallStopSignals();
