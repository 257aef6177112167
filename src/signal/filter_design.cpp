#include "signal/filter_design.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include <gsl/gsl_poly.h>

#include "signal/elliptic_functions.h"
#include "signal/filter_texts.h"
#include "signal/gaussian_filter.h"

namespace vess {

namespace {

using Complex = std::complex<double>;
constexpr double kPi = std::numbers::pi;

// Zeros, poles and gain of a transfer function.
struct Zpk {
    std::vector<Complex> z, p;
    double k = 1;
};

Complex Product(const std::vector<Complex>& roots, Complex (*term)(Complex, double), double x) {
    Complex prod = 1;
    for (const Complex& r : roots) prod *= term(r, x);
    return prod;
}
Complex Negated(Complex r, double) { return -r; }
Complex FromConstant(Complex r, double c) { return c - r; }

// Analog low-pass prototypes with the cut-off at 1 rad/s, each pole of the
// left half-plane listed once (conjugates included).
Zpk Butterworth(int n) {
    Zpk f;
    for (int m = -n + 1; m < n; m += 2) f.p.push_back(-std::exp(Complex(0, kPi * m / (2.0 * n))));
    return f;
}

Zpk Chebyshev(int n, double rippleDb) {
    Zpk f;
    const double eps = std::sqrt(std::pow(10.0, 0.1 * rippleDb) - 1.0);
    const double mu = std::asinh(1.0 / eps) / n;
    for (int m = -n + 1; m < n; m += 2) f.p.push_back(-std::sinh(Complex(mu, kPi * m / (2.0 * n))));
    f.k = Product(f.p, Negated, 0).real();
    if (n % 2 == 0) f.k /= std::sqrt(1.0 + eps * eps);
    return f;
}

Zpk InverseChebyshev(int n, double attenuationDb) {
    Zpk f;
    const double de = 1.0 / std::sqrt(std::pow(10.0, 0.1 * attenuationDb) - 1.0);
    const double mu = std::asinh(1.0 / de) / n;
    for (int m = -n + 1; m < n; m += 2) {
        if (m == 0) continue;  // the odd order's zero at infinity
        f.z.push_back(-std::conj(Complex(0, 1) / std::sin(m * kPi / (2.0 * n))));
    }
    for (int m = -n + 1; m < n; m += 2) {
        const Complex b = -std::exp(Complex(0, kPi * m / (2.0 * n)));
        f.p.push_back(1.0 / Complex(std::sinh(mu) * b.real(), std::cosh(mu) * b.imag()));
    }
    f.k = (Product(f.p, Negated, 0) / Product(f.z, Negated, 0)).real();
    return f;
}

Zpk Elliptic(int n, double rippleDb, double attenuationDb) {
    Zpk f;
    const double epsSq = std::expm1(0.1 * std::log(10.0) * rippleDb);
    if (n == 1) {
        f.p.push_back(-std::sqrt(1.0 / epsSq));
        f.k = std::sqrt(1.0 / epsSq);
        return f;
    }
    const double k1Sq = epsSq / std::expm1(0.1 * std::log(10.0) * attenuationDb);
    const double m = elliptic::DegreeParameter(n, k1Sq);
    const double capK = elliptic::K(m);
    const double r = elliptic::ArcSc1(1.0 / std::sqrt(epsSq), k1Sq);
    const double v0 = capK * r / (n * elliptic::K(k1Sq));
    const elliptic::Jacobi v = elliptic::Functions(v0, 1.0 - m);
    std::vector<Complex> upper;
    for (int j = 1 - n % 2; j < n; j += 2) {
        const elliptic::Jacobi e = elliptic::Functions(j * capK / n, m);
        if (std::fabs(e.sn) > 2e-16) f.z.push_back(Complex(0, 1.0 / (std::sqrt(m) * e.sn)));
        upper.push_back(-Complex(e.cn * e.dn * v.sn * v.cn, e.sn * v.dn) /
                        (1.0 - std::pow(e.dn * v.sn, 2)));
    }
    const std::size_t zeros = f.z.size();
    for (std::size_t i = 0; i < zeros; ++i) f.z.push_back(std::conj(f.z[i]));
    f.p = upper;
    for (const Complex& p : upper)
        if (std::fabs(p.imag()) > 2e-16 * std::abs(p)) f.p.push_back(std::conj(p));
    f.k = (Product(f.p, Negated, 0) / Product(f.z, Negated, 0)).real();
    if (n % 2 == 0) f.k /= std::sqrt(1.0 + epsSq);
    return f;
}

// Gain of an all-pole prototype at s = j w.
double AllPoleGain(const Zpk& f, double w) {
    Complex h = f.k;
    for (const Complex& p : f.p) h /= Complex(0, w) - p;
    return std::abs(h);
}

// The Bessel (maximally flat delay) low-pass: the roots of the reverse
// Bessel polynomial, sum of (2n-k)! / (2^(n-k) k! (n-k)!) s^k, then scaled
// so that the gain is -3 dB at 1 rad/s.
Zpk Bessel(int n) {
    std::vector<double> a(std::size_t(n + 1));
    for (int k = 0; k <= n; ++k)
        a[std::size_t(k)] = std::exp(std::lgamma(2.0 * n - k + 1) - (n - k) * std::log(2.0) -
                                     std::lgamma(k + 1.0) - std::lgamma(n - k + 1.0));
    std::vector<double> roots(std::size_t(2 * n));
    gsl_poly_complex_workspace* w = gsl_poly_complex_workspace_alloc(std::size_t(n + 1));
    gsl_poly_complex_solve(a.data(), std::size_t(n + 1), w, roots.data());
    gsl_poly_complex_workspace_free(w);
    Zpk f;
    for (int i = 0; i < n; ++i) {
        Complex p(roots[std::size_t(2 * i)], roots[std::size_t(2 * i + 1)]);
        for (int step = 0; step < 3; ++step) {  // Newton steps polish the companion-matrix roots
            Complex value = 0, slope = 0;
            for (int k = n; k >= 0; --k) {
                slope = slope * p + value;
                value = value * p + a[std::size_t(k)];
            }
            if (std::abs(slope) > 0) p -= value / slope;
        }
        if (std::fabs(p.imag()) < 1e-10 * std::abs(p)) p = p.real();
        f.p.push_back(p);
    }
    f.k = Product(f.p, Negated, 0).real();
    // The gain falls monotonically: bisect (in log w) for the -3 dB point.
    double lo = 1e-3, hi = 1e3;
    for (int i = 0; i < 200; ++i) {
        const double mid = std::sqrt(lo * hi);
        (AllPoleGain(f, mid) > std::sqrt(0.5) ? lo : hi) = mid;
    }
    const double w3 = std::sqrt(lo * hi);
    for (Complex& p : f.p) p /= w3;
    f.k = Product(f.p, Negated, 0).real();
    return f;
}

Zpk Prototype(const FilterChoice& s) {
    switch (s.kind) {
        case FilterKind::Butterworth: return Butterworth(s.order);
        case FilterKind::Chebyshev: return Chebyshev(s.order, s.rippleDb);
        case FilterKind::InverseChebyshev: return InverseChebyshev(s.order, s.attenuationDb);
        case FilterKind::Elliptic: return Elliptic(s.order, s.rippleDb, s.attenuationDb);
        case FilterKind::Bessel: return Bessel(s.order);
        case FilterKind::Gaussian: break;  // a kernel, not poles
    }
    return {};
}

// Moves the cut-off from 1 rad/s to wo, as a low-pass or a high-pass.
Zpk Transform(Zpk f, FilterPass pass, double wo) {
    const int degree = int(f.p.size() - f.z.size());
    if (pass == FilterPass::Low) {
        for (Complex& z : f.z) z *= wo;
        for (Complex& p : f.p) p *= wo;
        f.k *= std::pow(wo, degree);
        return f;
    }
    f.k *= (Product(f.z, Negated, 0) / Product(f.p, Negated, 0)).real();
    for (Complex& z : f.z) z = wo / z;
    for (Complex& p : f.p) p = wo / p;
    f.z.insert(f.z.end(), std::size_t(degree), Complex(0));
    return f;
}

Zpk Bilinear(Zpk f, double fs) {
    const double fs2 = 2.0 * fs;
    const int degree = int(f.p.size() - f.z.size());
    f.k *= (Product(f.z, FromConstant, fs2) / Product(f.p, FromConstant, fs2)).real();
    for (Complex& z : f.z) z = (fs2 + z) / (fs2 - z);
    for (Complex& p : f.p) p = (fs2 + p) / (fs2 - p);
    f.z.insert(f.z.end(), std::size_t(degree), Complex(-1));
    return f;
}

bool IsReal(Complex r) { return std::fabs(r.imag()) <= 1e-12 * std::max(1.0, std::abs(r)); }

// Splits roots into one of each conjugate pair (upper half) and real roots.
void Split(const std::vector<Complex>& roots, std::vector<Complex>* pairs, std::vector<double>* reals) {
    for (const Complex& r : roots) {
        if (IsReal(r)) reals->push_back(r.real());
        else if (r.imag() > 0) pairs->push_back(r);
    }
}

// Removes and returns the root nearest to target.
template <typename T>
T TakeNearest(std::vector<T>* roots, Complex target) {
    auto best = std::min_element(roots->begin(), roots->end(), [&](const T& a, const T& b) {
        return std::abs(Complex(a) - target) < std::abs(Complex(b) - target);
    });
    const T r = *best;
    roots->erase(best);
    return r;
}

// Polynomial 1 + c1 x + c2 x^2 of up to two roots (a conjugate pair or reals).
std::array<double, 3> Quadratic(const std::vector<Complex>& roots) {
    if (roots.empty()) return {1, 0, 0};
    if (roots.size() == 1) return {1, -roots[0].real(), 0};
    return {1, -(roots[0] + roots[1]).real(), (roots[0] * roots[1]).real()};
}

// The zeros for a section of these poles: a conjugate pair when one is
// left, else the nearest real zeros, as many as there are poles.
std::vector<Complex> ZerosFor(const std::vector<Complex>& poles, std::vector<Complex>* zPairs,
                              std::vector<double>* zReals) {
    std::vector<Complex> zeros;
    if (poles.size() == 2 && !zPairs->empty() && (!IsReal(poles[0]) || zReals->size() < 2)) {
        const Complex z = TakeNearest(zPairs, poles[0]);
        return {z, std::conj(z)};
    }
    for (const Complex& p : poles)
        if (!zReals->empty()) zeros.push_back(TakeNearest(zReals, p));
    return zeros;
}

// Pairs poles and zeros into sections, the poles nearest the unit circle
// (the sharpest resonance) first served with their nearest zeros and run
// last; the overall gain goes into the first section.
std::vector<Biquad> ToSections(const Zpk& f) {
    std::vector<Complex> pPairs, zPairs;
    std::vector<double> pReals, zReals;
    Split(f.p, &pPairs, &pReals);
    Split(f.z, &zPairs, &zReals);
    std::vector<std::vector<Complex>> poleGroups;
    for (const Complex& p : pPairs) poleGroups.push_back({p, std::conj(p)});
    std::sort(pReals.begin(), pReals.end(), [](double a, double b) { return std::fabs(a) > std::fabs(b); });
    for (std::size_t i = 0; i < pReals.size(); i += 2) {
        if (i + 1 < pReals.size()) poleGroups.push_back({pReals[i], pReals[i + 1]});
        else poleGroups.push_back({pReals[i]});
    }
    auto radius = [](const std::vector<Complex>& g) { return std::abs(g[0]); };
    std::stable_sort(poleGroups.begin(), poleGroups.end(),
                     [&](const auto& a, const auto& b) { return radius(a) > radius(b); });
    std::vector<Biquad> sections;
    for (const auto& poles : poleGroups) {
        const auto b = Quadratic(ZerosFor(poles, &zPairs, &zReals));
        const auto a = Quadratic(poles);
        sections.push_back({b[0], b[1], b[2], 1.0, a[1], a[2]});
    }
    std::reverse(sections.begin(), sections.end());
    if (!sections.empty())
        for (int i = 0; i < 3; ++i) sections[0][std::size_t(i)] *= f.k;
    return sections;
}

}  // namespace

std::string FilterChoiceProblem(const FilterChoice& s, double sampleRateHz) {
    if (!(s.cutoffHz > 0 && s.cutoffHz < sampleRateHz / 2))
        return texts::CutoffRefusedText(s.cutoffHz, sampleRateHz);
    if (s.kind == FilterKind::Gaussian) {
        if (s.pass != FilterPass::Low) return texts::kGaussianLowPassOnly;
        if (const double least = LeastGaussianCutoffHz(sampleRateHz); s.cutoffHz < least)
            return texts::GaussianCutoffRefusedText(s.cutoffHz, least);
        return {};
    }
    if (s.order < 1 || s.order > kMaxFilterOrder) return texts::OrderRefusedText(s.order, kMaxFilterOrder);
    const bool ripple = HasRipple(s.kind);
    const bool attenuation = HasAttenuation(s.kind);
    if (ripple && !(s.rippleDb > 0 && std::isfinite(s.rippleDb))) return texts::RippleRefusedText(s.rippleDb);
    const double floorDb = s.kind == FilterKind::Elliptic ? s.rippleDb : 0.0;
    if (attenuation && !(s.attenuationDb > floorDb && std::isfinite(s.attenuationDb)))
        return texts::AttenuationRefusedText(s.attenuationDb, floorDb);
    return {};
}

FilterDesign DesignFilter(const FilterChoice& choice, double sampleRateHz) {
    FilterDesign d;
    d.error = FilterChoiceProblem(choice, sampleRateHz);
    if (!d.error.empty()) return d;
    // Designed at a sampling rate of 2 (cut-off as a fraction of Nyquist),
    // pre-warped so that the digital cut-off lands where it was asked.
    if (choice.kind == FilterKind::Gaussian) {
        d.kernel = GaussianKernel(choice.cutoffHz, sampleRateHz);
        return d;
    }
    const double wn = choice.cutoffHz / (sampleRateHz / 2);
    const double warped = 4.0 * std::tan(kPi * wn / 2.0);
    d.sections = ToSections(Bilinear(Transform(Prototype(choice), choice.pass, warped), 2.0));
    return d;
}

double ResponseDb(const std::vector<Biquad>& sections, double frequencyHz, double sampleRateHz) {
    const Complex e1 = std::exp(Complex(0, -2.0 * kPi * frequencyHz / sampleRateHz));
    const Complex e2 = e1 * e1;
    Complex h = 1;
    for (const Biquad& s : sections) h *= (s[0] + s[1] * e1 + s[2] * e2) / (s[3] + s[4] * e1 + s[5] * e2);
    return 20.0 * std::log10(std::abs(h));
}

double DesignResponseDb(const FilterDesign& design, double frequencyHz, double sampleRateHz) {
    if (!design.kernel.empty()) return KernelResponseDb(design.kernel, frequencyHz, sampleRateHz);
    return ResponseDb(design.sections, frequencyHz, sampleRateHz);
}

std::string_view KindCaption(FilterKind kind) {
    switch (kind) {
        case FilterKind::Butterworth: return "Butterworth";
        case FilterKind::Chebyshev: return "Chebyshev";
        case FilterKind::InverseChebyshev: return "Inverse Chebyshev";
        case FilterKind::Elliptic: return "Elliptic";
        case FilterKind::Bessel: return "Bessel";
        case FilterKind::Gaussian: return "Gaussian";
    }
    return "";
}

std::string_view KindName(FilterKind kind) {
    switch (kind) {
        case FilterKind::Butterworth: return "butterworth";
        case FilterKind::Chebyshev: return "chebyshev";
        case FilterKind::InverseChebyshev: return "inverse-chebyshev";
        case FilterKind::Elliptic: return "elliptic";
        case FilterKind::Bessel: return "bessel";
        case FilterKind::Gaussian: return "gaussian";
    }
    return "";
}

bool ParseKind(std::string_view name, FilterKind* kind) {
    for (FilterKind k : kFilterKinds)
        if (KindName(k) == name) {
            *kind = k;
            return true;
        }
    return false;
}

std::string_view PassName(FilterPass pass) { return pass == FilterPass::Low ? "low" : "high"; }

bool ParsePass(std::string_view name, FilterPass* pass) {
    if (name != "low" && name != "high") return false;
    *pass = name == "low" ? FilterPass::Low : FilterPass::High;
    return true;
}

}  // namespace vess
