// The distribution contract: registry, text layouts of every family and
// their reading back, the messages of checks and unsupported operations,
// seeding, copies and the log-likelihood of a trace.
#include "dist_helpers.h"
#include "distributions/dist.h"
#include "distributions/dist_beta.h"
#include "distributions/dist_chisquare.h"
#include "distributions/dist_deterministic.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_geometric.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hyperexponential.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_hypogeometric.h"
#include "distributions/dist_johnson.h"
#include "distributions/dist_lognormal.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_pearsonv.h"
#include "distributions/dist_pearsonvi.h"
#include "distributions/dist_triangular.h"
#include "distributions/dist_uniform.h"
#include "distributions/dist_weibull.h"
#include "traces/trace.h"

using namespace velmora;
using disttest::failure;

TEST(DistRegistry, TypeNamesMapBothWaysAndUnknownOnesAreRefused) {
    const char* names[] = {"deterministic", "uniform", "exponential", "normal", "lognormal", "johnson", "erlang",
                           "hyperexponential", "hypoexponential", "hypererlang", "weibull", "gamma", "beta",
                           "pearsonV", "pearsonVI", "geometric", "hypogeometric", "triangular", "chisquare"};
    for (int i = 0; i < 19; i++) {
        EXPECT_EQ(Dist::getDistType(static_cast<dist_type>(i)), names[i]);
        EXPECT_EQ(Dist::getDistType(std::string(names[i])), static_cast<dist_type>(i));
    }
    // 31 is the largest value the enumeration can hold without a cast out of its range.
    for (int value : {19, 31})
        EXPECT_EQ(failure([&] { Dist::getDistType(static_cast<dist_type>(value)); }), "Unknown distribution");
    for (std::string name : {"Normal", "pearsonv", "", "normal "})
        EXPECT_EQ(failure([&] { Dist::getDistType(name); }), "Unknown distribution") << name;
}

TEST(DistText, EveryFamilyWritesBothLayoutsToTheCharacterAndReadsThemBack) {
    enum Xml { NONE, WRITTEN, READ };  // no XML form; written, but not read; read back
    struct Case { std::shared_ptr<Dist> dist; std::string keyValue; std::string xml; Xml form; };
    using U = std::vector<unsigned>;
    using V = std::vector<double>;
    // Fixed notation with six decimals except for the elementary families. The
    // XML texts are written inside a dist element.
    const std::vector<Case> cases = {
        {std::make_shared<Deterministic>(2.5), "distribution = deterministic\nval = 2.5\n", "", NONE},
        {std::make_shared<Uniform>(0, 1), "distribution = uniform\na = 0\nb = 1\n",
         "<uniformdist>\n<a>0</a>\n<b>1</b>\n</uniformdist>\n", READ},
        {std::make_shared<Exponential>(2), "distribution = exponential\nrate = 2\n",
         "<expodist>\n<mean>0.5</mean>\n</expodist>\n", READ},
        {std::make_shared<Normal>(1.23456789, 1500), "distribution = normal\nmean = 1.23457\nvar = 2.25e+06\n",
         "<normaldist>\n<mean>1.23457</mean>\n<std>1500</std>\n</normaldist>\n", READ},
        {std::make_shared<Lognormal>(0, 2), "distribution = lognormal\nmu = 0.000000\nsigma2 = 4.000000\n",
         "<lognormaldist>\n<mu>0.000000</mu>\n<sigma>2.000000</sigma>\n</lognormaldist>\n", READ},
        {std::make_shared<Triangular>(0, 1, 0.25),
         "distribution = triangular\na = 0.000000\nb = 1.000000\nc = 0.250000\n",
         "<triangulardist>\n<a>0.000000</a>\n<b>1.000000</b>\n<c>0.250000</c>\n</triangulardist>\n", READ},
        {std::make_shared<ChiSquare>(5), "distribution = chisquare\nk = 5\n",
         "<chisquaredist>\n<deg>5</deg>\n</chisquaredist>\n", READ},
        {std::make_shared<Weibull>(1.5, 2), "distribution = weibull\nalpha = 1.500000\nbeta = 2.000000\n",
         "<weibulldist>\n<shape>1.500000</shape>\n<scale>2.000000</scale>\n</weibulldist>\n", READ},
        {std::make_shared<Gamma>(3, 0.1234567), "distribution = gamma\nalpha = 3.000000\nbeta = 0.123457\n",
         "<gammadist>\n<shape>3.000000</shape>\n<scale>0.123457</scale>\n</gammadist>\n", READ},
        {std::make_shared<Beta>(2, 3), "distribution = beta\nalpha1 = 2.000000\nalpha2 = 3.000000\n",
         "<betadist>\n<alpha1>2.000000</alpha1>\n<alpha2>3.000000</alpha2>\n</betadist>\n", WRITTEN},
        {std::make_shared<PearsonV>(3, 2), "distribution = pearsonV\nalpha = 3.000000\nbeta = 2.000000\n",
         "<pearson5dist>\n<alpha>3.000000</alpha>\n<beta>2.000000</beta>\n</pearson5dist>\n", WRITTEN},
        {std::make_shared<PearsonVI>(2, 3, 1.5),
         "distribution = pearsonVI\nalpha1 = 2.000000\nalpha2 = 3.000000\nbeta = 1.500000\n",
         "<pearson6dist>\n<alpha1>2.000000</alpha1>\n<alpha2>3.000000</alpha2>\n<beta>1.500000</beta>\n"
         "</pearson6dist>\n", WRITTEN},
        {std::make_shared<Erlang>(3, 2), "distribution = erlang\nphases = 3\nrate = 2.000000\n",
         "<erlangdist>\n<phases>3</phases>\n<rate>2.000000</rate>\n</erlangdist>\n", READ},
        {std::make_shared<HyperExponential>(V{1, 2.5}, V{0.25, 0.75}),
         "distribution = hyperexponential\nphases = 2\nrates = 1.000000 2.500000 \nprob = 0.250000 0.750000 \n",
         "<hyperexpdist>\n<phases>2</phases>\n<rates>1.000000 2.500000 </rates>\n</hyperexpdist>\n", WRITTEN},
        {std::make_shared<HypoExponential>(V{1, 2}),
         "distribution = hypoexponential\nphases = 2\nrates = 1.000000 2.000000 \n",
         "<hypoexpdist>\n<phases>2</phases>\n<rates>1.000000 2.000000 </rates>\n</hypoexpdist>\n", WRITTEN},
        {std::make_shared<HyperErlang>(U{2, 1}, V{1, 5}, V{0.3, 0.7}),
         "distribution = hypererlang\nbranches = 2\nphases = 2 1 \nrates = 1.000000 5.000000 \n"
         "prob = 0.300000 0.700000 \n",
         "<hypererlangdist>\n<prob>0.300000 0.700000 </prob>\n<phases>2 1 </phases>\n"
         "<rates>1.000000 5.000000 </rates>\n</hypererlangdist>\n", READ},
        // Location and scale differ, so a swap would show.
        {std::make_shared<Johnson>(0.5, 1.25, 3, -1, JOHNSON_SB),
         "distribution = johnson\njohnson = SB\ngamma = 0.500000\ndelta = 1.250000\nlambda = 3.000000\n"
         "xi = -1.000000\n",
         "<johnsondist>\n<type>SB</type>\n<shape1>0.500000</shape1>\n<shape2>1.250000</shape2>\n"
         "<location>-1.000000</location>\n<scale>3.000000</scale>\n</johnsondist>\n", READ},
        {std::make_shared<Geometric>(0.3), "distribution = geometric\np = 0.300000\n",
         "<geometric>\n<p>0.300000</p>\n</geometric>\n", WRITTEN},
        {std::make_shared<HypoGeometric>(V{0.5, 0.25}),
         "distribution = hypogeometric\nphases = 2\np = 0.500000 0.250000 \n", "", NONE},
    };
    ASSERT_EQ(cases.size(), 19u);
    for (const Case& c : cases) {
        std::string name = Dist::getDistType(c.dist->getType()), xml = "<dist>\n" + c.xml + "</dist>\n";
        const std::string unsupported = c.dist->getType() == DIST_HYPOGEOMETRIC
                                            ? "Output format not supported."
                                            : "Output format not supported by Dists.";
        EXPECT_EQ(c.dist->toString(FORMAT_CONFIG), c.keyValue) << name;
        disttest::expectSame(disttest::readConfig(c.keyValue).get(), c.dist.get(), name);
        EXPECT_EQ(failure([&] { c.dist->toString(static_cast<format>(2)); }), unsupported) << name;
        if (c.form == NONE) {
            EXPECT_EQ(failure([&] { c.dist->toString(FORMAT_XML); }), unsupported);
            continue;
        }
        EXPECT_EQ(c.dist->toString(FORMAT_XML), xml) << name;
        if (c.form == READ)
            disttest::expectSame(disttest::readXml(xml).get(), c.dist.get(), name);
        else
            EXPECT_EQ(failure([&] { disttest::readXml(xml); }), "Unsupported distribution.") << name;
    }
}

TEST(DistChecks, InvalidParametersAndMissingOperationsThrowTheFamilyMessage) {
    struct Case { std::function<void()> call; std::string message; };
    const std::string range = "Invalid range for uniform distribution";
    const std::string triangle = "Invalid parameters for triangular distribution.";
    const std::string gamma = "Invalid parameters for gamma distribution.";
    const std::string badP = "Invalid value for inverse cdf.";
    const std::string weibull = "Invalid parameter for weibull distribution";
    const std::string geometric = "Invalid parameter for Geometric distribution.";
    const std::string hypoGeometric = "Invalid parameter for HypoGeometric distribution.";
    // One row per guard: the statics share the family's check unless their message differs.
    const std::vector<Case> cases = {
        // Constructors run paramCheck.
        {[] { Uniform(-1, 1); }, range}, {[] { Uniform(2, 1); }, range},
        {[] { Exponential(0); }, "Invalid rate for exponential distribution"},
        {[] { Normal(0, -1); }, "Invalid parameter for normal distribution"},
        {[] { Lognormal(0, -0.5); }, "Invalid parameter for lognormal distribution"},
        {[] { Triangular(0, 1, 1); }, triangle}, {[] { Triangular(0, 1, 0); }, triangle},
        {[] { Weibull(-1, 1); }, weibull}, {[] { Gamma(1, 0); }, gamma},
        {[] { Beta(1, 0); }, "Invalid parameter for beta distribution"},
        {[] { PearsonV(0, 1); }, "Invalid parameters for Pearson V distribution."},
        {[] { PearsonVI(1, 1, 0); }, "Invalid parameters for Pearson VI distribution."},
        // p = 0 and 1 pass; a NaN is refused like a value outside [0, 1].
        {[] { Geometric(1.5); }, geometric}, {[] { Geometric(-0.1); }, geometric},
        {[] { Geometric(std::nan("")); }, geometric},
        {[] { HypoGeometric({0.5, -1}); }, hypoGeometric}, {[] { HypoGeometric({std::nan(""), 0.5}); }, hypoGeometric},
        // The statics check by themselves, not always as paramCheck does.
        {[] { Uniform::uniform_pdf(0.5, 2, 1); }, range}, {[] { Uniform::uniform_stats(-1, 1, 0); }, range},
        {[] { Weibull::weibull_pdf(1, -1, 1); }, "Invalid parameter for Weibull distribution."},
        {[] { Weibull::weibull_stats(-1, 1, 0); }, weibull},
        // Inverses: p outside [0, 1]; with both p and the parameters wrong the
        // order of the checks decides the message.
        {[] { Uniform::uniform_inverse_cdf(1.5, 2, 1); }, badP},
        {[] { Exponential::exponential_inverse_cdf(-0.1, -1); }, badP},
        {[] { Lognormal::lognormal_inverse_cdf(1.01, 0, 1); }, badP},
        {[] { Exponential(1).evalInverseCDF(std::nan("")); }, badP},
        {[] { Gamma::gamma_inverse_cdf(2, 0, 1); }, gamma},
        // Operations a family does not offer.
        {[] { Deterministic(1).evalInverseCDF(0.5); }, "Not supported."},
        {[] { Beta(2, 3).evalCDF(0.5); }, "Not implemented!"},
        {[] { Beta(2, 3).evalInverseCDF(0.5); }, "Not implemented."},
        {[] { PearsonV(3, 2).getProperties(0); }, "Not implemented."},
    };
    for (size_t i = 0; i < cases.size(); i++) EXPECT_EQ(failure(cases[i].call), cases[i].message) << "case " << i;
}

TEST(DistChecks, BoundaryParametersAreAcceptedAndFailedSettersKeepTheirValue) {
    EXPECT_NO_THROW(Normal(0, 0));
    EXPECT_NO_THROW(Lognormal(0, 0));
    EXPECT_EQ(Uniform(2, 2).generateVariate(), 2.0);
    // Only the uniform statistics refuse a negative lower bound.
    EXPECT_EQ(Uniform::uniform_pdf(0, -1, 1), 0.5);
    // k = 0 passes the object, but the gamma routines refuse it at x > 0.
    ChiSquare none(0);
    EXPECT_EQ(none.evalCDF(0), 0);
    EXPECT_NE(failure([&] { none.evalPDF(1); }, "misc_math"), "no failure");
    // Setters store first and then check.
    Triangular t(0, 2, 1);
    EXPECT_EQ(failure([&] { t.setC(3); }), "Invalid parameters for triangular distribution.");
    EXPECT_EQ(t.getC(), 3);
    EXPECT_NO_THROW(Geometric(0).setP(1));
}

TEST(DistStream, UnseededObjectsDifferAndCopiesContinueTheSourceSequenceOnTheirOwnStream) {
    Exponential a(1), b(1);
    bool differ = false;
    for (int i = 0; i < 10; i++) differ |= a.generateVariate() != b.generateVariate();
    EXPECT_TRUE(differ);

    // Reseeding one copy leaves the source and the other copy on their sequence.
    Normal source(0, 1);
    source.setSeed(99);
    source.generateVariate();
    Normal copy(source), twin(source);
    copy.setSeed(1);
    for (int i = 0; i < 5; i++) EXPECT_EQ(twin.generateVariate(), source.generateVariate());
    Normal assigned(5, 5);
    assigned = source;
    EXPECT_EQ(assigned.getMean(), 0);
    EXPECT_EQ(assigned.generateVariate(), source.generateVariate());
}

TEST(DistLikelihood, SumsLogDensitiesInTraceOrder) {
    Trace values(std::vector<double>{0.5, 1.5, 3.0});
    // scipy.stats.norm(1, 2).logpdf([0.5, 1.5, 3.0]).sum()
    EXPECT_NEAR(Normal(1, 2).compute_loglikelihood(&values), -5.39875714129385, 1e-12);
    Trace outside(std::vector<double>{1, -1});
    double ll = Exponential(1).compute_loglikelihood(&outside);
    EXPECT_TRUE(std::isinf(ll) && ll < 0);
}
