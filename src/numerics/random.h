// Random streams: MTRand, the MT19937 Mersenne Twister generator of Matsumoto
// and Nishimura (1998) with its reference seedings, and Rand, which turns its
// uniform numbers into variates of the distribution families.
//
// The order in which each method consumes uniform numbers is part of its
// behaviour: equal seeds give equal sequences. The output path of the
// generator and the cheapest variates live in this header so that they inline
// into the callers' loops; nothing on these paths allocates.
#ifndef VELMORA_NUMERICS_RANDOM_H
#define VELMORA_NUMERICS_RANDOM_H

#include <atomic>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <vector>

namespace velmora {

class Matrix;
class Vector;
// The families of the Johnson translation system, defined with them.
enum dist_johnson_family : int;

// MT19937 with the state layout, seeding and tempering of the reference code:
// seed 5489 gives 3499211612 first, the key {0x123, 0x234, 0x345, 0x456}
// gives 1067595299 first.
class MTRand {
public:
    enum { N = 624, M = 397 };

    MTRand(const unsigned long& oneSeed);
    // Seeds from the system (see seed()).
    MTRand();

    // randInt() / (2^32 - 1): a number in the closed interval [0, 1].
    double rand() { return static_cast<double>(randInt()) * 2.3283064370807974e-10; }
    // The next tempered 32-bit word.
    unsigned long randInt();

    // initialize(oneSeed), then reload(); only the low 32 bits of the seed count.
    void seed(unsigned long oneSeed);
    // Seeding by an array of 32-bit words (the reference init_by_array).
    void seed(const unsigned long* bigSeed, unsigned long seedLength);
    // Seeding from the system: 624 words of /dev/urandom, or, failing that,
    // a hash of the time and the processor clock.
    void seed();

protected:
    void initialize(std::uint32_t oneSeed);
    void reload();
    // Folds the bytes of t and c into one word; the counter `differ` makes
    // two calls within the same clock tick give different words, on any
    // thread.
    static std::uint32_t hash(std::time_t t, std::clock_t c);

    static std::uint32_t hiBit(std::uint32_t u) { return u & 0x80000000U; }
    static std::uint32_t loBit(std::uint32_t u) { return u & 0x00000001U; }
    static std::uint32_t loBits(std::uint32_t u) { return u & 0x7FFFFFFFU; }
    static std::uint32_t mixBits(std::uint32_t u, std::uint32_t v) { return hiBit(u) | loBits(v); }
    static std::uint32_t twist(std::uint32_t m, std::uint32_t s0, std::uint32_t s1) {
        return m ^ (mixBits(s0, s1) >> 1) ^ (loBit(s1) ? 0x9908B0DFU : 0U);
    }

    // The next word is state[next]; next == N calls for a reload. An index
    // rather than a pointer into state keeps the default copy right.
    std::uint32_t state[N];
    unsigned next;

    static std::atomic<std::uint32_t> differ;
};

inline unsigned long MTRand::randInt() {
    if (next == N) reload();
    std::uint32_t s = state[next++];
    s ^= s >> 11;
    s ^= (s << 7) & 0x9D2C5680U;
    s ^= (s << 15) & 0xEFC60000U;
    return s ^ (s >> 18);
}

// Variates of the distribution families, all drawn from one owned MTRand.
// Each method checks its parameters and throws an Exception from "random"
// with the family's message when they are invalid.
class Rand {
public:
    // A generator seeded from the system: two such objects differ.
    Rand();
    explicit Rand(unsigned long seed);

    // Restarts the uniform stream; a waiting spare normal value stays.
    void setSeed(unsigned long seed);
    // One uniform number of [0, 1].
    double drawRandomNumber() { return generator.rand(); }

    double uniform(double a, double b);
    double exponential(double rate);
    // Polar method; the second value of each pair is kept for the next call.
    double normal(double mu, double sigma);
    // mean + L z, with L the Cholesky factor of the covariance and z a vector
    // of standard normal values drawn in index order.
    Vector multivariate_normal(const Vector& mean, const Matrix& covariance);
    double lognormal(double mu, double sigma);
    double erlang(unsigned k, double rate);
    double hypo_exponential(const std::vector<double>& rates);
    // One uniform draw picks the branch (the first whose running sum of
    // probabilities reaches it, else the first branch), then an Erlang draw
    // of that branch's phases and rate.
    double hyper_erlang(const std::vector<unsigned>& orders, const std::vector<double>& rates,
                        const std::vector<double>& probabilities);
    double weibull(double alpha, double beta);
    // Shape alpha, scale beta: Ahrens-Dieter for alpha < 1, the exponential
    // for alpha = 1, Cheng's rejection method for alpha > 1.
    double gamma(double alpha, double beta);
    double beta(double alpha1, double alpha2);
    double pearsonV(double alpha, double beta);
    double pearsonVI(double alpha1, double alpha2, double beta);
    // Lower limit a, upper limit b, mode c, with a < c < b.
    double triangular(double a, double b, double c);
    // The number of trials up to and including the first success.
    double geometric(double p);
    double hypogeometric(const std::vector<double>& probabilities);
    // One draw carried through the Johnson quantile of the family, with no
    // check of its own. Defined beside that quantile in
    // distributions/dist_johnson.cpp, so that this layer includes nothing
    // from the families.
    double johnson(dist_johnson_family family, double gamma, double delta, double lambda, double xi);
    double chi2(unsigned n);

private:
    [[noreturn]] static void fail(int line, const char* message);
    // One uniform number of (0, 1]: a draw of exactly 0 counts as the
    // smallest positive draw, 1 / (2^32 - 1), so that logarithms of draws stay
    // finite while every method still takes one draw per uniform.
    double drawPositive() {
        const double u = drawRandomNumber();
        return u == 0.0 ? 2.3283064370807974e-10 : u;
    }

    MTRand generator;
    double spareNormal;
    bool hasSpareNormal;
};

inline double Rand::uniform(double a, double b) {
    if (!(0 <= a && a <= b)) fail(__LINE__, "Invalid range for uniform distribution");
    return (b - a) * drawRandomNumber() + a;
}

// A draw of exactly 0 counts as the smallest positive draw (its logarithm
// would make the variate infinite); adding 0.0 turns the -0 of a draw of 1
// into +0.
inline double Rand::exponential(double rate) {
    if (!(rate > 0)) fail(__LINE__, "Invalid rate for exponential distribution");
    return std::log(drawPositive()) * (-1.0 / rate) + 0.0;
}

inline double Rand::normal(double mu, double sigma) {
    if (!(sigma >= 0)) fail(__LINE__, "Invalid parameter for normal distribution");
    double z;
    if (hasSpareNormal) {
        z = spareNormal;
        hasSpareNormal = false;
    } else {
        double v1, v2, s;
        // s == 0 would make the factor 0/0; it is rejected like s >= 1.
        do {
            v1 = 2.0 * drawRandomNumber() - 1.0;
            v2 = 2.0 * drawRandomNumber() - 1.0;
            s = v1 * v1 + v2 * v2;
        } while (s >= 1.0 || s == 0.0);
        const double m = std::sqrt(std::log(s) * -2.0 / s);
        z = v1 * m;
        spareNormal = v2 * m;
        hasSpareNormal = true;
    }
    return sigma * z + mu;
}

// The parameters of a hyper-Erlang mixture: equal lengths, no negative rate
// or probability, and probabilities summing to 1 within 0.00001.
bool hyper_erlang_params_valid(const std::vector<unsigned>& orders, const std::vector<double>& rates,
                               const std::vector<double>& probabilities);

}  // namespace velmora

#endif
