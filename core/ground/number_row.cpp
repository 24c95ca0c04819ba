// SPDX-License-Identifier: MIT
// Lists numbers in a line: each count has a text of its own.
#include "ground/number_row.h"

#include "ground/log.h"

void LogNumberRow(const double* v, int count) {
    switch (count) {
    case 1:
        LogMessage(8245, v[0]);
        break;
    case 2:
        LogMessage(8246, v[0], v[1]);
        break;
    case 3:
        LogMessage(8247, v[0], v[1], v[2]);
        break;
    case 4:
        LogMessage(8248, v[0], v[1], v[2], v[3]);
        break;
    case 5:
        LogMessage(8249, v[0], v[1], v[2], v[3], v[4]);
        break;
    default:
        LogMessage(8256, v[0], v[1], v[2], v[3], v[4], v[5]);
        break;
    }
}
