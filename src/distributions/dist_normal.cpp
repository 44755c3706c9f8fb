// The normal distribution. The density is closed form and the quantile is
// Algorithm AS 241 (Wichura 1988, PPND16); the distribution function is a
// lookup in the classic four-decimal table of Phi at steps of 0.01 in z, so
// it and everything built on it move in steps of 0.01 and four decimals.
#include "distributions/dist_normal.h"

#include <algorithm>

#include <cmath>
#include <limits>

#include "core/libvelmora_settings.h"
#include "distributions/dist_read.h"
#include "numerics/misc_math.h"
#include "numerics/misc_numerical_dist.h"
#include "numerics/random.h"
#include "distributions/dist_exact.h"

namespace velmora {

using namespace distread;

namespace {

// Phi(i/100) rounded to four decimals, i = 0..349; one row per tenth of z.
const double standardNormalTable[350] = {
    0.5000, 0.5040, 0.5080, 0.5120, 0.5160, 0.5199, 0.5239, 0.5279, 0.5319, 0.5359,  // 0.0
    0.5398, 0.5438, 0.5478, 0.5517, 0.5557, 0.5596, 0.5636, 0.5675, 0.5714, 0.5753,  // 0.1
    0.5793, 0.5832, 0.5871, 0.5910, 0.5948, 0.5987, 0.6026, 0.6064, 0.6103, 0.6141,  // 0.2
    0.6179, 0.6217, 0.6255, 0.6293, 0.6331, 0.6368, 0.6406, 0.6443, 0.6480, 0.6517,  // 0.3
    0.6554, 0.6591, 0.6628, 0.6664, 0.6700, 0.6736, 0.6772, 0.6808, 0.6844, 0.6879,  // 0.4
    0.6915, 0.6950, 0.6985, 0.7019, 0.7054, 0.7088, 0.7123, 0.7157, 0.7190, 0.7224,  // 0.5
    0.7257, 0.7291, 0.7324, 0.7357, 0.7389, 0.7422, 0.7454, 0.7486, 0.7517, 0.7549,  // 0.6
    0.7580, 0.7611, 0.7642, 0.7673, 0.7704, 0.7734, 0.7764, 0.7794, 0.7823, 0.7852,  // 0.7
    0.7881, 0.7910, 0.7939, 0.7967, 0.7995, 0.8023, 0.8051, 0.8078, 0.8106, 0.8133,  // 0.8
    0.8159, 0.8186, 0.8212, 0.8238, 0.8264, 0.8289, 0.8315, 0.8340, 0.8365, 0.8389,  // 0.9
    0.8413, 0.8438, 0.8461, 0.8485, 0.8508, 0.8531, 0.8554, 0.8577, 0.8599, 0.8621,  // 1.0
    0.8643, 0.8665, 0.8686, 0.8708, 0.8729, 0.8749, 0.8770, 0.8790, 0.8810, 0.8830,  // 1.1
    0.8849, 0.8869, 0.8888, 0.8907, 0.8925, 0.8944, 0.8962, 0.8980, 0.8997, 0.9015,  // 1.2
    0.9032, 0.9049, 0.9066, 0.9082, 0.9099, 0.9115, 0.9131, 0.9147, 0.9162, 0.9177,  // 1.3
    0.9192, 0.9207, 0.9222, 0.9236, 0.9251, 0.9265, 0.9279, 0.9292, 0.9306, 0.9319,  // 1.4
    0.9332, 0.9345, 0.9357, 0.9370, 0.9382, 0.9394, 0.9406, 0.9418, 0.9429, 0.9441,  // 1.5
    0.9452, 0.9463, 0.9474, 0.9484, 0.9495, 0.9505, 0.9515, 0.9525, 0.9535, 0.9545,  // 1.6
    0.9554, 0.9564, 0.9573, 0.9582, 0.9591, 0.9599, 0.9608, 0.9616, 0.9625, 0.9633,  // 1.7
    0.9641, 0.9649, 0.9656, 0.9664, 0.9671, 0.9678, 0.9686, 0.9693, 0.9699, 0.9706,  // 1.8
    0.9713, 0.9719, 0.9726, 0.9732, 0.9738, 0.9744, 0.9750, 0.9756, 0.9761, 0.9767,  // 1.9
    0.9772, 0.9778, 0.9783, 0.9788, 0.9793, 0.9798, 0.9803, 0.9808, 0.9812, 0.9817,  // 2.0
    0.9821, 0.9826, 0.9830, 0.9834, 0.9838, 0.9842, 0.9846, 0.9850, 0.9854, 0.9857,  // 2.1
    0.9861, 0.9864, 0.9868, 0.9871, 0.9875, 0.9878, 0.9881, 0.9884, 0.9887, 0.9890,  // 2.2
    0.9893, 0.9896, 0.9898, 0.9901, 0.9904, 0.9906, 0.9909, 0.9911, 0.9913, 0.9916,  // 2.3
    0.9918, 0.9920, 0.9922, 0.9925, 0.9927, 0.9929, 0.9931, 0.9932, 0.9934, 0.9936,  // 2.4
    0.9938, 0.9940, 0.9941, 0.9943, 0.9945, 0.9946, 0.9948, 0.9949, 0.9951, 0.9952,  // 2.5
    0.9953, 0.9955, 0.9956, 0.9957, 0.9959, 0.9960, 0.9961, 0.9962, 0.9963, 0.9964,  // 2.6
    0.9965, 0.9966, 0.9967, 0.9968, 0.9969, 0.9970, 0.9971, 0.9972, 0.9973, 0.9974,  // 2.7
    0.9974, 0.9975, 0.9976, 0.9977, 0.9977, 0.9978, 0.9979, 0.9979, 0.9980, 0.9981,  // 2.8
    0.9981, 0.9982, 0.9982, 0.9983, 0.9984, 0.9984, 0.9985, 0.9985, 0.9986, 0.9986,  // 2.9
    0.9987, 0.9987, 0.9987, 0.9988, 0.9988, 0.9989, 0.9989, 0.9989, 0.9990, 0.9990,  // 3.0
    0.9990, 0.9991, 0.9991, 0.9991, 0.9992, 0.9992, 0.9992, 0.9992, 0.9993, 0.9993,  // 3.1
    0.9993, 0.9993, 0.9994, 0.9994, 0.9994, 0.9994, 0.9994, 0.9995, 0.9995, 0.9995,  // 3.2
    0.9995, 0.9995, 0.9995, 0.9996, 0.9996, 0.9996, 0.9996, 0.9996, 0.9996, 0.9997,  // 3.3
    0.9997, 0.9997, 0.9997, 0.9997, 0.9997, 0.9997, 0.9997, 0.9997, 0.9997, 0.9998,  // 3.4
};

void checkSD(double s) {
    if (s < 0) throw Exception("dist", __LINE__, "Invalid parameter for normal distribution");
}

}  // namespace

Normal::Normal(double mean, double sd) : Dist(DIST_NORMAL), mean(mean), sd(sd) { paramCheck(); }

double Normal::getMean() const { return mean; }
double Normal::getSD() const { return sd; }

void Normal::setMean(double value) { setChecked(mean, value); }
void Normal::setSD(double value) { setChecked(sd, value); }

double Normal::generateVariate() { return rng.normal(mean, sd); }
double Normal::evalPDF(double x) { return normal_pdf(x, mean, sd); }
double Normal::evalCDF(double x) { return normal_cdf(x, mean, sd); }
double Normal::evalInverseCDF(double p) { return normal_inverse_cdf(p, mean, sd); }

// The key-value form carries the variance, the XML form the deviation.
std::string Normal::toString(format f) {
    return layoutText(f, type, "normaldist",
                      {{"mean", formatNumber(mean, false)}, {"var", formatNumber(sd * sd, false)}},
                      {{"mean", formatNumber(mean, false)}, {"std", formatNumber(sd, false)}});
}

Dist* Normal::fromConfig(Config* c) {
    return new Normal(keyDouble(c, "mean", 0), std::sqrt(keyDouble(c, "var", 1)));
}

Dist* Normal::fromXML(XMLElement* family) {
    return new Normal(tagDouble(family, "mean", 0), tagDouble(family, "std", 1));
}

DistStats Normal::getProperties(unsigned n) { return normal_stats(mean, sd, n); }

void Normal::paramCheck() { checkSD(sd); }

double Normal::normal_pdf(double x, double m, double s) {
    double z = (x - m) / s;
    return (1 / (s * 2.5066282746310002)) * std::exp(-0.5 * z * z);  // sqrt(2 pi)
}

double Normal::normal_cdf(double x, double m, double s) { return standard_normal_cdf((x - m) / s); }

double Normal::normal_inverse_cdf(double p, double m, double s) { return as::ppnd16(p) * s + m; }

double Normal::normal_ccdf(double x, double m, double s) { return 1 - normal_cdf(x, m, s); }

// A NaN argument (sd 0 at the mean, or the logarithm of a negative value in
// the lognormal) gives NaN; the table is never indexed with it.
double Normal::standard_normal_cdf(double z) {
    if (std::isnan(z)) return std::numeric_limits<double>::quiet_NaN();
    if (z > 3.49) return 1;
    if (z < -3.49) return 0;
    double r = std::fabs(velmora::round(z, 2));
    int row = static_cast<int>(r / 0.1);
    int col = static_cast<int>(velmora::round((r - row * 0.1) * 100, 0));
    int index = 10 * row + col;
    if (index > 349) index = 349;  // guards the table against rounding at its last entry
    double v = standardNormalTable[index];
    return z >= 0 ? v : 1 - v;
}

double Normal::standard_bivariate_normal_pdf(double x, double y, double rho) {
    double c = 1 - rho * rho;
    return std::exp(-(x * x - 2 * rho * x * y + y * y) / (2 * c)) / (6.283185307179586 * std::sqrt(c));
}

DistStats Normal::normal_stats(double m, double s, unsigned n) {
    checkSD(s);
    DistStats stats;
    stats.mean = m;
    stats.variance = s * s;
    stats.skewness = 0;
    stats.cv = s / m;
    stats.kurtosis = 3;
    double m2 = m * m, m3 = m2 * m, m4 = m3 * m, m5 = m4 * m, m6 = m5 * m, m7 = m6 * m, m8 = m7 * m;
    double s2 = s * s, s4 = s2 * s2, s6 = s4 * s2, s8 = s6 * s2;
    const double moments[8] = {
        m,
        m2 + s2,
        m * (m2 + 3 * s2),
        m4 + 6 * m2 * s2 + 3 * s4,
        m5 + 10 * m3 * s2 + 15 * m * s4,
        m6 + 15 * m4 * s2 + 45 * m2 * s4 + 15 * s6,
        m7 + 21 * m5 * s2 + 105 * m3 * s4 + 105 * m * s6,
        m8 + 28 * m6 * s2 + 210 * m4 * s4 + 420 * m2 * s6 + 105 * s8};
    for (unsigned k = 0; k < n && k < 8; k++) stats.moments.push_back(moments[k]);
    if (n > 8) libvelmora_warning("For normal distribution only computation of first 8 moments is supported.");
    return stats;
}

// ---- exact view
double Normal::exactLogPDF(double x) {
    const double z = (x - getMean()) / getSD();
    return -0.5 * z * z - std::log(getSD()) - 0.91893853320467274178;  // log sqrt(2 pi)
}
double Normal::exactCDF(double x) { return mvphi((x - getMean()) / getSD()); }
double Normal::exactCCDF(double x) { return mvphi((getMean() - x) / getSD()); }
double Normal::exactQuantile(double p) {
    checkProbability(p);
    if (p == 0 || p == 1) return (p == 0 ? -1 : 1) * std::numeric_limits<double>::infinity();
    return getMean() + getSD() * as::ppnd16(p);
}
DistStats Normal::exactStats(unsigned n) {
    DistStats stats = getProperties(0);
    stats.moments.clear();
    // E[X^k] = m E[X^(k-1)] + (k - 1) s^2 E[X^(k-2)].
    double prev = 1, cur = getMean();
    for (unsigned k = 1; k <= n; ++k) {
        stats.moments.push_back(cur);
        const double next = getMean() * cur + k * getSD() * getSD() * prev;
        prev = cur;
        cur = next;
    }
    return stats;
}
unsigned Normal::parameterCount() const { return 2; }

}  // namespace velmora
