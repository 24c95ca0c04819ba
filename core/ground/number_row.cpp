// SPDX-License-Identifier: MIT
// Lists numbers in a line: each count has a text of its own.
#include "ground/number_row.h"

#include "ground/log.h"

void LogNumberRow(const double* v, int count) {
    switch (count) {
    case 1:
        LogMessage(Message::NumberRowOf1, v[0]);
        break;
    case 2:
        LogMessage(Message::NumberRowOf2, v[0], v[1]);
        break;
    case 3:
        LogMessage(Message::NumberRowOf3, v[0], v[1], v[2]);
        break;
    case 4:
        LogMessage(Message::NumberRowOf4, v[0], v[1], v[2], v[3]);
        break;
    case 5:
        LogMessage(Message::NumberRowOf5, v[0], v[1], v[2], v[3], v[4]);
        break;
    default:
        LogMessage(Message::NumberRowOf6, v[0], v[1], v[2], v[3], v[4], v[5]);
        break;
    }
}
