#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "distributions/dist.h"
#include "numerics/matrix.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"
#include "traces/trace.h"

using namespace velmora;

namespace {

std::string writeFile(const std::string& name, const std::string& text) {
    std::string path = testing::TempDir() + name;
    std::ofstream(path.c_str(), std::ios::binary) << text;
    return path;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path.c_str());
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string failure(const std::function<void()>& action) {
    try {
        action();
    } catch (Exception& e) {
        return e.file + ": " + e.message;
    }
    return "(no exception)";
}

const char* const gammaDist = "<dist>\n<gammadist>\n<shape>2</shape>\n<scale>1.5</scale>\n</gammadist>\n</dist>\n";
const char* const ar2Base = "<arima>\n<ar>0.5 0.2 </ar>\n<d>0</d>\n<mean>0</mean>\n<variance>1</variance>\n</arima>\n";

}  // namespace

TEST(ARTA, DescriptionNamesPAndOnlyANonZeroQ) {
    ARTA ar2(new Normal(0, 1), {0.5, 0.2}, 0.0, 1.0);
    EXPECT_EQ(ar2.getProcessDescription(), "ARTA(2)");
    EXPECT_EQ(ar2.getOrder(), (std::vector<unsigned>{2, 0}));
    ARTA arma21(new Normal(0, 1), {0.5, 0.2}, {0.3}, 0.0, 1.0);
    EXPECT_EQ(arma21.getProcessDescription(), "ARTA(2,1)");
    EXPECT_EQ(arma21.getProcessType(), PROCESS_ARTA);
    EXPECT_EQ(arma21.getProcessTypeString(), "ARTA");
    // A single 0 in key-value form is one AR coefficient of value 0.
    ARTA zero(writeFile("arta_zero.conf", "model = arta\ndistribution = exponential\nar = 0\n"), FORMAT_CONFIG);
    EXPECT_EQ(zero.getOrder(), (std::vector<unsigned>{1, 0}));
    EXPECT_EQ(zero.getProcessDescription(), "ARTA(1)");
}

TEST(ARTA, BaseProcessIsNormalisedToUnitVarianceAndKeepsItsMean) {
    ARTA a(new Exponential(1), {0.6, -0.2}, {0.4}, 5.0, 3.0);
    ARIMA* base = a.getBaseProcess();
    EXPECT_NEAR(base->getAutocovariance(0), 1.0, 1e-12);
    EXPECT_EQ(base->getMean(), 5.0);
    EXPECT_EQ(base->getMACoefficients(), (std::vector<double>{0.4}));
    // The stated deviation has no effect on the process variance.
    ARTA b(new Exponential(1), {0.6, -0.2}, {0.4}, 5.0, 0.1);
    EXPECT_NEAR(b.getBaseProcess()->getVariance(), base->getVariance(), 1e-12);
}

TEST(ARTA, KeyValueTextHasItsLayoutAndReadsBack) {
    ARTA a(new Gamma(2, 1.5), {0.5, 0.2}, {0.3}, 1.0, 2.0);
    const std::string text = a.toString(FORMAT_CONFIG);
    std::ostringstream variance;
    variance << a.getBaseProcess()->getVariance();
    EXPECT_EQ(text,
              "model = arta\nclass = ARTA\n"
              "distribution = gamma\nalpha = 2.000000\nbeta = 1.500000\n\n"
              "order = 2, 1\nar = 0.5 0.2 \nma = 0.3 \nar_mean = 1\nar_variance = " +
                  variance.str() + "\n");
    const std::string path = testing::TempDir() + "arta.conf";
    a.save(path, FORMAT_CONFIG);
    EXPECT_EQ(readFile(path), text);
    ARTA back(path, FORMAT_CONFIG);
    EXPECT_EQ(back.toString(FORMAT_CONFIG), text);
    EXPECT_NEAR(back.getBaseProcess()->getAutocovariance(0), 1.0, 1e-5);

    // Without MA terms there is no "ma" line; p = 0 still writes "ar = ".
    ARTA white(new Exponential(2), {}, 0.0, 1.0);
    EXPECT_EQ(white.toString(FORMAT_CONFIG),
              "model = arta\nclass = ARTA\ndistribution = exponential\nrate = 2\n\n"
              "order = 0, 0\nar = \nar_mean = 0\nar_variance = 1\n");
}

TEST(ARTA, XmlTextReadsBackInsideTheEnvelope) {
    ARTA a(new Gamma(2, 1.5), {0.5, 0.2}, {0.3}, 1.0, 2.0);
    const std::string text = a.toString(FORMAT_XML);
    EXPECT_EQ(text.substr(0, 14), "<arta>\n<arima>");
    EXPECT_EQ(text.substr(text.size() - 16), "</dist>\n</arta>\n");
    const std::string path = testing::TempDir() + "arta.xml";
    a.save(path, FORMAT_XML);
    EXPECT_EQ(readFile(path), "<?xml version=\"1.0\"?>\n<velmora>\n" + text + "</velmora>\n");
    ARTA back(path, FORMAT_XML);
    EXPECT_EQ(back.toString(FORMAT_XML), text);
    EXPECT_EQ(back.getDistribution()->getType(), DIST_GAMMA);
}

TEST(ARTA, ReloadReplacesBothParts) {
    ARTA a(new Gamma(2, 1.5), {0.5, 0.2}, {0.3}, 1.0, 2.0);
    Config config(writeFile("arta_reload.conf", "distribution = uniform\nar = 0.4\nar_mean = 0.5\n"));
    a.load(&config);
    EXPECT_EQ(a.getDistribution()->getType(), DIST_UNIFORM);
    EXPECT_EQ(a.getOrder(), (std::vector<unsigned>{1, 0}));
    EXPECT_EQ(a.getBaseProcess()->getMean(), 0.5);
    EXPECT_NEAR(a.getBaseProcess()->getVariance(), 1 - 0.4 * 0.4, 1e-15);
}

TEST(ARTA, SummaryListsMarginalBaseAndLagsZeroToLags) {
    ARTA a(new Normal(0, 1), {0.5}, 0.0, 1.0);
    const std::string expected =
        "ARTA statistics:\n========================\nMarginal Distribution:\n----------------------\n"
        "distribution = normal\nmean = 0\nvar = 1\nmean: 0\nvariance: 1\n\n"
        "Base Process:\n----------------\n" +
        a.getBaseProcess()->getSummary(0, 0, 2) +
        "\n\nARTA Autocorrelation:\n---------------------\n"
        "Autocorrelation at lag 0: 1\nAutocorrelation at lag 1: 0.5\nAutocorrelation at lag 2: 0.25\n";
    EXPECT_EQ(a.getSummary(0, 0, 2), expected);
    const std::string standard = a.getSummary();
    EXPECT_NE(standard.find("Autocorrelation at lag 5: 0.03125\n"), std::string::npos);
    EXPECT_EQ(standard.find("Autocorrelation at lag 6"), std::string::npos);
}

TEST(ARTA, MomentsAreThoseOfTheMarginal) {
    ARTA a(new Gamma(2, 1.5), {0.5}, 0.0, 1.0);
    // Gamma moments: 3, 3^2 + 4.5 = 13.5.
    EXPECT_EQ(a.getMoments(0, 2).size(), 3u);
    EXPECT_EQ(a.getMoments(0, 2)[0], 1.0);
    EXPECT_NEAR(a.getMoments(1, 2)[1], 13.5, 1e-12);
}

TEST(ARTA, DistributionTableWalksHundredStepsFromARaisedExponentialBound) {
    ARTA a(new Exponential(1), {0.5}, 0.0, 1.0);
    Distribution d = a.computeDistribution(0, 10);
    ASSERT_GE(d.cdf.size(), 100u);
    EXPECT_LE(d.cdf.size(), 101u);
    EXPECT_EQ(d.cdf[0].first, 0.0001);
    EXPECT_EQ(d.cdf[1].first, 0.0001 + (10 - 0.0001) / 100);
    EXPECT_EQ(d.pdf.size(), d.cdf.size());
    EXPECT_EQ(d.ccdf.size(), d.cdf.size());
    EXPECT_EQ(a.computeDistribution(1, 10).cdf[0].first, 1.0);
    // Left to the implementer: equal bounds give one point.
    EXPECT_EQ(a.computeDistribution(2, 2).cdf.size(), 1u);
}

TEST(ARTA, JointMomentsOfNeighboursAreIndexedByExponents) {
    ARTA a(new Exponential(1), {0.5}, 0.0, 1.0);
    Matrix m = a.getJointMoments(1, 2);
    ASSERT_EQ(m.getNumberRows(), 2u);
    ASSERT_EQ(m.getNumberCols(), 2u);
    Exponential e(1);
    EXPECT_EQ(m(0, 0), arta_process_compute_autocorrelation_joint_moments(&e, 0.5, 1, 1));
    EXPECT_EQ(m(0, 1), arta_process_compute_autocorrelation_joint_moments(&e, 0.5, 1, 2));
    EXPECT_EQ(m(1, 0), arta_process_compute_autocorrelation_joint_moments(&e, 0.5, 2, 1));
    // Symmetric in the exponents, and E[X1 X2] = rho_X var + mean^2.
    EXPECT_NEAR(m(0, 1), m(1, 0), 1e-4 * m(0, 1));
    EXPECT_NEAR(m(0, 0), a.getAutocorrelations(1, 1)[0] + 1.0, 1e-12);
}

TEST(ARTA, FailuresCarryTheirMessages) {
    const std::string mapModel = writeFile("arta_map.conf", "model = map\ndistribution = exponential\n");
    const std::string wrongRoot = writeFile("arta_root.xml", std::string("<model>\n<arta>\n") + ar2Base + gammaDist + "</arta>\n</model>\n");
    const std::string noArta = writeFile("arta_none.xml", std::string("<velmora>\n") + ar2Base + "</velmora>\n");
    const std::string noArima = writeFile("arta_noarima.xml", std::string("<velmora>\n<arta>\n") + gammaDist + "</arta>\n</velmora>\n");
    const std::string noDist = writeFile("arta_nodist.xml", std::string("<velmora>\n<arta>\n") + ar2Base + "</arta>\n</velmora>\n");
    const std::string noMarginal = writeFile("arta_nomarginal.conf", "model = arta\nar = 0.5\n");
    auto model = [] { return new ARTA(new Exponential(1), {0.5}, 0.0, 1.0); };
    struct Case {
        std::function<void()> action;
        const char* expected;
    } cases[] = {
        {[&] { ARTA a(mapModel, FORMAT_CONFIG); }, "arta: Not an ARTA model."},
        {[&] { ARTA a(wrongRoot, FORMAT_XML); }, "arta: Not an ARTA model."},
        {[&] { ARTA a(noArta, FORMAT_XML); }, "arta: Not an ARTA model."},
        {[&] { ARTA a(noArima, FORMAT_XML); }, "arta: Invalid ARTA model."},
        {[&] { ARTA a(noDist, FORMAT_XML); }, "arta: Invalid ARTA model."},
        {[&] { ARTA a(mapModel, static_cast<format>(2)); }, "arta: Format not supported!"},
        {[&] { std::unique_ptr<ARTA> a(model()); a->toString(static_cast<format>(2)); },
         "arta: Output format not supported for ARTA models."},
        {[&] { std::unique_ptr<ARTA> a(model()); a->save("/nonexistent-dir/a.xml", FORMAT_XML); },
         "arta: Cannot open file."},
        {[&] { std::unique_ptr<ARTA> a(model()); Trace t; a->computeLikelihood(&t); }, "arta: Not implemented."},
        {[&] { std::unique_ptr<ARTA> a(model()); a->computeDistribution(1, 0); },
         "arta: Invalid range for distribution."},
        {[&] { std::unique_ptr<ARTA> a(model()); a->getNextRandomVariate(); },
         "arta: Initialize Random Number Generation first."},
        // Left to the implementer: a key-value model without "distribution"
        // loads with no marginal, which is reported where it is needed.
        {[&] { ARTA a(noMarginal, FORMAT_CONFIG); a.getAutocorrelations(1, 2); }, "arta: No marginal distribution."},
        {[&] { ARTA a(noMarginal, FORMAT_CONFIG); a.getSummary(); }, "arta: No marginal distribution."},
        {[&] { ARTA a(noMarginal, FORMAT_CONFIG); a.initRandomNumberGeneration(1); a.getNextRandomVariate(); },
         "arta: No marginal distribution."},
        // Left to the implementer: a reversed range of joint moments.
        {[&] { std::unique_ptr<ARTA> a(model()); a->getJointMoments(2, 1); }, "arta: Invalid range of joint moments."},
    };
    for (const Case& c : cases) EXPECT_EQ(failure(c.action), c.expected);
}
