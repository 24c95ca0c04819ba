// SPDX-License-Identifier: MIT
// The source of the dense kernels, included once by the file of each instruction set, so without a guard. All that
// depends on the width of a register is which independent numbers share one: no sum changes its order, nothing is
// contracted. All is local to the file that includes it, see numerics/vector_lanes.h.

#include "numerics/dense_kernels.h"
#include "numerics/vector_lanes.h"

static constexpr int Parts = ChunkLength / LaneCount;  // registers of a chunk
static constexpr double Tiny = 1e-30;                  // what counts as zero in a pivot
static constexpr int TilesAhead = 16;                  // tiles of a symmetric matrix asked for before their turn
static constexpr int PanelsAhead = 2;                  // panels of a product asked for before their turn
static constexpr int SecondCache = 2;                  // where the compiler's prefetch is to bring them

// The sum of the eight lanes of a chunk, in the one order.
AlwaysInline double SumOfChunk(const Lanes* parts) {
    double lanes[ChunkLength];
#pragma GCC unroll 4
    for (int part = 0; part < Parts; ++part) {
        Store(lanes + part * LaneCount, parts[part]);
    }
    return SumOfEight(lanes);
}

// Copies the count numbers that follow a last whole chunk into a chunk with zeros behind them.
AlwaysInline void LoadRest(const double* source, int count, double* chunk) {
    for (int j = 0; j < ChunkLength; ++j) {
        chunk[j] = j < count ? source[j] : 0.0;
    }
}

AlwaysInline double* PlaceOf(const ProductPlace& place, int row, int column) {
    return place.Start + static_cast<std::size_t>(row) * place.RowStride +
           static_cast<std::size_t>(column / ChunkLength) * place.ChunkStride + column % ChunkLength;
}

// Register v of a row of a tile, whose first number is at start. A tile begins with a chunk or ends with one.
AlwaysInline double* PlaceOfRegister(double* start, std::size_t chunkStride, int v) {
    return start + static_cast<std::size_t>(v * LaneCount / ChunkLength) * chunkStride + v * LaneCount % ChunkLength;
}

// The sums of a tile as they start. Of its last register, restColumns columns exist.
template <int Rows, int Vectors> AlwaysInline void StartTile(Lanes (&sum)[Rows][Vectors], const ProductPlace& place,
                                                             int row, int firstColumn, int restColumns,
                                                             ProductMode mode) {
    double rest[LaneCount];
    double* first = PlaceOf(place, row, firstColumn);
#pragma GCC unroll 8
    for (int r = 0; r < Rows; ++r, first += place.RowStride) {
#pragma GCC unroll 8
        for (int v = 0; v < Vectors; ++v) {
            const double* start = PlaceOfRegister(first, place.ChunkStride, v);
            if (mode == OverwriteWithProduct) {
                sum[r][v] = Lanes{};
            } else if (v < Vectors - 1 || restColumns >= LaneCount) {
                sum[r][v] = Load(start);
            } else {
                for (int j = 0; j < LaneCount; ++j) {
                    rest[j] = j < restColumns ? start[j] : 0.0;
                }
                sum[r][v] = Load(rest);
            }
        }
    }
}

template <int Rows, int Vectors> AlwaysInline void
StoreTile(const Lanes (&sum)[Rows][Vectors], const ProductPlace& place, int row, int firstColumn, int restColumns) {
    double rest[LaneCount];
    double* first = PlaceOf(place, row, firstColumn);
#pragma GCC unroll 8
    for (int r = 0; r < Rows; ++r, first += place.RowStride) {
#pragma GCC unroll 8
        for (int v = 0; v < Vectors; ++v) {
            double* start = PlaceOfRegister(first, place.ChunkStride, v);
            if (v < Vectors - 1 || restColumns >= LaneCount) {
                Store(start, sum[r][v]);
            } else {
                Store(rest, sum[r][v]);
                for (int j = 0; j < restColumns; ++j) {
                    start[j] = rest[j];
                }
            }
        }
    }
}

// Rows x (Vectors registers) numbers of a product, of which the columns from firstColumn up to columns exist.
template <int Rows, int Vectors> static void MultiplyTile(const double* a, std::size_t aRow, std::size_t aInner,
                                                          const double* panel, const ProductPlace& place, int row,
                                                          int firstColumn, int columns, int inner, ProductMode mode) {
    const int restColumns = columns - firstColumn - (Vectors - 1) * LaneCount;
    Lanes sum[Rows][Vectors];
    StartTile(sum, place, row, firstColumn, restColumns, mode);
    const double* left = a + static_cast<std::size_t>(row) * aRow;
    const double* right = panel + firstColumn;
    if (mode == SubtractProduct) {
        for (int k = 0; k < inner; ++k, left += aInner, right += PanelWidth) {
#pragma GCC unroll 8
            for (int r = 0; r < Rows; ++r) {
                const double factor = left[static_cast<std::size_t>(r) * aRow];
#pragma GCC unroll 8
                for (int v = 0; v < Vectors; ++v) {
                    sum[r][v] -= factor * Load(right + v * LaneCount);
                }
            }
        }
    } else {
        for (int k = 0; k < inner; ++k, left += aInner, right += PanelWidth) {
#pragma GCC unroll 8
            for (int r = 0; r < Rows; ++r) {
                const double factor = left[static_cast<std::size_t>(r) * aRow];
#pragma GCC unroll 8
                for (int v = 0; v < Vectors; ++v) {
                    sum[r][v] += factor * Load(right + v * LaneCount);
                }
            }
        }
    }
    StoreTile(sum, place, row, firstColumn, restColumns);
}

// Asks for what lies PanelsAhead panels to the right of the place of Rows rows, the likely place of a later product: a
// wrong guess does no harm.
template <int Rows> AlwaysInline void PrefetchRows(const ProductPlace& place, int row) {
#pragma GCC unroll 8
    for (int r = 0; r < Rows; ++r) {
        const double* start = PlaceOf(place, row + r, PanelsAhead * PanelWidth);
#pragma GCC unroll 8
        for (int chunk = 0; chunk < PanelWidth / ChunkLength; ++chunk, start += place.ChunkStride) {
            __builtin_prefetch(start, 1, SecondCache);
        }
    }
}

// Rows rows of a product, tile after tile.
template <int Rows> static void MultiplyRows(const double* a, std::size_t aRow, std::size_t aInner, const double* panel,
                                             const ProductPlace& place, int row, int columns, int inner,
                                             ProductMode mode) {
    int column = 0;
    for (; columns - column > (TileVectors - 1) * LaneCount; column += TileVectors * LaneCount) {
        MultiplyTile<Rows, TileVectors>(a, aRow, aInner, panel, place, row, column, columns, inner, mode);
    }
    if constexpr (TileVectors > 2) {
        if (columns - column > 2 * LaneCount) {
            MultiplyTile<Rows, 3>(a, aRow, aInner, panel, place, row, column, columns, inner, mode);
            return;
        }
        if (columns - column > LaneCount) {
            MultiplyTile<Rows, 2>(a, aRow, aInner, panel, place, row, column, columns, inner, mode);
            return;
        }
    }
    if (columns - column > 0) {
        MultiplyTile<Rows, 1>(a, aRow, aInner, panel, place, row, column, columns, inner, mode);
    }
}

static void MultiplyPanel(const double* a, std::size_t aRow, std::size_t aInner, const double* panel,
                          const ProductPlace& place, int rows, int columns, int inner, ProductMode mode) {
    int row = 0;
    for (; row + TileRows <= rows; row += TileRows) {
        PrefetchRows<TileRows>(place, row);
        MultiplyRows<TileRows>(a, aRow, aInner, panel, place, row, columns, inner, mode);
    }
    for (; row < rows; ++row) {
        MultiplyRows<1>(a, aRow, aInner, panel, place, row, columns, inner, mode);
    }
}

// The contribution of SweepRows rows of tile row g: their products with vector, and vector times their mirror images.
template <bool Far> AlwaysInline void SweepTileRows(const double* tiles, const double* vector, double* result,
                                                    int firstChunk, int g, int firstRow) {
    Lanes sum[SweepRows][Parts];
    double factor[SweepRows];
#pragma GCC unroll 8
    for (int r = 0; r < SweepRows; ++r) {
        factor[r] = vector[g * ChunkLength + firstRow + r];
#pragma GCC unroll 8
        for (int part = 0; part < Parts; ++part) {
            sum[r][part] = Lanes{};
        }
    }
    const double* tile = tiles + static_cast<std::size_t>(firstChunk) * 64 + firstRow * ChunkLength;
    for (int chunk = firstChunk; chunk < g; ++chunk, tile += 64) {
#pragma GCC unroll 8
        for (int r = 0; r < SweepRows && Far; ++r) {
            __builtin_prefetch(tile + TilesAhead * 64 + r * ChunkLength);
        }
#pragma GCC unroll 8
        for (int part = 0; part < Parts; ++part) {
            const int offset = chunk * ChunkLength + part * LaneCount;
            const Lanes v = Load(vector + offset);
            Lanes p = Load(result + offset);
#pragma GCC unroll 8
            for (int r = 0; r < SweepRows; ++r) {
                const Lanes element = Load(tile + r * ChunkLength + part * LaneCount);
                sum[r][part] += element * v;
                p += element * factor[r];
            }
            Store(result + offset, p);
        }
    }
#pragma GCC unroll 8
    for (int r = 0; r < SweepRows; ++r) {
#pragma GCC unroll 8
        for (int part = 0; part < Parts; ++part) {
            sum[r][part] +=
                Load(tile + r * ChunkLength + part * LaneCount) * Load(vector + g * ChunkLength + part * LaneCount);
        }
        result[g * ChunkLength + firstRow + r] += SumOfChunk(sum[r]);
    }
}

template <bool Far> static void MultiplyTileRows(const double* triangle, const double* vector, double* result,
                                                 int firstChunk, int firstRow, int endRow) {
    for (int g = firstRow; g < endRow; ++g) {
        const double* tiles = triangle + 32 * static_cast<std::size_t>(g) * (static_cast<std::size_t>(g) + 1);
        for (int row = 0; row < ChunkLength; row += SweepRows) {
            SweepTileRows<Far>(tiles, vector, result, firstChunk, g, row);
        }
    }
}

static void MultiplySymmetric(const double* triangle, const double* vector, double* result, int firstChunk,
                              int firstRow, int endRow, bool isFar) {
    if (isFar) {
        MultiplyTileRows<true>(triangle, vector, result, firstChunk, firstRow, endRow);
    } else {
        MultiplyTileRows<false>(triangle, vector, result, firstChunk, firstRow, endRow);
    }
}

template <int Rows>
static void DotSomeRows(const double* rows, std::size_t stride, const double* vector, int length, double* products) {
    Lanes sum[Rows][Parts];
#pragma GCC unroll 8
    for (int r = 0; r < Rows; ++r) {
#pragma GCC unroll 8
        for (int part = 0; part < Parts; ++part) {
            sum[r][part] = Lanes{};
        }
    }
    int j = 0;
    for (; j + ChunkLength <= length; j += ChunkLength) {
#pragma GCC unroll 8
        for (int part = 0; part < Parts; ++part) {
            const Lanes v = Load(vector + j + part * LaneCount);
#pragma GCC unroll 8
            for (int r = 0; r < Rows; ++r) {
                sum[r][part] += Load(rows + static_cast<std::size_t>(r) * stride + j + part * LaneCount) * v;
            }
        }
    }
    if (j < length) {
        double vectorRest[ChunkLength];
        double rowRest[ChunkLength];
        LoadRest(vector + j, length - j, vectorRest);
#pragma GCC unroll 8
        for (int r = 0; r < Rows; ++r) {
            LoadRest(rows + static_cast<std::size_t>(r) * stride + j, length - j, rowRest);
#pragma GCC unroll 8
            for (int part = 0; part < Parts; ++part) {
                sum[r][part] += Load(rowRest + part * LaneCount) * Load(vectorRest + part * LaneCount);
            }
        }
    }
#pragma GCC unroll 8
    for (int r = 0; r < Rows; ++r) {
        products[r] = SumOfChunk(sum[r]);
    }
}

static void DotRows(const double* rows, std::size_t stride, int count, const double* vector, int length,
                    double* products) {
    int k = 0;
    for (; k + SweepRows <= count; k += SweepRows) {
        DotSomeRows<SweepRows>(rows + static_cast<std::size_t>(k) * stride, stride, vector, length, products + k);
    }
    for (; k < count; ++k) {
        DotSomeRows<1>(rows + static_cast<std::size_t>(k) * stride, stride, vector, length, products + k);
    }
}

template <int Rows>
static void AddSomeRows(const double* rows, std::size_t stride, const double* factors, double* vector, int length) {
    int j = 0;
    for (; j + LaneCount <= length; j += LaneCount) {
        Lanes sum = Load(vector + j);
#pragma GCC unroll 8
        for (int r = 0; r < Rows; ++r) {
            sum += factors[r] * Load(rows + static_cast<std::size_t>(r) * stride + j);
        }
        Store(vector + j, sum);
    }
    for (; j < length; ++j) {
        double sum = vector[j];
#pragma GCC unroll 8
        for (int r = 0; r < Rows; ++r) {
            sum += factors[r] * rows[static_cast<std::size_t>(r) * stride + static_cast<std::size_t>(j)];
        }
        vector[j] = sum;
    }
}

static void AddRows(const double* rows, std::size_t stride, int count, const double* factors, double* vector,
                    int length) {
    int k = 0;
    for (; k + 8 <= count; k += 8) {
        AddSomeRows<8>(rows + static_cast<std::size_t>(k) * stride, stride, factors + k, vector, length);
    }
    for (; k + 2 <= count; k += 2) {
        AddSomeRows<2>(rows + static_cast<std::size_t>(k) * stride, stride, factors + k, vector, length);
    }
    if (k < count) {
        AddSomeRows<1>(rows + static_cast<std::size_t>(k) * stride, stride, factors + k, vector, length);
    }
}

static void ResidualProducts(const double* diagonal, const double* off, double shift, const double* x, int n,
                             double* products) {
    Lanes square[Parts] = {};
    Lanes projection[Parts] = {};
    double squareOfEnds = 0.0;
    double projectionOfEnds = 0.0;
    const auto addEnd = [&](int j) {
        double value = (diagonal[j] - shift) * x[j];
        value += j > 0 ? off[j - 1] * x[j - 1] : 0.0;
        value += j + 1 < n ? off[j] * x[j + 1] : 0.0;
        squareOfEnds += value * value;
        projectionOfEnds += value * x[j];
    };
    addEnd(0);
    int j = 1;
    for (; j + ChunkLength < n; j += ChunkLength) {
#pragma GCC unroll 8
        for (int part = 0; part < Parts; ++part) {
            const int k = j + part * LaneCount;
            const Lanes own = Load(x + k);
            Lanes value = (Load(diagonal + k) - shift) * own;
            value += Load(off + k - 1) * Load(x + k - 1);
            value += Load(off + k) * Load(x + k + 1);
            square[part] += value * value;
            projection[part] += value * own;
        }
    }
    for (; j < n; ++j) {
        addEnd(j);
    }
    products[0] = squareOfEnds + SumOfChunk(square);
    products[1] = projectionOfEnds + SumOfChunk(projection);
}

static void FactorLanes(const double* diagonal, const double* off, const double* shifts, double tolerance, int n,
                        const LaneFactors& factors) {
    const Lanes one = Lanes{} + 1.0;
    const Lanes zero = {};
    const Lanes replacement = zero + tolerance;
    Lanes shift[Parts];
    Lanes pivot[Parts];
    Lanes upper[Parts];
#pragma GCC unroll 8
    for (int part = 0; part < Parts; ++part) {
        shift[part] = Load(shifts + part * LaneCount);
        pivot[part] = diagonal[0] - shift[part];
        upper[part] = zero + off[0];
    }
    std::size_t place = 0;
    for (int j = 0; j + 1 < n; ++j) {
        const Lanes below = zero + off[j];
        const Lanes belowSize = Absolute(below);
        const Lanes nextUpperSource = zero + off[j + 1];
#pragma GCC unroll 8
        for (int part = 0; part < Parts; ++part, place += LaneCount) {
            const Lanes nextPivotSource = diagonal[j + 1] - shift[part];
            const Lanes size = Absolute(pivot[part]);
            // An interchange would put a pivot that counts as zero in place if the coupling were that small too.
            const LaneMask interchange = ~((size >= belowSize) | (belowSize < Tiny));
            const Lanes ownPivot = size < Tiny ? replacement : pivot[part];
            const Lanes usedPivot = interchange ? below : ownPivot;
            const Lanes reciprocal = one / usedPivot;
            const Lanes multiplier = -((interchange ? pivot[part] : below) * reciprocal);
            const Lanes bandSource = Absolute(nextUpperSource) < Tiny ? replacement : nextUpperSource;
            const Lanes band = interchange ? bandSource : zero;
            const Lanes usedUpper = interchange ? nextPivotSource : upper[part];
            const Lanes nextPivot = interchange ? upper[part] : nextPivotSource;
            const Lanes nextUpper = interchange ? zero : nextUpperSource;
            Store(factors.Reciprocal + place, reciprocal);
            Store(factors.Multiplier + place, multiplier);
            Store(factors.Band + place, band);
            Store(factors.Upper + place, usedUpper);
            upper[part] = nextUpper + band * multiplier;
            pivot[part] = nextPivot + usedUpper * multiplier;
        }
    }
#pragma GCC unroll 8
    for (int part = 0; part < Parts; ++part, place += LaneCount) {
        const Lanes usedPivot = Absolute(pivot[part]) < Tiny ? replacement : pivot[part];
        Store(factors.Reciprocal + place, one / usedPivot);
        Store(factors.Multiplier + place, zero);
        Store(factors.Band + place, zero);
        Store(factors.Upper + place, zero);
    }
}

// Applies the multipliers and interchanges.
AlwaysInline void SubstituteForward(const LaneFactors& factors, int n, double* x) {
    Lanes current[Parts];
#pragma GCC unroll 8
    for (int part = 0; part < Parts; ++part) {
        current[part] = Load(x + part * LaneCount);
    }
    std::size_t place = 0;
    for (int j = 0; j + 1 < n; ++j) {
#pragma GCC unroll 8
        for (int part = 0; part < Parts; ++part, place += LaneCount) {
            const LaneMask interchanged = Absolute(Load(factors.Band + place)) >= Tiny;
            const Lanes next = Load(x + place + ChunkLength);
            const Lanes stays = interchanged ? next : current[part];
            const Lanes goesOn = interchanged ? current[part] : next;
            Store(x + place, stays);
            current[part] = goesOn + Load(factors.Multiplier + place) * stays;
        }
    }
#pragma GCC unroll 8
    for (int part = 0; part < Parts; ++part) {
        Store(x + place + part * LaneCount, current[part]);
    }
}

static void SolveLanes(const LaneFactors& factors, int n, int forward, double* x, double* largest) {
    const std::size_t lastPlace = static_cast<std::size_t>(n - 1) * ChunkLength;
    if (forward != 0) {
        SubstituteForward(factors, n, x);
    }
    Lanes current[Parts];
    Lanes second[Parts];
    Lanes greatest[Parts];
#pragma GCC unroll 8
    for (int part = 0; part < Parts; ++part) {
        const std::size_t place = lastPlace + static_cast<std::size_t>(part * LaneCount);
        second[part] = Lanes{};
        current[part] = Load(x + place) * Load(factors.Reciprocal + place);
        greatest[part] = Absolute(current[part]);
        Store(x + place, current[part]);
    }
    for (int k = n - 2; k >= 0; --k) {
#pragma GCC unroll 8
        for (int part = 0; part < Parts; ++part) {
            const std::size_t place =
                static_cast<std::size_t>(k) * ChunkLength + static_cast<std::size_t>(part * LaneCount);
            const Lanes known = Load(x + place) - Load(factors.Band + place) * second[part];
            const Lanes value =
                (known - Load(factors.Upper + place) * current[part]) * Load(factors.Reciprocal + place);
            const Lanes size = Absolute(value);
            greatest[part] = size > greatest[part] ? size : greatest[part];
            Store(x + place, value);
            second[part] = current[part];
            current[part] = value;
        }
    }
#pragma GCC unroll 8
    for (int part = 0; part < Parts; ++part) {
        Store(largest + part * LaneCount, greatest[part]);
    }
}

static constexpr DenseKernels KernelsOfThisSet = {MultiplyPanel,    MultiplySymmetric, DotRows,   AddRows,
                                                  ResidualProducts, FactorLanes,       SolveLanes};
