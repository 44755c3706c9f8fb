// The Erlang-branch MAP EM: its likelihood against the MAP's own forward
// recursion, the closed form of order 1, fits of traces of known models
// (plain and with two classes), the file it writes, and bad input.
#include <cmath>
#include <limits>

#include "fitting/mapem.h"
#include "fitting_helpers.h"
#include "markov/maps.h"
#include "traces/trace.h"
#include "traces/trace_mc.h"

using namespace velmora;
using velmora_test::messageOf;

namespace {

// Order 4: a one-phase branch of rate 5 and a three-phase branch of rate 1.5
// that follow each other with probabilities 0.2 and 0.7.
mapem::Result plainModel() { return mapem::model({1, 3}, {5.0, 1.5}, {{0.8, 0.2, 0.7, 0.3}}); }
// The same branches; each event is of class 1 or 2.
mapem::Result markedModel() {
    return mapem::model({1, 3}, {5.0, 1.5}, {{0.6, 0.1, 0.1, 0.0}, {0.2, 0.1, 0.5, 0.4}});
}

double largestAcfDistance(const mapem::Result& a, const mapem::Result& b, unsigned lags) {
    const std::vector<double> x = a.map->getAutocorrelations(1, lags), y = b.map->getAutocorrelations(1, lags);
    double worst = 0;
    for (unsigned k = 0; k < lags; ++k) worst = std::max(worst, std::fabs(x[k] - y[k]));
    return worst;
}

}  // namespace

TEST(MapEM, PartitionCountsAreThoseOfTheIntegers) {
    // The partition numbers p(n), OEIS A000041.
    const unsigned expected[] = {1, 1, 2, 3, 5, 7, 11, 15, 22, 30, 42};
    for (unsigned n = 0; n <= 10; ++n) EXPECT_EQ(mapem::partitions(n).size(), expected[n]) << n;
    const std::vector<std::vector<unsigned>> four = {{4}, {3, 1}, {2, 2}, {2, 1, 1}, {1, 1, 1, 1}};
    EXPECT_EQ(mapem::partitions(4), four);
}

TEST(MapEM, LikelihoodIsThatOfTheMapsForwardRecursion) {
    // The fit's log-likelihood (branch densities in closed form) against
    // MAP::computeLikelihood of its matrices (uniformization), for the
    // generating model and for a fit of order 5.
    const mapem::Result truth = plainModel();
    const auto data = mapem::simulate(truth, 2000, 3);
    Trace trace(data.first);
    EXPECT_NEAR(mapem::log_likelihood(truth, data.first, {}), truth.map->computeLikelihood(&trace), 1e-6);
    const mapem::Result fit = mapem::fit_map(data.first, 5);
    EXPECT_NEAR(fit.logLikelihood, fit.map->computeLikelihood(&trace), 1e-6);
    EXPECT_TRUE(fit.map->valid_map());
    EXPECT_EQ(fit.structures, 7u);
    EXPECT_EQ(fit.parameters, fit.structure.size() * fit.structure.size());
    EXPECT_NEAR(fit.aic, 2.0 * fit.parameters - 2 * fit.logLikelihood, 1e-9);
    EXPECT_NEAR(fit.bic, fit.parameters * std::log(2000.0) - 2 * fit.logLikelihood, 1e-9);
}

TEST(MapEM, OrderOneIsTheExponentialMaximumLikelihood) {
    // Rate 1 / mean, log L = n ln(rate) - rate sum x.
    const std::vector<double> x = {0.5, 1.5, 2.0, 0.25, 0.75};
    const mapem::Result fit = mapem::fit_map(x, 1);
    const double rate = 5 / 5.0;
    EXPECT_NEAR(fit.rates[0], rate, 1e-12);
    EXPECT_NEAR(fit.logLikelihood, 5 * std::log(rate) - rate * 5.0, 1e-9);
    EXPECT_TRUE(fit.converged);
}

TEST(MapEM, FitOfAKnownModelReachesItsLikelihoodAndCorrelation) {
    // 20 000 values of the order-4 model; the figures for 100 000 are in
    // bench_mapem.
    const mapem::Result truth = plainModel();
    const auto data = mapem::simulate(truth, 20000, 7);
    const mapem::Result fit = mapem::fit_map(data.first, 4);
    EXPECT_GE(fit.logLikelihood, mapem::log_likelihood(truth, data.first, {}));
    EXPECT_LT(largestAcfDistance(fit, truth, 5), 0.02);
    EXPECT_TRUE(fit.converged);
}

TEST(MapEM, MarkedFitKeepsLikelihoodAndClassShares) {
    const mapem::Result truth = markedModel();
    const auto data = mapem::simulate(truth, 20000, 5);
    MCTrace trace;
    double ones = 0;
    for (std::size_t k = 0; k < data.first.size(); ++k) {
        trace.addElement({data.first[k], data.second[k] == 0 ? "read" : "write"});
        ones += data.second[k] == 0;
    }
    const mapem::Result fit = mapem::fit_mmap(trace, 4);
    EXPECT_EQ(fit.classes, (std::vector<std::string>{"read", "write"}));
    ASSERT_EQ(fit.matrices.size(), 3u);
    EXPECT_GE(fit.logLikelihood, mapem::log_likelihood(truth, data.first, data.second));
    const std::vector<double> share = mapem::class_frequencies(fit);
    EXPECT_NEAR(share[0], ones / data.first.size(), 0.005);
    EXPECT_NEAR(share[0] + share[1], 1.0, 1e-12);
    // The class matrices add up to the MAP's D1.
    Matrix sum = fit.matrices[1] + fit.matrices[2];
    velmora_test::expectNear(sum, fit.map->getD1(), 1e-12, "D1");
}

TEST(MapEM, WrittenModelLoadsAsAValidMap) {
    const auto data = mapem::simulate(plainModel(), 3000, 9);
    const mapem::Result fit = mapem::fit_map(data.first, 3);
    const std::string path = velmora_test::tempPath("mapem_fit.xml");
    fit.map->save(path, FORMAT_XML);
    MAP loaded(path, FORMAT_XML);
    EXPECT_TRUE(loaded.valid_map());
    velmora_test::expectNear(loaded.getD0(), fit.map->getD0(), 1e-8, "D0", true);
}

TEST(MapEM, BadInputIsRefusedWithItsReason) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<double> good = {1, 2, 3, 4, 5};
    const struct {
        std::function<void()> call;
        std::string message;
    } cases[] = {
        {[&] { mapem::fit_map(good, 0); }, "Invalid MAP order 0: it must be 1 to 64."},
        {[&] { mapem::fit_map(good, 65); }, "Invalid MAP order 65: it must be 1 to 64."},
        {[&] { mapem::fit_map({1, -2, 3}, 2); }, "Cannot fit a MAP: value 2 (-2) is not a positive finite number."},
        {[&] { mapem::fit_map({1, 0, 3}, 2); }, "Cannot fit a MAP: value 2 (0) is not a positive finite number."},
        {[&] { mapem::fit_map({1, nan}, 2); }, "Cannot fit a MAP: value 2 (nan) is not a positive finite number."},
        {[&] { mapem::fit_map({}, 2); }, "Cannot fit a MAP to an empty trace."},
        {[&] { mapem::fit_map_structure({1, 2, 3}, {1, 1}); },
         "Cannot fit a MAP: 3 values are fewer than the 4 parameters of the smallest model."},
        {[&] { mapem::fit_mmap({1, 2, 3}, {0, 0, 0}, 1, 2); }, "Cannot fit a marked MAP to a trace of one class."},
        {[&] {
             MCTrace t;
             t.addElement({1.0, "a"});
             t.addElement({2.0, "a"});
             mapem::fit_mmap(t, 2);
         },
         "Cannot fit a marked MAP: the trace has 1 class, at least two are needed."},
    };
    for (const auto& c : cases) EXPECT_EQ(messageOf(c.call, "mapem"), c.message);
}

TEST(MapEM, MarkedModelFileLoadsAsItsMapAndListsTheClasses) {
    const mapem::Result m = markedModel();
    const std::string path = velmora_test::tempPath("mapem_marked.xml");
    m.map->save(path, FORMAT_XML);
    MAP loaded(path, FORMAT_XML);
    EXPECT_TRUE(loaded.valid_map());
    velmora_test::expectNear(loaded.getD1(), m.map->getD1(), 1e-9, "D1");
    const std::string text = velmora_test::readFile(path);
    EXPECT_NE(text.find("<name>class1</name>"), std::string::npos);
    EXPECT_NE(text.find("<name>class2</name>"), std::string::npos);
    const mapem::Result copy = m;
    EXPECT_NE(dynamic_cast<mapem::MarkedMAP*>(copy.map.get()), nullptr);
}

TEST(MapEM, AccelerationReachesThePlainEmOptimum) {
    const auto data = mapem::simulate(plainModel(), 2000, 12);
    mapem::Options plain;
    plain.accelerate = false;
    plain.maxIterations = 20000;
    const mapem::Result slow = mapem::fit_map(data.first, 4, plain);
    const mapem::Result fast = mapem::fit_map(data.first, 4);
    EXPECT_TRUE(slow.converged);
    EXPECT_TRUE(fast.converged);
    EXPECT_NEAR(fast.logLikelihood, slow.logLikelihood, 0.01);
    EXPECT_LT(fast.iterations, slow.iterations);
}

TEST(MapEM, ModelsAreCheckedAndSimulatedAsStationaryProcesses) {
    const struct {
        std::vector<unsigned> structure;
        std::vector<double> rates;
        std::vector<std::vector<double>> transitions;
        std::string message;
    } bad[] = {
        {{}, {}, {{}}, "An Erlang-branch model needs a branch."},
        {{1, 0}, {1, 1}, {{1, 0, 0, 1}}, "Each branch needs phases and a positive finite rate."},
        {{1, 1}, {1, -1}, {{1, 0, 0, 1}}, "Each branch needs phases and a positive finite rate."},
        {{1, 1}, {1, 1}, {{1, 0, 0}}, "A transition matrix has not B x B entries."},
        {{1, 1}, {1, 1}, {{1.5, -0.5, 0, 1}}, "A transition probability is negative."},
        {{1, 1}, {1, 1}, {{0.5, 0.4, 0, 1}}, "A row of the transition matrices does not sum to 1."},
        {{40, 30}, {1, 1}, {{1, 0, 0, 1}}, "Invalid MAP order 70: it must be 1 to 64."},
    };
    for (const auto& b : bad) EXPECT_EQ(messageOf([&] { mapem::model(b.structure, b.rates, b.transitions); }, "mapem"), b.message);
    // The simulated values' mean against the MAP's first moment, and the
    // class shares against those of the model.
    const mapem::Result m = markedModel();
    const auto data = mapem::simulate(m, 50000, 21);
    double sum = 0, first = 0;
    for (std::size_t k = 0; k < data.first.size(); ++k) {
        sum += data.first[k];
        first += data.second[k] == 0;
    }
    EXPECT_NEAR(sum / data.first.size(), m.map->getMoments(1, 1)[0], 0.02);
    EXPECT_NEAR(first / data.first.size(), mapem::class_frequencies(m)[0], 0.01);
}

TEST(MapEM, OrderByAicKeepsEveryOrdersFit) {
    const auto data = mapem::simulate(plainModel(), 3000, 17);
    std::vector<mapem::Result> orders;
    const mapem::Result best = mapem::fit_map_by_aic(data.first, 4, mapem::Options(), &orders);
    ASSERT_EQ(orders.size(), 4u);
    for (const auto& r : orders) EXPECT_LE(best.aic, r.aic);
    // Each order's structures are the partitions of the order.
    for (unsigned k = 0; k < 4; ++k) EXPECT_EQ(orders[k].structures, mapem::partitions(k + 1).size());
}
