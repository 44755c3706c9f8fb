// Variates of the families are those of the random stream, whose methods are
// checked against reference quantiles with the numerics; the hyper-Erlang
// mixture is checked here, against its own distribution function and for the
// draw order of Rand::hyper_erlang.
#include "dist_helpers.h"
#include "distributions/dist.h"
#include "distributions/dist_beta.h"
#include "distributions/dist_chisquare.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_lognormal.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_pearsonv.h"
#include "distributions/dist_pearsonvi.h"
#include "distributions/dist_triangular.h"
#include "distributions/dist_uniform.h"
#include "distributions/dist_weibull.h"
#include "numerics/random.h"

using namespace velmora;
using namespace disttest;

TEST(DistVariates, HyperErlangPassesKolmogorovSmirnovAndEqualSeedsRepeat) {
    HyperErlang d = mixture();
    auto sample = [&d](unsigned seed) {
        d.setSeed(seed);
        std::vector<double> x(20000);
        for (double& v : x) v = d.generateVariate();
        return x;
    };
    std::vector<double> x = sample(11);
    EXPECT_EQ(sample(11), x);
    std::sort(x.begin(), x.end());
    double n = x.size(), distance = 0;
    for (size_t i = 0; i < x.size(); i++) {
        double f = d.evalCDF(x[i]);
        distance = std::max(distance, std::max(f - i / n, (i + 1) / n - f));
    }
    EXPECT_LT(distance, 1.95 / std::sqrt(n));  // the 0.1 % critical value of the KS distance
}

TEST(DistVariates, HyperErlangDrawsTheBranchFirstThenItsErlang) {
    Rand mixture(42), manual(42);
    for (int i = 0; i < 200; i++) {
        double r = manual.uniform(0.0, 1.0);
        size_t branch = r <= 0.3 ? 0 : (r <= 0.8 ? 1 : 2);  // probabilities 0.3, 0.5, 0.2
        ASSERT_EQ(mixture.hyper_erlang(mixPhases, mixRates, mixProbabilities),
                  manual.erlang(mixPhases[branch], mixRates[branch]))
            << i;
    }
    EXPECT_EQ(failure([&] { mixture.hyper_erlang({1, 1}, {1, 2}, {0.5, 0.6}); }, "random"),
              "Invalid parameters for Hyper-Erlang distribution.");
}
