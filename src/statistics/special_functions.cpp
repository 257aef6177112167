#include "statistics/special_functions.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace vess {

namespace {

constexpr int kMaxIterations = 100;
constexpr double kTiny = 1e-30;      // floor that keeps Lentz denominators off zero
constexpr double kEpsilon = 3e-16;   // relative change at which the fraction has settled

}  // namespace

double GammaLn(double x) {
    // The stored coefficients: the published ones cut to 15 significant digits,
    // the scale to 13. Keep them as they are.
    static constexpr double kCoefficients[6] = {76.1800917294715,     -86.5053203294168,
                                                24.0140982408309,     -1.23173957245015,
                                                0.00120865097386618, -5.395239384953e-06};
    static constexpr double kScale = 2.506628274631;
    double y = x;
    double tmp = x + 5.5;
    tmp -= (x + 0.5) * std::log(tmp);
    double series = 1.000000000190015;
    for (double c : kCoefficients) series += c / ++y;
    return -tmp + std::log(kScale * series / x);
}

double BetaContinuedFraction(double a, double b, double x) {
    const double qab = a + b;
    const double qap = a + 1.0;
    const double qam = a - 1.0;
    double c = 1.0;
    double d = 1.0 - qab * x / qap;
    if (std::fabs(d) < kTiny) d = kTiny;
    d = 1.0 / d;
    double h = d;
    for (int m = 1; m <= kMaxIterations; ++m) {
        const int m2 = 2 * m;
        double aa = m * (b - m) * x / ((qam + m2) * (a + m2));
        d = 1.0 + aa * d;
        if (std::fabs(d) < kTiny) d = kTiny;
        c = 1.0 + aa / c;
        if (std::fabs(c) < kTiny) c = kTiny;
        d = 1.0 / d;
        h *= d * c;
        aa = -(a + m) * (qab + m) * x / ((a + m2) * (qap + m2));
        d = 1.0 + aa * d;
        if (std::fabs(d) < kTiny) d = kTiny;
        c = 1.0 + aa / c;
        if (std::fabs(c) < kTiny) c = kTiny;
        d = 1.0 / d;
        const double del = d * c;
        h *= del;
        if (std::fabs(del - 1.0) < kEpsilon) break;
    }
    return h;
}

double IncompleteBeta(double a, double b, double x) {
    if (std::isnan(x)) return x;
    if (x <= 0.0) return 0.0;
    if (x >= 1.0) return 1.0;
    const double front = std::exp(GammaLn(a + b) - GammaLn(a) - GammaLn(b) + a * std::log(x) +
                                  b * std::log(1.0 - x));
    if (x < (a + 1.0) / (a + b + 2.0)) return front * BetaContinuedFraction(a, b, x) / a;
    return 1.0 - front * BetaContinuedFraction(b, a, 1.0 - x) / b;
}

double StudentTwoTailedP(double t, double df) {
    if (std::isnan(t) || !(df > 0)) return std::nan("");
    if (std::isinf(t)) return 0.0;
    return IncompleteBeta(df / 2.0, 0.5, df / (df + t * t));
}

double FUpperTailP(double f, double df1, double df2) {
    if (std::isnan(f) || !(df1 > 0) || !(df2 > 0) || f < 0) return std::nan("");
    if (std::isinf(f)) return 0.0;
    return IncompleteBeta(df2 / 2.0, df1 / 2.0, df2 / (df2 + df1 * f));
}

double KolmogorovQ(double z) {
    constexpr double kRelativeToPrevious = 1e-3;
    constexpr double kRelativeToSum = 1e-8;
    const double a2 = -2.0 * z * z;
    double factor = 2.0;
    double sum = 0.0;
    double previous = 0.0;
    for (int k = 1; k <= kMaxIterations; ++k) {
        const double term = factor * std::exp(a2 * k * k);
        sum += term;
        if (std::fabs(term) <= kRelativeToPrevious * previous || std::fabs(term) <= kRelativeToSum * sum)
            return sum;
        factor = -factor;
        previous = std::fabs(term);
    }
    return 1.0;  // z so small that the series does not settle: P is 1 to within rounding
}

std::optional<double> KsExactP(int64_t n1, int64_t n2, double d, int64_t maxProduct) {
    if (n1 < 1 || n2 < 1 || n1 * n2 > maxProduct || std::isnan(d)) return std::nullopt;
    // Work on the integer lattice: a path point (i, j) lies outside the band
    // when |i n2 - j n1| >= D n1 n2 (D is a multiple of 1/(n1 n2) for data).
    const int64_t limit = int64_t(std::llround(d * double(n1) * double(n2)));
    if (limit <= 0) return 1.0;
    const auto inside = [&](int64_t i, int64_t j) { return std::llabs(i * n2 - j * n1) < limit; };
    // f[j] after row i: the fraction of the C(i+j, i) paths to (i, j) that
    // never leave the band; f(i,j) = f(i-1,j) i/(i+j) + f(i,j-1) j/(i+j).
    std::vector<double> f(std::size_t(n2 + 1), 0.0);
    f[0] = 1.0;
    for (int64_t j = 1; j <= n2; ++j) f[std::size_t(j)] = inside(0, j) ? f[std::size_t(j - 1)] : 0.0;
    for (int64_t i = 1; i <= n1; ++i) {
        f[0] = inside(i, 0) ? f[0] : 0.0;
        for (int64_t j = 1; j <= n2; ++j) {
            const double total = double(i + j);
            f[std::size_t(j)] = inside(i, j) ? f[std::size_t(j)] * double(i) / total +
                                                   f[std::size_t(j - 1)] * double(j) / total
                                             : 0.0;
        }
    }
    return std::clamp(1.0 - f[std::size_t(n2)], 0.0, 1.0);
}

}  // namespace vess
