// The autocorrelation mapping of the ARTA process: from the correlation rho
// of two standard normal base values to the correlation of their transforms
// X = F^-1(Phi(Z)). For a normal marginal it is the identity, for a uniform
// one the closed form 2 sin(rho pi/6); for every other marginal E[X1 X2] is a
// Romberg integral over [-10, 10] of a Romberg integral over [-10, 10] of
//   F^-1(Phi(y))^k F^-1(Phi(x))^l phi2(y, x; rho).
//
// The cached form runs on the shared dyadic grid of normal_grid_integral.h:
// it keeps F^-1(Phi(z)) and its powers per grid node and so computes each
// inverse distribution function once instead of twice per (outer, inner)
// pair; the products and the Romberg sums are formed in the same order as in
// the direct form, which makes both bit for bit equal. A fitter that maps
// many correlations through one marginal holds it, and the node values then
// serve all its computations.
#include <cmath>
#include <vector>

#include "core/libvelmora_settings.h"
#include "distributions/dist.h"
#include "distributions/dist_normal.h"
#include "numerics/misc_numerical.h"
#include "numerics/misc_numerical_dist.h"
#include "timeseries/arta.h"
#include "timeseries/normal_grid_integral.h"

namespace velmora {

thread_local Dist* arta_process_compute_autocorrelation_double_integral_dist = nullptr;
thread_local double arta_process_compute_autocorrelation_double_integral_acorr = 0.0;
thread_local double arta_process_compute_autocorrelation_double_integral_val = 0.0;
thread_local unsigned arta_process_compute_joint_moments_k = 1;
thread_local unsigned arta_process_compute_joint_moments_l = 1;

namespace {

const double integralLower = -10.0;
const double integralUpper = 10.0;
const double integralTolerance = 0.0001;

const unsigned gridIntervals = normal_grid_intervals;

// Per-node values of the cached form. An entry is valid when its stamp
// equals the current epoch: the epoch of the transformed values changes with
// the marginal, that of the powers with every joint moment (k and l may
// change), so nothing has to be cleared between computations. Each thread
// has its own table and its own held marginal.
struct TransformCache {
    std::vector<double> value;   // F^-1(Phi(z))
    std::vector<double> powerK;  // value^k
    std::vector<double> powerL;  // value^l
    std::vector<unsigned> valueStamp, powerKStamp, powerLStamp;
    unsigned valueEpoch = 0;
    unsigned powerEpoch = 0;
    Dist* valueMarginal = nullptr;  // the marginal of the current value epoch
    Dist* heldMarginal = nullptr;   // kept across computations while held
};

thread_local TransformCache arta_process_transform_cache;

void ensureCacheStorage() {
    TransformCache& c = arta_process_transform_cache;
    if (c.value.size() == gridIntervals + 1) return;
    c.value.assign(gridIntervals + 1, 0.0);
    c.powerK.assign(gridIntervals + 1, 0.0);
    c.powerL.assign(gridIntervals + 1, 0.0);
    c.valueStamp.assign(gridIntervals + 1, 0);
    c.powerKStamp.assign(gridIntervals + 1, 0);
    c.powerLStamp.assign(gridIntervals + 1, 0);
}

// Epoch 0 marks "never computed"; at wrap-around the stamps are cleared.
void nextEpoch(unsigned* epoch, std::vector<unsigned>* stampsA, std::vector<unsigned>* stampsB) {
    if (++*epoch == 0) {
        stampsA->assign(stampsA->size(), 0);
        if (stampsB != nullptr) stampsB->assign(stampsB->size(), 0);
        *epoch = 1;
    }
}

// A held marginal keeps its transformed values; any other computation starts
// a new value epoch, and so does coming back to the held marginal after it.
void beginMarginal(Dist* d) {
    ensureCacheStorage();
    TransformCache& c = arta_process_transform_cache;
    if (d != nullptr && d == c.heldMarginal && d == c.valueMarginal) return;
    nextEpoch(&c.valueEpoch, &c.valueStamp, nullptr);
    c.valueMarginal = d;
}

void beginExponents() {
    TransformCache& c = arta_process_transform_cache;
    nextEpoch(&c.powerEpoch, &c.powerKStamp, &c.powerLStamp);
}

// A marginal in exact numerics transforms through its exact quantile.
inline double transformed(Dist* d, double z) {
    return d->isExact() ? d->exactNormalTransform(z) : d->evalInverseCDF(as::alnorm(z, false));
}

// transformed(z)^exponent, kept per grid node in one of the power tables.
class PowerFactor : public NormalGridFactor {
public:
    PowerFactor(TransformCache& c, Dist* d, std::vector<double>& power, std::vector<unsigned>& powerStamp,
                double exponent)
        : c(c), d(d), power(power), powerStamp(powerStamp), exponent(exponent) {}
    double atNode(unsigned j, double z) override {
        if (powerStamp[j] != c.powerEpoch) {
            if (c.valueStamp[j] != c.valueEpoch) {
                c.value[j] = transformed(d, z);
                c.valueStamp[j] = c.valueEpoch;
            }
            power[j] = std::pow(c.value[j], exponent);
            powerStamp[j] = c.powerEpoch;
        }
        return power[j];
    }
    double offGrid(double z) override { return std::pow(transformed(d, z), exponent); }

private:
    TransformCache& c;
    Dist* d;
    std::vector<double>& power;
    std::vector<unsigned>& powerStamp;
    double exponent;
};

void storeState(Dist* d, double rho, unsigned k, unsigned l) {
    if (d == nullptr) throw Exception("arta", __LINE__, "No marginal distribution.");
    arta_process_compute_autocorrelation_double_integral_dist = d;
    arta_process_compute_autocorrelation_double_integral_acorr = rho;
    arta_process_compute_joint_moments_k = k;
    arta_process_compute_joint_moments_l = l;
}

// The cached joint moment with the transformed values of the current
// marginal epoch; the caller has started it for d.
double jointMomentsCached(Dist* d, double rho, unsigned k, unsigned l) {
    storeState(d, rho, k, l);
    beginExponents();
    TransformCache& c = arta_process_transform_cache;
    PowerFactor powerK(c, d, c.powerK, c.powerKStamp, static_cast<double>(k));
    PowerFactor powerL(c, d, c.powerL, c.powerLStamp, static_cast<double>(l));
    return normal_grid_double_integral(powerK, powerL, rho);
}

}  // namespace

double arta_process_compute_autocorrelation_double_integral(double a, double b) {
    const double k = static_cast<double>(arta_process_compute_joint_moments_k);
    const double l = static_cast<double>(arta_process_compute_joint_moments_l);
    Dist* d = arta_process_compute_autocorrelation_double_integral_dist;
    return std::pow(transformed(d, a), k) * std::pow(transformed(d, b), l) *
           Normal::standard_bivariate_normal_pdf(a, b, arta_process_compute_autocorrelation_double_integral_acorr);
}

double arta_process_compute_autocorrelation_inner_integral(double y, std::vector<double>) {
    return arta_process_compute_autocorrelation_double_integral(y,
                                                                arta_process_compute_autocorrelation_double_integral_val);
}

double arta_process_compute_autocorrelation_outer_integral(double x, std::vector<double> params) {
    arta_process_compute_autocorrelation_double_integral_val = x;
    return RombergIteration(integralLower, integralUpper, arta_process_compute_autocorrelation_inner_integral, params,
                            integralTolerance);
}

double arta_process_compute_autocorrelation_joint_moments_direct(Dist* d, double rho, unsigned k, unsigned l) {
    storeState(d, rho, k, l);
    const double kk = static_cast<double>(k), ll = static_cast<double>(l);
    return normal_double_integral([d, kk](double y) { return std::pow(transformed(d, y), kk); },
                                  [d, ll](double x) { return std::pow(transformed(d, x), ll); }, rho);
}

double arta_process_compute_autocorrelation_joint_moments(Dist* d, double rho, unsigned k, unsigned l) {
    beginMarginal(d);
    return jointMomentsCached(d, rho, k, l);
}

void arta_process_hold_marginal(Dist* d) {
    TransformCache& c = arta_process_transform_cache;
    c.heldMarginal = nullptr;
    beginMarginal(d);
    c.heldMarginal = d;
}

void arta_process_release_marginal() {
    TransformCache& c = arta_process_transform_cache;
    c.heldMarginal = nullptr;
    c.valueMarginal = nullptr;
}

std::vector<double> arta_process_compute_autocorrelations(Dist* d, std::vector<double> rho) {
    if (d == nullptr) throw Exception("arta", __LINE__, "No marginal distribution.");
    const dist_type t = d->getType();
    if (t == DIST_NORMAL) return rho;
    if (t == DIST_UNIFORM) {
        for (double& r : rho) r = 2 * std::sin(r * 0.5235987755982988);
        return rho;
    }
    const DistStats stats = d->stats(0);
    // One marginal for all lags: the transformed values are shared by them.
    beginMarginal(d);
    std::vector<double> result(rho.size());
    for (std::size_t i = 0; i < rho.size(); ++i)
        result[i] = (jointMomentsCached(d, rho[i], 1, 1) - stats.mean * stats.mean) / stats.variance;
    // Applied after the integration, whatever it gave.
    for (std::size_t i = 0; i < rho.size(); ++i)
        if (std::fabs(rho[i]) <= 0.001) result[i] = 0.0;
    return result;
}

}  // namespace velmora
