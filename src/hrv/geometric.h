// Geometric and non-linear measures: the RR and delta-RR histograms, the HRV
// triangular index and TINN from the RR histogram, and SD1/SD2 of the Lorenz
// plot with its ellipse.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace vess::hrv {

// Counts by the shared bin rule: bin k holds the values x with
// k*binSize <= x < (k+1)*binSize, from the lowest to the highest occupied bin.
struct Histogram {
    double binSize = 0;
    int64_t lowestBin = 0;
    std::vector<int32_t> counts;
    double LeftEdge(std::size_t i) const { return double(lowestBin + int64_t(i)) * binSize; }
};
// std::nullopt when the bins would be too many (or binSize is not
// positive); an empty series gives an empty histogram.
std::optional<Histogram> BinValues(std::span<const double> values, double binSize);

// Triangular index: the number of intervals over the height of the highest
// bin. TINN: the base M - N of the triangle that fits the histogram best in
// least squares, zero before N and after M, its apex on the highest bin.
struct TriangleFit {
    double triangularIndex = 0;
    double tinnMs = 0;
    double nMs = 0, mMs = 0;       // the triangle's feet
    double apexMs = 0;             // centre of the highest bin
    int32_t apexCount = 0;
};
TriangleFit FitTriangle(const Histogram& rrHistogram);

// Lorenz plot: SD1 across the identity line (short-term variability), SD2
// along it (long-term), both sample standard deviations of the rotated points.
struct LorenzMeasures {
    int n = 0;
    double sd1Ms = 0, sd2Ms = 0, ratio = 0;  // ratio SD1/SD2
    double centreX = 0, centreY = 0;         // mean RR(i), mean RR(i+1)
};
LorenzMeasures AnalyseLorenz(std::span<const std::pair<double, double>> pairs);
// Points of the SD1/SD2 ellipse around the centre, its axes along and across
// the identity line, closed (the first point repeated at the end).
std::vector<std::pair<double, double>> LorenzEllipse(const LorenzMeasures& m, int points = 121);

}  // namespace vess::hrv
