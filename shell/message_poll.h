// SPDX-License-Identifier: MIT
// Polling: how a run that computes within the handling of one message keeps its window alive and sees a stop.
#pragma once

// To be called by numeric loops with the work done since their last call; looks at one message once enough work has
// come together. May not return: a stop unwinds the run from here.
void PollMessages(int units);

// Looks at one message at once. May not return either.
void YieldMessages();
