// The autoregressive-to-anything process: an ARMA base process held at unit
// process variance, each value z carried through the standard normal
// distribution function and the marginal's inverse distribution function.
// The marginal statistics are those of the marginal; the autocorrelations of
// the transformed process come from a double integral over the bivariate
// normal density of two base values.
#ifndef VELMORA_TIMESERIES_ARTA_H
#define VELMORA_TIMESERIES_ARTA_H

#include <memory>
#include <string>
#include <vector>

#include "core/process.h"
#include "timeseries/arma_driven.h"

namespace velmora {

class ARIMA;
class Config;
class Dist;
class Matrix;
class Trace;
class XMLConfig;
class XMLElement;

class ARTA : public Process, private ArmaDrivenParts<Dist> {
public:
    ARTA(std::string file, format f);
    explicit ARTA(Config* config);
    explicit ARTA(XMLConfig* document);
    // Both take ownership of marginal; the base process is normalised, so
    // stddev has no effect on the process variance, while mean stays.
    ARTA(Dist* marginal, std::vector<double> ar, double mean, double stddev);
    ARTA(Dist* marginal, std::vector<double> ar, std::vector<double> ma, double mean, double stddev);
    // The marginal can't be copied through its base class, so neither can
    // the process.
    ARTA(const ARTA&) = delete;
    ARTA& operator=(const ARTA&) = delete;
    // Defaulted where ARIMA and Dist are complete.
    ~ARTA() override;

    std::string getProcessDescription() override;
    void load(std::string file, format f) override;
    void save(std::string file, format f) override;
    std::string toString(format f) override;
    std::string getSummary() override;
    // Only `lags` is looked at here; all three go to the base summary.
    std::string getSummary(unsigned moments, unsigned jointMoments, unsigned lags) override;
    std::vector<double> getMoments(unsigned from, unsigned to) const override;
    // Joint moments of neighbouring values, E[X(t)^i X(t+1)^j].
    Matrix getJointMoments(unsigned from, unsigned to) const override;
    std::vector<double> getAutocorrelations(unsigned from, unsigned to) const override;
    Distribution computeDistribution(double lower, double upper) override;
    double evalCDF(double x) override;
    double evalCCDF(double x) override;
    double evalPDF(double x) override;
    double computeLikelihood(Trace* trace) override;
    void initRandomNumberGeneration(unsigned seed) override;
    double getNextRandomVariate() override;
    // Exact numerics: the transform through AS 66 and the marginal's exact
    // quantile, the marginal's exact statistics and the autocorrelations
    // integrated over the same transform.
    void setExactNumerics(bool exact) override;

    void load(Config* config);
    void load(XMLConfig* document);
    void load(XMLElement* element);

    ARIMA* getBaseProcess();
    Dist* getDistribution();
    // Gives up the marginal without deleting it and leaves the process
    // without one: for models built around a marginal they share.
    Dist* releaseDistribution();
    // p and q of the base process.
    std::vector<unsigned> getOrder() const;

private:
    ARTA();
};

// Autocorrelations of the transformed process for the base autocorrelations
// rho: unchanged for a normal marginal, 2 sin(rho pi/6) for a uniform one,
// and (E[X1 X2] - mean^2)/variance by numerical integration for all others,
// with |rho| <= 0.001 mapped to exactly 0 after the integration.
std::vector<double> arta_process_compute_autocorrelations(Dist* d, std::vector<double> rho);

// E[X1^k X2^l] for X = F^-1(Phi(Z)) of a standard bivariate normal pair with
// correlation rho: a Romberg integral inside a Romberg integral over
// [-10, 10]^2, tolerance 0.0001 on each level. The transformed values
// F^-1(Phi(z))^k and ^l are computed once per node of the dyadic grid that
// the Romberg levels share, which leaves every sum unchanged.
double arta_process_compute_autocorrelation_joint_moments(Dist* d, double rho, unsigned k, unsigned l);

// Keeps the transformed values of d on the grid across the computations
// above, until released, instead of computing them again for every call: a
// fitter that maps many correlations through one marginal holds it for the
// fit. d must not change while it is held. The hold belongs to the calling
// thread and serves its computations only. Holding another marginal or
// releasing drops the values; computations for other marginals in between
// are correct, and the held values are computed again after them.
void arta_process_hold_marginal(Dist* d);
void arta_process_release_marginal();

// The same integral with both transformed values computed anew at every
// (outer, inner) pair; slower, and equal to the cached form.
double arta_process_compute_autocorrelation_joint_moments_direct(Dist* d, double rho, unsigned k, unsigned l);

// The integrands of the direct form: the outer one stores its variable and
// integrates the inner one, which evaluates the double integrand at
// (inner, stored outer).
double arta_process_compute_autocorrelation_outer_integral(double x, std::vector<double> params);
double arta_process_compute_autocorrelation_inner_integral(double y, std::vector<double> params);
// F^-1(Phi(a))^k F^-1(Phi(b))^l phi2(a, b; rho) with the stored marginal,
// exponents and correlation.
double arta_process_compute_autocorrelation_double_integral(double a, double b);

// The problem of the last joint moment computed on this thread, which the
// integrands above read: a record, one per thread. The computations
// themselves carry their problem with them and never read it.
extern thread_local Dist* arta_process_compute_autocorrelation_double_integral_dist;
extern thread_local double arta_process_compute_autocorrelation_double_integral_acorr;
extern thread_local double arta_process_compute_autocorrelation_double_integral_val;
extern thread_local unsigned arta_process_compute_joint_moments_k;
extern thread_local unsigned arta_process_compute_joint_moments_l;

}  // namespace velmora

#endif
