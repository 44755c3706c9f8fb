// Phase-adding rewritings of acyclic phase-type distributions.
#include "markov/capp_transform.h"

#include "core/libvelmora_settings.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_hypererlang.h"
#include "numerics/matrix.h"

namespace velmora {

namespace capptrans {

CPH transform(Exponential e) { return transform_erlang(1, e.getRate()); }

CPH transform(Erlang e) { return transform_erlang(e.getPhases(), e.getRate()); }

CPH transform(HyperErlang h) {
    if (h.getBranches() == 1) return transform_erlang(h.getPhases()[0], h.getRates()[0]);
    return h.asCPH().seriesCanonicalForm();
}

CPH transform(CPH c) {
    if (!c.isAcyclic()) throw Exception("capp_transform", __LINE__, "Only APHs are allowed!");
    if (c.isExponential()) return transform_erlang(1, -c.getT()(0, 0));
    if (c.isErlang()) return transform_erlang(c.getOrder(), -c.getT()(0, 0));
    if (c.hasSeriesCF()) return transform_add_state(c);
    return c.seriesCanonicalForm();
}

CPH transform_erlang(unsigned k, double lambda) {
    // k = 0 would leave no phase for the chain to start in.
    if (k == 0) throw Exception("capp_transform", __LINE__, "An Erlang distribution needs at least one phase.");
    Matrix T(k + 1, k + 1);
    for (unsigned i = 0; i < k; i++) {
        T(i, i) = -lambda;
        T(i, i + 1) = lambda;
    }
    T(k, k) = -2 * lambda;
    Vector tau(k + 1, true);
    tau(1u) = lambda / (2 * lambda);
    tau(0u) = 1 - tau(1u);
    return CPH(T, tau);
}

CPH transform_add_state(CPH c) {
    if (!c.hasSeriesCF() || c.getOrder() == 0)
        throw Exception("capp_transform", __LINE__, "APH in series canonical form expected.");
    const unsigned n = c.getOrder();
    const Matrix T = c.getT();
    const Vector tau = c.getTau();
    const double d = -T(n - 1, n - 1);
    const double e = 2 * d;
    const double f = d / e;

    Matrix Tn(n + 1, n + 1);
    Vector taun(n + 1, true);
    for (unsigned i = 0; i < n; i++) {
        Tn(i, i) = T(i, i);
        taun(i) = tau(i);
    }
    Tn(n, n) = -e;
    taun(n - 1) = tau(n - 1) * (1 - f);
    taun(n) = tau(n - 1) * f;
    for (unsigned i = 0; i + 3 <= n; i++) Tn(i, i + 1) = T(i, i + 1);
    Tn(n - 1, n) = d;
    if (n > 1) {
        Tn(n - 2, n - 1) = -T(n - 2, n - 2) * (1 - f);
        Tn(n - 2, n) = -T(n - 2, n - 2) * f;
    }
    return CPH(Tn, taun);
}

}  // namespace capptrans

}  // namespace velmora
