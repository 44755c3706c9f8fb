// General numerical tools: the logarithm of the gamma function, the zeros of
// a complex polynomial by the three-stage method of Jenkins and Traub, and
// Romberg integration.
#ifndef VELMORA_NUMERICS_MISC_NUMERICAL_H
#define VELMORA_NUMERICS_MISC_NUMERICAL_H

#include <cmath>
#include <vector>

namespace velmora {

namespace as {

// log Gamma(x) for x > 0 by Algorithm 291 (Pike and Hill 1966): the argument
// is raised to 7 or more and the Stirling series is cut after its x^-7 term,
// which leaves an absolute error of about 1e-11. x <= 0 throws.
double loggamma(double x);

}  // namespace as

// Work area of the polynomial zero finder. The routines of the family share
// it instead of passing the polynomials around; each thread has its own, so
// searches on several threads never meet, and one search runs at a time on a
// thread. Coefficients are stored highest power first.
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

extern thread_local cpoly_global cpoly_vars;

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

// Integral of f over [a, b] by Romberg's method: the trapezoidal rule with
// the step halved level by level and Richardson extrapolation over a
// triangular table of 16 x 16 values. f is any callable of one double and
// carries its own context, so nested and concurrent integrals need no shared
// state. Levels are added until the relative change of the diagonal drops
// below tol, at most 15 of them (2^15 + 1 evaluations). The change is
// relative with no floor: a diagonal of exactly 0 gives no number, so the
// test never fires then and all levels run; a diagonal that is no number
// ends the levels, as the result will be none. The table lives on the stack.
template <class F>
double RombergIteration(double a, double b, F&& f, double tol) {
    const unsigned maxLevel = 15;
    double R[maxLevel + 1][maxLevel + 1];
    const double w = b - a;
    // f(a) is evaluated before f(b), so an integrand that counts or records
    // its calls sees them in a fixed order.
    const double fa = f(a);
    const double fb = f(b);
    R[0][0] = (fa + fb) * w / 2.0;

    unsigned n = 1;
    for (;; ++n) {
        const double twoN = std::ldexp(1.0, static_cast<int>(n));
        const double h = w / twoN;
        const unsigned long points = 1UL << (n - 1);

        // The new points lie between the old ones, visited from b downwards.
        double sum = 0.0;
        double x = b - h;
        for (unsigned long i = 0; i < points; ++i) {
            sum += f(x);
            x -= 2.0 * h;
        }
        R[n][0] = w * sum / twoN + R[n - 1][0] / 2.0;

        double fourM = 1.0;
        for (unsigned m = 1; m <= n; ++m) {
            fourM *= 4.0;
            R[n][m] = (fourM * R[n][m - 1] - R[n - 1][m - 1]) / (fourM - 1.0);
        }
        if (std::fabs((R[n][n] - R[n - 1][n - 1]) / R[n][n]) < tol || n == maxLevel) break;
        // Every later diagonal is formed from this one: once it is no number,
        // so is the result, and the remaining levels would only cost time.
        if (std::isnan(R[n][n])) break;
    }
    return R[n][n];
}

// The same with an integrand that receives the variable and a copy of params.
double RombergIteration(double a, double b, double (*f)(double, std::vector<double>),
                        std::vector<double> params, double tol);

}  // namespace velmora

#endif
