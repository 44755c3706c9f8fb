// MEP: analysis of an order-3 process against an independent computation,
// the shapes of the joint-moment and autocorrelation results, the two text
// forms and their round trip, and the refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "markov/maps.h"
#include "markov/mep.h"
#include "numerics/matrix.h"

using namespace velmora;

namespace {

std::string mepMessage(const std::function<void()>& action, const std::string& source = "mep") {
    try {
        action();
    } catch (Exception& e) {
        EXPECT_EQ(e.file, source) << e.message;
        return e.message;
    }
    return "(no exception)";
}

std::string mepFile(const std::string& name, const std::string& text) {
    std::string path = testing::TempDir() + name;
    std::ofstream(path.c_str(), std::ios::binary) << text;
    return path;
}

Matrix scalarMatrix(double value) { return Matrix(std::vector<std::vector<double>>{{value}}); }

// The order-3 process of these tests: dense D0 and D1, rows closing to 0.
Matrix order3D0() { return Matrix({{-3.0, 1.0, 0.5}, {0.2, -1.5, 0.3}, {0.1, 0.4, -0.8}}); }
Matrix order3D1() { return Matrix({{1.2, 0.2, 0.1}, {0.1, 0.8, 0.1}, {0.0, 0.1, 0.2}}); }

void expectRelative(double expected, double actual, double tolerance, const std::string& what) {
    EXPECT_NEAR(actual, expected, tolerance * std::fabs(expected)) << what;
}

}  // namespace

// Reference figures: numpy 1.24 on the same matrices, pi from the eigenvector
// of P^T for eigenvalue 1, theta from least squares on (D0 + D1)^T, moments
// i! pi M^i 1 with numpy.linalg.matrix_power and numpy.linalg.inv.
TEST(MEP, OrderThreeAgreesWithIndependentComputation) {
    MEP mep(order3D0(), order3D1());
    const double tol = 1e-9;

    const double P[3][3] = {{0.47563884156729136, 0.3819420783645657, 0.14241908006814313},
                            {0.1577512776831346, 0.6875638841567292, 0.15468483816013628},
                            {0.13833049403747874, 0.5165247018739354, 0.3451448040885861}};
    Matrix p = mep.getP();
    for (unsigned i = 0; i < 3; i++)
        for (unsigned j = 0; j < 3; j++) expectRelative(P[i][j], p(i, j), tol, "P");

    const double pi[3] = {0.22592592592592609, 0.5864197530864196, 0.18765432098765433};
    const double theta[3] = {0.10280373831775697, 0.47663551401869186, 0.42056074766355145};
    Matrix embedded = mep.steady_state_vector_embedded_dtmc();
    Matrix stationary = mep.steady_state_vector();
    ASSERT_EQ(embedded.getNumberRows(), 1u);
    ASSERT_EQ(stationary.getNumberCols(), 3u);
    for (unsigned j = 0; j < 3; j++) {
        expectRelative(pi[j], embedded(0u, j), tol, "pi");
        expectRelative(theta[j], stationary(0u, j), tol, "theta");
    }

    const std::vector<double> moments = {1.0, 1.3209876543209877, 4.0155635476475924, 19.459458692517970,
                                         128.79057064598726, 1075.2936105347046};
    std::vector<double> m = mep.getMoments(0, 5);
    ASSERT_EQ(m.size(), 6u);
    for (unsigned i = 0; i < 6; i++) expectRelative(moments[i], m[i], tol, "moment " + std::to_string(i));
    expectRelative(2.270555164779127, mep.getVariance(), tol, "variance");

    const double joint[3][3] = {{1.8003425786281089, 5.547426076212329, 27.025500045286538},
                                {5.55091012099628, 17.21323599618811, 84.07133975802593},
                                {27.053028153817976, 84.10908852263567, 411.2300578206534}};
    Matrix J = mep.getJointMoments(1, 3);
    ASSERT_EQ(J.getNumberRows(), 3u);
    for (unsigned i = 0; i < 3; i++)
        for (unsigned j = 0; j < 3; j++) expectRelative(joint[i][j], J(i, j), tol, "joint moment");

    const std::vector<double> rho = {2.4370337535941842e-02, 5.4092587533743561e-03, 1.2800900566178515e-03,
                                     3.2451637653401361e-04, 8.7769163123856917e-05};
    std::vector<double> r = mep.getAutocorrelations(1, 5);
    ASSERT_EQ(r.size(), 5u);
    for (unsigned k = 0; k < 5; k++) expectRelative(rho[k], r[k], tol, "lag " + std::to_string(k + 1));
}

TEST(MEP, PoissonProcessHasExponentialMomentsAndNoCorrelation) {
    MEP mep(scalarMatrix(-1.0), scalarMatrix(1.0));
    EXPECT_DOUBLE_EQ(mep.getP()(0u, 0u), 1.0);
    EXPECT_DOUBLE_EQ(mep.steady_state_vector_embedded_dtmc()(0u, 0u), 1.0);
    std::vector<double> m = mep.getMoments(0, 3);
    ASSERT_EQ(m.size(), 4u);
    EXPECT_DOUBLE_EQ(m[0], 1);
    EXPECT_DOUBLE_EQ(m[1], 1);
    EXPECT_DOUBLE_EQ(m[2], 2);
    EXPECT_DOUBLE_EQ(m[3], 6);
    EXPECT_DOUBLE_EQ(mep.getVariance(), 1);
    EXPECT_DOUBLE_EQ(mep.getJointMoments(1, 1)(0u, 0u), 1);
    for (double rho : mep.getAutocorrelations(1, 4)) EXPECT_NEAR(rho, 0, 1e-15);
}

TEST(MEP, JointMomentsComeInThreeShapes) {
    MEP mep(order3D0(), order3D1());
    Matrix J = mep.getJointMoments(1, 3);
    std::vector<double> m = mep.getMoments(0, 2);

    Matrix bordered = mep.getJointMoments(0, 2);
    ASSERT_EQ(bordered.getNumberRows(), 3u);
    ASSERT_EQ(bordered.getNumberCols(), 3u);
    for (unsigned k = 0; k < 3; k++) {
        EXPECT_DOUBLE_EQ(bordered(k, 0u), m[k]);
        EXPECT_DOUBLE_EQ(bordered(0u, k), m[k]);
    }
    EXPECT_DOUBLE_EQ(bordered(2u, 1u), J(1u, 0u));

    struct Case {
        unsigned first, last;
    } cases[] = {{2, 3}, {2, 2}, {3, 3}, {1, 2}};
    for (const Case& c : cases) {
        Matrix block = mep.getJointMoments(c.first, c.last);
        unsigned size = c.last - c.first + 1;
        ASSERT_EQ(block.getNumberRows(), size);
        ASSERT_EQ(block.getNumberCols(), size);
        for (unsigned i = 0; i < size; i++)
            for (unsigned j = 0; j < size; j++)
                EXPECT_NEAR(block(i, j), J(c.first - 1 + i, c.first - 1 + j), 1e-12 * J(2u, 2u));
    }
    // A size of zero is refused by the matrix.
    EXPECT_EQ(mepMessage([&] { mep.getJointMoments(0, 0); }, "matrix"),
              "Invalid value for number of rows or cols.");
}

TEST(MEP, AutocorrelationsCoverTheRequestedLags) {
    MEP mep(order3D0(), order3D1());
    std::vector<double> all = mep.getAutocorrelations(0, 2);
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0], 1.0);
    std::vector<double> two = mep.getAutocorrelations(2, 2);
    ASSERT_EQ(two.size(), 1u);
    EXPECT_DOUBLE_EQ(two[0], all[2]);
    EXPECT_TRUE(mep.getAutocorrelations(3, 2).empty());
}

TEST(MEP, TextFormsAreExact) {
    MEP mep(Matrix({{-2.0, 0.5}, {0.25, -1.0}}), Matrix({{1.0, 0.5}, {0.125, 0.625}}));
    EXPECT_EQ(mep.toString(FORMAT_CONFIG),
              "model = mep\nD0 = -2 0.5 \n0.25 -1 \n\nD1 = 1 0.5 \n0.125 0.625 \n\n");
    EXPECT_EQ(mep.toString(FORMAT_XML),
              "<map>\n<states>2</states>\n<d0>-2 0.5 \n0.25 -1 \n\n</d0>\n"
              "<d1>1 0.5 \n0.125 0.625 \n\n</d1>\n</map>\n");
    EXPECT_EQ(mep.getProcessDescription(), "MEP(2)");
    EXPECT_EQ(mep.getProcessType(), PROCESS_MEP);
}

TEST(MEP, SavedFilesLoadBackInBothFormats) {
    Matrix d0({{-3.123456789012, 1.0 / 3.0, 0.5}, {0.2, -1.5, 0.3}, {0.1, 0.4, -0.8}});
    Matrix d1 = order3D1();
    MEP original(d0, d1);
    for (format f : {FORMAT_CONFIG, FORMAT_XML}) {
        std::string path = testing::TempDir() + "mep_roundtrip_" + std::to_string(f);
        original.save(path, f);
        MEP mep(path, f);
        MAP map(path, f);
        for (MEP* loaded : {&mep, static_cast<MEP*>(&map)}) {
            Matrix l0 = loaded->getD0(), l1 = loaded->getD1();
            ASSERT_EQ(l0.getNumberRows(), 3u);
            ASSERT_EQ(l1.getNumberCols(), 3u);
            for (unsigned i = 0; i < 3; i++)
                for (unsigned j = 0; j < 3; j++) {
                    EXPECT_NEAR(l0(i, j), d0(i, j), 1e-9 * std::fabs(d0(i, j)));
                    EXPECT_NEAR(l1(i, j), d1(i, j), 1e-9 * std::fabs(d1(i, j)));
                }
        }
        EXPECT_EQ(mep.getProcessTypeString(), "MEP");
        EXPECT_EQ(map.getProcessTypeString(), "MAP");
    }
    // A file that names the model "map" still makes a MEP.
    MEP fromMapFile(mepFile("mep_as_map.conf", "model = map\nd0 = -1\nd1 = 1\n"), FORMAT_CONFIG);
    EXPECT_EQ(fromMapFile.getProcessTypeString(), "MEP");
    EXPECT_EQ(fromMapFile.toString(FORMAT_CONFIG).substr(0, 12), "model = mep\n");
}

TEST(MEP, RefusesWhatItCannotReadOrDo) {
    MEP mep(scalarMatrix(-1.0), scalarMatrix(1.0));
    Trace* noTrace = nullptr;
    struct Case {
        std::function<void()> action;
        std::string message;
    } cases[] = {
        {[] { MEP(mepFile("mep_bad_model.conf", "model = cph\nd0 = -1\nd1 = 1\n"), FORMAT_CONFIG); },
         "Not a MEP or MAP."},
        {[] { MEP(mepFile("mep_bad_root.xml", "<model><map><d0>-1</d0><d1>1</d1></map></model>"), FORMAT_XML); },
         "Not a MAP/MEP."},
        {[] { MEP(mepFile("mep_no_map.xml", "<velmora><mep><d0>-1</d0><d1>1</d1></mep></velmora>"), FORMAT_XML); },
         "Not a MAP/MEP."},
        {[] { MEP(mepFile("mep_no_d1.xml", "<velmora><map><d0>-1</d0></map></velmora>"), FORMAT_XML); },
         "Not a valid MAP/MEP description."},
        {[] { MEP(mepFile("mep_format.conf", "d0 = -1\nd1 = 1\n"), static_cast<format>(2)); },
         "Unsupported format!"},
        {[&] { mep.toString(static_cast<format>(2)); }, "Output format not supported by MEPs."},
        {[&] { mep.save("/nonexistent-directory/mep.conf", FORMAT_CONFIG); }, "Cannot open file."},
        {[&] { mep.computeDistribution(0, 1); }, "Not implemented!"},
        {[&] { mep.evalCDF(1); }, "Not implemented!"},
        {[&] { mep.evalCCDF(1); }, "Not implemented!"},
        {[&] { mep.evalPDF(1); }, "Not implemented!"},
        {[&] { mep.computeLikelihood(noTrace); }, "Not implemented."},
        {[&] { mep.initRandomNumberGeneration(1); }, "Not implemented."},
        {[&] { mep.getNextRandomVariate(); }, "Not implemented."},
    };
    for (const Case& c : cases) EXPECT_EQ(mepMessage(c.action), c.message);

    EXPECT_EQ(mepMessage([] { MEP(mepFile("mep_odd.xml", "<velmora><map><d0>-1 0 0</d0><d1>1</d1></map></velmora>"),
                                  FORMAT_XML); },
                         "matrix"),
              "Invalid matrix dimensions.");
}

TEST(MEP, SummaryListsMatricesAndStatistics) {
    MEP mep(scalarMatrix(-1.0), scalarMatrix(1.0));
    std::string summary = mep.getSummary();
    const std::string head = "Summary:\n=========================\n\nD0 = -1 \n\n";
    EXPECT_EQ(summary.substr(0, head.size()), head);
    for (const char* line : {"\nD1 = 1 \n\n", "\nMatrix P = 1 \n\n", "\nSteady-state vector: 1 \n\n",
                             "\nSteady-state vector of P: 1 \n\n", "\nMoment 0: 1\n", "\nMoment 5: 120\n",
                             "\nVariance: 1\n", "\nJoint moment 2, 2: 4\n", "\nAutocorrelation at lag 10: "})
        EXPECT_NE(summary.find(line), std::string::npos) << line;
    EXPECT_EQ(summary.find("Moment 6"), std::string::npos);
    EXPECT_EQ(summary.find("Joint moment 3"), std::string::npos);
    EXPECT_EQ(summary.find("lag 11"), std::string::npos);
}
