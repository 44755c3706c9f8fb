// Random streams: seeding and reloading of the MT19937 generator (Matsumoto
// and Nishimura 1998, with the 2002 initialisation by array), and the variate
// methods of Rand that do not fit in the header: Erlang, mixtures of Erlang
// branches and sums of exponentials, Weibull, gamma by Ahrens and Dieter
// (shape below 1) and by Cheng (1977, shape above 1), beta and the Pearson
// types V and VI through gamma, triangular by inversion, and geometric by
// counting trials.
#include "numerics/random.h"

#include <cfloat>
#include <cstdio>

#include "core/libvelmora_settings.h"
#include "numerics/misc_util.h"

namespace velmora {

std::atomic<std::uint32_t> MTRand::differ{0};

MTRand::MTRand(const unsigned long& oneSeed) { seed(oneSeed); }

MTRand::MTRand() { seed(); }

void MTRand::seed(unsigned long oneSeed) {
    initialize(static_cast<std::uint32_t>(oneSeed));
    reload();
}

// An empty key (seedLength 0) is read as the single word 0, so that the key
// array is never read out of bounds.
void MTRand::seed(const unsigned long* bigSeed, unsigned long seedLength) {
    initialize(19650218U);
    int i = 1;
    unsigned long j = 0;
    for (unsigned long k = (N > seedLength ? static_cast<unsigned long>(N) : seedLength); k; --k) {
        const std::uint32_t key = seedLength ? static_cast<std::uint32_t>(bigSeed[j]) : 0U;
        state[i] = (state[i] ^ ((state[i - 1] ^ (state[i - 1] >> 30)) * 1664525U)) + key +
                   static_cast<std::uint32_t>(j);
        ++i;
        ++j;
        if (i >= N) {
            state[0] = state[N - 1];
            i = 1;
        }
        if (j >= seedLength) j = 0;
    }
    for (int k = N - 1; k; --k) {
        state[i] = (state[i] ^ ((state[i - 1] ^ (state[i - 1] >> 30)) * 1566083941U)) -
                   static_cast<std::uint32_t>(i);
        ++i;
        if (i >= N) {
            state[0] = state[N - 1];
            i = 1;
        }
    }
    state[0] = 0x80000000U;  // the state is never all zero
    reload();
}

void MTRand::seed() {
    if (std::FILE* urandom = std::fopen("/dev/urandom", "rb")) {
        unsigned long bigSeed[N];
        int got = 0;
        for (; got < N; ++got) {
            std::uint32_t word;
            if (std::fread(&word, sizeof(word), 1, urandom) != 1) break;
            bigSeed[got] = word;
        }
        std::fclose(urandom);
        if (got == N) {
            seed(bigSeed, N);
            return;
        }
    }
    seed(hash(std::time(nullptr), std::clock()));
}

void MTRand::initialize(std::uint32_t oneSeed) {
    state[0] = oneSeed;
    for (int i = 1; i < N; ++i)
        state[i] = 1812433253U * (state[i - 1] ^ (state[i - 1] >> 30)) + static_cast<std::uint32_t>(i);
}

void MTRand::reload() {
    std::uint32_t* p = state;
    for (int i = N - M; i--; ++p) *p = twist(p[M], p[0], p[1]);
    for (int i = M; --i; ++p) *p = twist(p[M - N], p[0], p[1]);
    *p = twist(p[M - N], p[0], state[0]);
    next = 0;
}

std::uint32_t MTRand::hash(std::time_t t, std::clock_t c) {
    // The first four bytes of each value, in memory order.
    std::uint32_t h1 = 0;
    const unsigned char* p = reinterpret_cast<const unsigned char*>(&t);
    for (std::size_t i = 0; i < 4 && i < sizeof(t); ++i) h1 = h1 * 257U + p[i];
    std::uint32_t h2 = 0;
    p = reinterpret_cast<const unsigned char*>(&c);
    for (std::size_t i = 0; i < 4 && i < sizeof(c); ++i) h2 = h2 * 257U + p[i];
    return (h1 + differ++) ^ h2;
}

Rand::Rand() : generator(), spareNormal(0.0), hasSpareNormal(false) {}

Rand::Rand(unsigned long seed) : generator(seed), spareNormal(0.0), hasSpareNormal(false) {}

void Rand::setSeed(unsigned long seed) { generator.seed(seed); }

void Rand::fail(int line, const char* message) { throw Exception("random", line, message); }

double Rand::lognormal(double mu, double sigma) {
    if (!(sigma >= 0)) fail(__LINE__, "Invalid parameter for lognormal distribution");
    return std::pow(2.718281828459045, normal(mu, sigma));
}

// Where the running product of the draws would leave the normal range, the
// product so far goes into a sum of logarithms and the product starts again,
// so that large k cannot give an infinite variate. While the plain product
// stays a normal number the result is ln(product) * (-1 / rate) exactly.
double Rand::erlang(unsigned k, double rate) {
    if (!(rate > 0)) fail(__LINE__, "Invalid rate for erlang distribution");
    double product = 1.0;
    double logSum = 0.0;
    for (unsigned i = 0; i < k; ++i) {
        const double u = drawPositive();
        const double next = product * u;
        if (next < DBL_MIN) {
            logSum += std::log(product);
            product = u;
        } else {
            product = next;
        }
    }
    return (std::log(product) + logSum) * (-1.0 / rate) + 0.0;
}

double Rand::hypo_exponential(const std::vector<double>& rates) {
    double sum = 0.0;
    for (double rate : rates) sum += exponential(rate);
    return sum;
}

bool hyper_erlang_params_valid(const std::vector<unsigned>& orders, const std::vector<double>& rates,
                               const std::vector<double>& probabilities) {
    if (orders.size() != rates.size() || rates.size() != probabilities.size()) return false;
    double sum = 0;
    for (size_t i = 0; i < rates.size(); i++) {
        if (rates[i] < 0 || probabilities[i] < 0) return false;
        sum += probabilities[i];
    }
    return std::fabs(sum - 1) <= 0.00001;
}

double Rand::hyper_erlang(const std::vector<unsigned>& orders, const std::vector<double>& rates,
                          const std::vector<double>& probabilities) {
    if (!hyper_erlang_params_valid(orders, rates, probabilities))
        fail(__LINE__, "Invalid parameters for Hyper-Erlang distribution.");
    const double r = uniform(0.0, 1.0);
    size_t branch = first_index_reaching(probabilities.data(), probabilities.size(), r);
    if (branch == probabilities.size()) branch = 0;
    return erlang(orders[branch], rates[branch]);
}

double Rand::weibull(double alpha, double beta) {
    if (!(alpha > 0 && beta > 0)) fail(__LINE__, "Invalid parameter for weibull distribution");
    return beta * std::pow(-std::log(drawPositive()), 1.0 / alpha) + 0.0;
}

// A shape above DBL_MAX / 2, infinity included, is refused as well: 2 alpha - 1
// overflows and Cheng's loop would never accept. A candidate that a draw of
// exactly 0 or 1 makes infinite or undefined is rejected like any other
// rejected candidate, after the same draws: y of infinity for shape below 1,
// and a first draw of 0 or 1 in Cheng's method. A first draw of 0 for shape
// below 1 gives the candidate 0, which is tested like any other.
double Rand::gamma(double alpha, double beta) {
    if (!(alpha > 0 && beta > 0) || alpha > DBL_MAX / 2)
        fail(__LINE__, "Invalid parameters for gamma distribution.");
    double x;
    if (alpha < 1.0) {
        const double e = 2.718281828459045;
        const double b = (e + alpha) / e;
        for (;;) {
            const double p = b * drawRandomNumber();
            if (p <= 1.0) {
                const double y = std::pow(p, 1.0 / alpha);
                if (std::exp(-y) >= drawRandomNumber()) {
                    x = y;
                    break;
                }
            } else {
                const double y = -std::log((b - p) / alpha);
                const double u = drawRandomNumber();
                if (std::isfinite(y) && std::pow(y, alpha - 1.0) >= u) {
                    x = y;
                    break;
                }
            }
        }
    } else if (alpha == 1.0) {
        x = exponential(1.0);
    } else {
        const double a = 1.0 / std::sqrt(2.0 * alpha - 1.0);
        const double b = alpha - 1.3862943611198906;
        const double q = alpha + 1.0 / a;
        const double theta = 4.5;
        const double d = 1.0 + std::log(4.5);
        for (;;) {
            const double u1 = drawRandomNumber();
            const double u2 = drawRandomNumber();
            if (u1 == 0.0 || u1 == 1.0) continue;
            const double v = a * std::log(u1 / (1.0 - u1));
            const double y = alpha * std::exp(v);
            const double z = u1 * u1 * u2;
            const double w = b + q * v - y;
            if (w + d - theta * z >= 0) {
                x = y;
                break;
            }
            if (w >= std::log(z)) {
                x = y;
                break;
            }
        }
    }
    return beta * x;
}

// When both gamma variates have underflowed to 0 their ratio is lost; for such
// small shapes the beta variate lies at 0 or 1 up to rounding, at 1 with
// probability alpha1 / (alpha1 + alpha2). One more draw decides.
static bool firstOfUnderflowedPairWins(double u, double alpha1, double alpha2) {
    return u * (alpha1 + alpha2) < alpha1;
}

double Rand::beta(double alpha1, double alpha2) {
    if (!(alpha1 > 0 && alpha2 > 0)) fail(__LINE__, "Invalid parameter for beta distribution");
    if (alpha1 == 1.0 && alpha2 == 1.0) return drawRandomNumber();
    const double y1 = gamma(alpha1, 1.0);
    const double y2 = gamma(alpha2, 1.0);
    if (y1 + y2 == 0.0) return firstOfUnderflowedPairWins(drawRandomNumber(), alpha1, alpha2) ? 1.0 : 0.0;
    return y1 / (y1 + y2);
}

double Rand::pearsonV(double alpha, double beta) {
    if (!(alpha > 0 && beta > 0)) fail(__LINE__, "Invalid parameters for Pearson V distribution.");
    return 1.0 / gamma(alpha, 1.0 / beta);
}

// With both gamma variates underflowed to 0 the quotient is decided as in beta:
// infinity or 0.
double Rand::pearsonVI(double alpha1, double alpha2, double beta) {
    if (!(alpha1 > 0 && alpha2 > 0 && beta > 0))
        fail(__LINE__, "Invalid parameters for Pearson VI distribution.");
    const double y1 = gamma(alpha1, beta);
    const double y2 = gamma(alpha2, 1.0);
    if (y1 == 0.0 && y2 == 0.0)
        return firstOfUnderflowedPairWins(drawRandomNumber(), alpha1, alpha2) ? HUGE_VAL : 0.0;
    return y1 / y2;
}

double Rand::triangular(double a, double b, double c) {
    if (!(a < c && c < b)) fail(__LINE__, "Invalid parameters for triangular distribution.");
    const double f = (c - a) / (b - a);
    const double u = drawRandomNumber();
    if (f >= u) return a + std::sqrt((b - a) * u * (c - a));
    return b - std::sqrt((1.0 - u) * (b - a) * (b - c));
}

// A p below the smallest positive draw, 1 / (2^32 - 1), p = 0 included, is
// refused: the loop would end only on a draw of exactly 0.
double Rand::geometric(double p) {
    if (!(0 <= p && p <= 1) || p < 2.3283064370807974e-10)
        fail(__LINE__, "Invalid parameter for geometric distribution.");
    double count = 1.0;
    while (drawRandomNumber() > p) count += 1.0;
    return count;
}

double Rand::hypogeometric(const std::vector<double>& probabilities) {
    double sum = 0.0;
    for (double p : probabilities) sum += geometric(p);
    return sum;
}

double Rand::chi2(unsigned n) { return gamma(n / 2.0, 2.0); }

}  // namespace velmora
