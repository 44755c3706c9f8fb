// The exact view of the families: distribution functions, quantiles and
// statistics against independent figures, and the round trips that hold
// between them. Reference figures from scipy 1.10 (scipy.stats), as named.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "distributions/dist_chisquare.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_lognormal.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_weibull.h"

namespace velmora {
namespace {

TEST(ExactView, FiguresAgreeWithIndependentSources) {
    Gamma g(2, 35);
    ChiSquare c(3);
    Erlang e(25, 25);
    Weibull w(6.45, 76);
    Lognormal ln(0, 0.2);
    Normal n(0, 1);
    HyperErlang h({3, 2, 1}, {6, 2, 0.5}, {0.4, 0.3, 0.3});
    struct Row {
        std::string what;
        std::function<double()> value;
        double expected;
        double relative;
    };
    const std::vector<Row> rows = {
        {"gamma.ppf(0.999, 2, scale=35)", [&] { return g.exactQuantile(0.999); }, 323.1694716758055, 1e-13},
        {"gamma.cdf(100, 2, scale=35)", [&] { return g.exactCDF(100); }, 0.7784741828249044, 1e-14},
        {"gamma.logpdf(100, 2, scale=35)", [&] { return g.exactLogPDF(100); }, -5.362668794133593, 1e-14},
        {"gamma.sf(1000, 2, scale=35)", [&] { return g.exactCCDF(1000); }, 1.1546717399181631e-11, 1e-12},
        {"chi2.ppf(1e-9, 3)", [&] { return c.exactQuantile(1e-9); }, 2.4179891003586014e-06, 1e-12},
        {"chi2.ppf(0.5, 3)", [&] { return c.exactQuantile(0.5); }, 2.3659738843753377, 1e-14},
        // 25 phases: beyond the 32-bit factorial of the specified forms.
        {"gamma.ppf(0.99, 25, scale=1/25)", [&] { return e.exactQuantile(0.99); }, 1.5230778249802541, 1e-13},
        {"gamma.logpdf(1.3, 25, scale=1/25)", [&] { return e.exactLogPDF(1.3); }, -0.5160914291875174, 1e-13},
        {"weibull_min.ppf(1 - 1e-7, 6.45, scale=76)", [&] { return w.exactQuantile(0.9999999); }, 116.94832752067138, 1e-9},
        {"weibull_min.mean(6.45, scale=76)", [&] { return w.exactStats(0).mean; }, 70.78582796944717, 1e-14},
        {"weibull_min.var(6.45, scale=76)", [&] { return w.exactStats(0).variance; }, 164.62335070654643, 1e-12},
        {"lognorm.ppf(0.975, 0.2)", [&] { return ln.exactQuantile(0.975); }, 1.4799270513132077, 1e-14},
        {"lognorm.cdf(1.5, 0.2)", [&] { return ln.exactCDF(1.5); }, 0.9786854344045007, 1e-14},
        {"norm.ppf(1e-10)", [&] { return n.exactQuantile(1e-10); }, -6.361340902404056, 1e-14},
        // sum_i p_i gamma.cdf(x, k_i, scale=1/r_i), and its root by brentq.
        {"hyper-Erlang cdf(2)", [&] { return h.exactCDF(2); }, 0.8619538060954529, 1e-14},
        {"hyper-Erlang quantile(0.99)", [&] { return h.exactQuantile(0.99); }, 6.803474716612282, 1e-13},
    };
    for (const Row& row : rows) EXPECT_NEAR(row.value(), row.expected, row.relative * std::fabs(row.expected)) << row.what;
}

// F(Q(p)) = p and the complement adds up, over the tails as well.
TEST(ExactView, QuantileInvertsTheDistributionFunction) {
    std::vector<std::unique_ptr<Dist>> dists;
    dists.emplace_back(new Gamma(0.5, 3));
    dists.emplace_back(new Erlang(40, 2));
    dists.emplace_back(new Weibull(1.5, 1));
    dists.emplace_back(new HyperErlang({1, 3}, {0.2, 5}, {0.25, 0.75}));
    for (auto& d : dists) {
        for (double p : {1e-12, 1e-6, 0.1, 0.5, 0.9, 0.999999}) {
            const double x = d->exactQuantile(p);
            EXPECT_NEAR(d->exactCDF(x), p, 1e-12 * p + 1e-15) << Dist::getDistType(d->getType()) << " p " << p;
            EXPECT_NEAR(d->exactCDF(x) + d->exactCCDF(x), 1, 1e-14);
        }
        EXPECT_EQ(d->exactQuantile(0), 0);
    }
}

// In exact numerics the text form carries 17 significant digits and reads
// back to the same bits.
TEST(ExactView, ExactTextReadsBackToTheSameBits) {
    Weibull w(1.0 / 3, std::sqrt(2.0));
    EXPECT_EQ(w.toString(FORMAT_CONFIG), "distribution = weibull\nalpha = 0.333333\nbeta = 1.414214\n");
    w.setExact(true);
    EXPECT_EQ(w.toString(FORMAT_CONFIG),
              "distribution = weibull\nalpha = 0.33333333333333331\nbeta = 1.4142135623730951\n");
    EXPECT_EQ(std::stod("0.33333333333333331"), 1.0 / 3);
}

}  // namespace
}  // namespace velmora
