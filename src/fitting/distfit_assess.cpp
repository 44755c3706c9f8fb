// How well a distribution describes data, and the choice of family by AIC.
// The figures are those of the family's exact view (Dist::exactLogPDF,
// exactCDF, exactStats, parameterCount), so that families compare fairly.
#include <algorithm>
#include <cmath>
#include <memory>
#include <limits>
#include <sstream>

#include "core/libvelmora_settings.h"
#include "distributions/dist.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_hypererlang.h"
#include "fitting/distfit.h"

namespace velmora {
namespace distfit {

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kMinusInf = -std::numeric_limits<double>::infinity();

[[noreturn]] void fail(int line, const std::string& message) { throw Exception("distfit", line, message); }

double kolmogorovSmirnov(Dist* d, std::vector<double> sorted) {
    if (!d->hasExactCDF()) return kNaN;
    std::sort(sorted.begin(), sorted.end());
    std::vector<double> cdf(sorted.size()), below;
    for (std::size_t k = 0; k < sorted.size(); ++k)
        cdf[k] = k > 0 && sorted[k] == sorted[k - 1] ? cdf[k - 1] : d->exactCDF(sorted[k]);
    if (!d->isDiscrete()) return ks_distance(sorted, cdf);
    // Just below x a discrete model's function is its value at the previous
    // double.
    below.resize(sorted.size());
    for (std::size_t k = 0; k < sorted.size(); ++k)
        below[k] = k > 0 && sorted[k] == sorted[k - 1] ? below[k - 1]
                                                        : d->exactCDF(std::nextafter(sorted[k], kMinusInf));
    return ks_distance(sorted, cdf, &below);
}

}  // namespace

double ks_distance(const std::vector<double>& sorted, const std::vector<double>& cdf,
                   const std::vector<double>* below) {
    const double n = static_cast<double>(sorted.size());
    double dmax = 0;
    std::size_t i = 0;
    while (i < sorted.size()) {
        std::size_t j = i;
        while (j < sorted.size() && sorted[j] == sorted[i]) ++j;
        // Just below the step F_n is i/n, at it j/n.
        const double f = cdf[i], fLeft = below != nullptr ? (*below)[i] : f;
        dmax = std::max(dmax, std::max(std::fabs(f - static_cast<double>(j) / n),
                                       std::fabs(fLeft - static_cast<double>(i) / n)));
        i = j;
    }
    return dmax;
}

unsigned parameter_count(Dist* d) {
    if (d == nullptr) fail(__LINE__, "No distribution to count parameters of.");
    return d->parameterCount();
}

Assessment assess(Dist* d, const std::vector<double>& data) {
    if (d == nullptr) fail(__LINE__, "No distribution to assess.");
    const std::string family = Dist::getDistType(d->getType());
    check_values(data, family, false);

    Assessment a;
    a.family = family;
    a.parameters = parameter_count(d);
    for (double x : data) a.logLikelihood += d->exactLogPDF(x);
    a.ks = kolmogorovSmirnov(d, data);
    const DistStats st = d->exactStats(3);
    for (std::size_t k = 0; k < 3; ++k) a.modelMoments[k] = k < st.moments.size() ? st.moments[k] : kNaN;
    complete_assessment(a, data);
    return a;
}

std::array<double, 3> raw_moments(const std::vector<double>& data) {
    double s1 = 0, s2 = 0, s3 = 0;
    for (double x : data) {
        s1 += x;
        s2 += x * x;
        s3 += x * x * x;
    }
    const double n = static_cast<double>(data.size());
    return {{s1 / n, s2 / n, s3 / n}};
}

void complete_assessment(Assessment& a, const std::vector<double>& data) {
    const double n = static_cast<double>(data.size());
    a.n = data.size();
    a.aic = 2.0 * a.parameters - 2 * a.logLikelihood;
    a.bic = a.parameters * std::log(n) - 2 * a.logLikelihood;
    a.dataMoments = raw_moments(data);
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
            fail(__LINE__, "The hyper-Erlang candidates need a largest phase count between 1 and " +
                               std::to_string(kMaxPhases) + ", not " + std::to_string(maxPhases) + ".");
    }

    Selection sel;
    std::vector<std::unique_ptr<HyperErlang>> orders;
    std::string ordersFailure;
    auto tryOne = [&](const std::string& name, unsigned phases) {
        Candidate c;
        c.family = name;
        c.phases = phases;
        std::unique_ptr<Dist> d;
        try {
            if (name == "hypererlang") {
                if (!ordersFailure.empty()) fail(__LINE__, ordersFailure);
                d = std::move(orders[phases - 1]);
            } else {
                d = fit_distribution(name, data, phases);
            }
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
            try {
                orders = fit_hypererlang_orders(data, maxPhases);
            } catch (Exception& e) {
                ordersFailure = e.message;
            }
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
