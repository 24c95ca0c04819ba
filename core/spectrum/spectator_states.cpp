// SPDX-License-Identifier: MIT
// Counts the states of spectators by their weight.
#include "spectrum/spectator_states.h"

#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "spectrum/spin_system.h"
#include "spectrum/table_memory.h"

SpectatorTables Spectators;

static constexpr int LargestClassCount = 1 << 24;  // of many large groups of unlike sizes

void StartSpectators() {
    AllocateTable(Spectators.Classes, 1);
    Spectators.Classes[0] = {1.0, 1.0};
    Spectators.ClassCount = 1;
}

// Joins neighbours of one weight; returns how many classes stay.
static int JoinClasses(SpectatorClass* classes, int count) {
    int kept = 0;
    for (int k = 1; k < count; ++k) {
        if (classes[k].Weight == classes[kept].Weight) {
            classes[kept].States += classes[k].States;
        } else {
            classes[++kept] = classes[k];
        }
    }
    return kept + 1;
}

void AddSpectatorGroup(int nuclei) {
    const long long count = static_cast<long long>(Spectators.ClassCount) * (nuclei / 2 + 1);
    if (count > LargestClassCount) {
        FatalError(Message::OutOfMemory);
    }
    AllocateTable(Spectators.Folded, count);
    SpectatorClass* next = Spectators.Folded;
    for (int twoJ = nuclei; twoJ >= 0; twoJ -= 2) {
        const double multiplicity = GroupSpinMultiplicity(nuclei, twoJ);
        for (int k = 0; k < Spectators.ClassCount; ++k) {
            const SpectatorClass& old = Spectators.Classes[k];
            *next++ = {old.Weight * multiplicity, old.States * (twoJ + 1)};
        }
        PollMessages(Spectators.ClassCount);
    }
    std::sort(Spectators.Folded, next,
              [](const SpectatorClass& a, const SpectatorClass& b) { return a.Weight < b.Weight; });
    Spectators.ClassCount = JoinClasses(Spectators.Folded, static_cast<int>(count));
    MoveArray(Spectators.Folded, Spectators.Classes);
}

void WeighLines(double ownWeight) {
    AllocateTable(Spectators.LineClasses, Spectators.ClassCount);
    for (int k = 0; k < Spectators.ClassCount; ++k) {
        const SpectatorClass& spectators = Spectators.Classes[k];
        const double weight = ownWeight * spectators.Weight;
        Spectators.LineClasses[k] = {weight, spectators.States, spectators.States * DegeneracyOfWeight(weight)};
    }
}
