// Phase-adding rewritings: the worked examples, and for every kind of
// argument, repeated rewriting keeps moments 1..5 while the order grows by
// one every second step at most.
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_hypererlang.h"
#include "markov/capp_transform.h"
#include "markov/cph.h"
#include "markov_helpers.h"

using namespace velmora;
using namespace markov_test;

namespace {

void expectSameMoments(const CPH& got, const CPH& expected, const std::string& what) {
    const std::vector<double> a = got.getMoments(1, 5), b = expected.getMoments(1, 5);
    for (unsigned i = 0; i < 5; i++) EXPECT_NEAR(a[i], b[i], 1e-12 * b[i]) << what << " moment " << i + 1;
}

}  // namespace

TEST(CappTransform, WorkedExamples) {
    const CPH e = capptrans::transform_erlang(1, 2.0);
    expectNear(e.getT(), mat({{-2, 2}, {0, -4}}), 0, "T");
    expectNear(e.getTau(), row({0.5, 0.5}), 0, "tau");
    EXPECT_DOUBLE_EQ(e.getMoments(1, 1)[0], 0.5);
    EXPECT_DOUBLE_EQ(e.getVariance(), 0.25);

    const CPH e3 = capptrans::transform_erlang(3, 1.5);
    EXPECT_EQ(e3.getOrder(), 4u);
    expectSameMoments(e3, Erlang(3, 1.5).asCPH(), "Erlang(3)");

    const CPH s(mat({{-1, 1, 0}, {0, -2, 2}, {0, 0, -3}}), row({0.2, 0.3, 0.5}));
    const CPH added = capptrans::transform_add_state(s);
    EXPECT_EQ(added.getOrder(), 4u);
    EXPECT_NEAR(added.getMoments(1, 1)[0], 0.78333333333333333, 1e-14);
    EXPECT_NEAR(added.getMoments(2, 2)[0], 1.37222222222222222, 1e-14);
    expectSameMoments(added, s, "add state");
    EXPECT_FALSE(added.hasSeriesCF());  // phase 1 now has two successors

    // One branch is its Erlang; an exponential CPH is not rewritten by
    // adding a state to it, and the result is no Erlang any more.
    expectNear(capptrans::transform(HyperErlang({3}, {2.0}, {1.0})).getT(),
               capptrans::transform(Erlang(3, 2.0)).getT(), 0, "one branch");
    const CPH fromExp = capptrans::transform(CPH(mat({{-2}}), row({1})));
    expectNear(fromExp.getT(), e.getT(), 0, "exponential CPH");
    EXPECT_FALSE(fromExp.isErlang());
}

TEST(CappTransform, RepeatedRewritingKeepsTheDistribution) {
    const struct {
        const char* name;
        CPH start;
    } cases[] = {
        {"exponential", capptrans::transform(Exponential(0.7))},
        {"erlang", capptrans::transform(Erlang(4, 3.0))},
        {"hyper-erlang", capptrans::transform(HyperErlang({1, 2, 3}, {0.5, 2.0, 4.0}, {0.3, 0.3, 0.4}))},
        {"acyclic, not canonical", CPH(mat({{-4, 1, 1}, {0, -1, 0.5}, {0, 0, -0.25}}), row({0.5, 0.3, 0.2}))},
        {"erlang CPH", Erlang(2, 1.0).asCPH()},
    };
    for (const auto& k : cases) {
        CPH c = k.start;
        for (unsigned step = 0; step < 6; step++) {
            const unsigned before = c.getOrder();
            const CPH next = capptrans::transform(c);
            EXPECT_LE(next.getOrder(), before + 1) << k.name << " step " << step;
            EXPECT_TRUE(next.isAcyclic()) << k.name;
            expectSameMoments(next, k.start, std::string(k.name) + " step " + std::to_string(step));
            c = next;
        }
        // Two steps always add a phase.
        EXPECT_GE(c.getOrder(), k.start.getOrder() + 3) << k.name;
    }
}

TEST(CappTransform, Refusals) {
    EXPECT_EQ(messageOf([] { capptrans::transform(CPH(denseT(), denseTau())); }, "capp_transform"),
              "Only APHs are allowed!");
    const CPH notCanonical(mat({{-4, 1, 1}, {0, -1, 0.5}, {0, 0, -0.25}}), row({0.5, 0.3, 0.2}));
    EXPECT_EQ(messageOf([&] { capptrans::transform_add_state(notCanonical); }, "capp_transform"),
              "APH in series canonical form expected.");
}
