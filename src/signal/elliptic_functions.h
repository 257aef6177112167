// Complete elliptic integrals and Jacobi elliptic functions in double
// precision, as the elliptic filter prototype needs them. m is the parameter
// (the modulus squared), 0 <= m <= 1.
#pragma once

#include <complex>

namespace vess::elliptic {

// K(m), by the arithmetic-geometric mean.
double K(double m);
// K(1 - p), accurate for p close to 0.
double KComplement(double p);

struct Jacobi {
    double sn = 0, cn = 1, dn = 1;
};
// sn, cn and dn of u, by descending Landen transformations.
Jacobi Functions(double u, double m);

// The parameter m of an order-n elliptic response whose selectivity is set
// by m1 (the degree equation n K(m)/K'(m) = K(m1)/K'(m1), solved with nomes).
double DegreeParameter(int n, double m1);

// z with sn(z, m) = w, for complex w (Landen recursion).
std::complex<double> ArcSn(std::complex<double> w, double m);
// Real z with sc(z, 1 - m) = w.
double ArcSc1(double w, double m);

}  // namespace vess::elliptic
