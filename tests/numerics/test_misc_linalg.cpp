// Dense linear algebra: elimination, inversion, the singular value decomposition, the Cholesky factor,
// stationary vectors and reduced moments, checked against numpy.linalg (figures computed with numpy 1.24).
#include "numerics/misc_linalg.h"
#include "support/test_support.h"

using namespace velmora;
using velmora_test::expectNear;
using velmora_test::failureOf;

TEST(GaussJordan, InversesAgreeWithNumpyAndTinyPivotsAreRefused) {
    struct Case { std::vector<std::vector<double>> a, inv; } cases[] = {  // numpy.linalg.inv
        {{{-0.1, 0.4, 0.6}, {-0.8, 1.8, -0.1}, {0.5, 0.5, -1.3}},
         {{2.320162107396151, -0.8308004052684904, 1.1347517730496453}, {1.1043566362715302, 0.17223910840932116, 0.49645390070921985}, {1.3171225937183386, -0.25329280648429586, -0.1418439716312057}}},
        {{{-1.8, -0.4, 1.1, 1.3, 0.9}, {-1.5, 1.7, 1.2, 1.5, 0.1}, {1.7, -1.8, -1.9, -1.9, -1.0}, {-1.0, -1.2, 0.3, -1.8, 0.4}, {-1.3, 0.7, -1.9, -0.8, 1.8}},
         {{-0.2813098124401641, -0.7805960865213966, -0.586460391018506, -0.1904117453761264, -0.0994762516776489}, {-0.48309925468600173, 0.21315591112521673, -0.23282360752335238, 0.03315251278680962, 0.0929939585926687}, {-0.20725373087405405, -0.3622299387625407, -0.5760258453366787, 0.2704224044816149, -0.25635747525912334}, {0.4347290723359534, 0.00279576959265602, 0.195179898603762, -0.4402794422233816, -0.011246703649171685}, {-0.04085117149108449, -1.0277690656889833, -0.854292872396884, -0.060646118446315594, 0.17194918660695369}}},
        {{{0.2, 1.2, 0.6, 0.4, -1.2, 0.3, -1.8, 1.2, 1.8, 1.4}, {-1.8, -0.6, -0.7, -1.5, 0.5, 1.2, -0.7, 1.5, 1.2, -1.5}, {1.1, 1.5, -1.2, 0.3, 0.6, 0.4, -1.6, 0.6, 0.5, 1.3}, {1.2, -0.7, 0.9, 1.5, 1.6, -1.4, -1.9, 0.6, -1.1, 0.3}, {1.8, -0.5, -1.0, -0.2, 0.6, -1.6, -0.5, -1.5, 0.6, 1.3}, {-0.5, -0.5, 0.2, -1.1, -1.0, -0.7, -0.2, -1.7, 1.0, 0.3}, {-0.8, -1.7, 1.1, -1.5, -1.5, -1.5, -1.7, 1.6, -0.9, -0.8}, {1.3, 0.5, -1.3, -0.3, 1.5, -0.5, 0.8, -1.6, 0.9, 1.1}, {1.3, 0.7, -0.5, -1.7, 0.1, 1.0, -1.2, -0.9, 0.1, 1.0}, {1.6, -1.5, -1.3, 1.2, 0.6, 0.9, 2.0, 1.8, 1.4, 1.1}},
         {{0.6393144216743393, 0.2674104873910512, -1.266938040870745, -0.42444038511914794, 1.6602647229140275, -1.6454247266247755, -0.3399041609170356, -0.6171996220041444, 0.3710508941541741, -0.31667659188530217}, {0.3760782900432636, 0.01730526860021329, -0.33294556733837366, -0.31449520224117694, 0.3459303265644648, -0.8051085652292866, -0.012738336664704761, 0.21679338375116838, -0.052303653809147546, -0.3435549977835725}, {0.41302404627492006, -0.05019785531945908, -0.6770220680093146, 0.2152215639630992, -0.2724770891966455, -0.21037587897748475, 0.03490670548757751, 0.40136557622710567, 0.2344149793773818, -0.062388179753772165}, {-0.06364068104166828, 0.009152529355723884, 0.14499226361747214, 0.06902113894233966, 0.30649943793583845, 0.11609702161210411, -0.348502533809711, -0.5741004433123259, -0.21144128168781834, 0.02227348144535717}, {-0.11751443956199208, 0.036954607845021664, 0.14996280672037954, 0.38943075496486035, -0.7277407642577288, 0.3336220207395698, 0.12508897925285073, 0.6906281025896004, 0.004858873202785416, 0.08151730599316467}, {-0.17645401504820876, 0.0250806565550041, 0.1308137579677004, 0.1518443451256577, -0.26436892873342893, 0.36334973765474676, -0.24976463386671074, -0.3573723884598792, 0.29956449622450787, 0.17950320640846826}, {0.055902777926715434, -0.14476047332478406, -0.19110467505353224, -0.14192196733116771, -0.2437327756884864, -0.1703344719012242, 0.16011684584430058, 0.44686410513473884, -0.06045310705656863, 0.05505189703050922}, {0.13316268492676508, -0.017601937759409894, 0.012540378987609558, -0.06431028206807643, -0.19009224286778337, -0.29306618622767305, 0.29435464486677027, 0.33133148646808913, -0.07083729737589455, 0.060960069227979474}, {0.5545188766907337, 0.34472796240954706, -0.7295650628836101, -0.15664616247760846, 0.7759496966449105, -0.5966773189695419, -0.2628941263179021, -0.12196004981329867, -0.0007748452373996528, -0.15356533111867793}, {-0.6763573645588196, -0.6220901749371857, 1.4971643630871083, 0.5935574413741904, -2.219699182403237, 1.9895999958064194, 0.5963958340911896, 1.0102570216273845, -0.12426648904185719, 0.6074668313254904}}},
        {{{0, 1}, {1, 0}}, {{0, 1}, {1, 0}}},  // needs the row exchange
    };
    for (const Case& c : cases) {
        Matrix a(c.a);
        std::string what = a.toString(4);
        expectNear(gauss_jordan_inv(a), Matrix(c.inv), 1e-12, what);
        expectNear(a ^ -1, Matrix(c.inv), 1e-12, what);
    }
    // The pivot threshold 1e-17 is absolute.
    struct Bad { Matrix a; std::string failure; } bad[] = {
        {Matrix({{1, 2}, {2, 4}}), "misc_linalg: Singular matrix."},
        {Matrix({{1e-17, 0}, {0, 1}}), "misc_linalg: Singular matrix."},
        {Matrix({{1, 2, 3}, {4, 5, 6}}), "misc_linalg: Matrix cannot be inverted."},
        {Matrix(), "misc_linalg: Matrix cannot be inverted."},
    };
    for (const Bad& c : bad) EXPECT_EQ(failureOf([&] { gauss_jordan_inv(c.a); }), c.failure) << c.a.toString(6);
    // A well-conditioned matrix of larger tiny entries still inverts.
    expectNear(gauss_jordan_inv(Matrix({{2e-10, 1e-10}, {1e-10, 3e-10}})) * 1e-10,
               Matrix({{0.6, -0.2}, {-0.2, 0.4}}), 1e-14, "scaled");
    EXPECT_EQ(failureOf([] { gauss_jordan(Matrix({{1, 2}, {3, 4}, {5, 6}})); }),
              "misc_linalg: Invalid matrix dimensions.");
}

TEST(GaussJordan, SolvesLinearSystemsIntoColumnVectors) {
    // [A | b1 | b2] with A = [[2, 1], [1, 3]]: x1 = (1, 1), x2 = (0.4, -0.8).
    expectNear(gauss_jordan(Matrix({{2, 1, 3, 0}, {1, 3, 4, -2}})), Matrix({{1, 0, 1, 0.4}, {0, 1, 1, -0.8}}), 1e-15,
               "reduced form");
    // numpy.linalg.solve
    Matrix a({{-0.4, 0.6, -1.3, 1.0}, {1.0, 0.9, -0.2, -0.5}, {-0.3, -1.9, 1.4, 0.2}, {-0.4, 0.2, 0.9, -0.5}});
    Vector b({1.3, 1.7, -0.5, -1.3999999999999999}, true);
    expectNear(gauss_jordan_solve(a, b),
               Matrix({2.6013041453190495, 1.0433162552398694, 1.1564974382859801, 3.2179785747554721},
                      MATRIX_COLUMN),
               1e-12, "solve");
    EXPECT_EQ(failureOf([&] { gauss_jordan_solve(a, Vector({1, 2}, false)); }),
              "misc_linalg: Invalid system of linear equations.");
}

TEST(SingularValueDecomposition, SingularValuesAgreeWithNumpyAndRectangularMatricesArePadded) {
    Matrix a({{-1.1, 1.1, -1.7, -0.1, -1.9}, {-0.7, -0.8, 0.9, -0.2, -1.8}, {2.0, 1.6, 1.7, -1.0, -0.4},
              {-1.1, -1.5, -1.9, 0.0, -1.5}, {-1.3, 1.4, -0.1, -1.3, 0.7}});
    std::vector<double> q = SingularValueDecomposition(a)[1].getRow(0);
    std::sort(q.begin(), q.end());
    // numpy.linalg.svd(compute_uv=False)
    expectNear(Matrix(q, MATRIX_ROW),
               Matrix({{0.84008074278775424, 1.6939240395477839, 2.6590169304254481, 2.9258030309797554,
                        4.5512845748711221}}),
               1e-12, "5 x 5");
    // A 2 x 3 matrix: numpy's two values and 0 for the padding; column j of the orthogonal V has |A v_j| = q[j].
    Matrix b({{1, 2, 3}, {4, 5, 6}});
    std::vector<Matrix> svd = SingularValueDecomposition(b);
    ASSERT_EQ(svd.size(), 2u);
    const Matrix& V = svd[0];
    q = svd[1].getRow(0);
    std::vector<double> sorted = q;
    std::sort(sorted.begin(), sorted.end());
    expectNear(Matrix(sorted, MATRIX_ROW), Matrix({{0, 0.77286963567348432, 9.5080320006957244}}), 1e-12, "2 x 3");
    expectNear(V.transpose() * V, Matrix(3, 3, MATRIX_IDENTITY), 1e-12, "V orthogonal");
    for (unsigned j = 0; j < 3; j++) {
        Vector av = b * Vector(V.getCol(j), false);
        EXPECT_NEAR(std::sqrt((av.transpose() * av).getValue(0, 0)), q[j], 1e-12) << j;
    }
    // A zero matrix is already diagonal; a NaN entry ends in a failure, not a hang.
    std::vector<Matrix> zero = SingularValueDecomposition(Matrix(3, 3, MATRIX_ZERO));
    EXPECT_EQ(zero[1], Matrix(1, 3, MATRIX_ZERO));
    EXPECT_EQ(zero[0], Matrix(3, 3, MATRIX_IDENTITY));
    a[2][2] = std::nan("");
    EXPECT_EQ(failureOf([&] { SingularValueDecomposition(a); }),
              "misc_linalg: Singular value decomposition does not converge.");
}

TEST(Cholesky, FactorAgreesWithNumpy) {
    Matrix a({{2.9, 1.39, 0.16, 1.19}, {1.39, 3.41, 0.46, 0.17}, {0.16, 0.46, 3.01, -0.06}, {1.19, 0.17, -0.06, 2.26}});
    Matrix l = CholeskyDecomposition(a);
    // numpy.linalg.cholesky
    expectNear(l, Matrix({{1.70293863659264, 0.0, 0.0, 0.0}, {0.8162361051254378, 1.6564294795401509, 0.0, 0.0},
                          {0.09395523512235256, 0.2314075845438339, 1.716864276408794, 0.0},
                          {0.6987920612224972, -0.24171225837877422, -0.04060957147618169, 1.3082873163133422}}),
               1e-14, "L");
    // Not positive definite: the NaN spreads instead of a failure.
    EXPECT_TRUE(std::isnan(CholeskyDecomposition(Matrix({{1, 2}, {2, 1}})).getValue(1, 1)));
}

TEST(SteadyState, AgreesWithNumpy) {
    // x: numpy.linalg.lstsq of [G^T; 1] x = (0, ..., 0, 1)
    struct Case { std::vector<std::vector<double>> g; bool stochastic; std::vector<double> x; } cases[] = {
        {{{-1.0, 1.0}, {2.0, -2.0}}, false, {0.66666666666666663, 0.3333333333333332}},
        {{{0.0, 1.0}, {1.0, 0.0}}, true, {0.5, 0.5}},
        {{{-4.9, 1.5, 0.7, 0.0, 0.6, 2.1}, {0.6, -4.4, 0.0, 2.5, 0.5, 0.8}, {2.6, 1.5, -8.5, 1.9, 2.2, 0.3}, {1.6, 1.5, 2.6, -7.7, 1.8, 0.2}, {1.2, 1.0, 0.5, 2.4, -8.0, 2.9}, {1.8, 1.8, 1.9, 2.0, 0.5, -8.0}}, false,
         {0.22137639968951045, 0.25159887111438928, 0.10826603787496361, 0.17693575292399977, 0.11014192743030451, 0.13168101096683199}},
        {{{-12.9, 1.2, 0.3, 2.9, 0.6, 2.0, 0.9, 2.6, 2.0, 0.4}, {2.5, -15.600000000000001, 2.7, 1.7, 0.4, 0.6, 2.8, 1.7, 0.5, 2.7}, {1.9, 1.7, -12.2, 1.2, 0.7, 0.1, 2.6, 1.4, 1.6, 1.0}, {2.3, 0.1, 1.1, -14.299999999999999, 0.4, 2.9, 2.0, 1.3, 1.6, 2.6}, {1.0, 1.8, 2.1, 1.1, -14.3, 2.3, 2.7, 0.5, 2.8, 0.0}, {2.3, 2.4, 0.4, 1.3, 2.4, -16.799999999999997, 1.9, 2.4, 1.5, 2.2}, {0.7, 0.6, 1.1, 0.5, 1.0, 2.8, -11.4, 1.0, 0.8, 2.9}, {1.3, 2.9, 1.5, 1.6, 2.7, 2.2, 1.7, -17.700000000000003, 2.6, 1.2}, {2.8, 0.2, 1.3, 1.6, 2.9, 0.8, 2.4, 2.0, -15.900000000000002, 1.9}, {2.9, 1.0, 1.2, 0.6, 0.2, 0.6, 2.7, 2.5, 0.3, -12.0}}, false,
         {0.12859454561702274, 0.074622394631207123, 0.08979203962260944, 0.086571090433830711, 0.075970464398315424, 0.090221499766362137, 0.15741938037953507, 0.089696499597411689, 0.083087091081962272, 0.12402499447174238}},
        // Two closed classes, no unique least-squares figure: singular values (2, 0, 4, 0), the first zero is taken.
        {{{-1, 1, 0, 0}, {1, -1, 0, 0}, {0, 0, -2, 2}, {0, 0, 2, -2}}, false, {0.5, 0.5, 0, 0}},
        {{{0.5, 0.5, 0.0, 0.0, 0.0}, {0.2, 0.3, 0.5, 0.0, 0.0}, {0.0, 0.25, 0.25, 0.5, 0.0}, {0.0, 0.0, 0.1, 0.4, 0.5}, {0.9, 0.0, 0.0, 0.0, 0.1}}, true,
         {0.27353595255744995, 0.26686434395848763, 0.20014825796886576, 0.16679021497405486, 0.092661230541141629}},
    };
    for (const Case& c : cases) {
        Matrix x = compute_steady_state_probability_vector(Matrix(c.g), c.stochastic);
        // The decomposition stops at off-diagonal entries below 1.5e-8 times the matrix scale: errors of a few
        // 1e-8 at most, and these within 1e-8.
        expectNear(x, Matrix(c.x, MATRIX_ROW), 1e-8, Matrix(c.g).toString(3));
    }
}

TEST(SteadyState, DecompositionStopsAtItsRelativeThreshold) {
    // The bidiagonal iteration stops once the off-diagonal entries are below 1.5e-8 times the largest |q| + |e|:
    // the null singular value is left at 1.08e-7 and the vector 4e-8 away from the exact (17/21, 4/63, 8/63) of
    // numpy.linalg.lstsq. Expected figures from the same decomposition run step by step in python float64.
    Matrix g({{-0.4, 0.4, 0.0}, {2.7, -5.300000000000001, 2.6}, {1.2, 0.1, -1.3}});
    expectNear(compute_steady_state_probability_vector(g, false),
               Matrix({{0.8095238507923161, 0.06349206591523934, 0.12698408329244462}}), 1e-13, "x");
}

TEST(SteadyState, OnlyTinyNegativeEntriesBecomeZero) {
    // G = I - x^T x / (x x^T) has the left null vector x, which sums to 1. An entry in (-1e-6, 0) is cleared to
    // exactly 0 and the vector is not normalised again; -2e-6 is kept.
    for (double last : {-5e-7, -2e-6}) {
        Vector x({0.6, 0.4 - last, last}, true);
        Matrix g = Matrix(3, 3, MATRIX_IDENTITY) - (x.transpose() * x) / (x * x.transpose()).getValue(0, 0);
        Matrix got = compute_steady_state_probability_vector(g, false);
        expectNear(got, Matrix({{0.6, 0.4 - last, last > -1e-6 ? 0.0 : last}}), 1e-14, x.toString(6));
        EXPECT_TRUE(last <= -1e-6 || got.getValue(0, 2) == 0.0) << got.getValue(0, 2);
    }
}

TEST(ReducedMoments, DivideRowZeroByFactorials) {
    EXPECT_EQ(compute_reduced_moments(std::vector<double>{1, 1, 2, 6}), (std::vector<double>{1, 1, 1, 1}));
    EXPECT_EQ(compute_reduced_moments(Matrix({{1, 3, 4, 12}, {5, 5, 5, 5}})),
              Matrix({{1, 3, 2, 2}, {0, 0, 0, 0}}));
    EXPECT_TRUE(compute_reduced_moments(std::vector<double>{}).empty());
}
