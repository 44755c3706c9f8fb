// The scaled forward-backward pass and the closed-form M-step of the
// Erlang-branch MAP EM.
//
// With g_k(j) the density of value k under branch j divided by the largest
// of them (that factor, exp(m_k), goes straight into the log-likelihood) and
// c_k the factor that rescales the forward vector at k (its sum once that has
// fallen below 1e-30, else 1: a rescaling at every step costs a division on
// the critical path for nothing),
//   a_0 = alpha .* g_0 / c_0,   a_k = (a_{k-1} P_{c(k-1)}) .* g_k / c_k,
//   b_{n-1} = P_{c(n-1)} 1 / e, b_{k-1} = P_{c(k-1)} (g_k .* b_k) / c_k,
// where e = a_{n-1} P_{c(n-1)} 1 closes the likelihood with the class of the
// last event (1 for a plain trace), and logL = sum_k (m_k + ln c_k) + ln e.
// a_k .* b_k is then the posterior of interval k's branch, and
// a_{k-1}(i) P_c[i][j] g_k(j) b_k(j) / c_k that of the transition i -> j.
// The backward pass adds up the counts as it goes, so only the forward
// vectors and the densities are stored.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "core/libvelmora_settings.h"
#include "fitting/mapem_kernel.h"
#include "numerics/matrix.h"
#include "numerics/misc_math.h"
#include "numerics/misc_linalg.h"

namespace velmora {
namespace mapem {
namespace detail {

namespace {

const double kMinusInf = -std::numeric_limits<double>::infinity();
// The forward vector is rescaled when its sum falls below this.
const double kRescale = 1e-30;

// exp(x) for -708 <= x <= 0, to about 2 units in the last place: x = k ln 2
// + r with |r| <= ln 2 / 2 (ln 2 in two parts, so r is exact), exp(r) by its
// Taylor polynomial of degree 13, 2^k put into the exponent bits. It has no
// branch and no call, so that the loop over all densities vectorises; the
// densities take most of an EM pass otherwise.
inline double expNonPositive(double x) {
    const double kLog2e = 1.4426950408889634074;
    const double kLn2Hi = 6.93147180369123816490e-01;
    const double kLn2Lo = 1.90821492927058770002e-10;
    const double kShifter = 6755399441055744.0;  // 1.5 * 2^52: adding it rounds to an integer
    const double xc = x;
    const double t = xc * kLog2e + kShifter;
    const double kd = t - kShifter;
    const double r = (xc - kd * kLn2Hi) - kd * kLn2Lo;
    double q = 1.0 / 6227020800.0;  // 1/13!
    q = q * r + 1.0 / 479001600.0;
    q = q * r + 1.0 / 39916800.0;
    q = q * r + 1.0 / 3628800.0;
    q = q * r + 1.0 / 362880.0;
    q = q * r + 1.0 / 40320.0;
    q = q * r + 1.0 / 5040.0;
    q = q * r + 1.0 / 720.0;
    q = q * r + 1.0 / 120.0;
    q = q * r + 1.0 / 24.0;
    q = q * r + 1.0 / 6.0;
    q = q * r + 0.5;
    q = q * r + 1.0;
    q = q * r + 1.0;
    std::int64_t bits;
    std::memcpy(&bits, &t, sizeof bits);
    const std::int64_t k = bits - std::int64_t(0x4338000000000000);  // the bits of kShifter
    const std::int64_t scaleBits = (k + 1023) << 52;
    double scale;
    std::memcpy(&scale, &scaleBits, sizeof scale);
    return q * scale;
}

// Fills w.G with the scaled densities and returns sum_k m_k.
double densities(const Data& d, const Params& p, Work& w) {
    const unsigned B = p.branches();
    // At most 64 branches, as the order is at most 64.
    double K[64], shape[64];
    for (unsigned j = 0; j < B; ++j) {
        const double r = p.r[j];
        K[j] = r * std::log(p.lambda[j]) - log_gamma(r);
        shape[j] = r - 1;
    }
    const double* x = d.x.data();
    const double* lx = d.logx.data();
    const double* lambda = p.lambda.data();
    double* G = w.G.data();
    double total = 0;
    const std::size_t n = d.size();
    for (std::size_t k = 0; k < n; ++k) {
        double* g = G + k * B;
        double top = kMinusInf;
        for (unsigned j = 0; j < B; ++j) {
            const double v = K[j] + shape[j] * lx[k] - lambda[j] * x[k];
            g[j] = v;
            top = std::max(top, v);
        }
        // Below exp(-708), about 3e-308, a density is 0 beside the largest one.
        for (unsigned j = 0; j < B; ++j) g[j] = std::max(g[j] - top, -708.0);
        total += top;
    }
    const std::size_t size = n * B;
    for (std::size_t e = 0; e < size; ++e) G[e] = expNonPositive(G[e]);
    return total;
}

// The branch count of the loops below: a constant for the small counts, so
// that the compiler unrolls the inner loops, and a run-time value otherwise.
template <unsigned K>
struct Fixed {
    constexpr operator unsigned() const { return K; }
};
struct Dynamic {
    unsigned value;
    operator unsigned() const { return value; }
};

// Calls f(dim) with the branch count as a Fixed<1..8> or a Dynamic.
template <class F>
auto dispatch(unsigned B, F&& f) {
    switch (B) {
        case 1: return f(Fixed<1>());
        case 2: return f(Fixed<2>());
        case 3: return f(Fixed<3>());
        case 4: return f(Fixed<4>());
        case 5: return f(Fixed<5>());
        case 6: return f(Fixed<6>());
        case 7: return f(Fixed<7>());
        case 8: return f(Fixed<8>());
        default: return f(Dynamic{B});
    }
}

// The forward pass from `start`; returns sum_k ln c_k + ln e, or -infinity.
template <class Dim>
double forward(const Data& d, const Params& p, const double* start, Work& w, Dim dim) {
    const unsigned B = dim;
    const std::size_t BB = static_cast<std::size_t>(B) * B;
    const std::size_t n = d.size();
    const double* G = w.G.data();
    double* A = w.A.data();
    double* scale = w.scale.data();
    const unsigned* cls = d.cls.data();
    const double* P = p.P.data();
    double ll = 0;
    for (std::size_t k = 0; k < n; ++k) {
        const double* g = G + k * B;
        double* a = A + k * B;
        if (k == 0) {
            for (unsigned j = 0; j < B; ++j) a[j] = start[j] * g[j];
        } else {
            const double* prev = a - B;
            const double* Pc = P + cls[k - 1] * BB;
            for (unsigned j = 0; j < B; ++j) a[j] = 0;
            for (unsigned i = 0; i < B; ++i) {
                const double ai = prev[i];
                if (ai == 0) continue;
                const double* row = Pc + static_cast<std::size_t>(i) * B;
                for (unsigned j = 0; j < B; ++j) a[j] += ai * row[j];
            }
            for (unsigned j = 0; j < B; ++j) a[j] *= g[j];
        }
        double c = 0;
        for (unsigned j = 0; j < B; ++j) c += a[j];
        if (!(c > 0) || !std::isfinite(c)) return kMinusInf;
        // Rescaled only when small: the division and the logarithm stay off
        // most steps, and the chain from one step to the next is short.
        if (c < kRescale) {
            const double inv = 1 / c;
            for (unsigned j = 0; j < B; ++j) a[j] *= inv;
            scale[k] = c;
            ll += std::log(c);
        } else {
            scale[k] = 1;
        }
    }
    // The last event's class: e = a_{n-1} P_c 1.
    const double* Pc = P + cls[n - 1] * BB;
    const double* a = A + (n - 1) * B;
    double e = 0;
    for (unsigned i = 0; i < B; ++i) {
        double s = 0;
        for (unsigned j = 0; j < B; ++j) s += Pc[static_cast<std::size_t>(i) * B + j];
        w.rowSum[i] = s;
        e += a[i] * s;
    }
    if (!(e > 0)) return kMinusInf;
    w.scale[n] = e;
    return ll + std::log(e);
}

template <class Dim>
double backward(const Data& d, const Params& p, Work& w, Dim dim) {
    const unsigned B = dim;
    const std::size_t BB = static_cast<std::size_t>(B) * B;
    const std::size_t n = d.size();
    const double* G = w.G.data();
    const double* A = w.A.data();
    const double* scale = w.scale.data();
    const double* x = d.x.data();
    const unsigned* cls = d.cls.data();
    const double* P = p.P.data();
    double* counts = w.counts.data();
    double* beta = w.beta.data();
    double* next = w.betaNext.data();
    double* t = w.t.data();
    double* visits = w.visits.data();
    double* time = w.time.data();
    std::fill(w.counts.begin(), w.counts.end(), 0.0);
    std::fill(w.visits.begin(), w.visits.end(), 0.0);
    std::fill(w.time.begin(), w.time.end(), 0.0);

    // The closing transition of the last event, into a branch with no interval.
    {
        const double inv = 1 / scale[n];
        const double* a = A + (n - 1) * B;
        double* Nc = counts + cls[n - 1] * BB;
        const double* Pc = P + cls[n - 1] * BB;
        for (unsigned i = 0; i < B; ++i) {
            beta[i] = w.rowSum[i] * inv;
            const double ai = a[i] * inv;
            for (unsigned j = 0; j < B; ++j) Nc[static_cast<std::size_t>(i) * B + j] += ai * Pc[static_cast<std::size_t>(i) * B + j];
        }
    }
    for (std::size_t k = n - 1;; --k) {
        const double* a = A + k * B;
        for (unsigned i = 0; i < B; ++i) {
            const double post = a[i] * beta[i];
            visits[i] += post;
            time[i] += post * x[k];
        }
        if (k == 0) {
            for (unsigned i = 0; i < B; ++i) w.first[i] = a[i] * beta[i];
            break;
        }
        const double* g = G + k * B;
        const double inv = 1 / scale[k];
        for (unsigned j = 0; j < B; ++j) t[j] = g[j] * beta[j] * inv;
        const double* prev = a - B;
        const std::size_t off = cls[k - 1] * BB;
        const double* Pc = P + off;
        double* Nc = counts + off;
        for (unsigned i = 0; i < B; ++i) {
            const double* row = Pc + static_cast<std::size_t>(i) * B;
            double* nrow = Nc + static_cast<std::size_t>(i) * B;
            const double ai = prev[i];
            double s = 0;
            for (unsigned j = 0; j < B; ++j) {
                const double v = row[j] * t[j];
                s += v;
                nrow[j] += ai * v;
            }
            next[i] = s;
        }
        std::swap(beta, next);
    }
    return 0;
}

}  // namespace

void Work::resize(std::size_t n, unsigned B, unsigned C) {
    G.assign(n * B, 0);
    A.assign(n * B, 0);
    scale.assign(n + 1, 0);
    beta.assign(B, 0);
    betaNext.assign(B, 0);
    t.assign(B, 0);
    rowSum.assign(B, 0);
    counts.assign(static_cast<std::size_t>(C) * B * B, 0);
    visits.assign(B, 0);
    time.assign(B, 0);
    first.assign(B, 0);
}

double log_likelihood(const Data& d, const Params& p, const std::vector<double>& start, Work& w) {
    const double m = densities(d, p, w);
    const double ll = dispatch(p.branches(), [&](auto dim) { return forward(d, p, start.data(), w, dim); });
    return ll == kMinusInf ? ll : ll + m;
}

double expectation(const Data& d, const Params& p, Work& w) {
    const double m = densities(d, p, w);
    const double ll = dispatch(p.branches(), [&](auto dim) { return forward(d, p, p.alpha.data(), w, dim); });
    if (ll == kMinusInf) return ll;
    dispatch(p.branches(), [&](auto dim) { return backward(d, p, w, dim); });
    return ll + m;
}

void maximisation(const Data& d, Params& p, const Work& w) {
    const unsigned B = p.branches();
    const unsigned C = d.classes;
    const std::size_t BB = static_cast<std::size_t>(B) * B;
    double total = 0;
    for (unsigned i = 0; i < B; ++i) total += w.first[i];
    if (total > 0)
        for (unsigned i = 0; i < B; ++i) p.alpha[i] = w.first[i] / total;
    for (unsigned i = 0; i < B; ++i) {
        double leave = 0;
        for (unsigned c = 0; c < C; ++c)
            for (unsigned j = 0; j < B; ++j) leave += w.counts[c * BB + static_cast<std::size_t>(i) * B + j];
        // A branch no interval visits keeps its row and its rate.
        if (leave > 0)
            for (unsigned c = 0; c < C; ++c)
                for (unsigned j = 0; j < B; ++j) {
                    const std::size_t at = c * BB + static_cast<std::size_t>(i) * B + j;
                    p.P[at] = w.counts[at] / leave;
                }
        if (w.visits[i] > 0 && w.time[i] > 0) {
            const double rate = p.r[i] * w.visits[i] / w.time[i];
            if (std::isfinite(rate) && rate > 0) p.lambda[i] = rate;
        }
    }
}

std::vector<double> stationary(const Params& p, unsigned classes) {
    const unsigned B = p.branches();
    const std::size_t BB = static_cast<std::size_t>(B) * B;
    Matrix S(B, B);
    for (unsigned c = 0; c < classes; ++c)
        for (unsigned i = 0; i < B; ++i)
            for (unsigned j = 0; j < B; ++j) S[i][j] += p.P[c * BB + static_cast<std::size_t>(i) * B + j];
    std::vector<double> pi(B, 1.0 / B);
    bool solved = false;
    try {
        const Matrix v = compute_steady_state_probability_vector(S, true);
        solved = true;
        for (unsigned j = 0; j < B; ++j) {
            pi[j] = v[0][j];
            if (!(pi[j] >= -1e-12) || !std::isfinite(pi[j])) solved = false;
        }
    } catch (const Exception&) {
        solved = false;
    }
    if (solved) {
        double s = 0;
        for (unsigned j = 0; j < B; ++j) s += (pi[j] = std::max(0.0, pi[j]));
        for (unsigned j = 0; j < B; ++j) pi[j] /= s;
        return pi;
    }
    // A chain the solver can't handle (several closed classes): the lazy
    // chain (I + S) / 2 from the uniform vector, which has no period.
    std::fill(pi.begin(), pi.end(), 1.0 / B);
    std::vector<double> nxt(B);
    for (unsigned it = 0; it < 100000; ++it) {
        double change = 0;
        for (unsigned j = 0; j < B; ++j) {
            double s = 0.5 * pi[j];
            for (unsigned i = 0; i < B; ++i) s += 0.5 * pi[i] * S[i][j];
            nxt[j] = s;
        }
        for (unsigned j = 0; j < B; ++j) change = std::max(change, std::fabs(nxt[j] - pi[j]));
        pi.swap(nxt);
        if (change < 1e-15) break;
    }
    return pi;
}

}  // namespace detail
}  // namespace mapem
}  // namespace velmora
