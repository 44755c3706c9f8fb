#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "timeseries/arima.h"

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

std::string loadMessage(const std::string& text, format f) {
    const std::string path = writeFile(f == FORMAT_XML ? "arima_bad.xml" : "arima_bad.conf", text);
    try {
        ARIMA m(path, f);
    } catch (Exception& e) {
        return e.file + ": " + e.message;
    }
    return "(no exception)";
}

}  // namespace

TEST(ARIMA, ConstructorTakesVarianceBeforeIntercept) {
    ARIMA m({0.5, 0.1}, {0.3}, 0.0, 1.5, 2.5, 0.75, "fit");
    EXPECT_EQ(m.getVariance(), 2.5);
    EXPECT_EQ(m.getIntercept(), 0.75);
    EXPECT_EQ(m.getMean(), 1.5);
    EXPECT_EQ(m.getOrder(), (std::vector<double>{2, 0, 1}));
    EXPECT_EQ(m.getProcessDescription(), "ARIMA(2,0,1)");
}

TEST(ARIMA, ClassWordFollowsDifferencingAndTerms) {
    struct Case {
        std::vector<double> ar, ma;
        double d;
        const char* word;
    } cases[] = {
        {{}, {}, 0.0, ""}, {{}, {0.5}, 0.0, "ma"}, {{0.5}, {0.5}, 0.0, "arma"},
        {{0.5}, {}, 1.0, "Arima"}, {{}, {}, 0.3, "fArima"}, {{0.5}, {}, -1.0, "ar"},
    };
    for (const Case& c : cases) EXPECT_EQ(ARIMA(c.ar, c.ma, c.d, 0, 1, 0, "").getClass(), c.word);
}

TEST(ARIMA, KeyValueFileReadsCoefficientsAndOnlyDFromTheOrder) {
    std::string path = writeFile("arima_kv.conf",
                                 "model = f-arima\norder = 7 0.4 9\nar = 0 0\nma = 0\nmean = 2\n"
                                 "variance = 3\nintercept = 0.5\nmethod = by hand\n");
    ARIMA m(path, FORMAT_CONFIG);
    EXPECT_EQ(m.getARCoefficients(), (std::vector<double>{0, 0}));
    EXPECT_TRUE(m.getMACoefficients().empty());
    EXPECT_EQ(m.getOrder(), (std::vector<double>{2, 0.4, 0}));
    EXPECT_EQ(m.getMean(), 2);
    EXPECT_EQ(m.getVariance(), 3);
    EXPECT_EQ(m.getIntercept(), 0.5);
}

TEST(ARIMA, LoadResetsTheSixModelFieldsButKeepsTheMethod) {
    ARIMA m({0.5}, {0.3}, 0.0, 2.0, 3.0, 0.25, "fit");
    const std::string kv = writeFile("arima_reset.conf", "ma = 0.1\n");
    m.load(kv, FORMAT_CONFIG);
    EXPECT_EQ(m.toString(FORMAT_CONFIG),
              "model = f-arima\nclass = ma\norder = 0 0 1\n\nma = 0.1 \nmean = 0\nintercept = 0\n"
              "method = fit\nvariance = 1\n");
    ARIMA x({0.5}, {0.3}, 0.4, 2.0, 3.0, 0.25, "fit");
    x.load(writeFile("arima_reset.xml", "<velmora><arima><ar>0.2</ar></arima></velmora>"), FORMAT_XML);
    EXPECT_EQ(x.toString(FORMAT_CONFIG),
              "model = f-arima\nclass = ar\norder = 1 0 0\nar = 0.2 \nmean = 0\nintercept = 0\n"
              "method = fit\nvariance = 1\n");
}

TEST(ARIMA, BrokenModelFilesAreRefused) {
    struct Case {
        const char* text;
        format f;
        const char* message;
    } cases[] = {
        {"order = 1 0\n", FORMAT_CONFIG, "arima: Invalid model order."},
        {"model = arta\n", FORMAT_CONFIG, "arima: Not an F-ARIMA model."},
        {"<velmora><arta><d>0</d></arta></velmora>", FORMAT_XML, "arima: Not an F-ARIMA model."},
        {"<model><arima><d>0</d></arima></model>", FORMAT_XML, "arima: Not an F-ARIMA model."},
    };
    for (const Case& c : cases) EXPECT_EQ(loadMessage(c.text, c.f), c.message) << c.text;
}

TEST(ARIMA, KeyValueTextReadsBack) {
    ARIMA m({0.6, -0.2}, {0.5}, 0.0, 1.25, 2.0, 0.5, "moments");
    EXPECT_EQ(m.toString(FORMAT_CONFIG),
              "model = f-arima\nclass = arma\norder = 2 0 1\nar = 0.6 -0.2 \nma = 0.5 \nmean = 1.25\n"
              "intercept = 0.5\nmethod = moments\nvariance = 2\n");
    const std::string path = testing::TempDir() + "arima_roundtrip.conf";
    m.save(path, FORMAT_CONFIG);
    ARIMA back(path, FORMAT_CONFIG);
    EXPECT_EQ(back.toString(FORMAT_CONFIG), m.toString(FORMAT_CONFIG));

    // Without coefficients the order line is followed by one empty line.
    ARIMA white({}, {}, 0.0, 0.0, 1.0, 0.0, "x");
    EXPECT_EQ(white.toString(FORMAT_CONFIG),
              "model = f-arima\nclass = \norder = 0 0 0\n\nmean = 0\nintercept = 0\nmethod = x\nvariance = 1\n");
}

TEST(ARIMA, XMLTextCarriesTheProcessMeanAndDropsTheIntercept) {
    ARIMA m({0.5}, {}, 0.0, 0.0, 1.0, 1.0, "fit");
    EXPECT_EQ(m.toString(FORMAT_XML),
              "<arima>\n<arcount>1</arcount>\n<ar>0.5 </ar>\n<macount>0</macount>\n<ma></ma>\n<d>0</d>\n"
              "<mean>2</mean>\n<variance>1</variance>\n</arima>\n");
    const std::string path = testing::TempDir() + "arima_roundtrip.xml";
    m.save(path, FORMAT_XML);
    EXPECT_EQ(readFile(path).substr(0, 32), "<?xml version=\"1.0\"?>\n<velmora>\n");
    ARIMA back(path, FORMAT_XML);
    EXPECT_EQ(back.getMean(), 2);
    EXPECT_EQ(back.getIntercept(), 0);
    EXPECT_EQ(back.getARCoefficients(), (std::vector<double>{0.5}));
    EXPECT_TRUE(back.getMACoefficients().empty());
}

TEST(ARIMA, SummaryListsFiveLagsOfAnARMA11) {
    ARIMA m({0.7}, {0.4}, 0.0, 1.0, 1.5, 0.3, "x");
    // Figures: the psi-weight sums of the autocovariance tests, at six digits.
    EXPECT_EQ(m.getSummary(),
              "ARIMA statistics:\n"
              "========================\n"
              "Model class: arma\n"
              "Order (p, d, q): 1 0 1\n"
              "AR coefficient 0: 0.7\n"
              "MA coefficient 0: 0.4\n"
              "Intercept: 0.3\n"
              "Mean: 1\n"
              "Variance of white noise: 1.5\n"
              "Distribution of Process: N(2, 5.05882)\n"
              "Autocovariance at lag 0: 5.05882\n"
              "Autocovariance at lag 1: 4.14118\n"
              "Autocovariance at lag 2: 2.89882\n"
              "Autocovariance at lag 3: 2.02918\n"
              "Autocovariance at lag 4: 1.42042\n"
              "Autocorrelation at lag 0: 1\n"
              "Autocorrelation at lag 1: 0.818605\n"
              "Autocorrelation at lag 2: 0.573023\n"
              "Autocorrelation at lag 3: 0.401116\n"
              "Autocorrelation at lag 4: 0.280781\n");
}

TEST(ARIMA, SummaryBlocksThatCannotBeComputedAreLeftOut) {
    const std::string head = "ARIMA statistics:\n========================\n";
    ARIMA fractional({}, {}, 0.25, 0.0, 1.0, 0.0, "");
    EXPECT_EQ(fractional.getSummary(0, 0, 2),
              head + "Model class: fArima\nOrder (p, d, q): 0 0.25 0\nIntercept: 0\nMean: 0\n"
                     "Variance of white noise: 1\nAutocorrelation at lag 0: 1\nAutocorrelation at lag 1: 0.333333\n");
    ARIMA integrated({0.5}, {}, 1.0, 0.0, 1.0, 0.0, "");
    EXPECT_EQ(integrated.getSummary(0, 0, 3),
              head + "Model class: Arima\nOrder (p, d, q): 1 1 0\nAR coefficient 0: 0.5\nIntercept: 0\nMean: 0\n"
                     "Variance of white noise: 1\n");
    ARIMA ma1({}, {0.5}, 0.0, 0.0, 1.0, 0.0, "");
    EXPECT_EQ(ma1.getSummary(0, 0, 0).find("lag"), std::string::npos);
}
