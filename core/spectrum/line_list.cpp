// SPDX-License-Identifier: MIT
// Keeps and finishes the list of spectral lines.
#include "spectrum/line_list.h"

#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "ground/touched_pages.h"
#include "spectrum/table_memory.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>

static constexpr double MergeDistance = 0.001;   // Hz
static constexpr long long PollBlock = 1 << 16;  // records handled between two polls
static constexpr int DigitBits = 11;             // three digits make a 32-bit key
static constexpr int DigitCount = 3;
static constexpr int DigitValues = 1 << DigitBits;

static SpectrumLine* SortBuffer = nullptr;  // [lines sorted] the other half of the sort, for one call

void ReserveLines(long long lineCount) {
    if (Run.Lines.SpectrumLines == nullptr) {
        Run.Lines.SpectrumLineCapacity = 0;
    }
    if (lineCount <= Run.Lines.SpectrumLineCapacity) {
        return;
    }
    // half as much again, so that a growing list is moved a few times only; just enough where that isn't to be had
    const long long generous = std::max(lineCount, Run.Lines.SpectrumLineCapacity + Run.Lines.SpectrumLineCapacity / 2);
    for (const long long capacity : {generous, lineCount}) {
        if (GrowArray(Run.Lines.SpectrumLines, capacity)) {
            Run.Lines.SpectrumLineCapacity = capacity;
            return;
        }
    }
    FatalError(Message::OutOfMemory);
}

// An unsigned number that orders as the frequency does.
static std::uint32_t SortKey(const SpectrumLine& line) {
    std::uint32_t bits;
    std::memcpy(&bits, &line.Frequency, sizeof bits);
    return bits & 0x80000000u ? ~bits : bits | 0x80000000u;
}

static std::uint32_t Digit(std::uint32_t key, int digit) {
    return (key >> (digit * DigitBits)) & (DigitValues - 1);
}

// Moves the lines from one array to the other in the order of one digit of their keys, keeping the order of equals.
// On entry places[v] is the number of lines with digit value v.
static void DistributeByDigit(const SpectrumLine* from, SpectrumLine* to, long long count, int digit,
                              long long* places) {
    long long sum = 0;
    for (int value = 0; value < DigitValues; ++value) {
        const long long here = places[value];
        places[value] = sum;
        sum += here;
    }
    for (long long begin = 0; begin < count; begin += PollBlock) {
        const long long end = std::min(count, begin + PollBlock);
        for (long long i = begin; i < end; ++i) {
            to[places[Digit(SortKey(from[i]), digit)]++] = from[i];
        }
        PollMessages(static_cast<int>(end - begin));
    }
}

// Radix sort by ascending frequency.
static void SortLines(long long count) {
    AllocateTable(SortBuffer, count);
    TouchPages(SortBuffer, static_cast<std::size_t>(count) * sizeof(SpectrumLine));
    long long places[DigitCount][DigitValues] = {};
    for (long long begin = 0; begin < count; begin += PollBlock) {
        const long long end = std::min(count, begin + PollBlock);
        for (long long i = begin; i < end; ++i) {
            const std::uint32_t key = SortKey(Run.Lines.SpectrumLines[i]);
            for (int digit = 0; digit < DigitCount; ++digit) {
                ++places[digit][Digit(key, digit)];
            }
        }
        PollMessages(static_cast<int>(end - begin));
    }
    for (int digit = 0; digit < DigitCount; ++digit) {
        DistributeByDigit(Run.Lines.SpectrumLines, SortBuffer, count, digit, places[digit]);
        std::swap(Run.Lines.SpectrumLines, SortBuffer);
    }
    Run.Lines.SpectrumLineCapacity = count;
    FreeArray(SortBuffer);
}

static void PollByBlock(long long record) {
    if (record % PollBlock == 0) {
        PollMessages(static_cast<int>(PollBlock));
    }
}

static int AddDegeneracies(int a, int b) {
    return static_cast<int>(std::min<long long>(static_cast<long long>(a) + b, INT_MAX));
}

// On purpose the distance is that of neighbours, not from the head of the run.
static long long MergeLines(SpectrumLine* lines, long long count) {
    long long kept = 0;
    float previous = lines[0].Frequency;
    for (long long i = 1; i < count; ++i) {
        const SpectrumLine current = lines[i];
        if (static_cast<double>(current.Frequency) - static_cast<double>(previous) >= MergeDistance) {
            lines[++kept] = current;
        } else {
            lines[kept].Intensity += current.Intensity;
            lines[kept].Degeneracy = AddDegeneracies(lines[kept].Degeneracy, current.Degeneracy);
        }
        previous = current.Frequency;
        PollByBlock(i);
    }
    return kept + 1;
}

// Keeps the lines at or above an intensity, in their order.
static long long FilterLines(SpectrumLine* lines, long long count, double smallest) {
    long long kept = 0;
    for (long long i = 0; i < count; ++i) {
        if (static_cast<double>(lines[i].Intensity) >= smallest) {
            lines[kept++] = lines[i];
        }
        PollByBlock(i);
    }
    return kept;
}

void FinishLineList(long long lineCount) {
    ReserveLines(1);
    long long count = FilterLines(Run.Lines.SpectrumLines, lineCount, SmallestLineIntensity);
    if (count == 0) {
        Run.Lines.SpectrumLines[0] = {};  // an empty list counts as one record of zeros, which the last filter drops
        count = 1;
    }
    SortLines(count);
    count = MergeLines(Run.Lines.SpectrumLines, count);
    count = FilterLines(Run.Lines.SpectrumLines, count, Run.Options.MinimalIntensity);
    if (count > INT_MAX) {
        FatalError(Message::OutOfMemory);
    }
    Run.Lines.SpectrumLineCount = static_cast<int>(count);
}
