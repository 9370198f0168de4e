// Log-gamma, log-factorials, the incomplete gamma function with the chi-square tail, and
// a root finder.
#pragma once

namespace mnd {

// Natural logarithm in double precision of an extended number: the argument is rounded to
// double and the double logarithm widened. gammlnl and factlnl rest on it, which fixes
// their precision. Call it as mnd::logl: the C library has a logl that differs.
long double logl(long double x);

// Logarithm of the gamma function of x, x above 0. Relative error below 2e-10.
// Source:   Lanczos 1964, SIAM J. Numer. Anal. B 1:86-96, with six terms
double gammln(double x);

// The same series in extended precision, with the logarithm of mnd::logl.
long double gammlnl(long double x);

// Logarithm of n!. Values up to n = 100 are kept. A negative n reports error 105 and gives 0.
double factln(int n);

// Logarithm of n! in extended precision, by gammlnl. Values up to n = 100 are kept. A
// negative n says so on standard output, not to the error channel, and gives 0.
long double factlnl(int n);

// Logarithm of n!, as the plain sum of logarithms, whatever its name suggests.
//   n       a whole number; (int)(n + 0.1) is taken, and 0 returned when that is below 2
double factorial(const float& n);

// Incomplete gamma function P(a, x) by its series, for x below a + 1.
//   gamser  written: P(a, x); 0 when x is not above 0
//   gln     written: logarithm of gamma(a)
// Errors:   105 when x is negative, and when 100 terms do not settle; gamser then
//           stays as it was
void gser(float* gamser, float a, float x, float* gln);

// Complement Q(a, x) = 1 - P(a, x) of the incomplete gamma function by its continued
// fraction, for x of a + 1 and more.
//   gammcf  written, always: Q(a, x)
//   gln     written: logarithm of gamma(a)
// Errors:   105 when 100 rounds do not settle; gammcf is then the value reached
// Source:   Lentz 1976, Applied Optics 15:668-671, in the modified form
void gcf(float* gammcf, float a, float x, float* gln);

// Probability that a chi-square variable with df degrees of freedom exceeds chi2.
// Errors:   105 and -1.0 when chi2 is negative; -1.0 alone, on purpose, when df is 0 or less.
//           Where the series of gser does not settle (df in the hundreds) the result is 1.
float Prob_of_chi_sq(float df, float chi2);

// Root of func between x1 and x2, in single precision, to a tolerance tol on the abscissa.
// Errors:   105 when func has one sign at both ends (the search goes on all the same), and
//           when 100 steps do not settle; the best abscissa so far is returned
// Source:   Brent 1973, Algorithms for Minimization without Derivatives, chapter 4
float zbrent(float (*func)(float), float x1, float x2, float tol);

}  // namespace mnd
