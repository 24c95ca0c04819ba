// SPDX-License-Identifier: MIT
// Diagonalises the spin Hamiltonian SubMatrix by SubMatrix, from the highest total projection down, and writes the
// transitions between neighbouring SubSubMatrices.
#include "spectrum/part_simulation.h"

#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "ground/touched_pages.h"
#include "numerics/dense_kernels.h"
#include "numerics/eigensolver.h"
#include "numerics/polling_product.h"
#include "spectrum/level_coincidences.h"
#include "spectrum/part_states.h"
#include "spectrum/spectator_states.h"
#include "spectrum/spin_system.h"

#include <algorithm>
#include <cmath>
#include <utility>

static constexpr double Perturbation = 1e-10;  // Hz; without it degenerate levels have no definite vectors
static constexpr int UpperStates = 256;        // states of a block above that are handled together
static constexpr int PanelStride = 264;        // distance of the rows of their amplitudes, an odd number of chunks
static constexpr int TransposeBlock = 16;      // rows and columns that are transposed together

// Working storage of the simulation of one part, for its first SubMatrix, which has the largest blocks: L is the
// largest dimension. A block's eigenvectors are kept until its last neighbour below has come by, in the slot of its
// number modulo the number of slots.
static struct {
    double* Hamiltonian;    // [L][L] the block in hand, lower triangle; then the lowered vectors of a block above
    double* Vectors;        // [L][L] eigenvectors of the block in hand, in rows
    double* Values;         // [L] eigenvalues of the block in hand, Hz
    double* Kept;           // eigenvectors of the blocks above, in columns, slot after slot
    double* KeptValues;     // [slots][L] their eigenvalues, Hz
    long long* SlotStarts;  // [slots + 1] where the vectors of each slot begin
    double* Panel;          // [L][PanelStride] transition amplitudes
    long long LineCount;    // lines written, of all parts
} Work;

// One block of the SubMatrix in hand.
struct Block {
    int Dimension;      // states
    const int* States;  // [Dimension] number of each state in the enumeration
    double* Vectors;    // [Dimension][Dimension] its slot
    double* Values;     // [Dimension] the same
};

// With a single class there is one slot: each block replaces the one above.
static int SlotCount() {
    return PartStates.ClassStride[0];
}

// Numbers in the largest block of a slot, squared.
static long long SlotLength(int slot) {
    long long largest = 0;
    for (int block = slot; block < PartStates.BlockCount; block += SlotCount()) {
        largest = std::max(largest, PartStates.BlockSizes[block]);
    }
    return largest * largest;
}

static long long KeptLength() {
    long long length = 0;
    for (int slot = 0; slot < SlotCount(); ++slot) {
        length += SlotLength(slot);
    }
    return length;
}

template <class Visitor> static void VisitWork(Visitor& visit) {
    const long long largest = PartStates.LargestDimension;
    visit(Work.Hamiltonian, largest * largest);
    visit(Work.Vectors, largest * largest);
    visit(Work.Values, largest);
    visit(Work.Kept, KeptLength());
    visit(Work.KeptValues, largest * SlotCount());
    visit(Work.SlotStarts, SlotCount() + 1);
    visit(Work.Panel, largest * PanelStride);
}

double PartBytes(const SpinPart& part) {
    CountPartBlocks(part, part.Nuclei);
    ArraySum sum;
    VisitWork(sum);
    return sum.Bytes + PartStateBytes() + EigensolverWorkBytes(PartStates.LargestDimension);
}

// All of it is touched at once: the list of lines grows beside it, and may have what is free then.
static void AllocateWork() {
    ArrayAllocator allocator;
    VisitWork(allocator);
    if (!allocator.Complete || !ReserveEigensolverWork(PartStates.LargestDimension)) {
        FatalError(Message::OutOfMemory);
    }
    ArrayToucher toucher;
    VisitWork(toucher);
}

static void OpenSubMatrix(const SpinPart& part, const int* groupSpins) {
    BuildPartStates(part, groupSpins);
    Work.SlotStarts[0] = 0;
    for (int slot = 0; slot < SlotCount(); ++slot) {
        Work.SlotStarts[slot + 1] = Work.SlotStarts[slot] + SlotLength(slot);
    }
    double weight = 1.0;
    for (int i = 0; i < part.GroupCount; ++i) {
        weight *= GroupSpinMultiplicity(part.Nuclei[i], groupSpins[i]);
    }
    WeighLines(weight);
}

static Block BlockAt(int number) {
    const int slot = number % SlotCount();
    const int start = PartStates.BlockStarts[number];
    return {PartStates.BlockStarts[number + 1] - start, PartStates.Order + start, Work.Kept + Work.SlotStarts[slot],
            Work.KeptValues + static_cast<long long>(slot) * PartStates.LargestDimension};
}

static const int* StateAt(int number) {
    return PartStates.States + static_cast<long long>(number) * PartStates.GroupCount;
}

// Energy of a product state, Hz.
static double DiagonalElement(const SpinPart& part, const int* state) {
    const int n = Run.Spins.SpinGroupCount;
    double energy = 0.0;
    for (int i = 0; i < part.GroupCount; ++i) {
        const int g = part.Groups[i];
        energy += state[i] * Run.Spins.ChemicalShifts[g] * Run.Options.NMRFrequency * 0.5;
        for (int j = i + 1; j < part.GroupCount; ++j) {
            energy += state[i] * state[j] * Run.Spins.CouplingMatrix[g * n + part.Groups[j]] * 0.25;
        }
    }
    return energy;
}

// The coupling that flips two groups against each other, Hz.
static double FlippingCoupling(const SpinPart& part, int i, int j) {
    return Run.Spins
        .CouplingMatrix[part.Groups[std::max(i, j)] * Run.Spins.SpinGroupCount + part.Groups[std::min(i, j)]];
}

// Element between a state and the one in which group raised is one step higher and group lowered one step lower.
static double FlipFlopElement(const int* state, int raised, int lowered, double coupling) {
    const int a = std::min(raised, lowered);
    const int b = std::max(raised, lowered);
    const int twoJa = PartStates.GroupSpins[a];
    const int twoJb = PartStates.GroupSpins[b];
    const int otherA = state[a] + (a == raised ? 2 : -2);
    const int otherB = state[b] + (b == raised ? 2 : -2);
    const int square = ((twoJb + 2) * twoJb - state[b] * otherB) * ((twoJa + 2) * twoJa - state[a] * otherA);
    return std::sqrt(static_cast<double>(square)) * coupling * 0.125;
}

// The states that a flip-flop reaches from one state, into a row of the lower triangle.
static void AddFlipFlops(const SpinPart& part, int number, int row, double* elements) {
    const int* state = StateAt(number);
    for (int up = 0; up < part.GroupCount; ++up) {
        if (state[up] == PartStates.GroupSpins[up]) {
            continue;
        }
        for (int down = 0; down < part.GroupCount; ++down) {
            const double coupling = FlippingCoupling(part, up, down);
            if (down == up || state[down] == -PartStates.GroupSpins[down] || coupling == 0.0) {
                continue;
            }
            const int column =
                PartStates.PlaceOfState[number - PartStates.StateStride[up] + PartStates.StateStride[down]];
            if (column < row) {
                elements[column] += FlipFlopElement(state, up, down, coupling);
            }
        }
    }
}

// The lower triangle of a block's Hamiltonian, with the perturbation that alternates in sign from element to element.
static void BuildHamiltonian(const SpinPart& part, const Block& block) {
    double amount = Perturbation;
    for (int row = 0; row < block.Dimension; ++row) {
        double* elements = Work.Hamiltonian + static_cast<long long>(row) * block.Dimension;
        for (int column = 0; column <= row; ++column) {
            elements[column] = amount;
            amount = -amount;
        }
        elements[row] += DiagonalElement(part, StateAt(block.States[row]));
        AddFlipFlops(part, block.States[row], row, elements);
        PollMessages(row + 1);
    }
}

// Element of the lowering operator between a state with group i one step higher and a state.
static double LoweringElement(const int* state, int i) {
    const int twoJ = PartStates.GroupSpins[i];
    const int square = (twoJ - state[i]) * (state[i] + 2 + twoJ);
    return 0.5 * std::sqrt(static_cast<double>(square));
}

// A column of the lowering operator of a class: places and elements of the block above, by ascending place; returns how
// many.
static int LoweringColumn(const SpinPart& part, int c, int number, std::pair<int, double>* column) {
    const int* state = StateAt(number);
    int count = 0;
    for (int i = 0; i < part.GroupCount; ++i) {
        if (part.Classes[i] != c || state[i] == PartStates.GroupSpins[i]) {
            continue;
        }
        const int place = PartStates.PlaceOfState[number - PartStates.StateStride[i]];
        int at = count++;
        for (; at > 0 && column[at - 1].first > place; --at) {
            column[at] = column[at - 1];
        }
        column[at] = {place, LoweringElement(state, i)};
    }
    return count;
}

// Row k of the result holds, for each eigenvector of the block above, its overlap with state k of the block raised by
// one step of class c.
static void LowerVectors(const SpinPart& part, int c, const Block& above, const Block& block, double* lowered) {
    const std::size_t stride = static_cast<std::size_t>(above.Dimension);
    for (int k = 0; k < block.Dimension; ++k) {
        std::pair<int, double> column[LargestGroupCount];
        const int count = LoweringColumn(part, c, block.States[k], column);
        double* row = lowered + static_cast<std::size_t>(k) * stride;
        std::fill(row, row + above.Dimension, 0.0);
        for (int term = 0; term < count; ++term) {
            const double* vectors = above.Vectors + static_cast<std::size_t>(column[term].first) * stride;
            Kernels().AddRows(vectors, stride, 1, &column[term].second, row, above.Dimension);
        }
        PollMessages(above.Dimension);
    }
}

// Transition amplitudes of a panel of upper states: one row for each eigenvector of the block in hand.
static void ComputeAmplitudes(int dimension, int upperDimension, int firstUpper, int width) {
    PollingProduct(Work.Vectors, dimension, Work.Hamiltonian + firstUpper, upperDimension, Work.Panel, PanelStride,
                   dimension, width, dimension);
}

// Writes the transitions of class c from every state of the block above to every state of the block in hand.
static void WriteLines(const SpinPart& part, int c, const Block& above, const Block& block) {
    LowerVectors(part, c, above, block, Work.Hamiltonian);
    for (int first = 0; first < above.Dimension; first += UpperStates) {
        const int width = std::min(UpperStates, above.Dimension - first);
        ComputeAmplitudes(block.Dimension, above.Dimension, first, width);
        ReserveLines(Work.LineCount + static_cast<long long>(width) * block.Dimension);
        for (int a = 0; a < width; ++a) {
            const double upper = above.Values[first + a];
            for (int b = 0; b < block.Dimension; ++b) {
                const double t = Work.Panel[static_cast<long long>(b) * PanelStride + a];
                Work.LineCount = WriteWeightedLine(Work.LineCount, upper - Work.Values[b], t * t);
            }
            PollMessages(block.Dimension);
        }
    }
}

// Keeps the block in hand in its slot, with its eigenvectors turned into columns.
static void KeepBlock(const Block& block) {
    const std::size_t stride = static_cast<std::size_t>(block.Dimension);
    for (int row = 0; row < block.Dimension; row += TransposeBlock) {
        const int endRow = std::min(row + TransposeBlock, block.Dimension);
        for (int column = 0; column < block.Dimension; ++column) {
            for (int i = row; i < endRow; ++i) {
                block.Vectors[static_cast<std::size_t>(column) * stride + static_cast<std::size_t>(i)] =
                    Work.Vectors[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(column)];
            }
        }
        PollMessages(block.Dimension);
    }
    std::copy(Work.Values, Work.Values + block.Dimension, block.Values);
}

// Steps of a block below the highest projection of all groups.
static int StepsOfBlock(const SpinPart& part, int block) {
    int steps = 0;
    for (int c = 0; c < part.ClassCount; ++c) {
        steps += StepsOfClass(block, c);
    }
    return steps;
}

static void SimulateSubMatrix(const SpinPart& part, bool notesLevels) {
    for (int number = 0; number < PartStates.BlockCount; ++number) {
        const Block block = BlockAt(number);
        BuildHamiltonian(part, block);
        SolveEigenproblem(Work.Hamiltonian, Work.Vectors, Work.Values, block.Dimension);
        if (notesLevels) {
            NoteLevels(Work.Values, block.Dimension, StepsOfBlock(part, number));
        }
        for (int c = 0; c < part.ClassCount; ++c) {
            if (StepsOfClass(number, c) > 0) {
                WriteLines(part, c, BlockAt(number - PartStates.ClassStride[c]), block);
            }
        }
        KeepBlock(block);
    }
}

long long SimulatePart(const SpinPart& part, long long lineCount, bool notesLevels) {
    CountPartBlocks(part, part.Nuclei);
    AllocateWork();
    Work.LineCount = lineCount;
    int groupSpins[LargestGroupCount];
    std::copy(part.Nuclei, part.Nuclei + part.GroupCount, groupSpins);
    do {
        OpenSubMatrix(part, groupSpins);
        SimulateSubMatrix(part, notesLevels);
        if (notesLevels) {
            EndLevelsOfSubMatrix();
        }
    } while (NextGroupSpins(groupSpins, part.Nuclei, part.GroupCount));
    if (notesLevels) {
        EndLevelsOfPart();
    }
    FreeArraysOf(Work);
    FreeArraysOf(PartStates);
    FreeEigensolverWork();
    return Work.LineCount;
}
