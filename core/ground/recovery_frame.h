// SPDX-License-Identifier: MIT
// Guarded scopes: where a stop of the run resumes. A frame lives on the stack of the function that pushes it, at most
// three are chained (process, run, reader), and RaiseError unwinds them from the newest to the oldest.
#pragma once

#include <csetjmp>

// One guarded scope. Filled by PushRecoveryFrame and SAVE_CONTEXT, valid until PopRecoveryFrame or the return of its
// function.
struct RecoveryFrame {
    RecoveryFrame* Previous;  // next older frame, or null
    int Raised;               // 1 once an error was raised into this frame
    int Depth;                // window-procedure calls in progress when it was pushed
    std::jmp_buf Context;     // where RaiseError resumes
};

// Saves the context of the calling function in a frame; 0 now, 1 when RaiseError resumes it. A macro, since the
// function that saves a context must still be running when it is resumed. It stands as the whole condition of an if,
// alone or behind "!": the C standard allows setjmp in few other places. On 64-bit Windows the second argument makes
// the jump restore registers only, with no walk through the system's unwind tables.
#if defined(_WIN64)
#define SAVE_CONTEXT(frame) _setjmp((frame).Context, nullptr)
#else
#define SAVE_CONTEXT(frame) setjmp((frame).Context)
#endif

// Links the frame at the top of the chain; its context is saved by SAVE_CONTEXT.
void PushRecoveryFrame(RecoveryFrame& frame);

// Unlinks the newest frame. An error in flight is raised again into the next older one; with no frame left, or with
// final non-zero, the error is over and LastErrorCode is cleared.
void PopRecoveryFrame(int final);

// Resumes the newest frame, or the guard of FatalError when that is newer still. Returns only when the target was
// pushed below the window procedure that is running: the raise then waits for DeliverPendingRaise. With no frame at
// all the process ends with exit code 3.
void RaiseError();

// Counts the calls of the window procedure in progress.
void EnterWindowProcedure();
void LeaveWindowProcedure();

// True while a raise waits for window-procedure calls to return.
bool RaiseIsPending();

// Resumes the frame of a waiting raise once the window procedures above it have returned; to be called after every
// call that can run the window procedure.
void DeliverPendingRaise();
