// The fit report as sylvar-fit prints it, built from a result by hand.
#include <cmath>

#include "core/misc_string.h"
#include "reporting/fit_report.h"
#include "support/test_support.h"

using namespace velmora;

namespace {
TraceFitResult exponentialResult() {
    TraceFitResult r;
    r.values = 1000;
    r.marginalName = "exponential";
    r.marginalSource = "fitted";
    r.marginalParameters = "type = exponential\nrate = 2\n";
    r.assessment.family = "exponential";
    r.assessment.logLikelihood = -306.85281944;
    r.assessment.aic = 615.70563888;
    r.assessment.parameters = 1;
    r.assessment.ks = 0.012344;
    r.assessment.dataMoments = {0.5, 0.5, 0.75};
    r.assessment.modelMoments = {0.5, 0.5, NAN};
    r.modelClass = "ARTA";
    r.hasOrders = true;
    r.p = 1;
    r.targets = {0.3, -0.0000001};
    r.fitted = {0.25, 0.0000001};
    return r;
}
}  // namespace

TEST(FitReport, NumbersShowNoNegativeZeroAndNaNAsDash) {
    struct Case { double x; const char* form; const char* text; } cases[] = {
        {-0.0000001, "%.4f", "0.0000"}, {-0.0000001, "%+.6f", "+0.000000"}, {-0.25, "%+.2f", "-0.25"},
        {NAN, "%.6g", "-"},             {12345.678, "%.6g", "12345.7"},     {-INFINITY, "%.6g", "-inf"},
    };
    for (const Case& c : cases) EXPECT_EQ(formatNumber(c.x, c.form), c.text) << c.x << " " << c.form;
}

// Every section in its order and layout; a moment the model lacks shows
// "-" with no difference, and no joint log-likelihood line while it is NaN.
TEST(FitReport, SectionsFollowTheResult) {
    const TraceFitResult r = exponentialResult();
    const std::string report = fit_report(r, {"t.txt", "m.xml", {"p_acf.png"}, "total 0.10 s"});
    EXPECT_EQ(report,
              "sylvar-fit, " + libVelmora_name_full() + "\n\n"
              "Trace      t.txt, 1000 values\n\n"
              "Marginal   exponential, fitted to the values\n"
              "  type = exponential\n"
              "  rate = 2\n"
              "  log-likelihood  -306.8528194\n"
              "  AIC             615.7056389 (1 parameters)\n"
              "  KS distance     0.01234\n"
              "  moment            trace          model  difference\n"
              "  E[X]                0.5            0.5     +0.00 %\n"
              "  E[X^2]              0.5            0.5     +0.00 %\n"
              "  E[X^3]             0.75              -           -\n"
              "\nModel      ARTA on an ARMA(1, 0) base process\n"
              "  lag          trace        model   difference\n"
              "  1         0.300000     0.250000    -0.050000\n"
              "  2         0.000000     0.000000    +0.000000\n"
              "\nWritten    m.xml\n"
              "           p_acf.png\n"
              "Time       total 0.10 s\n");
    TraceFitResult withLikelihood = exponentialResult();
    withLikelihood.jointLogLikelihood = -12.5;
    EXPECT_NE(fit_report(withLikelihood, {}).find("  joint log-likelihood  -12.5\n"), std::string::npos);
}

TEST(FitReport, MissWarningNamesTheWorstLagBeyondTheThreshold) {
    TraceFitResult r = exponentialResult();
    EXPECT_EQ(fit_miss_warning(r, 0.05), "");
    EXPECT_EQ(fit_miss_warning(r, 0.01),
              "warning: the model's autocorrelation at lag 1 is 0.2500, the trace's 0.3000 (see the table of lags)");
    r.fitted.clear();
    EXPECT_EQ(fit_miss_warning(r, 0.0), "");
}
