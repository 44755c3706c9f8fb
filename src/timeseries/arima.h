// The ARIMA model: white noise, AR(p), MA(q), ARMA(p,q), ARIMA(p,d,q) and
// fractional ARIMA in one class. Every model can be stored, read, written and
// printed; analysis and generation need d = 0, apart from the
// autocorrelations of pure fractional noise.
//
// Model equation for d = 0:
//   X(t) = mu + Y(t),  Y(t) = e(t) + sum phi_i Y(t-i) + sum theta_j e(t-j),
// with e(t) independent N(0, variance) and a positive sign on the MA part.
#ifndef VELMORA_TIMESERIES_ARIMA_H
#define VELMORA_TIMESERIES_ARIMA_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/process.h"
#include "numerics/random.h"

namespace velmora {

class Config;
class Matrix;
class Trace;
class XMLConfig;
class XMLElement;

class ARIMA : public Process {
public:
    ARIMA();
    // Note the argument order: the variance comes before the intercept.
    ARIMA(std::vector<double> ar, std::vector<double> ma, double d, double mean, double variance,
          double intercept, std::string method);
    ARIMA(std::string file, format f);
    explicit ARIMA(Config* config);
    explicit ARIMA(XMLConfig* document);

    std::string getProcessDescription() override;
    void load(std::string file, format f) override;
    void save(std::string file, format f) override;
    std::string toString(format f) override;
    std::string getSummary() override;
    // Only `lags` is looked at.
    std::string getSummary(unsigned moments, unsigned jointMoments, unsigned lags) override;
    std::vector<double> getMoments(unsigned from, unsigned to) const override;
    Matrix getJointMoments(unsigned first, unsigned last) const override;
    std::vector<double> getAutocorrelations(unsigned from, unsigned to) const override;
    Distribution computeDistribution(double lower, double upper) override;
    double evalCDF(double x) override;
    double evalCCDF(double x) override;
    double evalPDF(double x) override;
    double computeLikelihood(Trace* trace) override;
    void initRandomNumberGeneration(unsigned seed) override;
    double getNextRandomVariate() override;

    void load(Config* config);
    void load(XMLConfig* document);
    void load(XMLElement* element);

    std::vector<double> getARCoefficients() const;
    void setARCoefficients(std::vector<double> coefficients);
    std::vector<double> getMACoefficients() const;
    void setMACoefficients(std::vector<double> coefficients);
    double getDegreeOfDifferencing() const;
    void setDegreeOfDifferencing(double d);
    double getMean() const;
    void setMean(double mean);
    double getIntercept() const;
    void setIntercept(double intercept);
    double getVariance() const;
    void setVariance(double variance);

    // p, d, q.
    std::vector<double> getOrder() const;
    // "Arima", "fArima", or "ar"/"ma"/"arma"/"" by the terms present.
    std::string getClass() const;

    // Analysis (d = 0 only, unless stated otherwise).
    // Process mean (mean + intercept/(1 - sum phi)) and process variance gamma(0).
    std::pair<double, double> compute_mean_and_variance() const;
    // All roots of 1 - phi_1 z - ... - phi_p z^p strictly outside the unit circle.
    bool isStationary() const;
    // Throws, naming what is wrong, unless the model can generate: finite
    // parameters, positive noise variance, a stationary AR part when d = 0.
    void checkRunnable() const;
    // gamma(0) to gamma(h).
    std::vector<double> computeAutocovariances(unsigned h) const;
    // rho(0) to rho(h); pure fractional noise (p = q = 0, d >= 0) is allowed.
    std::vector<double> computeAutocorrelations(unsigned h) const;
    double getAutocovariance(unsigned k) const;
    double getAutocorrelation(unsigned k) const;
    // Both bounds inclusive; empty if from > to.
    std::vector<double> getAutocovariances(unsigned from, unsigned to) const;

    // Generation helpers: start values of the AR and the MA state.
    std::vector<double> initAR(Rand* stream);
    std::vector<double> initMA(Rand* stream);
    // Toeplitz matrix of gamma(|i - j|), p x p.
    Matrix constructCovarianceMatrix() const;

private:
    void resetModel();
    // mean + intercept/(1 - s) with s the sum of the AR coefficients; no
    // check of d.
    double processMean() const;

    std::vector<double> ar;
    std::vector<double> ma;
    double d;
    double mean;
    double intercept;
    double variance;
    std::string method;
    // Empty until the first initRandomNumberGeneration; a copy gets its own
    // copy of the stream and of the generator state below.
    std::optional<Rand> rng;
    std::vector<double> arState;  // newest first
    std::vector<double> maState;  // newest first
};

// Scales the white-noise variance of a base process so that the process has
// variance 1, as the models that transform its values (ARTA, CAPP, CHEP)
// need. A base of variance 0 (or no number) can't be scaled: every
// correlation of the model would be no number, so it throws with `source` as
// the Exception's source. Coefficients without a stationary solution are
// scaled all the same; the fitters pass such models over.
void normalise_base_variance(ARIMA& base, const char* source);

}  // namespace velmora

#endif
