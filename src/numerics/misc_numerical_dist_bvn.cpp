// Normal and bivariate normal probabilities after Alan Genz:
// - mvphi: Schonfelder's Chebyshev expansion of the error function
//   (Mathematics of Computation 32, 1978), summed by Clenshaw's recurrence;
// - mvbvu: the method of Drezner and Wesolowsky (J. Statist. Comput. Simul.
//   35, 1989) in Genz's double-precision form, with Gauss-Legendre rules of
//   6, 12 and 20 points and an expansion for |r| near 1;
// - mvbvn: rectangles as sums of upper probabilities.
#include <cmath>

#include "core/libvelmora_settings.h"
#include "numerics/misc_numerical_dist.h"

namespace velmora {

namespace {

// The published table of 44 coefficients of the expansion. The sum uses the
// first 25 (index 24 down to 0); the later ones are below the double
// precision of the sum.
const int kMvphiUsed = 24;
const double kMvphiA[44] = {
    6.10143081923200417926465815756e-1, -4.34841272712577471828182820888e-1,
    1.76351193643605501125840298123e-1, -6.0710795609249414860051215825e-2,
    1.7712068995694114486147141191e-2,  -4.321119385567293818599864968e-3,
    8.54216676887098678819832055e-4,    -1.27155090609162742628893940e-4,
    1.1248167243671189468847072e-5,     3.13063885421820972630152e-7,
    -2.70988068537762022009086e-7,      3.0737622701407688440959e-8,
    2.515620384817622937314e-9,         -1.028929921320319127590e-9,
    2.9944052119949939363e-11,          2.6051789687266936290e-11,
    -2.634839924171969386e-12,          -6.43404509890636443e-13,
    1.12457401801663447e-13,            1.7281533389986098e-14,
    -4.264101694942375e-15,             -5.45371977880191e-16,
    1.58697607761671e-16,               2.0899837844334e-17,
    -5.900526869409e-18,                -9.41893387554e-19,
    2.14977356470e-19,                  4.6660985008e-20,
    -7.243011862e-21,                   -2.387966824e-21,
    1.91177535e-22,                     1.20482568e-22,
    -6.72377e-25,                       -5.747997e-24,
    -4.28493e-25,                       2.44856e-25,
    4.3793e-26,                         -8.151e-27,
    -3.089e-27,                         9.3e-29,
    1.74e-28,                           1.6e-29,
    -8.0e-30,                           -2.0e-30};

// Gauss-Legendre half tables on [-1, 1]: the negative abscissae of the 6-,
// 12- and 20-point rules with their weights; the rules are symmetric.
const double kGlX[3][10] = {
    {-0.9324695142031522, -0.6612093864662647, -0.2386191860831970},
    {-0.9815606342467191, -0.9041172563704750, -0.7699026741943050, -0.5873179542866171,
     -0.3678314989981802, -0.1252334085114692},
    {-0.9931285991850949, -0.9639719272779138, -0.9122344282513259, -0.8391169718222188,
     -0.7463319064601508, -0.6360536807265150, -0.5108670019508271, -0.3737060887154196,
     -0.2277858511416451, -0.07652652113349733}};
const double kGlW[3][10] = {
    {0.1713244923791705, 0.3607615730481384, 0.4679139345726904},
    {0.04717533638651177, 0.1069393259953183, 0.1600783285433464, 0.2031674267230659,
     0.2334925365383547, 0.2491470458134029},
    {0.01761400713915212, 0.04060142980038694, 0.06267204833410906, 0.08327674157670475,
     0.1019301198172404, 0.1181945319615184, 0.1316886384491766, 0.1420961093183821,
     0.1491729864726037, 0.1527533871307259}};

}  // namespace

double mvphi(double z) {
    const double xa = std::fabs(z) / 1.414213562373095048801688724209;
    double p;
    if (xa > 100.0) {
        p = 0.0;
    } else {
        const double t = (8.0 * xa - 30.0) / (4.0 * xa + 15.0);
        double bm = 0.0;
        double b = 0.0;
        double bp = 0.0;
        for (int i = kMvphiUsed; i >= 0; --i) {
            bp = b;
            b = bm;
            bm = t * b - bp + kMvphiA[i];
        }
        p = std::exp(-xa * xa) * (bm - bp) / 4.0;
    }
    return z > 0.0 ? 1.0 - p : p;
}

double mvbvu(double sh, double sk, double r) {
    const double twopi = 6.283185307179586;
    const double ar = std::fabs(r);
    int ng;
    int lg;
    if (ar < 0.3) {
        ng = 0;
        lg = 3;
    } else if (ar < 0.75) {
        ng = 1;
        lg = 6;
    } else {
        ng = 2;
        lg = 10;
    }
    const double* x = kGlX[ng];
    const double* w = kGlW[ng];

    double h = sh;
    double k = sk;
    double hk = h * k;
    double bvn = 0.0;
    if (ar < 0.925) {
        const double hs = (h * h + k * k) / 2.0;
        const double asr = std::asin(r);
        for (int i = 0; i < lg; ++i) {
            double sn = std::sin(asr * (x[i] + 1.0) / 2.0);
            bvn += w[i] * std::exp((sn * hk - hs) / (1.0 - sn * sn));
            sn = std::sin(asr * (1.0 - x[i]) / 2.0);
            bvn += w[i] * std::exp((sn * hk - hs) / (1.0 - sn * sn));
        }
        return bvn * asr / (2.0 * twopi) + mvphi(-h) * mvphi(-k);
    }

    if (r < 0.0) {
        k = -k;
        hk = -hk;
    }
    // At |r| = 1 the pair lies on a line and only the closing terms remain.
    if (ar < 1.0) {
        const double as = (1.0 - r) * (1.0 + r);
        double a = std::sqrt(as);
        const double bs = (h - k) * (h - k);
        const double c = (4.0 - hk) / 8.0;
        const double d = (12.0 - hk) / 16.0;
        bvn = a * std::exp(-(bs / as + hk) / 2.0) *
              (1.0 - c * (bs - as) * (1.0 - d * bs / 5.0) / 3.0 + c * d * as * as / 5.0);
        if (hk > -160.0) {
            const double b = std::sqrt(bs);
            bvn -= std::exp(-hk / 2.0) * std::sqrt(twopi) * mvphi(-b / a) * b *
                   (1.0 - c * bs * (1.0 - d * bs / 5.0) / 3.0);
        }
        a /= 2.0;
        for (int i = 0; i < lg; ++i) {
            double xs = (a * (x[i] + 1.0)) * (a * (x[i] + 1.0));
            double rs = std::sqrt(1.0 - xs);
            bvn += a * w[i] *
                   (std::exp(-bs / (2.0 * xs) - hk / (1.0 + rs)) / rs -
                    std::exp(-(bs / xs + hk) / 2.0) * (1.0 + c * xs * (1.0 + d * xs)));
            xs = as * ((1.0 - x[i]) * (1.0 - x[i])) / 4.0;
            rs = std::sqrt(1.0 - xs);
            bvn += a * w[i] * std::exp(-(bs / xs + hk) / 2.0) *
                   (std::exp(-hk * (1.0 - rs) / (2.0 * (1.0 + rs))) / rs -
                    (1.0 + c * xs * (1.0 + d * xs)));
        }
        bvn = -bvn / twopi;
    }
    if (r > 0.0) bvn += mvphi(-(h > k ? h : k));
    if (r < 0.0) {
        const double diff = mvphi(-h) - mvphi(-k);
        bvn = -bvn + (diff > 0.0 ? diff : 0.0);
    }
    return bvn;
}

double mvbvn(std::vector<double> lower, std::vector<double> upper, std::vector<int> infin,
             double correl) {
    if (lower.size() < 2 || upper.size() < 2 || infin.size() < 2)
        throw Exception("misc_numerical_dist", __LINE__,
                        "mvbvn needs two limits and two limit types.");
    return mvbvn(lower.data(), upper.data(), infin.data(), correl);
}

double mvbvn(const double lower[2], const double upper[2], const int infin[2], double correl) {
    const double l1 = lower[0], l2 = lower[1];
    const double u1 = upper[0], u2 = upper[1];
    const int i1 = infin[0], i2 = infin[1];
    const double rho = correl;
    // The order of the cases is part of the contract.
    if (i1 == 2 && i2 == 2)
        return mvbvu(l1, l2, rho) - mvbvu(u1, l2, rho) - mvbvu(l1, u2, rho) + mvbvu(u1, u2, rho);
    if (i1 == 2 && i2 == 1) return mvbvu(l1, l2, rho) - mvbvu(u1, l2, rho);
    if (i1 == 1 && i2 == 2) return mvbvu(l1, l2, rho) - mvbvu(l1, u2, rho);
    if (i1 == 2 && i2 == 0) return mvbvu(-u1, -u2, rho) - mvbvu(-l1, -u2, rho);
    if (i1 == 0 && i2 == 2) return mvbvu(-u1, -u2, rho) - mvbvu(-u1, -l2, rho);
    if (i1 == 1 && i2 == 0) return mvbvu(l1, -u2, -rho);
    if (i1 == 0 && i2 == 1) return mvbvu(-u1, l2, -rho);
    if (i1 == 1 && i2 == 1) return mvbvu(l1, l2, rho);
    if (i1 == 0 && i2 == 0) return mvbvu(-u1, -u2, rho);
    return 1.0;
}

}  // namespace velmora
