// MEP: an order-3 process against numpy, result shapes, the text forms with their round trip, the refusals.
#include "markov/maps.h"
#include "markov/mep.h"
#include "markov_helpers.h"

using namespace velmora;
using namespace markov_test;

// Reference figures: numpy 1.24 on the same matrices, pi from the eigenvector
// of P^T for eigenvalue 1, theta from least squares on (D0 + D1)^T, moments
// i! pi M^i 1 with numpy.linalg.matrix_power and numpy.linalg.inv.
TEST(MEP, OrderThreeAgreesWithIndependentComputation) {
    MEP mep(order3D0(), order3D1());
    const double tol = 1e-9;
    expectRelative(mep.getP(),
                   mat({{0.47563884156729136, 0.3819420783645657, 0.14241908006814313},
                        {0.1577512776831346, 0.6875638841567292, 0.15468483816013628},
                        {0.13833049403747874, 0.5165247018739354, 0.3451448040885861}}), tol, "P");
    expectRelative(mep.steady_state_vector_embedded_dtmc(),
                   mat({{0.22592592592592609, 0.5864197530864196, 0.18765432098765433}}), tol, "pi");
    expectRelative(mep.steady_state_vector(), mat({{0.10280373831775697, 0.47663551401869186, 0.42056074766355145}}),
                   tol, "theta");

    const std::vector<double> moments = {1.0, 1.3209876543209877, 4.0155635476475924, 19.459458692517970,
                                         128.79057064598726, 1075.2936105347046};
    expectRelative(Matrix(mep.getMoments(0, 5), MATRIX_ROW), Matrix(moments, MATRIX_ROW), tol, "moments");
    EXPECT_NEAR(mep.getVariance(), 2.270555164779127, tol * 2.270555164779127);

    expectRelative(mep.getJointMoments(1, 3),
                   mat({{1.8003425786281089, 5.547426076212329, 27.025500045286538},
                        {5.55091012099628, 17.21323599618811, 84.07133975802593},
                        {27.053028153817976, 84.10908852263567, 411.2300578206534}}), tol, "joint moments");

    const std::vector<double> rho = {2.4370337535941842e-02, 5.4092587533743561e-03, 1.2800900566178515e-03,
                                     3.2451637653401361e-04, 8.7769163123856917e-05};
    expectRelative(Matrix(mep.getAutocorrelations(1, 5), MATRIX_ROW), Matrix(rho, MATRIX_ROW), tol, "rho, lags 1-5");
}

TEST(MEP, ResultShapesFollowTheRequestedRanges) {
    MEP mep(order3D0(), order3D1());
    Matrix J = mep.getJointMoments(1, 3);
    // From order 0 the block is bordered by the plain moments.
    std::vector<double> m = mep.getMoments(0, 2);
    expectRelative(mep.getJointMoments(0, 2),
                   mat({{m[0], m[1], m[2]}, {m[1], J(0, 0), J(0, 1)}, {m[2], J(1, 0), J(1, 1)}}), 1e-12, "bordered");
    expectRelative(mep.getJointMoments(2, 3), mat({{J(1, 1), J(1, 2)}, {J(2, 1), J(2, 2)}}), 1e-12, "block 2-3");
    expectRelative(mep.getJointMoments(3, 3), mat({{J(2, 2)}}), 1e-12, "block 3");
    // A size of zero is refused by the matrix.
    EXPECT_EQ(failureOf([&] { mep.getJointMoments(0, 0); }), "matrix: Invalid value for number of rows or cols.");
    std::vector<double> all = mep.getAutocorrelations(0, 2);
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0], 1.0);
    EXPECT_EQ(mep.getAutocorrelations(2, 2), std::vector<double>{all[2]});
    EXPECT_TRUE(mep.getAutocorrelations(3, 2).empty());
}

TEST(MEP, TextFormsAreExactAndSavedFilesLoadBackInBothFormats) {
    MEP mep(mat({{-2.0, 0.5}, {0.25, -1.0}}), mat({{1.0, 0.5}, {0.125, 0.625}}));
    EXPECT_EQ(mep.toString(FORMAT_CONFIG), "model = mep\nD0 = -2 0.5 \n0.25 -1 \n\nD1 = 1 0.5 \n0.125 0.625 \n\n");
    EXPECT_EQ(mep.toString(FORMAT_XML),
              "<map>\n<states>2</states>\n<d0>-2 0.5 \n0.25 -1 \n\n</d0>\n"
              "<d1>1 0.5 \n0.125 0.625 \n\n</d1>\n</map>\n");
    EXPECT_EQ(mep.getProcessDescription(), "MEP(2)");
    // Saved files load back as MEP and as MAP.
    Matrix d0 = mat({{-3.123456789012, 1.0 / 3.0, 0.5}, {0.2, -1.5, 0.3}, {0.1, 0.4, -0.8}});
    MEP original(d0, order3D1());
    for (format f : {FORMAT_CONFIG, FORMAT_XML}) {
        std::string path = tempPath("mep_roundtrip_" + std::to_string(f));
        original.save(path, f);
        MEP mep(path, f);
        MAP map(path, f);
        for (MEP* loaded : {&mep, static_cast<MEP*>(&map)}) {
            expectRelative(loaded->getD0(), d0, 1e-9, "D0");
            expectRelative(loaded->getD1(), order3D1(), 1e-9, "D1");
        }
        EXPECT_EQ(mep.getProcessTypeString(), "MEP");
        EXPECT_EQ(map.getProcessTypeString(), "MAP");
    }
    // A file that names the model "map" still makes a MEP.
    MEP fromMapFile(writeFile("mep_as_map.conf", "model = map\nd0 = -1\nd1 = 1\n"), FORMAT_CONFIG);
    EXPECT_EQ(fromMapFile.toString(FORMAT_CONFIG).substr(0, 12), "model = mep\n");
}

TEST(MEP, RefusesWhatItCannotReadOrDo) {
    const std::pair<const char*, const char*> files[] = {
        {"<model><map><d0>-1</d0><d1>1</d1></map></model>", "mep: Not a MAP/MEP."},
        {"<velmora><mep><d0>-1</d0><d1>1</d1></mep></velmora>", "mep: Not a MAP/MEP."},
        {"<velmora><map><d0>-1</d0></map></velmora>", "mep: Not a valid MAP/MEP description."},
        {"<velmora><map><d0>-1 0 0</d0><d1>1</d1></map></velmora>", "matrix: Invalid matrix dimensions."},
    };
    for (const auto& f : files)
        EXPECT_EQ(failureOf([&] { MEP(writeFile("m.xml", f.first), FORMAT_XML); }), f.second) << f.first;
    std::string kv = writeFile("m.conf", "model = cph\nd0 = -1\nd1 = 1\n");
    EXPECT_EQ(failureOf([&] { MEP(kv, FORMAT_CONFIG); }), "mep: Not a MEP or MAP.");
    EXPECT_EQ(failureOf([&] { MEP(kv, static_cast<format>(2)); }), "mep: Unsupported format!");

    MEP mep(mat({{-1}}), mat({{1}}));
    Trace* noTrace = nullptr;
    const std::pair<std::function<void()>, const char*> actions[] = {
        {[&] { mep.toString(static_cast<format>(2)); }, "mep: Output format not supported by MEPs."},
        {[&] { mep.save("/nonexistent-directory/mep.conf", FORMAT_CONFIG); }, "mep: Cannot open file."},
        {[&] { mep.computeDistribution(0, 1); }, "mep: Not implemented!"},
        {[&] { mep.evalCDF(1); }, "mep: Not implemented!"}, {[&] { mep.evalCCDF(1); }, "mep: Not implemented!"},
        {[&] { mep.evalPDF(1); }, "mep: Not implemented!"},
        {[&] { mep.computeLikelihood(noTrace); }, "mep: Not implemented."},
        {[&] { mep.initRandomNumberGeneration(1); }, "mep: Not implemented."},
        {[&] { mep.getNextRandomVariate(); }, "mep: Not implemented."},
    };
    for (const auto& a : actions) EXPECT_EQ(failureOf(a.first), a.second);
}

TEST(MEP, SummaryOfThePoissonProcessListsMatricesAndStatistics) {
    MEP mep(mat({{-1}}), mat({{1}}));
    std::string summary = mep.getSummary();
    const std::string head = "Summary:\n=========================\n\nD0 = -1 \n\n";
    EXPECT_EQ(summary.substr(0, head.size()), head);
    for (const char* line : {"\nD1 = 1 \n\n", "\nMatrix P = 1 \n\n", "\nSteady-state vector: 1 \n\n",
                             "\nSteady-state vector of P: 1 \n\n", "\nMoment 0: 1\n", "\nMoment 2: 2\n",
                             "\nMoment 5: 120\n", "\nVariance: 1\n", "\nJoint moment 2, 2: 4\n",
                             "\nAutocorrelation at lag 10: "})
        EXPECT_NE(summary.find(line), std::string::npos) << line;
    for (const char* absent : {"Moment 6", "Joint moment 3", "lag 11"})
        EXPECT_EQ(summary.find(absent), std::string::npos) << absent;
    for (double rho : mep.getAutocorrelations(1, 4)) EXPECT_NEAR(rho, 0, 1e-15);
}
