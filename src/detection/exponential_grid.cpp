#include "detection/exponential_grid.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include "detection/point_loops.h"
#include "detection/vector_code.h"

// Built with -ffp-contract=off: a product and a sum fused into one rounding
// would change the fits' bits with the processor.

namespace vess {
namespace {

constexpr std::size_t kSteps = kDecayGridSteps;

// The exponentials of one grid, exp(m / tau_g), m points before the onset,
// grown as longer stretches are fitted, and the sums of their squares over a
// stretch of each length, made once a length: they depend on no sample. The
// sums are held only for the lengths fitted (a fraction of them), so that
// the pages of the others are never touched.
struct GridTable {
    double lowest = 0, range = 0;
    std::array<double, kSteps> taus{};
    std::vector<double> rows;  // rows[m * kSteps + g]
    std::vector<std::unique_ptr<std::array<double, kSteps>>> squares;  // squares[n][g], or null

    GridTable(double lowestTau, double rangeTau) : lowest(lowestTau), range(rangeTau) {
        for (std::size_t g = 0; g < kSteps; ++g) taus[g] = lowest * std::pow(range, double(g) / (kSteps - 1));
    }
    std::size_t Points() const { return rows.size() / kSteps; }
    void GrowTo(std::size_t points) {
        const std::size_t from = Points();
        rows.resize(points * kSteps);
        for (std::size_t m = from; m < points; ++m)
            for (std::size_t g = 0; g < kSteps; ++g) rows[m * kSteps + g] = std::exp(double(m) / taus[g]);
        squares.resize(points);
    }
};

template <std::size_t Width>
using Lanes = VectorOf<double, int(Width)>;

// For the time constants first .. first + Width x Vectors - 1, the sums over
// k of e(n - k) y[k] into products and, WithSquares, those of e(n - k)^2
// into squares, in the order of k: each lane of a vector is one time
// constant's sum, with the same terms in the same order as a sum of its own,
// at any width. Both sums come from one reading of the exponentials, which
// are too many to stay in the nearest caches.
template <std::size_t Width, std::size_t Vectors, bool WithSquares>
[[gnu::always_inline]] inline void SumBand(const double* rows, const double* y, std::size_t n,
                                           std::size_t first, double* products, double* squares) {
    Lanes<Width> sums[Vectors] = {}, sumsOfSquares[Vectors] = {};
    for (std::size_t k = 0; k < n; ++k) {
        const double* e = rows + (n - k) * kSteps + first;
        const double yk = y[k];
#pragma GCC unroll 8
        for (std::size_t v = 0; v < Vectors; ++v) {
            Lanes<Width> ev;
            std::memcpy(&ev, e + v * Width, sizeof ev);
            sums[v] += ev * yk;
            if (WithSquares) sumsOfSquares[v] += ev * ev;
        }
    }
    for (std::size_t v = 0; v < Vectors; ++v)
        for (std::size_t l = 0; l < Width; ++l) {
            products[first + v * Width + l] = sums[v][l];
            if (WithSquares) squares[first + v * Width + l] = sumsOfSquares[v][l];
        }
}

// All the grid's sums, as many time constants at a time as stay in
// registers: Vectors of them for the products alone, Both with their
// squares. squares is null when they are known.
template <std::size_t Width, std::size_t Vectors, std::size_t Both>
[[gnu::always_inline]] inline void SumGrid(const double* rows, const double* y, std::size_t n, double* products,
                                           double* squares) {
    static_assert(kSteps % (Width * Vectors) == 0 && kSteps % (Width * Both) == 0);
    if (squares)
        for (std::size_t first = 0; first < kSteps; first += Width * Both)
            SumBand<Width, Both, true>(rows, y, n, first, products, squares);
    else
        for (std::size_t first = 0; first < kSteps; first += Width * Vectors)
            SumBand<Width, Vectors, false>(rows, y, n, first, products, nullptr);
}

using GridSums = void (*)(const double*, const double*, std::size_t, double*, double*);

void SumGrid2(const double* rows, const double* y, std::size_t n, double* products, double* squares) {
    SumGrid<2, 8, 4>(rows, y, n, products, squares);
}
#if defined(__x86_64__)
__attribute__((target("avx2"))) void SumGrid4(const double* rows, const double* y, std::size_t n,
                                              double* products, double* squares) {
    SumGrid<4, 6, 3>(rows, y, n, products, squares);
}
__attribute__((target("avx512f"))) void SumGrid8(const double* rows, const double* y, std::size_t n,
                                                 double* products, double* squares) {
    SumGrid<8, 6, 6>(rows, y, n, products, squares);
}
#endif

GridSums SumsAtWidth(int width) {
#if defined(__x86_64__)
    if (width == 8) return SumGrid8;
    if (width == 4) return SumGrid4;
#endif
    return SumGrid2;
}

// The tables of this thread. Kept under a bound in values: past it they are
// dropped and made again as fits need them.
constexpr std::size_t kMostValues = std::size_t(1) << 22;  // 32 MB

GridTable& TableFor(double lowest, double range, std::size_t points) {
    thread_local std::vector<std::unique_ptr<GridTable>> tables;
    thread_local std::size_t values = 0;
    GridTable* table = nullptr;
    for (const auto& t : tables)
        if (t->lowest == lowest && t->range == range) table = t.get();
    // Exponentials and sums of squares: two values a time constant and point.
    const std::size_t growth = points > (table ? table->Points() : 0) ? 2 * points * kSteps : 0;
    if (values + growth > kMostValues) {
        tables.clear();
        values = 0;
        table = nullptr;
    }
    if (!table) table = tables.emplace_back(std::make_unique<GridTable>(lowest, range)).get();
    if (points > table->Points()) {
        values += 2 * (points - table->Points()) * kSteps;
        table->GrowTo(points);
    }
    return *table;
}

}  // namespace

std::vector<int> GridSumWidths() {
    // The point loops' widths but the plain one: the grid's narrowest is two.
    std::vector<int> widths;
    for (const int lanes : AvailableLanes())
        if (lanes >= 2) widths.insert(widths.begin(), lanes);
    return widths;
}

ExponentialFit FitExponentialOnGridAtWidth(std::span<const double> y, double lowest, double range, int width) {
    const std::size_t n = y.size();
    // A stretch too long to tabulate gets its exponentials made for it alone.
    std::unique_ptr<GridTable> own;
    if (2 * (n + 1) * kSteps > kMostValues) {
        own = std::make_unique<GridTable>(lowest, range);
        own->GrowTo(n + 1);
    }
    GridTable& table = own ? *own : TableFor(lowest, range, n + 1);
    std::array<double, kSteps> sKY{};
    std::unique_ptr<std::array<double, kSteps>>& squares = table.squares[n];
    const bool known = squares != nullptr;
    if (!known) squares = std::make_unique<std::array<double, kSteps>>();
    double* sKK = squares->data();
    SumsAtWidth(width)(table.rows.data(), y.data(), n, sKY.data(), known ? nullptr : sKK);
    double sYY = 0;
    for (const double v : y) sYY += v * v;
    ExponentialFit best;
    for (std::size_t g = 0; g < kSteps; ++g) {
        const double a = sKY[g] / sKK[g];
        const double sse = sYY - a * sKY[g];
        if (sse < best.sse) best = {a, table.taus[g], sse};
    }
    return best;
}

ExponentialFit FitExponentialOnGrid(std::span<const double> y, double lowest, double range) {
    return FitExponentialOnGridAtWidth(y, lowest, range, std::max(WidestLanes(), 2));
}

}  // namespace vess
