// SPDX-License-Identifier: MIT
// The chain of recovery frames, and the unwinding from a poll to the process frame.
//
// Why this is safe on 64-bit Windows: a jump may not cross the system's own code, and between the process frame and a
// poll lies the dispatcher that called the window procedure. So no jump ever does. A frame remembers how many window
// procedures were running when it was pushed. A raise into a frame of the same depth stays within our own functions,
// none of which holds an object with a destructor, and jumps. A raise into a frame of lower depth only notes itself;
// RunOneJob and the window procedure return through the dispatcher in the ordinary way, and the first call of
// DeliverPendingRaise at the frame's own depth makes the jump, again within our own functions.
#include "ground/recovery_frame.h"

#include "ground/platform.h"
#include "ground/run_state.h"

#include <cstdint>

static int WindowProcedureDepth = 0;           // window-procedure calls in progress
static RecoveryFrame* PendingFrame = nullptr;  // frame that a raise waits to resume

void PushRecoveryFrame(RecoveryFrame& frame) {
    frame.Previous = Run.Report.ErrorFrameTop;
    frame.Raised = 0;
    frame.Depth = WindowProcedureDepth;
    Run.Report.ErrorFrameTop = &frame;
}

static bool AnyFrameRaised() {
    for (const RecoveryFrame* frame = Run.Report.ErrorFrameTop; frame != nullptr; frame = frame->Previous) {
        if (frame->Raised) {
            return true;
        }
    }
    return false;
}

void PopRecoveryFrame(int final) {
    const RecoveryFrame* old = Run.Report.ErrorFrameTop;
    Run.Report.ErrorFrameTop = old->Previous;
    if (Run.Report.ErrorFrameTop != nullptr && !final) {
        if (Run.Report.LastErrorCode != 0 && old->Raised && !Run.Report.ErrorFrameTop->Raised) {
            RaiseError();
        }
    } else if (Run.Report.FatalGuardFrame == nullptr && !AnyFrameRaised()) {
        Run.Report.LastErrorCode = 0;
    }
}

static void Resume(RecoveryFrame* frame) {
    PendingFrame = nullptr;
    std::longjmp(frame->Context, 1);
}

void RaiseError() {
    RecoveryFrame* target = Run.Report.ErrorFrameTop;
    if (target != nullptr) {
        target->Raised = 1;
    }
    RecoveryFrame* guard = Run.Report.FatalGuardFrame;
    if (guard != nullptr &&
        (target == nullptr || reinterpret_cast<std::uintptr_t>(guard) <= reinterpret_cast<std::uintptr_t>(target))) {
        target = guard;  // the stack grows downwards: the guard is the newer of the two
    }
    if (target == nullptr) {
        EndProcess(3);  // nothing can be resumed: an abnormal end, before any file is written
    }
    if (target->Depth == WindowProcedureDepth) {
        Resume(target);
    }
    PendingFrame = target;
    PostQuit();  // the quit message of this stop has been taken from the queue: the message loop needs another
}

void EnterWindowProcedure() {
    ++WindowProcedureDepth;
}

void LeaveWindowProcedure() {
    --WindowProcedureDepth;
}

bool RaiseIsPending() {
    return PendingFrame != nullptr;
}

void DeliverPendingRaise() {
    if (PendingFrame != nullptr && PendingFrame->Depth == WindowProcedureDepth) {
        Resume(PendingFrame);
    }
}
