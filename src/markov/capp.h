// The correlated acyclic phase-type process. Its marginal is an acyclic CPH,
// a mixture of paths ordered by ascending mean; an ARMA base process held at
// process variance 1 decides the path of each value: the base value z goes
// through the standard normal distribution function to u, and u picks the
// path whose interval of cumulative probability holds it. The value itself
// is a fresh draw from that path's hypo-exponential distribution, so the
// marginal is exact whatever the correlation, and large base values take
// slow paths. The autocorrelations follow from the bivariate normal
// probabilities of pairs of paths and the path means alone.
#ifndef VELMORA_MARKOV_CAPP_H
#define VELMORA_MARKOV_CAPP_H

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/process.h"
#include "markov/cph.h"
#include "numerics/random.h"
#include "timeseries/arma_driven.h"

namespace velmora {

class ARIMA;
class Config;
class Matrix;
class Trace;
class XMLConfig;
class XMLElement;

class capp : public Process, protected ArmaDrivenParts<CPH> {
public:
    // No parts at all: for subclasses that build their own.
    capp();
    // Takes ownership of both; throws for a marginal that is not acyclic.
    capp(CPH* acph, ARIMA* base);
    capp(std::string file, format f);
    explicit capp(Config* config);
    explicit capp(XMLConfig* document);
    // The paths are owned through plain pointers; a copy would share them.
    capp(const capp&) = delete;
    capp& operator=(const capp&) = delete;
    ~capp() override;

    std::string getProcessDescription() override;
    void load(std::string file, format f) override;
    void save(std::string file, format f) override;
    std::string toString(format f) override;
    std::string getSummary() override;
    std::string getSummary(unsigned moments, unsigned jointMoments, unsigned lags) override;
    std::vector<double> getMoments(unsigned from, unsigned to) const override;
    // E[X(t)^i X(t+1)^j] from the path moments and the pair probabilities at
    // the base's lag-1 correlation.
    Matrix getJointMoments(unsigned from, unsigned to) const override;
    std::vector<double> getAutocorrelations(unsigned from, unsigned to) const override;
    Distribution computeDistribution(double lower, double upper) override;
    double evalCDF(double x) override;
    double evalCCDF(double x) override;
    double evalPDF(double x) override;
    double computeLikelihood(Trace* trace) override;
    // The base process and the stream inside the paths get the same seed.
    void initRandomNumberGeneration(unsigned seed) override;
    double getNextRandomVariate() override;
    // Exact numerics: the base value picks the path through Phi by AS 66
    // instead of the four-decimal table.
    void setExactNumerics(bool exact) override;

    // A Config that names the model "capp" reads as "cph" afterwards: the
    // marginal is read from it by the CPH reader.
    virtual void load(Config* config);
    virtual void load(XMLConfig* document);
    virtual void load(XMLElement* element);
    // Order of the marginal, then p and q of the base.
    virtual std::vector<double> getOrder() const;
    // Normalises the base and builds the paths and their means; to be called
    // after any change of the parts.
    virtual void init();
    // The index of the path that the next base value selects.
    virtual unsigned computePathNextRandomVariate();

    ARIMA* getBaseProcess();
    CPH* getACPH();
    const cph_path_list& getPaths() const;
    const std::vector<double>& getPathMeans() const;

    // Cumulative probabilities of the paths before i, and up to i.
    static void computeIntegrationBounds(const cph_path_list& paths, unsigned i, double* lo, double* hi);
    // Probability that a standard bivariate normal pair with correlation rho
    // selects path i with its first and path j with its second value.
    static double solveIntegral(const cph_path_list& paths, double rho, unsigned i, unsigned j);
    // The autocorrelation of the process for each base autocorrelation in ac,
    // given the marginal's mean and variance: n(n + 1)/2 bivariate normal
    // rectangles per value for n paths, closed forms at exactly 1 and -1.
    static std::vector<double> compute_autocorrelation(double mean, double var, std::vector<double> ac,
                                                       const cph_path_list& paths,
                                                       const std::vector<double>& pathMeans);

protected:
    // The headings of the summary that differ between the correlated models;
    // the title may carry further lines.
    struct SummaryNames {
        const char* title;
        const char* marginal;
        const char* autocorrelation;
        const char* jointMoments;
    };
    // The summary layout around the marginal's text, mean and variance.
    std::string summaryText(const SummaryNames& names, const std::string& marginal, double mean, double variance,
                            unsigned moments, unsigned jointMoments, unsigned lags);
    // The key-value text of the base, from "order = " to the closing empty
    // line.
    void writeBaseText(std::ostream& out) const;
    // The keys ar, ma, arma_mean (default 0) and arma_variance (default 1)
    // into the base.
    void loadBaseKeys(Config* config);
    // Drops the marginal and the paths, and puts a default ARIMA in place of
    // the base.
    void resetParts();
    void clearPaths();

    std::optional<Rand> rng;
    cph_path_list paths;
    std::vector<double> pathMeans;
};

}  // namespace velmora

#endif
