// SPDX-License-Identifier: MIT
// Open addressing: a name stands in the slot of its hash or in the next free one.
#include "files/name_index.h"

#include "files/text_scan.h"
#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_poll.h"

void PrepareNameIndex(NameIndex& index, const char* firstName, std::size_t recordSize, int count) {
    unsigned long long slots = 2;
    while (slots < 2ULL * static_cast<unsigned>(count)) {
        slots *= 2;
    }
    index.FirstName = firstName;
    index.RecordSize = recordSize;
    index.SlotCount = slots;
    if (!AllocateZeroed(index.Records, static_cast<long long>(slots))) {
        FatalError(Message::MoleculeTooLarge);
    }
}

// FNV-1a in 64 bits, its halves folded.
static unsigned long long HashOfName(const char* name) {
    unsigned long long hash = 14695981039346656037ULL;
    for (; *name != '\0'; ++name) {
        hash = (hash ^ static_cast<unsigned char>(LowerCase(*name))) * 1099511628211ULL;
    }
    return hash ^ hash >> 32;
}

// The slot of a name, or the free one where it would stand.
static int& SlotOfName(const NameIndex& index, const char* name) {
    unsigned long long slot = HashOfName(name) & (index.SlotCount - 1);
    for (; index.Records[slot] != 0; slot = (slot + 1) & (index.SlotCount - 1)) {
        PollReading(RecordUnits);
        const char* present = index.FirstName + index.RecordSize * static_cast<std::size_t>(index.Records[slot] - 1);
        if (EqualIgnoringCase(present, name)) {
            break;
        }
    }
    return index.Records[slot];
}

void AddName(NameIndex& index, int record) {
    PollReading(RecordUnits);
    int& slot = SlotOfName(index, index.FirstName + index.RecordSize * static_cast<std::size_t>(record));
    if (slot == 0) {
        slot = record + 1;
    }
}

int FindName(const NameIndex& index, const char* name) {
    return SlotOfName(index, name) - 1;
}
