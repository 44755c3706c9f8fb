// CPH: moments against numpy, the structural predicates, the text forms with their round trip, refusals, copies.
#include "config/conf.h"
#include "markov/cph.h"
#include "markov_helpers.h"

using namespace velmora;
using namespace markov_test;

namespace {
CPH dense() { return CPH(denseT(), denseTau()); }

void expectSameModel(const CPH& expected, const CPH& actual) {
    // Ten significant digits leave a relative error of at most 5e-10.
    expectRelative(actual.getT(), expected.getT(), 5e-10, "T");
    expectRelative(actual.getTau().toMatrix(), expected.getTau().toMatrix(), 5e-10, "tau");
}
}  // namespace

TEST(CPH, MomentsVarianceAndExitRatesMatchTheMatrixFormulas) {
    // numpy: factorial(i) * tau @ inv(-T)^i @ 1
    const std::vector<double> expected = {1.0, 1.045090909090909, 2.2598241322314054, 7.369135526371149,
                                          32.03204800483465, 173.90848782694076};
    CPH c = dense();
    expectRelative(Matrix(c.getMoments(0, 5), MATRIX_ROW), Matrix(expected, MATRIX_ROW), 1e-9, "moments");
    expectRelative(Matrix(c.getMoments(3, 4), MATRIX_ROW), mat({{expected[3], expected[4]}}), 1e-9, "moments 3-4");
    EXPECT_NEAR(c.getVariance(), 1.1676091239669426, 1e-9 * 1.1676091239669426);
    // Intervals are independent: correlation 1 at lag 0 only.
    EXPECT_EQ(c.getAutocorrelations(0, 3), (std::vector<double>{1, 0, 0, 0}));
    EXPECT_TRUE(c.getMoments(3, 2).empty() && c.getAutocorrelations(3, 2).empty());
    EXPECT_EQ(c.getExitRates(), Vector({1.5, 0.5, 1.0}, false));  // negated row sums, as a column
    // Moment 0 is the mass of tau, not 1.
    CPH defective(mat({{-2}}), row({0.7}));
    EXPECT_DOUBLE_EQ(defective.getMoments(0, 0)[0], 0.7);
    EXPECT_NEAR(defective.getTau0(), 0.3, 1e-15);
    EXPECT_EQ(failureOf([] { CPH(mat({{-1, 1}, {1, -1}}), row({1, 0})).getMoments(1, 1); }),
              "misc_linalg: Singular matrix.");
}

TEST(CPH, StructuralPredicates) {
    // Flags: valid, acyclic, exponential, Erlang, series canonical form.
    struct Case { const char* name; Matrix T; Vector tau; bool valid, acyclic, exponential, erlang, seriesCF; };
    const bool Y = true, N = false;
    Case cases[] = {
        {"exponential", mat({{-2}}), row({1}), Y, Y, Y, Y, Y},
        {"erlang 3", mat({{-2, 2, 0}, {0, -2, 2}, {0, 0, -2}}), row({1, 0, 0}), Y, Y, N, Y, Y},
        {"erlang, last rate differs", mat({{-2, 2, 0}, {0, -2, 2}, {0, 0, -3}}), row({1, 0, 0}), Y, Y, N, N, Y},
        {"series, falling rates", mat({{-2, 2}, {0, -1}}), row({1, 0}), Y, Y, N, N, Y},
        {"series, rising first rates", mat({{-2, 2, 0}, {0, -1, 1}, {0, 0, -3}}), row({1, 0, 0}), Y, Y, N, N, N},
        {"erlang starting in phase 1", mat({{-2, 2}, {0, -2}}), row({0, 1}), Y, Y, N, N, Y},
        {"last row leads back", mat({{-1, 1}, {1, -2}}), row({1, 0}), Y, N, N, N, Y},
        {"hyperexponential", mat({{-1, 0}, {0, -2}}), row({0.5, 0.5}), Y, Y, N, N, N},
        {"upper triangular dense", mat({{-3, 1, 1}, {0, -2, 1}, {0, 0, -1}}), row({0.2, 0.3, 0.5}), Y, Y, N, N, N},
        {"lower triangular", mat({{-1, 0}, {1, -2}}), row({0.5, 0.5}), Y, Y, N, N, N},
        {"dense cyclic", denseT(), denseTau(), Y, N, N, N, N},
        {"tau sums to 0.7", mat({{-2}}), row({0.7}), N, N, N, N, N},
        {"tau sums to 1 + 1e-6", mat({{-2}}), row({1 + 1e-6}), Y, Y, N, N, Y},
        {"tau entry -1e-12", mat({{-2, 0}, {0, -1}}), row({-1e-12, 1 + 1e-12}), N, N, N, N, N},
        {"positive row sum", mat({{-1, 2}, {0, -1}}), row({1, 0}), N, N, N, N, N},
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

TEST(CPH, TextFormsSummaryAndSavedFilesHaveTheirLayoutAndLoadBack) {
    // A column tau is taken as a row.
    CPH c(mat({{-1.5, 1.5}, {0, -2}}), Vector({0.25, 0.75}, false));
    EXPECT_EQ(c.getProcessDescription(), "CPH(2)");
    EXPECT_EQ(c.toString(FORMAT_CONFIG), "model = cph\nT = -1.5 1.5 \n0 -2 \n\ntau = 0.25 0.75 \n\n");
    EXPECT_EQ(c.toString(FORMAT_XML),
              "<ph>\n<states>2</states>\n<d0>-1.5 1.5 \n0 -2 \n</d0>\n<pi>0.25 0.75 \n</pi>\n</ph>\n");
    std::string path = tempPath("cph_layout.xml");
    c.save(path, FORMAT_XML);
    EXPECT_EQ(readFile(path), "<?xml version=\"1.0\"?>\n<velmora>\n" + c.toString(FORMAT_XML) + "</velmora>\n");

    CPH e(mat({{-2}}), row({1}));
    EXPECT_EQ(e.getSummary(2, 4, 4),
              "Summary:\n=========================\n\nmodel = cph\nT = -2 \n\ntau = 1 \n\n\n"
              "Moment 0: 1\nMoment 1: 0.5\nMoment 2: 0.5\nVariance: 0.25\n");
    EXPECT_NE(e.getSummary().find("Moment 5: 3.75\nVariance"), std::string::npos);
    // Saved files load back in both formats.
    CPH d(mat({{-3.123456789012, 1.0000000001, 0.5}, {0.5, -2, 1}, {1.0 / 3, 0.3, -1.5}}),
          row({1.0 / 7, 2.0 / 7, 4.0 / 7}));
    for (format f : {FORMAT_CONFIG, FORMAT_XML}) {
        path = tempPath("cph_roundtrip_" + std::to_string(f));
        d.save(path, f);
        expectSameModel(d, CPH(path, f));
    }
    // The XML reader takes d0 as a flat list and ignores the states element.
    XMLConfig doc(writeFile("cph_states.xml",
                            "<velmora><ph><states>7</states><d0>-1 1 0 -2 </d0><pi>0.5 0.5</pi></ph></velmora>"));
    expectSameModel(CPH(mat({{-1, 1}, {0, -2}}), row({0.5, 0.5})), CPH(&doc));
    // A key-value file without a model key is read as a CPH.
    EXPECT_EQ(CPH(writeFile("cph_nomodel.txt", "T = -2\ntau = 1\n"), FORMAT_CONFIG).getT()(0, 0), -2);
}

TEST(CPH, RefusesWhatItCannotReadOrWrite) {
    const std::pair<const char*, const char*> files[] = {
        {"<model><ph><d0>-1</d0><pi>1</pi></ph></model>", "cph: Not a PH distribution."},
        {"<velmora><map><d0>-1</d0></map></velmora>", "cph: Not a PH distribution."},
        {"<velmora><ph><pi>1</pi></ph></velmora>", "cph: Not a PH description."},
        {"<velmora><ph><d0>-1</d0></ph></velmora>", "cph: Not a PH description."},
        {"<velmora><ph><d0>-1 1 0 -2 3</d0><pi>1 0</pi></ph></velmora>", "matrix: Invalid matrix dimensions."},
    };
    for (const auto& f : files)
        EXPECT_EQ(failureOf([&] { CPH(writeFile("c.xml", f.first), FORMAT_XML); }), f.second) << f.first;
    XMLElement mapElement("map", "");
    EXPECT_EQ(failureOf([&] { CPH().load(&mapElement); }), "cph: Not a PH distribution.");
    std::string kv = writeFile("c.txt", "model = map\nT = -1\ntau = 1\n");
    EXPECT_EQ(failureOf([&] { CPH(kv, FORMAT_CONFIG); }), "cph: Not a CPH.");
    EXPECT_EQ(failureOf([&] { CPH(kv, static_cast<format>(3)); }), "ph: Unsupported format.");
    CPH c = dense();
    EXPECT_EQ(failureOf([&] { c.toString(static_cast<format>(2)); }), "cph: Output format not supported for CPHs.");
    EXPECT_EQ(failureOf([&] { c.save(tempPath("no/such/dir/x"), FORMAT_XML); }), "ph: Cannot open file.");
    // The format is checked after the file has been emptied.
    EXPECT_EQ(failureOf([&] { c.save(kv, static_cast<format>(2)); }), "cph: Output format not supported for CPHs.");
    EXPECT_EQ(readFile(kv), "");
}

TEST(CPH, CopiesOwnTheirStreamsAndSeedsRestartThem) {
    CPH a = dense(), fresh = dense();
    a.initRandomNumberGeneration(42);
    double first = a.getNextRandomVariate();
    CPH b(a), c, d(fresh);
    c = a;
    for (int i = 0; i < 20; i++) {
        double x = a.getNextRandomVariate();
        EXPECT_EQ(b.getNextRandomVariate(), x);
        EXPECT_EQ(c.getNextRandomVariate(), x);
    }
    a.initRandomNumberGeneration(42);
    EXPECT_EQ(a.getNextRandomVariate(), first);
    EXPECT_EQ(failureOf([&] { d.getNextRandomVariate(); }), "cph: Initialize Random Number Generation first.");
}
