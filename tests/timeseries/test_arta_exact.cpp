// ARTA in exact numerics: no quantised or clipped values, analytic figures
// that agree with the generated trace, and the element's round trip.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <set>
#include <string>

#include "config/conf.h"
#include "distributions/dist_chisquare.h"
#include "distributions/dist_gamma.h"
#include "support/test_support.h"
#include "timeseries/arta.h"

namespace velmora {
namespace {

struct Sample {
    double mean = 0, sd = 0, lag1 = 0, max = 0;
    std::size_t distinct = 0;
};

Sample draw(ARTA& a, unsigned seed, unsigned n) {
    a.initRandomNumberGeneration(seed);
    std::vector<double> x(n);
    for (double& v : x) v = a.getNextRandomVariate();
    Sample s;
    for (double v : x) s.mean += v / n;
    double ss = 0, c1 = 0;
    for (unsigned i = 0; i < n; ++i) {
        ss += (x[i] - s.mean) * (x[i] - s.mean);
        if (i + 1 < n) c1 += (x[i] - s.mean) * (x[i + 1] - s.mean);
        s.max = std::max(s.max, x[i]);
    }
    s.sd = std::sqrt(ss / (n - 1));
    s.lag1 = c1 / ss;
    s.distinct = std::set<double>(x.begin(), x.end()).size();
    return s;
}

// The specified transform clips at the last entry of the normal table (a
// value of 139.73 here); the exact one has no value anywhere near: P(X >= 40)
// is about 1e-8 (scipy.stats.chi2.sf(40, 3)).
TEST(ARTAExact, ChiSquareTraceHasNoClippedValues) {
    ARTA a(new ChiSquare(3), {0.6}, 0, 1);
    a.setExactNumerics(true);
    const Sample s = draw(a, 5, 200000);
    EXPECT_LT(s.max, 40);
    EXPECT_GT(s.distinct, 190000u);
}

// Mean 70 and sd 49.497 (scipy.stats.gamma(2, scale=35)), and the model's
// lag-1 autocorrelation agree with the trace.
TEST(ARTAExact, GammaModelFiguresAgreeWithTheTrace) {
    ARTA a(new Gamma(2, 35), {-0.5}, 0, 1);
    a.setExactNumerics(true);
    const double lag1 = a.getAutocorrelations(1, 1)[0];
    const Sample s = draw(a, 7, 200000);
    EXPECT_NEAR(s.mean, 70, 0.01 * 70);
    EXPECT_NEAR(s.sd, 49.49747468305833, 0.02 * 49.5);
    EXPECT_NEAR(s.lag1, lag1, 0.01);
}

TEST(ARTAExact, ElementReadsBackWithItsNumerics) {
    ARTA a(new Gamma(1.0 / 3, 35), {-0.5}, 0, 1);
    a.setExactNumerics(true);
    const std::string file = velmora_test::tempPath("arta_exact.xml");
    a.save(file, FORMAT_XML);
    XMLConfig document(file);
    ARTA b(&document);
    std::remove(file.c_str());
    EXPECT_TRUE(b.hasExactNumerics());
    EXPECT_EQ(b.toString(FORMAT_XML), a.toString(FORMAT_XML));
    EXPECT_NE(a.toString(FORMAT_XML).find("<numerics>exact</numerics>"), std::string::npos);
    EXPECT_NE(a.toString(FORMAT_XML).find("0.33333333333333331"), std::string::npos);
}

}  // namespace
}  // namespace velmora

namespace velmora {
namespace {

TEST(ARTAExact, NumericsElementAcceptsTwoValues) {
    const std::string base = "<velmora><arta><arima><arcount>1</arcount><ar>0.5</ar><macount>0</macount><ma></ma>"
                             "<d>0</d><mean>0</mean><variance>1</variance></arima><dist><gammadist><shape>2</shape>"
                             "<scale>1</scale></gammadist></dist>";
    for (const char* value : {"exact", "specified"}) {
        XMLConfig document(velmora_test::writeFile("arta_numerics.xml", base + "<numerics>" + value + "</numerics></arta></velmora>"));
        EXPECT_EQ(ARTA(&document).hasExactNumerics(), std::string(value) == "exact");
    }
    const std::string wrong = velmora_test::writeFile("arta_wrong.xml", base + "<numerics>fast</numerics></arta></velmora>");
    EXPECT_NE(velmora_test::messageOf([&] { XMLConfig d(wrong); ARTA a(&d); }, "arta").find("'fast'"), std::string::npos);
}

}  // namespace
}  // namespace velmora
