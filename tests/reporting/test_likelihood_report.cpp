// The candidates table of the fit report: every fitted candidate with its
// figures, the chosen one marked, the others' reasons.
#include <gtest/gtest.h>

#include "reporting/likelihood_report.h"

using namespace velmora;

TEST(LikelihoodReport, RowsCarryTheFiguresAndMarkTheChoice) {
    auto fitted = [](const char* name, const char* detail, double logL, unsigned k) {
        modelchoice::Candidate c;
        c.name = name;
        c.detail = detail;
        c.fitted = true;
        c.logLikelihood = logL;
        c.parameters = k;
        modelchoice::complete(c, 1000);
        return c;
    };
    std::vector<modelchoice::Candidate> c = {fitted("renewal", "lognormal", -1234.5, 2), {},
                                             fitted("MAP", "order 2, branches 1 1", -1240, 4)};
    c[1].name = "ARTA";
    c[1].reason = "the marginal has no distribution function";
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
