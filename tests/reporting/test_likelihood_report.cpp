// The candidates table of the fit report: every fitted candidate with its
// figures, the chosen one marked, the others' reasons.
#include <gtest/gtest.h>

#include "reporting/likelihood_report.h"

using namespace velmora;

TEST(LikelihoodReport, RowsCarryTheFiguresAndMarkTheChoice) {
    std::vector<modelchoice::Candidate> c(3);
    c[0].name = "renewal";
    c[0].detail = "lognormal";
    c[0].fitted = true;
    c[0].logLikelihood = -1234.5;
    c[0].parameters = 2;
    modelchoice::complete(c[0], 1000);
    c[1].name = "ARTA";
    c[1].reason = "the marginal has no distribution function";
    c[2].name = "MAP";
    c[2].detail = "order 2, branches 1 1";
    c[2].fitted = true;
    c[2].logLikelihood = -1240;
    c[2].parameters = 4;
    modelchoice::complete(c[2], 1000);
    // AIC 2k - 2 logL = 2473, BIC k ln 1000 - 2 logL = 2482.815510...
    EXPECT_NEAR(c[0].aic, 2473.0, 1e-9);
    EXPECT_NEAR(c[0].bic, 2 * 6.907755278982137 + 2469.0, 1e-9);
    const std::string text = likelihood_table(c, 0, "BIC");
    EXPECT_NE(text.find("the lowest BIC is written"), std::string::npos);
    EXPECT_NE(text.find("renewal  lognormal"), std::string::npos);
    EXPECT_NE(text.find("-1234.5"), std::string::npos);
    EXPECT_NE(text.find("2482.815511  <-"), std::string::npos) << text;
    EXPECT_NE(text.find("ARTA: not fitted (the marginal has no distribution function)"), std::string::npos);
    EXPECT_EQ(text.find("<-", text.find("MAP")), std::string::npos);
}
