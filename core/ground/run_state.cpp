// SPDX-License-Identifier: MIT
// The run state, and what becomes of its arrays.
#include "ground/run_state.h"

#include "ground/memory.h"

RunState Run;

void FreeRunData() {
    if (Run.Job.ActiveRunKind == 0) {  // the first call comes before any input is read: nothing is there to be freed
        Run.Job.ActiveRunKind = ParameterRun;
        return;
    }
    FreeNotedArrays();
}
