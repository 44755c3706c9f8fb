// ARMA fitting by a penalised Nelder-Mead search over the coefficients.
#include "fitting/arimafit.h"

#include <cmath>
#include <memory>
#include <vector>

#include "core/libvelmora_settings.h"
#include "numerics/misc_numerical.h"
#include "numerics/misc_optim.h"
#include "timeseries/arima.h"

namespace velmora {

namespace ARIMAFit {

thread_local std::vector<double> libvelmora_arimafit_desired_ac;
thread_local std::pair<unsigned, unsigned> libvelmora_arimafit_arma_dim(0, 0);
thread_local double libvelmora_arimafit_arma_penalty = 1.0;

namespace {

// One machine epsilon inside the circle: a root at modulus 1 + eps or
// beyond is free.
const double penaltyMargin = 1 + 2.220446049250313e-16;

double stationarityPenalty(const std::vector<double>& ar, double weight) {
    const unsigned p = static_cast<unsigned>(ar.size());
    // 1 - phi_1 z - ... - phi_p z^p, highest power first.
    std::vector<double> re(p + 1), im(p + 1, 0.0);
    for (unsigned i = 0; i < p; ++i) re[i] = -ar[p - 1 - i];
    re[p] = 1;
    std::vector<double> zr, zi;
    cpoly(re, im, &zr, &zi);
    // Free roots add nothing. They are skipped rather than added as w * 0,
    // which is the same for a finite weight; a weight grown to infinity
    // would make it NaN and blind the search.
    double penalty = 0.0;
    for (std::size_t i = 0; i < zr.size(); ++i) {
        const double d = std::fmin(0.0, cmod(zr[i], zi[i]) - penaltyMargin);
        if (d < 0) penalty += weight * std::pow(d, 2.0);
    }
    return penalty;
}

// The problem of one fit, which its objective carries.
struct ArmaProblem {
    std::vector<double> desired;  // lag 1 first
    unsigned p, q;
    double penalty;  // grows tenfold with every evaluation that pays it
};

double sumOfSquares(ArmaProblem& problem, const std::vector<double>& coefficients) {
    const unsigned p = problem.p;
    const unsigned q = problem.q;
    const std::unique_ptr<ARIMA> model(construct_arma_model(coefficients, p, q));
    const unsigned lags = static_cast<unsigned>(problem.desired.size());
    double sum = autocorrelation_error(model->getAutocorrelations(1, lags), problem.desired);
    if (p != 0) {
        const double penalty = stationarityPenalty(model->getARCoefficients(), problem.penalty);
        // Every evaluation that pays makes all later ones ten times as strict.
        if (penalty > 0) problem.penalty *= 10;
        sum += penalty;
    }
    return sum;
}

}  // namespace

double autocorrelation_error(const std::vector<double>& rho, const std::vector<double>& target) {
    const std::size_t lags = rho.size() < target.size() ? rho.size() : target.size();
    double sum = 0.0;
    for (std::size_t i = 0; i < lags; ++i)
        sum += target[i] == 0 ? std::pow(rho[i], 2.0) : std::pow(rho[i] / target[i] - 1, 2.0);
    return sum;
}

ARIMA* construct_arma_model(std::vector<double> coefficients, unsigned p, unsigned q) {
    if (coefficients.size() != static_cast<std::size_t>(p) + q)
        throw Exception("arimafit", __LINE__, "Invalid number of ARMA coefficients.");
    std::vector<double> ar(coefficients.begin(), coefficients.begin() + p);
    std::vector<double> ma(coefficients.begin() + p, coefficients.end());
    return new ARIMA(ar, ma, 0, 0, 1, 0, "unknown");
}

double arma_sum_of_squares(std::vector<double> coefficients) {
    ArmaProblem problem{libvelmora_arimafit_desired_ac, libvelmora_arimafit_arma_dim.first,
                        libvelmora_arimafit_arma_dim.second, libvelmora_arimafit_arma_penalty};
    const double sum = sumOfSquares(problem, coefficients);
    libvelmora_arimafit_arma_penalty = problem.penalty;
    return sum;
}

void check_autocorrelation_targets(const std::vector<double>& ac) {
    if (ac.empty()) throw Exception("arimafit", __LINE__, "No target autocorrelations.");
    for (double r : ac)
        if (!(r > -1 && r < 1)) throw Exception("arimafit", __LINE__, "Target autocorrelations must lie in (-1, 1).");
}

std::vector<double> invert_autocorrelations(const std::vector<double>& ac, double* target,
                                            FunctionRef<double(double)> objective) {
    std::vector<double> result(ac.size(), 0.0);
    for (std::size_t i = 0; i < ac.size(); ++i) {
        const double r = ac[i];
        if (r == 0) continue;
        *target = r;
        result[i] = r > 0 ? golden_section_search(objective, 0, 1, 1e-10) : golden_section_search(objective, -1, 0, 1e-10);
    }
    return result;
}

ARIMA* fit_arma_model(std::vector<double> ac, unsigned p, unsigned q) {
    check_autocorrelation_targets(ac);

    ArmaProblem problem{ac, p, q, 1.0};

    // 0.8/p for every entry, the MA ones too. A pure MA model has no p to
    // divide by; there the q entries share 0.8 in the same way.
    const unsigned share = p != 0 ? p : q;
    const std::vector<double> start(static_cast<std::size_t>(p) + q, share != 0 ? 0.8 / share : 0.0);

    std::vector<double> best(start.size());
    double minimum = 0;
    int fail = 0, fncount = 0;
    nmmin(start, &best, &minimum, [&problem](std::vector<double> x) { return sumOfSquares(problem, x); }, &fail,
          -1e17, 1e-17, 1.0, 0.5, 2.0, &fncount, 10000);
    // The record of the last fit on this thread.
    libvelmora_arimafit_desired_ac = std::move(problem.desired);
    libvelmora_arimafit_arma_dim = std::make_pair(p, q);
    libvelmora_arimafit_arma_penalty = problem.penalty;
    return construct_arma_model(best, p, q);
}

}  // namespace ARIMAFit

}  // namespace velmora
