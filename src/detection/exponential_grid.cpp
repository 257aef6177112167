#include "detection/exponential_grid.h"

#include <array>
#include <cstring>
#include <memory>
#include <vector>

namespace vess {
namespace {

constexpr std::size_t kSteps = kDecayGridSteps;
// Time constants summed side by side, in two-lane vectors: their sums stay in
// registers across a whole stretch.
constexpr std::size_t kLanes = 2, kVectors = 4, kBand = kLanes * kVectors;
constexpr std::size_t kBands = kSteps / kBand;
static_assert(kSteps % kBand == 0);
typedef double Lanes __attribute__((vector_size(kLanes * sizeof(double))));

// The exponentials of one grid, exp(m / tau_g), m points before the onset,
// grown as longer stretches are fitted; band b holds, for each m, the kBand
// values of g = b kBand ...
struct GridTable {
    double lowest = 0, range = 0;
    std::array<double, kSteps> taus{};
    std::array<std::vector<double>, kBands> bands;  // bands[b][m * kBand + j]

    GridTable(double lowestTau, double rangeTau) : lowest(lowestTau), range(rangeTau) {
        for (std::size_t g = 0; g < kSteps; ++g) taus[g] = lowest * std::pow(range, double(g) / (kSteps - 1));
    }
    std::size_t Points() const { return bands[0].size() / kBand; }
    void GrowTo(std::size_t points) {
        const std::size_t from = Points();
        for (std::size_t b = 0; b < kBands; ++b) {
            bands[b].resize(points * kBand);
            for (std::size_t m = from; m < points; ++m)
                for (std::size_t j = 0; j < kBand; ++j)
                    bands[b][m * kBand + j] = std::exp(double(m) / taus[b * kBand + j]);
        }
    }
};

// The tables of this thread. Kept under a bound in values: past it they are
// dropped and made again as fits need them.
constexpr std::size_t kMostValues = std::size_t(1) << 21;  // 16 MB

GridTable& TableFor(double lowest, double range, std::size_t points) {
    thread_local std::vector<std::unique_ptr<GridTable>> tables;
    thread_local std::size_t values = 0;
    GridTable* table = nullptr;
    for (const auto& t : tables)
        if (t->lowest == lowest && t->range == range) table = t.get();
    const std::size_t growth = points > (table ? table->Points() : 0) ? points * kSteps : 0;
    if (values + growth > kMostValues) {
        tables.clear();
        values = 0;
        table = nullptr;
    }
    if (!table) table = tables.emplace_back(std::make_unique<GridTable>(lowest, range)).get();
    if (points > table->Points()) {
        values += (points - table->Points()) * kSteps;
        table->GrowTo(points);
    }
    return *table;
}

}  // namespace

ExponentialFit FitExponentialOnGrid(std::span<const double> y, double lowest, double range) {
    const std::size_t n = y.size();
    // A stretch too long to tabulate gets its exponentials made for it alone.
    std::unique_ptr<GridTable> own;
    if ((n + 1) * kSteps > kMostValues) {
        own = std::make_unique<GridTable>(lowest, range);
        own->GrowTo(n + 1);
    }
    const GridTable& table = own ? *own : TableFor(lowest, range, n + 1);
    // Every time constant's sums are taken over y in order: each sum sees the
    // same terms in the same order as a fit of its own.
    std::array<double, kSteps> sKY{}, sKK{};
    for (std::size_t b = 0; b < kBands; ++b) {
        Lanes ky[kVectors] = {}, kk[kVectors] = {};
        const double* band = table.bands[b].data();
        for (std::size_t k = 0; k < n; ++k) {
            const double* e = band + (n - k) * kBand;
            const double yk = y[k];
#pragma GCC unroll 4
            for (std::size_t v = 0; v < kVectors; ++v) {
                Lanes ev;
                std::memcpy(&ev, e + v * kLanes, sizeof ev);
                ky[v] += ev * yk;
                kk[v] += ev * ev;
            }
        }
        for (std::size_t v = 0; v < kVectors; ++v)
            for (std::size_t l = 0; l < kLanes; ++l) {
                sKY[b * kBand + v * kLanes + l] = ky[v][l];
                sKK[b * kBand + v * kLanes + l] = kk[v][l];
            }
    }
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

}  // namespace vess
