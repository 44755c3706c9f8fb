// How well a distribution describes data, and the choice of family by AIC.
// The figures are those of the exact distribution: the log-densities are
// written here in log space (lgamma instead of the toolkit's Stirling gamma
// function, no underflow of far tails), the normal-based distribution
// functions use the accurate mvphi instead of the four-decimal table, and the
// moments are closed forms. Families whose toolkit formulas are exact are
// read through their own evalPDF and evalCDF.
#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <limits>
#include <sstream>

#include "core/libvelmora_settings.h"
#include "distributions/dist.h"
#include "distributions/dist_beta.h"
#include "distributions/dist_chisquare.h"
#include "distributions/dist_deterministic.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_geometric.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hyperexponential.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_hypogeometric.h"
#include "distributions/dist_johnson.h"
#include "distributions/dist_lognormal.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_pearsonv.h"
#include "distributions/dist_pearsonvi.h"
#include "distributions/dist_triangular.h"
#include "distributions/dist_uniform.h"
#include "distributions/dist_weibull.h"
#include "fitting/distfit.h"
#include "numerics/misc_numerical_dist.h"

namespace velmora {
namespace distfit {

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kMinusInf = -std::numeric_limits<double>::infinity();
const double kLogSqrt2Pi = 0.91893853320467274178;  // log sqrt(2 pi)

[[noreturn]] void fail(int line, const std::string& message) { throw Exception("distfit", line, message); }

// The exact view of a family: log-density, distribution function (empty when
// the family has none), whether it is discrete, and its first raw moments.
struct Model {
    std::function<double(double)> logpdf;
    std::function<double(double)> cdf;
    bool discrete = false;
    std::array<double, 3> moments{{kNaN, kNaN, kNaN}};
};

// log sum_i exp(a_i) with the largest term factored out.
double logSumExp(const std::vector<double>& a) {
    double top = kMinusInf;
    for (double v : a) top = std::max(top, v);
    if (top == kMinusInf) return top;
    double s = 0;
    for (double v : a) s += std::exp(v - top);
    return top + std::log(s);
}

// Raw moments from mean, variance and skewness.
std::array<double, 3> fromCentral(double m, double v, double skew) {
    const double sd = std::sqrt(v);
    return {{m, v + m * m, m * m * m + 3 * m * v + skew * sd * sd * sd}};
}

// A mixture of Erlang branches (an exponential or Erlang is one branch):
// log-density in log space, and the raw moments p_i k_i (k_i + 1) ... / r_i^j.
void erlangMixture(Model& model, const std::vector<unsigned>& k, const std::vector<double>& r,
                   const std::vector<double>& p) {
    const std::size_t m = r.size();
    std::vector<double> lconst(m);
    for (std::size_t i = 0; i < m; ++i) lconst[i] = std::log(p[i]) + k[i] * std::log(r[i]) - std::lgamma(k[i]);
    auto buffer = std::make_shared<std::vector<double>>(m);
    model.logpdf = [k, r, lconst, buffer](double x) {
        if (x < 0) return kMinusInf;
        const double lx = x > 0 ? std::log(x) : kMinusInf;
        std::vector<double>& t = *buffer;
        for (std::size_t i = 0; i < t.size(); ++i) t[i] = lconst[i] + (k[i] > 1 ? (k[i] - 1.0) * lx : 0.0) - r[i] * x;
        return logSumExp(t);
    };
    for (unsigned j = 1; j <= 3; ++j) {
        double s = 0;
        for (std::size_t i = 0; i < m; ++i) {
            double rising = 1;
            for (unsigned q = 0; q < j; ++q) rising *= k[i] + q;
            s += p[i] * rising / std::pow(r[i], j);
        }
        model.moments[j - 1] = s;
    }
}

Model modelOf(Dist* d) {
    Model model;
    model.cdf = [d](double x) { return d->evalCDF(x); };
    model.logpdf = [d](double x) { return std::log(d->evalPDF(x)); };
    switch (d->getType()) {
        case DIST_DETERMINISTIC: {
            const double v = static_cast<Deterministic*>(d)->getVal();
            // The probability of the one value: constant data have likelihood 1.
            model.logpdf = [v](double x) { return x == v ? 0.0 : kMinusInf; };
            model.discrete = true;
            model.moments = {{v, v * v, v * v * v}};
            break;
        }
        case DIST_UNIFORM: {
            auto* u = static_cast<Uniform*>(d);
            const double a = u->getA(), b = u->getB();
            for (unsigned k = 1; k <= 3; ++k)
                model.moments[k - 1] = (std::pow(b, k + 1) - std::pow(a, k + 1)) / ((k + 1) * (b - a));
            break;
        }
        case DIST_EXPONENTIAL: {
            const double r = static_cast<Exponential*>(d)->getRate();
            erlangMixture(model, {1}, {r}, {1.0});
            break;
        }
        case DIST_NORMAL: {
            auto* nd = static_cast<Normal*>(d);
            const double m = nd->getMean(), s = nd->getSD();
            model.logpdf = [m, s](double x) { return -0.5 * ((x - m) / s) * ((x - m) / s) - std::log(s) - kLogSqrt2Pi; };
            model.cdf = [m, s](double x) { return mvphi((x - m) / s); };
            model.moments = fromCentral(m, s * s, 0);
            break;
        }
        case DIST_LOGNORMAL: {
            auto* ln = static_cast<Lognormal*>(d);
            const double mu = ln->getMu(), s = ln->getSigma();
            model.logpdf = [mu, s](double x) {
                if (!(x > 0)) return kMinusInf;
                const double z = (std::log(x) - mu) / s;
                return -0.5 * z * z - std::log(x) - std::log(s) - kLogSqrt2Pi;
            };
            model.cdf = [mu, s](double x) { return x > 0 ? mvphi((std::log(x) - mu) / s) : 0.0; };
            for (unsigned k = 1; k <= 3; ++k) model.moments[k - 1] = std::exp(k * mu + k * k * s * s / 2);
            break;
        }
        case DIST_JOHNSON: {
            auto* j = static_cast<Johnson*>(d);
            const dist_johnson_family f = j->getJohnsonType();
            const double g = j->getGamma(), dl = j->getDelta(), l = j->getLambda(), xi = j->getXi();
            model.cdf = [f, g, dl, l, xi](double x) {
                if ((f == JOHNSON_SL || f == JOHNSON_SB) && x <= xi) return 0.0;
                if (f == JOHNSON_SB && x >= xi + l) return 1.0;
                return mvphi(g + dl * Johnson::johnson_transformation((x - xi) / l, f));
            };
            const DistStats st = d->getProperties(3);
            for (std::size_t k = 0; k < 3 && k < st.moments.size(); ++k) model.moments[k] = st.moments[k];
            break;
        }
        case DIST_ERLANG: {
            auto* e = static_cast<Erlang*>(d);
            erlangMixture(model, {e->getPhases()}, {e->getRate()}, {1.0});
            break;
        }
        case DIST_HYPEREXPONENTIAL: {
            auto* h = static_cast<HyperExponential*>(d);
            const std::vector<double> r = h->getRates();
            erlangMixture(model, std::vector<unsigned>(r.size(), 1), r, h->getProbabilities());
            break;
        }
        case DIST_HYPOEXPONENTIAL: {
            // 1 - sum_i c_i exp(-r_i x), c_i = prod_{j != i} r_j / (r_j - r_i),
            // for pairwise different rates as the density's formula needs.
            const std::vector<double> r = static_cast<HypoExponential*>(d)->getRates();
            std::vector<double> c(r.size(), 1);
            for (std::size_t i = 0; i < r.size(); ++i)
                for (std::size_t j = 0; j < r.size(); ++j)
                    if (j != i) c[i] *= r[j] / (r[j] - r[i]);
            model.cdf = [r, c](double x) {
                if (x <= 0) return 0.0;
                double s = 0;
                for (std::size_t i = 0; i < r.size(); ++i) s += c[i] * std::exp(-r[i] * x);
                return 1 - s;
            };
            const DistStats st = d->getProperties(3);
            for (std::size_t k = 0; k < 3 && k < st.moments.size(); ++k) model.moments[k] = st.moments[k];
            break;
        }
        case DIST_HYPERERLANG: {
            auto* h = static_cast<HyperErlang*>(d);
            erlangMixture(model, h->getPhases(), h->getRates(), h->getProbabilities());
            break;
        }
        case DIST_WEIBULL: {
            auto* w = static_cast<Weibull*>(d);
            const double a = w->getAlpha(), b = w->getBeta();
            model.logpdf = [a, b](double x) {
                if (!(x > 0)) return kMinusInf;
                return std::log(a / b) + (a - 1) * std::log(x / b) - std::pow(x / b, a);
            };
            for (unsigned k = 1; k <= 3; ++k) model.moments[k - 1] = std::pow(b, k) * std::tgamma(1 + k / a);
            break;
        }
        case DIST_GAMMA:
        case DIST_CHISQUARE: {
            double a, b;
            if (d->getType() == DIST_GAMMA) {
                a = static_cast<Gamma*>(d)->getAlpha();
                b = static_cast<Gamma*>(d)->getBeta();
            } else {
                a = static_cast<ChiSquare*>(d)->getK() / 2.0;
                b = 2;
            }
            const double c = -a * std::log(b) - std::lgamma(a);
            model.logpdf = [a, b, c](double x) { return x > 0 ? c + (a - 1) * std::log(x) - x / b : kMinusInf; };
            model.cdf = [a, b](double x) { return x > 0 ? as::gammad(x / b, a) : 0.0; };
            model.moments = {{a * b, a * (a + 1) * b * b, a * (a + 1) * (a + 2) * b * b * b}};
            break;
        }
        case DIST_BETA: {
            auto* be = static_cast<Beta*>(d);
            const double a = be->getAlpha1(), b = be->getAlpha2();
            const double c = std::lgamma(a + b) - std::lgamma(a) - std::lgamma(b);
            model.logpdf = [a, b, c](double x) {
                return x > 0 && x < 1 ? c + (a - 1) * std::log(x) + (b - 1) * std::log1p(-x) : kMinusInf;
            };
            model.cdf = nullptr;
            double m = 1;
            for (unsigned k = 0; k < 3; ++k) model.moments[k] = m *= (a + k) / (a + b + k);
            break;
        }
        case DIST_PEARSONV: {
            auto* pv = static_cast<PearsonV*>(d);
            const double a = pv->getAlpha(), b = pv->getBeta();
            const double c = a * std::log(b) - std::lgamma(a);
            model.logpdf = [a, b, c](double x) { return x > 0 ? c - (a + 1) * std::log(x) - b / x : kMinusInf; };
            model.cdf = [a, b](double x) { return x > 0 ? 1 - as::gammad(b / x, a) : 0.0; };
            double m = 1;
            for (unsigned k = 1; k <= 3; ++k) model.moments[k - 1] = a > k ? (m *= b / (a - k)) : kNaN;
            break;
        }
        case DIST_PEARSONVI: {
            auto* p6 = static_cast<PearsonVI*>(d);
            const double a1 = p6->getAlpha1(), a2 = p6->getAlpha2(), b = p6->getBeta();
            const double c = std::lgamma(a1 + a2) - std::lgamma(a1) - std::lgamma(a2) - std::log(b);
            model.logpdf = [a1, a2, b, c](double x) {
                return x > 0 ? c + (a1 - 1) * std::log(x / b) - (a1 + a2) * std::log1p(x / b) : kMinusInf;
            };
            model.cdf = nullptr;
            double m = 1;
            for (unsigned k = 0; k < 3; ++k) model.moments[k] = a2 > k + 1 ? (m *= b * (a1 + k) / (a2 - 1 - k)) : kNaN;
            break;
        }
        case DIST_GEOMETRIC: {
            const double p = static_cast<Geometric*>(d)->getP();
            model.discrete = true;
            model.moments = {{1 / p, (2 - p) / (p * p), (p * p - 6 * p + 6) / (p * p * p)}};
            break;
        }
        case DIST_HYPOGEOMETRIC:
            fail(__LINE__, "Cannot assess hypogeometric: the family has no probability function.");
        case DIST_TRIANGULAR: {
            auto* t = static_cast<Triangular*>(d);
            const DistStats st = Triangular::triangular_stats(t->getA(), t->getB(), t->getC(), 0);
            model.moments = fromCentral(st.mean, st.variance, st.skewness);
            break;
        }
    }
    return model;
}

double kolmogorovSmirnov(const Model& model, std::vector<double> sorted) {
    if (!model.cdf) return kNaN;
    std::sort(sorted.begin(), sorted.end());
    const double n = static_cast<double>(sorted.size());
    double dmax = 0;
    std::size_t i = 0;
    while (i < sorted.size()) {
        std::size_t j = i;
        while (j < sorted.size() && sorted[j] == sorted[i]) ++j;
        const double x = sorted[i];
        const double f = model.cdf(x);
        // Just below x the empirical function is i/n; a discrete model's
        // function there is its value at the previous double.
        const double fLeft = model.discrete ? model.cdf(std::nextafter(x, kMinusInf)) : f;
        dmax = std::max(dmax, std::max(std::fabs(f - static_cast<double>(j) / n), std::fabs(fLeft - static_cast<double>(i) / n)));
        i = j;
    }
    return dmax;
}

}  // namespace

unsigned parameter_count(Dist* d) {
    if (d == nullptr) fail(__LINE__, "No distribution to count parameters of.");
    switch (d->getType()) {
        case DIST_DETERMINISTIC:
        case DIST_EXPONENTIAL:
        case DIST_GEOMETRIC:
        case DIST_CHISQUARE: return 1;
        case DIST_UNIFORM:
        case DIST_NORMAL:
        case DIST_LOGNORMAL:
        case DIST_ERLANG:
        case DIST_WEIBULL:
        case DIST_GAMMA:
        case DIST_BETA:
        case DIST_PEARSONV: return 2;
        case DIST_TRIANGULAR:
        case DIST_PEARSONVI: return 3;
        case DIST_JOHNSON: return 4;
        case DIST_HYPEREXPONENTIAL: return 2 * static_cast<HyperExponential*>(d)->getPhases() - 1;
        case DIST_HYPOEXPONENTIAL: return static_cast<HypoExponential*>(d)->getPhases();
        case DIST_HYPERERLANG: return 2 * static_cast<HyperErlang*>(d)->getBranches() - 1;
        case DIST_HYPOGEOMETRIC: return static_cast<unsigned>(static_cast<HypoGeometric*>(d)->getP().size());
    }
    return 0;
}

Assessment assess(Dist* d, const std::vector<double>& data) {
    if (d == nullptr) fail(__LINE__, "No distribution to assess.");
    const std::string family = Dist::getDistType(d->getType());
    check_values(data, family, false);
    const Model model = modelOf(d);

    Assessment a;
    a.family = family;
    a.parameters = parameter_count(d);
    for (double x : data) a.logLikelihood += model.logpdf(x);
    a.ks = kolmogorovSmirnov(model, data);
    a.modelMoments = model.moments;
    complete_assessment(a, data);
    return a;
}

ExactForm exact_form(Dist* d) {
    if (d == nullptr) fail(__LINE__, "No distribution to evaluate.");
    Model model = modelOf(d);
    return {std::move(model.logpdf), std::move(model.cdf)};
}

void complete_assessment(Assessment& a, const std::vector<double>& data) {
    double s1 = 0, s2 = 0, s3 = 0;
    for (double x : data) {
        s1 += x;
        s2 += x * x;
        s3 += x * x * x;
    }
    const double n = static_cast<double>(data.size());
    a.n = data.size();
    a.aic = 2.0 * a.parameters - 2 * a.logLikelihood;
    a.bic = a.parameters * std::log(n) - 2 * a.logLikelihood;
    a.dataMoments = {{s1 / n, s2 / n, s3 / n}};
}

Selection::Selection() = default;
Selection::Selection(Selection&&) noexcept = default;
Selection& Selection::operator=(Selection&&) noexcept = default;
Selection::~Selection() = default;

Selection best_family(const std::vector<double>& data, const std::vector<std::string>& candidates,
                      unsigned maxPhases) {
    if (candidates.empty()) fail(__LINE__, "No candidate families to choose from.");
    check_values(data, "any family", false);
    for (const std::string& name : candidates) {
        try {
            Dist::getDistType(name);
        } catch (Exception&) {
            fail(__LINE__, "Unknown distribution family '" + name + "'.");
        }
        if (name == "hypererlang" && (maxPhases == 0 || maxPhases > kMaxPhases))
            fail(__LINE__, "The hyper-Erlang candidates need a largest phase count between 1 and 13, not " +
                               std::to_string(maxPhases) + ".");
    }

    Selection sel;
    auto tryOne = [&](const std::string& name, unsigned phases) {
        Candidate c;
        c.family = name;
        c.phases = phases;
        std::unique_ptr<Dist> d;
        try {
            d.reset(fit_distribution(name, data, phases));
            if (d->getType() == DIST_ERLANG) c.phases = static_cast<Erlang*>(d.get())->getPhases();
            c.assessment = assess(d.get(), data);
            c.fitted = true;
        } catch (Exception& e) {
            c.reason = e.message;
        }
        sel.candidates.push_back(c);
        if (!c.fitted) return;
        const Candidate& held = sel.candidates[sel.bestIndex];
        if (!sel.best || c.assessment.aic < held.assessment.aic) {
            sel.best = std::move(d);
            sel.bestIndex = sel.candidates.size() - 1;
        }
    };
    for (const std::string& name : candidates) {
        if (name == "hypererlang") {
            for (unsigned p = 1; p <= maxPhases; ++p) tryOne(name, p);
        } else {
            tryOne(name, 0);
        }
    }
    if (!sel.best) {
        std::ostringstream s;
        s << "No candidate family could be fitted:";
        for (const Candidate& c : sel.candidates) s << " " << c.family << " (" << c.reason << ")";
        fail(__LINE__, s.str());
    }
    return sel;
}

}  // namespace distfit
}  // namespace velmora
