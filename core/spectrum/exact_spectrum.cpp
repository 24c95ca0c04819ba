// SPDX-License-Identifier: MIT
// Diagonalises the spin Hamiltonian SubMatrix by SubMatrix, from the highest total projection down, and writes the
// transitions between neighbouring SubSubMatrices.
#include "spectrum/exact_spectrum.h"

#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "ground/touched_pages.h"
#include "numerics/dense_kernels.h"
#include "numerics/eigensolver.h"
#include "numerics/polling_product.h"
#include "spectrum/line_list.h"
#include "spectrum/spin_system.h"
#include "spectrum/sub_matrices.h"

#include <algorithm>
#include <cmath>
#include <utility>

static constexpr double Perturbation = 1e-10;  // Hz; without it degenerate levels have no definite vectors
static constexpr int UpperStates = 256;        // states of the block before that are handled together
static constexpr int PanelStride = 264;        // distance of the rows of their amplitudes, an odd number of chunks
static constexpr int TransposeBlock = 16;      // rows and columns that are transposed together

// Working storage of one simulation, allocated by AllocateWork. L is the largest
// dimension of a SubSubMatrix, N the number of groups.
static struct {
    double* Hamiltonian;     // [L][L] the block in hand, lower triangle; then the lowered previous vectors
    double* Vectors;         // [L][L] eigenvectors of the block in hand, in rows
    double* Previous;        // [L][L] eigenvectors of the block before, in columns
    double* Values;          // [L] eigenvalues of the block in hand, Hz
    double* PreviousValues;  // [L] eigenvalues of the block before, Hz
    double* Panel;           // [L][UpperStates] transition amplitudes
    int* PlaceOfState;       // [states of the largest SubMatrix] place of a state within its SubSubMatrix
    long long LineCount;     // lines written
} Work;

// The SubMatrix in hand.
static struct {
    const int* GroupSpins;  // [N] 2J of each group
    const int* States;      // [states][N] 2M of each group, as enumerated
    int StateStride[32];    // distance in the enumeration of two states that differ by one step of a group
    double Weight;          // statistical weight of its lines
    int Degeneracy;         // the same as an integer
} Sub;

// One SubSubMatrix.
struct Block {
    int Dimension;     // states
    const int* Order;  // [Dimension] 1-based number of each state within the whole enumeration
    int FirstState;    // states of the SubMatrices before
};

static int BlockDimension(int s, int k) {
    return SubMatrices.SubSubMatrixDimensions[static_cast<long long>(k) * SubMatrices.SubMatrixCount + s];
}

static int SubMatrixDimension(int s) {
    int states = 0;
    for (int k = 0; k < SubMatrices.SubSubMatrixCounts[s]; ++k) {
        states += BlockDimension(s, k);
    }
    return states;
}

static int LargestSubMatrix() {
    int largest = 0;
    for (int s = 0; s < SubMatrices.SubMatrixCount; ++s) {
        largest = std::max(largest, SubMatrixDimension(s));
    }
    return largest;
}

template <class Visitor> static void VisitWork(Visitor& visit) {
    const long long largest = SubMatrices.LargestSubSubDimension;
    for (double** matrix : {&Work.Hamiltonian, &Work.Vectors, &Work.Previous}) {
        visit(*matrix, largest * largest);
    }
    visit(Work.Values, largest);
    visit(Work.PreviousValues, largest);
    visit(Work.Panel, largest * PanelStride);
    visit(Work.PlaceOfState, LargestSubMatrix());
}

static double WorkBytes() {
    ArraySum sum;
    VisitWork(sum);
    return sum.Bytes + EigensolverWorkBytes(SubMatrices.LargestSubSubDimension);
}

// All of it is touched at once: the list of lines grows beside it, and may have what is free then.
static void AllocateWork() {
    ArrayAllocator allocator;
    VisitWork(allocator);
    if (!allocator.Complete || !ReserveEigensolverWork(SubMatrices.LargestSubSubDimension)) {
        FatalError(Message::OutOfMemory);
    }
    ArrayToucher toucher;
    VisitWork(toucher);
    Work.LineCount = 0;
}

// The number of a block's state within its SubMatrix.
static int StateAt(const Block& block, int place) {
    return block.Order[place] - 1 - block.FirstState;
}

static void OpenSubMatrix(int s, int firstState) {
    const int n = Run.Spins.SpinGroupCount;
    Sub.GroupSpins = SubMatrices.GroupSpinTable + static_cast<long long>(s) * n;
    Sub.States = SubMatrices.BasisStates + static_cast<long long>(firstState) * n;
    int stride = 1;
    for (int g = 0; g < n; ++g) {
        Sub.StateStride[g] = stride;
        stride *= Sub.GroupSpins[g] + 1;
    }
    Sub.Weight = 1.0;
    if (SubMatrices.SubMatrixCount >= 2) {
        for (int g = 0; g < n; ++g) {
            Sub.Weight *= GroupSpinMultiplicity(Run.Spins.NucleiInGroup[g], Sub.GroupSpins[g]);
        }
    }
    Sub.Degeneracy = DegeneracyOfWeight(Sub.Weight);
}

// Energy of a product state, Hz.
static double DiagonalElement(const int* state) {
    const int n = Run.Spins.SpinGroupCount;
    double energy = 0.0;
    for (int g = 0; g < n; ++g) {
        energy += state[g] * Run.Spins.ChemicalShifts[g] * Run.Options.NMRFrequency * 0.5;
        for (int h = g + 1; h < n; ++h) {
            energy += state[g] * state[h] * Run.Spins.CouplingMatrix[g * n + h] * 0.25;
        }
    }
    return energy;
}

// Element between a state and the one in which group raised is one step higher and group lowered one step lower.
static double FlipFlopElement(const int* state, int raised, int lowered) {
    const int n = Run.Spins.SpinGroupCount;
    const int a = std::min(raised, lowered);
    const int b = std::max(raised, lowered);
    const int twoJa = Sub.GroupSpins[a];
    const int twoJb = Sub.GroupSpins[b];
    const int otherA = state[a] + (a == raised ? 2 : -2);
    const int otherB = state[b] + (b == raised ? 2 : -2);
    const int square = ((twoJb + 2) * twoJb - state[b] * otherB) * ((twoJa + 2) * twoJa - state[a] * otherA);
    return std::sqrt(static_cast<double>(square)) * Run.Spins.CouplingMatrix[b * n + a] * 0.125;
}

// The states that a flip-flop reaches from one state, into a row of the lower triangle.
static void AddFlipFlops(const Block& block, int row, double* elements) {
    const int n = Run.Spins.SpinGroupCount;
    const int number = StateAt(block, row);
    const int* state = Sub.States + static_cast<long long>(number) * n;
    for (int up = 0; up < n; ++up) {
        if (state[up] == Sub.GroupSpins[up]) {
            continue;
        }
        for (int down = 0; down < n; ++down) {
            const double coupling = Run.Spins.CouplingMatrix[std::max(up, down) * n + std::min(up, down)];
            if (down == up || state[down] == -Sub.GroupSpins[down] || coupling == 0.0) {
                continue;
            }
            const int column = Work.PlaceOfState[number - Sub.StateStride[up] + Sub.StateStride[down]];
            if (column < row) {
                elements[column] += FlipFlopElement(state, up, down);
            }
        }
    }
}

// The lower triangle of a block's Hamiltonian, with the perturbation that alternates in sign from element to element.
static void BuildHamiltonian(const Block& block) {
    double amount = Perturbation;
    for (int row = 0; row < block.Dimension; ++row) {
        double* elements = Work.Hamiltonian + static_cast<long long>(row) * block.Dimension;
        for (int column = 0; column <= row; ++column) {
            elements[column] = amount;
            amount = -amount;
        }
        elements[row] +=
            DiagonalElement(Sub.States + static_cast<long long>(StateAt(block, row)) * Run.Spins.SpinGroupCount);
        AddFlipFlops(block, row, elements);
        PollMessages(row + 1);
    }
}

// Element of the lowering operator between a state of the block before, with group g one step higher, and a state.
static double LoweringElement(const int* state, int g) {
    if (SubMatrices.SubMatrixCount == 1) {
        return 1.0;
    }
    const int twoJ = Sub.GroupSpins[g];
    const int square = (twoJ - state[g]) * (state[g] + 2 + twoJ);
    return 0.5 * std::sqrt(static_cast<double>(square));
}

// A column of the lowering operator: places and elements of the block before, by ascending place; returns how many.
static int LoweringColumn(const int* state, int number, std::pair<int, double>* column) {
    int count = 0;
    for (int g = 0; g < Run.Spins.SpinGroupCount; ++g) {
        if (state[g] == Sub.GroupSpins[g]) {
            continue;
        }
        const int place = Work.PlaceOfState[number - Sub.StateStride[g]];
        int at = count++;
        for (; at > 0 && column[at - 1].first > place; --at) {
            column[at] = column[at - 1];
        }
        column[at] = {place, LoweringElement(state, g)};
    }
    return count;
}

// Row c of the result holds, for each eigenvector of the block before, its overlap with state c raised by one step.
static void LowerPreviousVectors(const Block& block, int previousDimension, double* lowered) {
    const std::size_t stride = static_cast<std::size_t>(previousDimension);
    for (int c = 0; c < block.Dimension; ++c) {
        const int number = StateAt(block, c);
        const int* state = Sub.States + static_cast<long long>(number) * Run.Spins.SpinGroupCount;
        std::pair<int, double> column[32];
        const int count = LoweringColumn(state, number, column);
        double* row = lowered + static_cast<std::size_t>(c) * stride;
        std::fill(row, row + previousDimension, 0.0);
        for (int term = 0; term < count; ++term) {
            const double* vectors = Work.Previous + static_cast<std::size_t>(column[term].first) * stride;
            Kernels().AddRows(vectors, stride, 1, &column[term].second, row, previousDimension);
        }
        PollMessages(previousDimension);
    }
}

// Transition amplitudes of a panel of upper states: one row for each eigenvector of the block in hand.
static void ComputeAmplitudes(int dimension, int previousDimension, int firstUpper, int width) {
    PollingProduct(Work.Vectors, dimension, Work.Hamiltonian + firstUpper, previousDimension, Work.Panel, PanelStride,
                   dimension, width, dimension);
}

// Writes the transitions from every state of the block before to every state of the block in hand.
static void WriteLines(const Block& block, int previousDimension) {
    LowerPreviousVectors(block, previousDimension, Work.Hamiltonian);
    const int dimension = block.Dimension;
    for (int first = 0; first < previousDimension; first += UpperStates) {
        const int width = std::min(UpperStates, previousDimension - first);
        ComputeAmplitudes(dimension, previousDimension, first, width);
        ReserveLines(Work.LineCount + static_cast<long long>(width) * dimension);
        for (int a = 0; a < width; ++a) {
            const double upper = Work.PreviousValues[first + a];
            for (int b = 0; b < dimension; ++b) {
                const double t = Work.Panel[static_cast<long long>(b) * PanelStride + a];
                Work.LineCount = WriteLine(Work.LineCount, upper - Work.Values[b], t * t * Sub.Weight, Sub.Degeneracy);
            }
            PollMessages(dimension);
        }
    }
}

// The block in hand becomes the block before, with its eigenvectors turned into columns.
static void KeepBlock(int dimension) {
    const std::size_t stride = static_cast<std::size_t>(dimension);
    for (int row = 0; row < dimension; row += TransposeBlock) {
        const int endRow = std::min(row + TransposeBlock, dimension);
        for (int column = 0; column < dimension; ++column) {
            for (int i = row; i < endRow; ++i) {
                Work.Previous[static_cast<std::size_t>(column) * stride + static_cast<std::size_t>(i)] =
                    Work.Vectors[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(column)];
            }
        }
        PollMessages(dimension);
    }
    std::copy(Work.Values, Work.Values + dimension, Work.PreviousValues);
}

static void SimulateSubMatrix(int s, int firstState) {
    OpenSubMatrix(s, firstState);
    Block block = {0, SubMatrices.LevelOrder + firstState, firstState};
    for (int k = 0; k < SubMatrices.SubSubMatrixCounts[s]; ++k) {
        const int previousDimension = block.Dimension;
        block.Order += previousDimension;
        block.Dimension = BlockDimension(s, k);
        for (int place = 0; place < block.Dimension; ++place) {
            Work.PlaceOfState[StateAt(block, place)] = place;
        }
        BuildHamiltonian(block);
        SolveEigenproblem(Work.Hamiltonian, Work.Vectors, Work.Values, block.Dimension);
        if (k > 0) {
            WriteLines(block, previousDimension);
        }
        KeepBlock(block.Dimension);
    }
}

void ComputeExactSpectrum() {
    PrepareSpinSystem();
    BuildSubMatrices(Run.Spins.SpinGroupCount, Run.Spins.NucleiInGroup, WorkBytes);
    AllocateWork();
    int firstState = 0;
    for (int s = 0; s < SubMatrices.SubMatrixCount; ++s) {
        SimulateSubMatrix(s, firstState);
        firstState += SubMatrixDimension(s);
    }
    FreeArraysOf(Work);
    FreeArraysOf(SubMatrices);
    FreeEigensolverWork();
    FinishLineList(Work.LineCount);
}
