// The contract of all distribution families and their registry: the family
// enumeration with its type names, the statistics record, the log-likelihood
// of a trace and the one text layout (key-value and XML) shared by all
// families. The families themselves live in the dist_<family> files; each
// includes this header, and a user includes the families it names.
#ifndef VELMORA_DISTRIBUTIONS_DIST_H
#define VELMORA_DISTRIBUTIONS_DIST_H

#include <string>
#include <utility>
#include <vector>

#include "core/process.h"
#include "numerics/random.h"

namespace velmora {

class Config;
class Trace;
class XMLElement;

enum dist_type {
    DIST_DETERMINISTIC = 0,
    DIST_UNIFORM = 1,
    DIST_EXPONENTIAL = 2,
    DIST_NORMAL = 3,
    DIST_LOGNORMAL = 4,
    DIST_JOHNSON = 5,
    DIST_ERLANG = 6,
    DIST_HYPEREXPONENTIAL = 7,
    DIST_HYPOEXPONENTIAL = 8,
    DIST_HYPERERLANG = 9,
    DIST_WEIBULL = 10,
    DIST_GAMMA = 11,
    DIST_BETA = 12,
    DIST_PEARSONV = 13,
    DIST_PEARSONVI = 14,
    DIST_GEOMETRIC = 15,
    DIST_HYPOGEOMETRIC = 16,
    DIST_TRIANGULAR = 17,
    DIST_CHISQUARE = 18
};

// Statistics of a family and its first raw moments: moments[i] is the
// (i+1)-th moment. A field that a family does not compute keeps the NaN it
// starts with, so reading it is harmless and visibly "not computed".
struct DistStats {
    DistStats();

    double mean;
    double variance;
    double skewness;
    double cv;
    double kurtosis;
    std::vector<double> moments;

    // sqrt(variance) / mean, for the families whose cv is exactly that.
    double sdOverMean() const;
};

// A family: its distribution functions, statistics, variates from a stream
// of its own, and its text form. Beside its toString every family has static
// readers of that text: fromConfig(Config*) of the keys after
// "distribution = <type name>", a missing key taking the family's default,
// and, where the XML form is read back, fromXML(XMLElement*) of the family
// element. The caller owns what they return.
class Dist {
public:
    // The stream is seeded from the system: two families differ.
    Dist();
    explicit Dist(dist_type type);
    // A copy is a value copy: it gets a stream of its own holding a copy of
    // the source's stream state, so both go on with the same variates until
    // one is reseeded. Assignment copies the state in the same way.
    Dist(const Dist& other) = default;
    Dist& operator=(const Dist& other) = default;
    virtual ~Dist() = default;

    virtual double generateVariate() = 0;
    virtual double evalPDF(double x) = 0;
    virtual double evalCDF(double x) = 0;
    virtual double evalInverseCDF(double p) = 0;
    // 1 - evalCDF(x), and its exceptions, for every family.
    virtual double evalCCDF(double x);
    virtual std::string toString(format f) = 0;
    virtual DistStats getProperties(unsigned n) = 0;
    virtual void paramCheck() = 0;

    dist_type getType() const;

    // The exact view of the family, beside its specified members: the same
    // distribution evaluated without the toolkit's approximations (no
    // Stirling gamma function, no 32-bit factorial, no four-decimal normal
    // table, no capped quantile). Fitters, likelihoods and exact-mode models
    // ask these and hold no switch on the family. The defaults read the
    // specified members, for families whose specified forms are exact.
    // The log-density (log probability for a discrete family).
    virtual double exactLogPDF(double x);
    // NaN when the family has no distribution function here.
    virtual double exactCDF(double x);
    virtual double exactCCDF(double x);
    // The quantile inf{x : F(x) >= p} for p in [0, 1]; by default the exact
    // distribution function inverted numerically.
    virtual double exactQuantile(double p);
    // Mean, variance, cv and the first n raw moments in closed form.
    virtual DistStats exactStats(unsigned n);
    // Free parameters counted for information criteria.
    virtual unsigned parameterCount() const = 0;
    virtual bool isDiscrete() const;
    // Whether exactCDF gives figures.
    virtual bool hasExactCDF() const;
    // The phase-type form of the families that are mixtures of Erlang
    // branches (exponential, Erlang, hyper-exponential, hyper-Erlang): phases,
    // rate and probability per branch. False, and nothing set, for the others.
    virtual bool erlangBranches(std::vector<unsigned>& phases, std::vector<double>& rates,
                                std::vector<double>& probabilities) const;

    // The numerics policy: with exact numerics set, quantile() and stats()
    // are the exact forms and the text form writes 17 significant digits,
    // so that it reads back to the same bits.
    void setExact(bool exact);
    bool isExact() const;
    double quantile(double p);
    DistStats stats(unsigned n);
    // exactQuantile(Phi(z)) with Phi by Algorithm AS 66: the transform of a
    // standard normal value in exact numerics. Phi is kept below 1, so that
    // far integration nodes give the largest finite quantile, not infinity.
    double exactNormalTransform(double z);

    // Sum of log(evalPDF(x)) over the trace in order; a density of 0 enters
    // as -infinity, an empty trace gives 0.
    double compute_loglikelihood(Trace* t);

    // Restarts the stream: equal seeds give equal variates.
    void setSeed(unsigned seed);

    static std::string getDistType(dist_type t);
    static dist_type getDistType(std::string name);

protected:
    // (key or tag, value as written) pairs of the text form, in write order.
    typedef std::vector<std::pair<std::string, std::string>> TextFields;

    // The text of a family in format 0 (key-value lines after
    // "distribution = <type name>") or format 1 (dist, family tag, one child
    // per parameter). An empty family tag means the family has no XML form.
    // Any unsupported format throws `unsupported`.
    static std::string layoutText(format f, dist_type t, const std::string& familyTag,
                                  const TextFields& keys, const TextFields& tags,
                                  const std::string& unsupported = "Output format not supported by Dists.");
    // A double in the stream's default form (fixed = false) or in fixed
    // notation with six decimals (fixed = true).
    // With exact numerics set, both write 17 significant digits instead.
    std::string formatNumber(double value, bool fixed) const;
    static std::string formatNumber(unsigned value);
    // Each element followed by one blank, so the text ends in a blank.
    std::string formatList(const std::vector<double>& values, bool fixed) const;
    static std::string formatList(const std::vector<unsigned>& values);

    // The check shared by every inverse distribution function: p outside
    // [0, 1] throws "Invalid value for inverse cdf.".
    static void checkProbability(double p);

    // What every checked setter does: store the parameter, then check the
    // whole object (a refused value stays stored).
    template <typename T>
    void setChecked(T& parameter, T value) {
        parameter = std::move(value);
        paramCheck();
    }

    // The smallest x with exactCDF(x) >= p, by bracketing from `start` and
    // bisection to the last bit; for families without a closed quantile.
    double invertExactCDF(double p, double lower, double start);

    dist_type type;
    Rand rng;
    bool exact = false;
};

// Raw moments `from` to `to` of a family seen as a process: order 0 is 1, and
// orders the family does not compute are left out.
std::vector<double> dist_moments(Dist* dist, unsigned from, unsigned to);

}  // namespace velmora

#endif
