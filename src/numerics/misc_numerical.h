// General numerical tools: the logarithm of the gamma function, the zeros of
// a complex polynomial by the three-stage method of Jenkins and Traub, and
// Romberg integration.
#ifndef VELMORA_NUMERICS_MISC_NUMERICAL_H
#define VELMORA_NUMERICS_MISC_NUMERICAL_H

#include <vector>

namespace velmora {

namespace as {

// log Gamma(x) for x > 0 by Algorithm 291 (Pike and Hill 1966): the argument
// is raised to 7 or more and the Stirling series is cut after its x^-7 term,
// which leaves an absolute error of about 1e-11. x <= 0 throws.
double loggamma(double x);

}  // namespace as

// Work area of the polynomial zero finder. The routines of the family share
// it instead of passing the polynomials around, so only one zero search can
// run at a time in a process. Coefficients are stored highest power first.
struct cpoly_global {
    std::vector<double> pr, pi;    // working polynomial p
    std::vector<double> hr, hi;    // H polynomial
    std::vector<double> qpr, qpi;  // partial sums of p at the current shift
    std::vector<double> qhr, qhi;  // partial sums of h at the current shift
    std::vector<double> shr, shi;  // scratch; the saved H during the third stage
    double sr, si;                 // current shift s
    double tr, ti;                 // current correction t
    double pvr, pvi;               // p(s)
    double are;                    // error bound on complex addition
    double mre;                    // error bound on complex multiplication
    double eta;                    // smallest relative spacing
    double infin;                  // largest number
    unsigned nn;                   // degree of the working polynomial plus 1
};

extern cpoly_global cpoly_vars;

// All zeros of the polynomial with real parts opr and imaginary parts opi,
// highest power first, by Algorithm 419 (Jenkins and Traub 1972). The zeros
// come in the order found, zeros at the origin first. Throws for fewer than
// two coefficients, for parts of different lengths, for a zero leading
// coefficient and when no shift converges ("cpoly failed.").
void cpoly(std::vector<double> opr, std::vector<double> opi, std::vector<double>* zeror,
           std::vector<double>* zeroi);

// Modulus of r + i*i without overflow.
double cmod(double r, double i);

// Complex quotient (ar + i ai)/(br + i bi); a zero divisor gives the largest
// double in both parts.
void cdivid(double ar, double ai, double br, double bi, double* cr, double* ci);

// Power of base by which the coefficients with moduli pt are multiplied so
// that neither underflow nor overflow spoils the search.
double scale(unsigned nn, std::vector<double> pt, double eta, double infin, double smalno,
             double base);

// Lower bound on the moduli of the zeros from the coefficient moduli in pt;
// the last modulus is left negated in pt, q is scratch.
double cauchy(unsigned nn, std::vector<double>* pt, std::vector<double>* q);

// First stage: l1 H polynomials without shift.
void noshft(unsigned l1);

// Horner evaluation of p at s, keeping the partial sums in q; p(s) goes to pv.
void polyev(unsigned nn, double sr, double si, std::vector<double> pr, std::vector<double> pi,
            std::vector<double>* qr, std::vector<double>* qi, double* pvr, double* pvi);

// t = -p(s)/h(s); b tells that h(s) is essentially zero (then t = 0).
void calct(bool* b);

// Next H polynomial; b as reported by calct.
void nexth(bool b);

// Bound on the rounding error of polyev with partial sums q, |s| = ms and
// |p(s)| = mp.
double errev(unsigned nn, std::vector<double> qr, std::vector<double> qi, double ms, double mp,
             double are, double mre);

// Second stage: l2 fixed-shift steps, going on to the third stage when the
// shifts settle. z receives the zero on convergence.
void fxshft(unsigned l2, double* zr, double* zi, bool* conv);

// Third stage: at most l3 variable-shift steps, starting at z.
void vrshft(unsigned l3, double* zr, double* zi, bool* conv);

// Integral of f over [a, b] by Romberg's method. f receives the variable and
// a copy of params. Levels are added until the relative change of the
// diagonal drops below tol, at most 15 of them (2^15 + 1 evaluations); a
// diagonal that is no number ends the levels, as the result will be none.
double RombergIteration(double a, double b, double (*f)(double, std::vector<double>),
                        std::vector<double> params, double tol);

}  // namespace velmora

#endif
