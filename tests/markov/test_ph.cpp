#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "markov/cph.h"

using namespace velmora;

namespace {

Matrix mat(std::vector<std::vector<double>> rows) { return Matrix(rows); }
Vector row(std::vector<double> v) { return Vector(v, true); }

// A dense order-3 distribution with cycles; the reference figures of the
// tests are for this one.
CPH dense() {
    return CPH(mat({{-3, 1, 0.5}, {0.5, -2, 1}, {0.2, 0.3, -1.5}}), row({0.5, 0.3, 0.2}));
}

std::string writeFile(const std::string& name, const std::string& text) {
    std::string path = testing::TempDir() + name;
    std::ofstream(path.c_str()) << text;
    return path;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path.c_str());
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

std::string messageOf(const std::function<void()>& f) {
    try {
        f();
    } catch (Exception& e) {
        return e.message;
    }
    return "(no exception)";
}

void expectSameModel(const CPH& expected, const CPH& actual) {
    Matrix T = expected.getT(), T2 = actual.getT();
    ASSERT_EQ(T.getNumberRows(), T2.getNumberRows());
    ASSERT_EQ(T.getNumberCols(), T2.getNumberCols());
    for (unsigned i = 0; i < T.getNumberRows(); i++)
        for (unsigned j = 0; j < T.getNumberCols(); j++)
            EXPECT_NEAR(T(i, j), T2(i, j), 5e-10 * std::fabs(T(i, j))) << i << "," << j;
    Vector tau = expected.getTau(), tau2 = actual.getTau();
    ASSERT_EQ(tau.getNumberEntries(), tau2.getNumberEntries());
    EXPECT_TRUE(tau2.isRowVector());
    for (unsigned i = 0; i < tau.getNumberEntries(); i++)
        EXPECT_NEAR(tau(i), tau2(i), 5e-10 * std::fabs(tau(i)));
}

}  // namespace

TEST(CPH, ConstructorsSetTypeAndTransposeAColumnTau) {
    CPH c(mat({{-1, 1}, {0, -2}}), Vector({0.25, 0.75}, false));
    EXPECT_EQ(c.getProcessType(), PROCESS_CPH);
    EXPECT_EQ(c.getProcessTypeString(), "CPH");
    EXPECT_EQ(c.getProcessDescription(), "CPH(2)");
    EXPECT_TRUE(c.getTau().isRowVector());
    EXPECT_EQ(c.getTau()(1), 0.75);
    EXPECT_EQ(CPH().getOrder(), 0u);
    // setTau keeps what it gets.
    c.setTau(Vector({1, 0}, false));
    EXPECT_FALSE(c.getTau().isRowVector());
}

TEST(CPH, MomentsAndVarianceMatchTheMatrixFormula) {
    // numpy: factorial(i) * tau @ inv(-T)^i @ 1
    const double expected[] = {1.0, 1.045090909090909, 2.2598241322314054,
                               7.369135526371149, 32.03204800483465, 173.90848782694076};
    CPH c = dense();
    std::vector<double> m = c.getMoments(0, 5);
    ASSERT_EQ(m.size(), 6u);
    for (unsigned i = 0; i < 6; i++) EXPECT_NEAR(m[i], expected[i], 1e-9 * expected[i]) << i;
    std::vector<double> tail = c.getMoments(3, 4);
    ASSERT_EQ(tail.size(), 2u);
    EXPECT_NEAR(tail[0], expected[3], 1e-9 * expected[3]);
    EXPECT_TRUE(c.getMoments(3, 2).empty());
    EXPECT_NEAR(c.getVariance(), 1.1676091239669426, 1e-9 * 1.1676091239669426);

    // Exponential of rate 2, and moment 0 is the sum of tau, not 1.
    CPH e(mat({{-2}}), row({1}));
    EXPECT_DOUBLE_EQ(e.getMoments(1, 1)[0], 0.5);
    EXPECT_DOUBLE_EQ(e.getMoments(2, 2)[0], 0.5);
    EXPECT_DOUBLE_EQ(e.getVariance(), 0.25);
    CPH defective(mat({{-2}}), row({0.7}));
    EXPECT_DOUBLE_EQ(defective.getMoments(0, 0)[0], 0.7);
    EXPECT_NEAR(defective.getTau0(), 0.3, 1e-15);

    EXPECT_EQ(messageOf([] { CPH(mat({{-1, 1}, {1, -1}}), row({1, 0})).getMoments(1, 1); }), "Singular matrix.");
}

TEST(CPH, AutocorrelationsAreOneAtLagZeroOnly) {
    CPH c = dense();
    EXPECT_EQ(c.getAutocorrelations(0, 3), (std::vector<double>{1, 0, 0, 0}));
    EXPECT_EQ(c.getAutocorrelations(2, 3), (std::vector<double>{0, 0}));
    EXPECT_TRUE(c.getAutocorrelations(3, 2).empty());
}

TEST(CPH, ExitRatesAreTheNegatedRowSums) {
    Vector e = dense().getExitRates();
    EXPECT_FALSE(e.isRowVector());
    EXPECT_DOUBLE_EQ(e(0), 1.5);
    EXPECT_DOUBLE_EQ(e(1), 0.5);
    EXPECT_DOUBLE_EQ(e(2), 1.0);
}

TEST(CPH, StructuralTests) {
    struct Case {
        const char* name;
        Matrix T;
        Vector tau;
        bool valid, acyclic, exponential, erlang, seriesCF;
    };
    Case cases[] = {
        {"exponential", mat({{-2}}), row({1}), true, true, true, true, true},
        {"erlang 3", mat({{-2, 2, 0}, {0, -2, 2}, {0, 0, -2}}), row({1, 0, 0}), true, true, false, true, true},
        {"erlang, last rate differs", mat({{-2, 2, 0}, {0, -2, 2}, {0, 0, -3}}), row({1, 0, 0}), true, true, false,
         false, true},
        {"series, falling rates", mat({{-2, 2}, {0, -1}}), row({1, 0}), true, true, false, false, true},
        {"series, rising first rates", mat({{-2, 2, 0}, {0, -1, 1}, {0, 0, -3}}), row({1, 0, 0}), true, true,
         false, false, false},
        {"erlang starting in phase 1", mat({{-2, 2}, {0, -2}}), row({0, 1}), true, true, false, false, true},
        {"last row leads back", mat({{-1, 1}, {1, -2}}), row({1, 0}), true, false, false, false, true},
        {"hyperexponential", mat({{-1, 0}, {0, -2}}), row({0.5, 0.5}), true, true, false, false, false},
        {"upper triangular dense", mat({{-3, 1, 1}, {0, -2, 1}, {0, 0, -1}}), row({0.2, 0.3, 0.5}), true, true,
         false, false, false},
        {"lower triangular", mat({{-1, 0}, {1, -2}}), row({0.5, 0.5}), true, true, false, false, false},
        {"dense cyclic", dense().getT(), dense().getTau(), true, false, false, false, false},
        {"tau sums to 0.7", mat({{-2}}), row({0.7}), false, false, false, false, false},
        {"tau sums to 1 + 1e-6", mat({{-2}}), row({1 + 1e-6}), true, true, false, false, true},
        {"tau entry -1e-12", mat({{-2, 0}, {0, -1}}), row({-1e-12, 1 + 1e-12}), false, false, false, false, false},
        {"positive row sum", mat({{-1, 2}, {0, -1}}), row({1, 0}), false, false, false, false, false},
    };
    for (const Case& c : cases) {
        CPH p(c.T, c.tau);
        EXPECT_EQ(p.valid_ph(), c.valid) << c.name;
        EXPECT_EQ(p.isAcyclic(), c.acyclic) << c.name;
        EXPECT_EQ(p.isExponential(), c.exponential) << c.name;
        EXPECT_EQ(p.isErlang(), c.erlang) << c.name;
        EXPECT_EQ(p.hasSeriesCF(), c.seriesCF) << c.name;
    }
}

TEST(CPH, TextFormsHaveTheirExactLayout) {
    CPH c(mat({{-1.5, 1.5}, {0, -2}}), row({0.25, 0.75}));
    EXPECT_EQ(c.toString(FORMAT_CONFIG), "model = cph\nT = -1.5 1.5 \n0 -2 \n\ntau = 0.25 0.75 \n\n");
    EXPECT_EQ(c.toString(FORMAT_XML),
              "<ph>\n<states>2</states>\n<d0>-1.5 1.5 \n0 -2 \n</d0>\n<pi>0.25 0.75 \n</pi>\n</ph>\n");
    EXPECT_EQ(messageOf([&] { c.toString(static_cast<format>(2)); }), "Output format not supported for CPHs.");

    std::string path = testing::TempDir() + "cph_layout.xml";
    c.save(path, FORMAT_XML);
    EXPECT_EQ(readFile(path), "<?xml version=\"1.0\"?>\n<velmora>\n" + c.toString(FORMAT_XML) + "</velmora>\n");
}

TEST(CPH, SavedFilesLoadBackInBothFormats) {
    // Values with more digits than the text keeps: ten significant digits
    // leave a relative error of at most 5e-10.
    CPH c(mat({{-3.123456789012, 1.0000000001, 0.5}, {0.5, -2, 1}, {1.0 / 3, 0.3, -1.5}}),
          row({1.0 / 7, 2.0 / 7, 4.0 / 7}));
    for (format f : {FORMAT_CONFIG, FORMAT_XML}) {
        std::string path = testing::TempDir() + "cph_roundtrip_" + std::to_string(f);
        c.save(path, f);
        CPH back(path, f);
        expectSameModel(c, back);
    }
    Config config(writeFile("cph_config.txt", c.toString(FORMAT_CONFIG)));
    expectSameModel(c, CPH(&config));
}

TEST(CPH, XMLReaderTakesTheFlatListAndIgnoresStates) {
    std::string path = writeFile("cph_states.xml",
                                 "<velmora><ph><states>7</states><d0>-1 1 0 -2 </d0><pi>0.5 0.5</pi></ph></velmora>");
    XMLConfig doc(path);
    CPH c(&doc);
    expectSameModel(CPH(mat({{-1, 1}, {0, -2}}), row({0.5, 0.5})), c);
}

TEST(CPH, LoadRefusals) {
    struct Case {
        const char* name;
        std::string xml;
        std::string message;
    };
    Case cases[] = {
        {"wrong root", "<model><ph><d0>-1</d0><pi>1</pi></ph></model>", "Not a PH distribution."},
        {"no ph child", "<velmora><map><d0>-1</d0></map></velmora>", "Not a PH distribution."},
        {"no d0", "<velmora><ph><pi>1</pi></ph></velmora>", "Not a PH description."},
        {"no pi", "<velmora><ph><d0>-1</d0></ph></velmora>", "Not a PH description."},
        {"five numbers", "<velmora><ph><d0>-1 1 0 -2 3</d0><pi>1 0</pi></ph></velmora>",
         "Invalid matrix dimensions."},
    };
    for (const Case& c : cases) {
        std::string path = writeFile("cph_refusal.xml", c.xml);
        EXPECT_EQ(messageOf([&] { CPH p(path, FORMAT_XML); }), c.message) << c.name;
    }

    XMLElement element("map", "");
    CPH p;
    EXPECT_EQ(messageOf([&] { p.load(&element); }), "Not a PH distribution.");

    std::string kv = writeFile("cph_refusal.txt", "model = map\nT = -1\ntau = 1\n");
    EXPECT_EQ(messageOf([&] { CPH q(kv, FORMAT_CONFIG); }), "Not a CPH.");
    std::string noModel = writeFile("cph_nomodel.txt", "T = -2\ntau = 1\n");
    EXPECT_EQ(CPH(noModel, FORMAT_CONFIG).getT()(0, 0), -2);

    EXPECT_EQ(messageOf([&] { CPH q(kv, static_cast<format>(3)); }), "Unsupported format.");
}

TEST(CPH, SaveRefusals) {
    CPH c = dense();
    EXPECT_EQ(messageOf([&] { c.save(testing::TempDir() + "no/such/dir/x", FORMAT_XML); }), "Cannot open file.");
    // The format is checked after the file has been emptied.
    std::string path = writeFile("cph_emptied.txt", "old content");
    EXPECT_EQ(messageOf([&] { c.save(path, static_cast<format>(2)); }), "Output format not supported for CPHs.");
    EXPECT_EQ(readFile(path), "");
}

TEST(CPH, SummaryListsModelMomentsAndVariance) {
    CPH e(mat({{-2}}), row({1}));
    EXPECT_EQ(e.getSummary(2, 4, 4),
              "Summary:\n=========================\n\nmodel = cph\nT = -2 \n\ntau = 1 \n\n\n"
              "Moment 0: 1\nMoment 1: 0.5\nMoment 2: 0.5\nVariance: 0.25\n");
    EXPECT_NE(e.getSummary().find("Moment 5: 3.75\nVariance"), std::string::npos);
}

TEST(CPH, CopiesOwnTheirStreams) {
    CPH a = dense();
    a.initRandomNumberGeneration(42);
    a.getNextRandomVariate();
    CPH b(a);
    CPH c;
    c = a;
    for (int i = 0; i < 20; i++) {
        double x = a.getNextRandomVariate();
        EXPECT_EQ(b.getNextRandomVariate(), x);
        EXPECT_EQ(c.getNextRandomVariate(), x);
    }
    CPH fresh = dense();
    CPH d(fresh);
    EXPECT_EQ(messageOf([&] { d.getNextRandomVariate(); }), "Initialize Random Number Generation first.");
}

TEST(CPH, ExampleModelIsAHypoExponentialOfOrderThree) {
    XMLConfig doc(std::string(VELMORA_SOURCE_DIR) + "/examples/ph.xml");
    CPH c(&doc);
    EXPECT_EQ(c.getProcessDescription(), "CPH(3)");
    EXPECT_TRUE(c.isAcyclic());
    EXPECT_TRUE(c.hasSeriesCF());
    // Stages of rates 1, 2 and 3: mean 1 + 1/2 + 1/3, variance 1 + 1/4 + 1/9.
    EXPECT_NEAR(c.getMoments(1, 1)[0], 11.0 / 6, 1e-12);
    EXPECT_NEAR(c.getVariance(), 49.0 / 36, 1e-12);
}
