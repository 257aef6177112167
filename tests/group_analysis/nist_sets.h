// The NIST StRD nonlinear-regression sets of exponential form, shared by the
// fits that are checked against them.
#pragma once

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace vess::group::nist {

// Certified values typed from the NIST StRD pages
// www.itl.nist.gov/div898/strd/nls/data/{lanczos1,lanczos2,lanczos3,mgh17}.shtml
// (b, their standard deviations where checked, and the residual sum of
// squares), with the two published starting points of each set.
struct NistSet {
    const char* name;
    const char* yFormat;                 // how the published y are rounded
    std::vector<double> b, sd, start1, start2;
    double rss;
};

inline const NistSet kLanczos1{"Lanczos1", "%.12e",
    {9.5100000027E-02, 1.0000000001E+00, 8.6070000013E-01, 3.0000000002E+00, 1.5575999998E+00, 5.0000000001E+00},
    {}, {1.2, 0.3, 5.6, 5.5, 6.5, 7.6}, {0.5, 0.7, 3.6, 4.2, 4, 6.3}, 1.4307867721E-25};
inline const NistSet kLanczos2{"Lanczos2", "%.5e",
    {9.6251029939E-02, 1.0057332849E+00, 8.6424689056E-01, 3.0078283915E+00, 1.5529016879E+00, 5.0028798100E+00},
    {6.6770575477E-04, 3.3989646176E-03, 1.7185846685E-03, 4.1707005856E-03, 2.3744381417E-03, 1.3958787284E-03},
    {1.2, 0.3, 5.6, 5.5, 6.5, 7.6}, {0.5, 0.7, 3.6, 4.2, 4, 6.3}, 2.2299428125E-11};
inline const NistSet kLanczos3{"Lanczos3", "%.4f",
    {8.6816414977E-02, 9.5498101505E-01, 8.4400777463E-01, 2.9515951832E+00, 1.5825685901E+00, 4.9863565084E+00},
    {1.7197908859E-02, 9.7041624475E-02, 4.1488663282E-02, 1.0766312506E-01, 5.8371576281E-02, 3.4436403035E-02},
    {1.2, 0.3, 5.6, 5.5, 6.5, 7.6}, {0.5, 0.7, 3.6, 4.2, 4, 6.3}, 1.6117193594E-08};
// MGH17: y = b1 + b2 exp(-x b4) + b3 exp(-x b5), x = 0, 10, ..., 320; y as
// published on its page.
inline const NistSet kMgh17{"MGH17", nullptr,
    {3.7541005211E-01, 1.9358469127E+00, -1.4646871366E+00, 1.2867534640E-02, 2.2122699662E-02},
    {2.0723153551E-03, 2.2031669222E-01, 2.2175707739E-01, 4.4861358114E-04, 8.9471996575E-04},
    {50, 150, -100, 1, 2}, {0.5, 1.5, -1, 0.01, 0.02}, 5.4648946975E-05};
inline constexpr double kMgh17Y[33] = {
    0.844, 0.908, 0.932, 0.936, 0.925, 0.908, 0.881, 0.850, 0.818, 0.784, 0.751,
    0.718, 0.685, 0.658, 0.628, 0.603, 0.580, 0.558, 0.538, 0.522, 0.506, 0.490,
    0.478, 0.467, 0.457, 0.448, 0.438, 0.431, 0.424, 0.420, 0.414, 0.411, 0.406};

inline double Decimal(double v, const char* format) {
    char text[64];
    std::snprintf(text, sizeof text, format, v);
    return std::strtod(text, nullptr);
}

// The three Lanczos sets are 0.0951 e^-x + 0.8607 e^-3x + 1.5576 e^-5x at
// x = 0, 0.05, ..., 1.15, printed to 13 and 6 significant digits and to 4
// decimals (the data pages give the function; the rounding is that of their
// tables, and the certified residual sums of squares depend on it).
inline void Data(const NistSet& set, std::vector<double>& x, std::vector<double>& y) {
    x.clear(), y.clear();
    if (!set.yFormat) {
        for (int i = 0; i < 33; ++i) x.push_back(10.0 * i), y.push_back(kMgh17Y[i]);
        return;
    }
    for (int i = 0; i < 24; ++i) {
        const double xi = Decimal(0.05 * i, "%.2f");
        x.push_back(xi);
        y.push_back(Decimal(0.0951 * std::exp(-xi) + 0.8607 * std::exp(-3 * xi) + 1.5576 * std::exp(-5 * xi),
                            set.yFormat));
    }
}

}  // namespace vess::group::nist
