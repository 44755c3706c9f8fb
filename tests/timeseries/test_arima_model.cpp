#include "timeseries/arima.h"
#include "support/test_support.h"

using namespace velmora;
using namespace velmora_test;

// A file gives d only from its order line; a load resets the six model fields but keeps the method.
TEST(ARIMA, FilesGiveOnlyDFromTheOrderAndLoadingResetsAllButTheMethod) {
    ARIMA f(writeFile("arima_kv.conf", "model = f-arima\norder = 7 0.4 9\nar = 0 0\nma = 0\nmean = 2\n"
                                       "variance = 3\nintercept = 0.5\nmethod = by hand\n"), FORMAT_CONFIG);
    EXPECT_EQ(f.toString(FORMAT_CONFIG), "model = f-arima\nclass = fArima\norder = 2 0.4 0\nar = 0 0 \nmean = 2\n"
                                         "intercept = 0.5\nmethod = by hand\nvariance = 3\n");
    ARIMA m({0.5}, {0.3}, 0.0, 2.0, 3.0, 0.25, "fit");
    m.load(writeFile("arima_reset.conf", "ma = 0.1\n"), FORMAT_CONFIG);
    EXPECT_EQ(m.toString(FORMAT_CONFIG), "model = f-arima\nclass = ma\norder = 0 0 1\n\nma = 0.1 \nmean = 0\n"
                                         "intercept = 0\nmethod = fit\nvariance = 1\n");
    ARIMA x({0.5}, {0.3}, 0.4, 2.0, 3.0, 0.25, "fit");
    x.load(writeFile("arima_reset.xml", "<velmora><arima><ar>0.2</ar></arima></velmora>"), FORMAT_XML);
    EXPECT_EQ(x.toString(FORMAT_CONFIG), "model = f-arima\nclass = ar\norder = 1 0 0\nar = 0.2 \nmean = 0\n"
                                         "intercept = 0\nmethod = fit\nvariance = 1\n");
}

TEST(ARIMA, BrokenModelFilesAreRefused) {
    const struct { const char* text; format f; const char* message; } cases[] = {
        {"order = 1 0\n", FORMAT_CONFIG, "arima: Invalid model order."},
        {"model = arta\n", FORMAT_CONFIG, "arima: Not an F-ARIMA model."},
        {"<velmora><arta><d>0</d></arta></velmora>", FORMAT_XML, "arima: Not an F-ARIMA model."},
        {"<model><arima><d>0</d></arima></model>", FORMAT_XML, "arima: Not an F-ARIMA model."},
    };
    for (const auto& c : cases) {
        const std::string path = writeFile(c.f == FORMAT_XML ? "arima_bad.xml" : "arima_bad.conf", c.text);
        EXPECT_EQ(failureOf([&] { ARIMA m(path, c.f); }), c.message) << c.text;
    }
}

// The constructor takes the variance before the intercept.
TEST(ARIMA, BothTextsReadBack) {
    ARIMA m({0.6, -0.2}, {0.5}, 0.0, 1.25, 2.0, 0.5, "moments");
    EXPECT_EQ(m.toString(FORMAT_CONFIG), "model = f-arima\nclass = arma\norder = 2 0 1\nar = 0.6 -0.2 \nma = 0.5 \n"
                                         "mean = 1.25\nintercept = 0.5\nmethod = moments\nvariance = 2\n");
    const std::string path = tempPath("arima_roundtrip.conf");
    m.save(path, FORMAT_CONFIG);
    EXPECT_EQ(ARIMA(path, FORMAT_CONFIG).toString(FORMAT_CONFIG), m.toString(FORMAT_CONFIG));
    // Without coefficients the order line is followed by one empty line.
    EXPECT_EQ(ARIMA({}, {}, 0.0, 0.0, 1.0, 0.0, "x").toString(FORMAT_CONFIG),
              "model = f-arima\nclass = \norder = 0 0 0\n\nmean = 0\nintercept = 0\nmethod = x\nvariance = 1\n");
    // The XML text carries the process mean and drops the intercept.
    ARIMA x({0.5}, {}, 0.0, 0.0, 1.0, 1.0, "fit");
    EXPECT_EQ(x.toString(FORMAT_XML), "<arima>\n<arcount>1</arcount>\n<ar>0.5 </ar>\n<macount>0</macount>\n<ma></ma>\n"
                                      "<d>0</d>\n<mean>2</mean>\n<variance>1</variance>\n</arima>\n");
    x.save(path + ".xml", FORMAT_XML);
    EXPECT_EQ(ARIMA(path + ".xml", FORMAT_XML).toString(FORMAT_CONFIG),
              "model = f-arima\nclass = ar\norder = 1 0 0\nar = 0.5 \nmean = 2\nintercept = 0\nmethod = \nvariance = 1\n");
}

// Figures: the psi-weight sums of the autocovariance tests, at six digits.
TEST(ARIMA, SummaryListsFiveLagsOfAnARMA11) {
    EXPECT_EQ(ARIMA({0.7}, {0.4}, 0.0, 1.0, 1.5, 0.3, "x").getSummary(),
              "ARIMA statistics:\n========================\nModel class: arma\nOrder (p, d, q): 1 0 1\n"
              "AR coefficient 0: 0.7\nMA coefficient 0: 0.4\nIntercept: 0.3\nMean: 1\nVariance of white noise: 1.5\n"
              "Distribution of Process: N(2, 5.05882)\nAutocovariance at lag 0: 5.05882\n"
              "Autocovariance at lag 1: 4.14118\nAutocovariance at lag 2: 2.89882\nAutocovariance at lag 3: 2.02918\n"
              "Autocovariance at lag 4: 1.42042\nAutocorrelation at lag 0: 1\nAutocorrelation at lag 1: 0.818605\n"
              "Autocorrelation at lag 2: 0.573023\nAutocorrelation at lag 3: 0.401116\n"
              "Autocorrelation at lag 4: 0.280781\n");
}

TEST(ARIMA, SummaryBlocksThatCannotBeComputedAreLeftOut) {
    const std::string head = "ARIMA statistics:\n========================\n";
    EXPECT_EQ(ARIMA({}, {}, 0.25, 0.0, 1.0, 0.0, "").getSummary(0, 0, 2),
              head + "Model class: fArima\nOrder (p, d, q): 0 0.25 0\nIntercept: 0\nMean: 0\n"
                     "Variance of white noise: 1\nAutocorrelation at lag 0: 1\nAutocorrelation at lag 1: 0.333333\n");
    EXPECT_EQ(ARIMA({0.5}, {}, 1.0, 0.0, 1.0, 0.0, "").getSummary(0, 0, 3),
              head + "Model class: Arima\nOrder (p, d, q): 1 1 0\nAR coefficient 0: 0.5\nIntercept: 0\nMean: 0\n"
                     "Variance of white noise: 1\n");
    EXPECT_EQ(ARIMA({}, {0.5}, 0.0, 0.0, 1.0, 0.0, "").getSummary(0, 0, 0).find("lag"), std::string::npos);
    // The other class words are in the texts above; a negative d makes no fractional class.
    EXPECT_EQ(ARIMA({0.5}, {}, -1.0, 0.0, 1.0, 0.0, "").getClass(), "ar");
}
