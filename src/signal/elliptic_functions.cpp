#include "signal/elliptic_functions.h"

#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace vess::elliptic {

namespace {

constexpr double kPi = std::numbers::pi;

double Agm(double a, double b) {
    for (int i = 0; i < 64 && std::fabs(a - b) > 1e-16 * a; ++i) {
        const double next = 0.5 * (a + b);
        b = std::sqrt(a * b);
        a = next;
    }
    return 0.5 * (a + b);
}

// (1 - k^2)^(1/2) written so that it stays exact for small k.
template <typename T>
T Complement(T k) {
    return std::sqrt((T(1) - k) * (T(1) + k));
}

}  // namespace

double K(double m) { return kPi / (2.0 * Agm(1.0, std::sqrt(1.0 - m))); }

double KComplement(double p) { return kPi / (2.0 * Agm(1.0, std::sqrt(p))); }

Jacobi Functions(double u, double m) {
    Jacobi j;
    if (m < 1e-9) {
        const double t = std::sin(u), b = std::cos(u);
        const double ai = 0.25 * m * (u - t * b);
        j.sn = t - ai * b;
        j.cn = b + ai * t;
        j.dn = 1.0 - 0.5 * m * t * t;
        return j;
    }
    if (m >= 0.9999999999) {
        double ai = 0.25 * (1.0 - m);
        const double b = std::cosh(u), t = std::tanh(u), phi = 1.0 / b;
        const double twon = b * std::sinh(u);
        j.sn = t + ai * (twon - u) / (b * b);
        ai *= t * phi;
        j.cn = phi - ai * (twon - u);
        j.dn = phi + ai * (twon + u);
        return j;
    }
    // Arithmetic-geometric mean sequence, then back down to the amplitude.
    std::array<double, 10> a{}, c{};
    a[0] = 1.0;
    c[0] = std::sqrt(m);
    double b = std::sqrt(1.0 - m), twon = 1.0;
    int i = 0;
    while (std::fabs(c[std::size_t(i)] / a[std::size_t(i)]) > 1.11e-16 && i < 8) {
        const double ai = a[std::size_t(i)];
        ++i;
        c[std::size_t(i)] = 0.5 * (ai - b);
        const double t = std::sqrt(ai * b);
        a[std::size_t(i)] = 0.5 * (ai + b);
        b = t;
        twon *= 2.0;
    }
    double phi = twon * a[std::size_t(i)] * u, previous = phi;
    for (; i > 0; --i) {
        const double t = c[std::size_t(i)] * std::sin(phi) / a[std::size_t(i)];
        previous = phi;
        phi = 0.5 * (std::asin(t) + phi);
    }
    j.sn = std::sin(phi);
    j.cn = std::cos(phi);
    j.dn = j.cn / std::cos(phi - previous);
    return j;
}

double DegreeParameter(int n, double m1) {
    const double q1 = std::exp(-kPi * KComplement(m1) / K(m1));
    const double q = std::pow(q1, 1.0 / n);
    double num = 0, den = 1;
    for (int k = 0; k <= 7; ++k) num += std::pow(q, k * (k + 1));
    for (int k = 1; k <= 8; ++k) den += 2.0 * std::pow(q, k * k);
    return 16.0 * q * std::pow(num / den, 4);
}

std::complex<double> ArcSn(std::complex<double> w, double m) {
    const double k = std::sqrt(m);
    if (k >= 1.0) return std::atanh(w);
    std::vector<double> ks{k};
    while (ks.back() != 0.0 && ks.size() < 12) {
        const double kp = Complement(ks.back());
        ks.push_back((1.0 - kp) / (1.0 + kp));
    }
    double capK = kPi / 2;
    for (std::size_t i = 1; i < ks.size(); ++i) capK *= 1.0 + ks[i];
    for (std::size_t i = 0; i + 1 < ks.size(); ++i)
        w = 2.0 * w / ((1.0 + ks[i + 1]) * (1.0 + Complement(ks[i] * w)));
    return capK * (2.0 / kPi) * std::asin(w);
}

double ArcSc1(double w, double m) { return ArcSn(std::complex<double>(0.0, w), m).imag(); }

}  // namespace vess::elliptic
