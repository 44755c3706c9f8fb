// Zeros of a polynomial with complex coefficients by the three-stage
// complex algorithm of Jenkins and Traub: Algorithm 419, "Zeros of a Complex
// Polynomial", Communications of the ACM 15 (1972), with the rotation
// constant of the remark by Withers (1974). Stage 1 builds H polynomials
// without shift, stage 2 uses a fixed shift on a circle of the Cauchy radius,
// stage 3 iterates with variable shifts until p(s) is within its rounding
// error. Coefficient indices in comments are 1-based, highest power first.
#include <cmath>

#include "core/libvelmora_settings.h"
#include "numerics/misc_numerical.h"

namespace velmora {

thread_local cpoly_global cpoly_vars;

namespace {

const double kEta = 2.220446049250313e-16;
const double kInfin = 1.7976931348623157e308;
const double kSmalno = 2.2250738585072014e-308;
const double kBase = 2.0;
const double kCosr = -0.0697564737441253;  // cos 94 degrees
const double kSinr = 0.9975640502598242;   // sin 94 degrees

}  // namespace

double cmod(double r, double i) {
    const double a = std::fabs(r);
    const double b = std::fabs(i);
    if (a < b) return b * std::sqrt(1.0 + (a / b) * (a / b));
    if (a > b) return a * std::sqrt(1.0 + (b / a) * (b / a));
    return a * 1.4142135623730951;
}

void cdivid(double ar, double ai, double br, double bi, double* cr, double* ci) {
    if (br == 0.0 && bi == 0.0) {
        *cr = kInfin;
        *ci = kInfin;
        return;
    }
    if (std::fabs(br) >= std::fabs(bi)) {
        const double r = bi / br;
        const double d = br + r * bi;
        *cr = (ar + ai * r) / d;
        *ci = (ai - ar * r) / d;
    } else {
        const double r = br / bi;
        const double d = bi + r * br;
        *cr = (ar * r + ai) / d;
        *ci = (ai * r - ar) / d;
    }
}

double scale(unsigned nn, std::vector<double> pt, double eta, double infin, double smalno,
             double base) {
    const double high = std::sqrt(infin);
    const double lo = smalno / eta;
    double max = 0.0;
    double min = infin;
    for (unsigned i = 0; i < nn; ++i) {
        const double x = pt[i];
        if (x > max) max = x;
        if (x != 0.0 && x < min) min = x;
    }
    if (min >= lo && max <= high) return 1.0;
    const double x = lo / min;
    double sc;
    if (x <= 1.0) {
        sc = 1.0 / (std::sqrt(max) * std::sqrt(min));
    } else {
        // This keeps the published test: up-scaling is dropped whenever the
        // largest coefficient would stay representable.
        sc = x;
        if (infin / sc > max) sc = 1.0;
    }
    // Truncation toward zero, kept in a double: an infinite or NaN exponent
    // (from coefficients that are themselves infinite or NaN) then gives 0,
    // infinity or NaN instead of an integer conversion out of range.
    const double l = std::trunc(std::log(sc) / std::log(base) + 0.5);
    return std::pow(base, l);
}

double cauchy(unsigned nn, std::vector<double>* pt, std::vector<double>* q) {
    std::vector<double>& p = *pt;
    std::vector<double>& qq = *q;
    const unsigned n = nn - 1;
    p[n] = -p[n];

    // Bound from the first and last coefficient, or the Newton step from 0.
    double x = std::exp((std::log(-p[n]) - std::log(p[0])) / n);
    if (p[n - 1] != 0.0) {
        const double xm = -p[n] / p[n - 1];
        if (xm < x) x = xm;
    }

    // Chop the interval (0, x) while f > 0; a NaN f ends the chopping too.
    for (;;) {
        const double xm = x * 0.1;
        double f = p[0];
        for (unsigned i = 1; i < nn; ++i) f = f * xm + p[i];
        if (!(f > 0.0)) break;
        x = xm;
    }

    // Newton iteration to the unique positive zero.
    double dx = x;
    while (std::fabs(dx / x) > 0.005) {
        qq[0] = p[0];
        for (unsigned i = 1; i < nn; ++i) qq[i] = qq[i - 1] * x + p[i];
        const double f = qq[n];
        double df = qq[0];
        for (unsigned i = 1; i < n; ++i) df = df * x + qq[i];
        dx = f / df;
        x -= dx;
    }
    return x;
}

void polyev(unsigned nn, double sr, double si, std::vector<double> pr, std::vector<double> pi,
            std::vector<double>* qr, std::vector<double>* qi, double* pvr, double* pvi) {
    double* qrr = qr->data();
    double* qii = qi->data();
    qrr[0] = pr[0];
    qii[0] = pi[0];
    double vr = qrr[0];
    double vi = qii[0];
    for (unsigned i = 1; i < nn; ++i) {
        const double t = vr * sr - vi * si + pr[i];
        vi = vr * si + vi * sr + pi[i];
        vr = t;
        qrr[i] = vr;
        qii[i] = vi;
    }
    *pvr = vr;
    *pvi = vi;
}

double errev(unsigned nn, std::vector<double> qr, std::vector<double> qi, double ms, double mp,
             double are, double mre) {
    double e = cmod(qr[0], qi[0]) * mre / (are + mre);
    for (unsigned i = 0; i < nn; ++i) e = e * ms + cmod(qr[i], qi[i]);
    return e * (are + mre) - mp * mre;
}

void noshft(unsigned l1) {
    cpoly_global& g = cpoly_vars;
    const unsigned n = g.nn - 1;
    const unsigned nm1 = n - 1;
    // h(i) = (nn - i) p(i) / n, the scaled derivative.
    for (unsigned i = 0; i < n; ++i) {
        const double xni = static_cast<double>(g.nn - i - 1);
        g.hr[i] = xni * g.pr[i] / n;
        g.hi[i] = xni * g.pi[i] / n;
    }
    for (unsigned jj = 1; jj <= l1; ++jj) {
        if (cmod(g.hr[nm1], g.hi[nm1]) > g.eta * 10.0 * cmod(g.pr[nm1], g.pi[nm1])) {
            double tr, ti;
            cdivid(-g.pr[g.nn - 1], -g.pi[g.nn - 1], g.hr[nm1], g.hi[nm1], &tr, &ti);
            g.tr = tr;
            g.ti = ti;
            for (unsigned j = nm1; j >= 1; --j) {
                const double t1 = g.hr[j - 1];
                const double t2 = g.hi[j - 1];
                g.hr[j] = tr * t1 - ti * t2 + g.pr[j];
                g.hi[j] = tr * t2 + ti * t1 + g.pi[j];
            }
            g.hr[0] = g.pr[0];
            g.hi[0] = g.pi[0];
        } else {
            // The constant term of p is essentially zero: shift h down.
            for (unsigned j = nm1; j >= 1; --j) {
                g.hr[j] = g.hr[j - 1];
                g.hi[j] = g.hi[j - 1];
            }
            g.hr[0] = 0.0;
            g.hi[0] = 0.0;
        }
    }
}

void calct(bool* b) {
    cpoly_global& g = cpoly_vars;
    const unsigned n = g.nn - 1;
    double hvr, hvi;
    polyev(n, g.sr, g.si, g.hr, g.hi, &g.qhr, &g.qhi, &hvr, &hvi);
    *b = cmod(hvr, hvi) <= g.are * 10.0 * cmod(g.hr[n - 1], g.hi[n - 1]);
    if (!*b) {
        cdivid(-g.pvr, -g.pvi, hvr, hvi, &g.tr, &g.ti);
    } else {
        g.tr = 0.0;
        g.ti = 0.0;
    }
}

void nexth(bool b) {
    cpoly_global& g = cpoly_vars;
    const unsigned n = g.nn - 1;
    if (!b) {
        for (unsigned j = 1; j < n; ++j) {
            const double t1 = g.qhr[j - 1];
            const double t2 = g.qhi[j - 1];
            g.hr[j] = g.tr * t1 - g.ti * t2 + g.qpr[j];
            g.hi[j] = g.tr * t2 + g.ti * t1 + g.qpi[j];
        }
        g.hr[0] = g.qpr[0];
        g.hi[0] = g.qpi[0];
    } else {
        // h(s) is essentially zero: h moves one place.
        for (unsigned j = 1; j < n; ++j) {
            g.hr[j] = g.qhr[j - 1];
            g.hi[j] = g.qhi[j - 1];
        }
        g.hr[0] = 0.0;
        g.hi[0] = 0.0;
    }
}

void vrshft(unsigned l3, double* zr, double* zi, bool* conv) {
    cpoly_global& g = cpoly_vars;
    *conv = false;
    bool b = false;
    g.sr = *zr;
    g.si = *zi;
    // Before a step has been measured there is no sign of a stall, so the
    // cluster test can't fire while relstp keeps this start value.
    double relstp = 1.0;
    double omp = 0.0;
    for (unsigned i = 1; i <= l3; ++i) {
        polyev(g.nn, g.sr, g.si, g.pr, g.pi, &g.qpr, &g.qpi, &g.pvr, &g.pvi);
        const double mp = cmod(g.pvr, g.pvi);
        const double ms = cmod(g.sr, g.si);
        if (mp <= 20.0 * errev(g.nn, g.qpr, g.qpi, ms, mp, g.are, g.mre)) {
            *conv = true;
            *zr = g.sr;
            *zi = g.si;
            return;
        }
        if (i == 1) {
            omp = mp;
        } else if (!b && mp >= omp && relstp < 0.05) {
            // The iteration has stalled, probably near a cluster of zeros:
            // a small push of s and five fixed-shift steps, then go on.
            const double tp = relstp > g.eta ? relstp : g.eta;
            b = true;
            const double r1 = std::sqrt(tp);
            const double r2 = g.sr * (1.0 + r1) - g.si * r1;
            g.si = g.sr * r1 + g.si * (1.0 + r1);
            g.sr = r2;
            polyev(g.nn, g.sr, g.si, g.pr, g.pi, &g.qpr, &g.qpi, &g.pvr, &g.pvi);
            for (unsigned j = 1; j <= 5; ++j) {
                bool bb;
                calct(&bb);
                nexth(bb);
            }
            omp = g.infin;
        } else {
            // p(s) grew by more than a factor of 10: the iteration diverges.
            if (0.1 * mp > omp) return;
            omp = mp;
        }
        bool bb;
        calct(&bb);
        nexth(bb);
        calct(&bb);
        if (!bb) {
            relstp = cmod(g.tr, g.ti) / cmod(g.sr, g.si);
            g.sr += g.tr;
            g.si += g.ti;
        }
    }
}

void fxshft(unsigned l2, double* zr, double* zi, bool* conv) {
    cpoly_global& g = cpoly_vars;
    const unsigned n = g.nn - 1;
    polyev(g.nn, g.sr, g.si, g.pr, g.pi, &g.qpr, &g.qpi, &g.pvr, &g.pvi);
    bool test = true;
    bool pasd = false;
    bool b;
    calct(&b);
    for (unsigned j = 1; j <= l2; ++j) {
        const double otr = g.tr;
        const double oti = g.ti;
        nexth(b);
        calct(&b);
        *zr = g.sr + g.tr;
        *zi = g.si + g.ti;
        // Convergence is tested unless h(s) vanished, stage 3 has failed once
        // or this is the last H polynomial.
        if (b || !test || j == l2) continue;
        if (cmod(g.tr - otr, g.ti - oti) >= 0.5 * cmod(*zr, *zi)) {
            pasd = false;
        } else if (!pasd) {
            pasd = true;
        } else {
            // The weak test has passed twice in a row: try the third stage
            // with h and s saved for a return to this one.
            for (unsigned i = 0; i < n; ++i) {
                g.shr[i] = g.hr[i];
                g.shi[i] = g.hi[i];
            }
            const double svsr = g.sr;
            const double svsi = g.si;
            vrshft(10, zr, zi, conv);
            if (*conv) return;
            test = false;
            for (unsigned i = 0; i < n; ++i) {
                g.hr[i] = g.shr[i];
                g.hi[i] = g.shi[i];
            }
            g.sr = svsr;
            g.si = svsi;
            polyev(g.nn, g.sr, g.si, g.pr, g.pi, &g.qpr, &g.qpi, &g.pvr, &g.pvi);
            calct(&b);
        }
    }
    // A last try of the third stage with the final H polynomial.
    vrshft(10, zr, zi, conv);
}

void cpoly(std::vector<double> opr, std::vector<double> opi, std::vector<double>* zeror,
           std::vector<double>* zeroi) {
    // A single coefficient has no zeros to find; it is refused rather than
    // answered with an empty list, since no caller means to ask for it.
    if (opr.size() < 2)
        throw Exception("misc_numerical", __LINE__, "cpoly needs a polynomial of degree 1 or more.");
    if (opi.size() != opr.size())
        throw Exception("misc_numerical", __LINE__,
                        "cpoly needs real and imaginary parts of equal length.");

    cpoly_global& g = cpoly_vars;
    const unsigned size = static_cast<unsigned>(opr.size());
    const unsigned degree = size - 1;
    std::vector<double>* work[] = {&g.pr,  &g.pi,  &g.hr,  &g.hi,  &g.qpr,
                                   &g.qpi, &g.qhr, &g.qhi, &g.shr, &g.shi};
    for (std::vector<double>* v : work) v->assign(size, 0.0);
    zeror->assign(degree, 0.0);
    zeroi->assign(degree, 0.0);
    g.sr = g.si = g.tr = g.ti = g.pvr = g.pvi = 0.0;
    g.eta = kEta;
    g.infin = kInfin;
    g.are = g.eta;
    g.mre = 2.8284271247461903 * g.eta;
    double xx = 0.7071067811865475;
    double yy = -xx;
    g.nn = size;

    // The zero slots are already sized and cleared when this is refused.
    if (opr[0] == 0.0 && opi[0] == 0.0)
        throw Exception("misc_numerical", __LINE__, "Leading coefficient must not be zero.");

    // Zeros at the origin come first, exactly 0.
    while (opr[g.nn - 1] == 0.0 && opi[g.nn - 1] == 0.0) {
        const unsigned idegree = degree - g.nn + 1;
        (*zeror)[idegree] = 0.0;
        (*zeroi)[idegree] = 0.0;
        --g.nn;
    }

    for (unsigned i = 0; i < size; ++i) {
        g.pr[i] = opr[i];
        g.pi[i] = opi[i];
    }
    for (unsigned i = 0; i < g.nn; ++i) g.shr[i] = cmod(g.pr[i], g.pi[i]);
    // A power of the base keeps the coefficients clear of underflow and
    // overflow and leaves the zeros as they are.
    const double bnd0 = scale(g.nn, g.shr, g.eta, g.infin, kSmalno, kBase);
    if (bnd0 != 1.0) {
        for (unsigned i = 0; i < g.nn; ++i) {
            g.pr[i] *= bnd0;
            g.pi[i] *= bnd0;
        }
    }

    while (g.nn > 1) {
        for (unsigned i = 0; i < g.nn; ++i) g.shr[i] = cmod(g.pr[i], g.pi[i]);
        const double bnd = cauchy(g.nn, &g.shr, &g.shi);

        bool conv = false;
        double zr = 0.0, zi = 0.0;
        for (unsigned cnt1 = 1; cnt1 <= 2 && !conv; ++cnt1) {
            noshft(5);
            for (unsigned cnt2 = 1; cnt2 <= 9; ++cnt2) {
                // Each shift turns the direction by 94 degrees.
                const double xxx = kCosr * xx - kSinr * yy;
                yy = kSinr * xx + kCosr * yy;
                xx = xxx;
                g.sr = bnd * xx;
                g.si = bnd * yy;
                fxshft(10 * cnt2, &zr, &zi, &conv);
                if (conv) break;
            }
        }
        if (!conv) throw Exception("misc_numerical", __LINE__, "cpoly failed.");

        const unsigned idegree = degree - g.nn + 1;
        (*zeror)[idegree] = zr;
        (*zeroi)[idegree] = zi;
        --g.nn;
        for (unsigned i = 0; i < g.nn; ++i) {
            g.pr[i] = g.qpr[i];
            g.pi[i] = g.qpi[i];
        }
    }

    // The last linear factor is still in place in p(1), p(2): its zero is
    // taken from it directly, which also gives the 0 of a polynomial whose
    // other zeros all lie at the origin.
    cdivid(-g.pr[1], -g.pi[1], g.pr[0], g.pi[0], &(*zeror)[degree - 1], &(*zeroi)[degree - 1]);
}

}  // namespace velmora
