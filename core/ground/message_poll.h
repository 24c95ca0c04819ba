// SPDX-License-Identifier: MIT
// Polling: how a run that computes within the handling of one message keeps its window alive and sees a stop.
#pragma once

// To be called by numeric loops with the work done since their last call; looks at one message once enough work has
// come together. May not return: a stop unwinds the run from here.
void PollMessages(int units);

// Looks at one message at once. May not return either.
void YieldMessages();

// For what runs before PollShift is set, when PollMessages looks at each call: looks once in 4096 units. A unit is
// about the reading of a character.
void PollReading(int units);

// Units of a step over a record in memory.
inline constexpr int RecordUnits = 16;

// Looks at all messages that are there. A reader does so at the end of its file, which a stop may have made.
void YieldAllMessages();
