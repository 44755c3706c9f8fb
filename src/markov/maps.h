// The Markovian arrival process: a MEP whose matrices are those of a
// continuous-time Markov chain (D0 + D1 a generator, D1 non-negative), so
// that it can be simulated phase by phase and its stationary interval
// distribution tabulated by uniformization. The phase at the end of one
// interval is the start of the next, which carries the correlation.
#ifndef VELMORA_MARKOV_MAPS_H
#define VELMORA_MARKOV_MAPS_H

#include <optional>
#include <string>
#include <vector>

#include "markov/mep.h"
#include "numerics/random.h"

namespace velmora {

class MAP : public MEP {
public:
    MAP(Matrix D0, Matrix D1);
    MAP(std::string file, format f);
    explicit MAP(Config* config);
    explicit MAP(XMLConfig* document);

    bool valid_map();
    bool valid_map(Matrix D0);
    bool valid_map(Matrix D0, Matrix D1);
    // D0 + D1; "Not a valid MAP!" when the matrices don't form a MAP.
    Matrix get_generator_matrix();

    using MEP::getSummary;
    std::string getSummary(unsigned moments, unsigned jointMoments, unsigned lags) override;
    Distribution computeDistribution(double lower, double upper) override;
    double evalCDF(double x) override;
    double evalCCDF(double x) override;
    double evalPDF(double x) override;
    // Natural logarithm of the likelihood of the trace as a sequence of
    // consecutive intervals of the stationary process.
    double computeLikelihood(Trace* trace) override;
    void initRandomNumberGeneration(unsigned seed) override;
    double getNextRandomVariate() override;

private:
    // A stream that is not handed on: a copy or assignment takes the
    // matrices, but the target is left without a stream and must be
    // initialised anew, so that two MAPs never continue copies of one state.
    // This is the one piece of MAP's copying that needs code.
    struct OwnStream {
        std::optional<Rand> rand;
        OwnStream() = default;
        OwnStream(const OwnStream&) {}
        OwnStream& operator=(const OwnStream& other) {
            if (this != &other) rand.reset();
            return *this;
        }
    };

    void setIdentity();
    // Throws unless D0 + D1 is a generator within 1e-9, naming the matrices
    // as the file does.
    void requireGenerator(const char* d0Name, const char* d1Name) const;
    // Per phase: the sojourn rate and the partial sums of the jump
    // probabilities, first the jumps without an event (j != s), then those
    // with an event (all j), each in ascending j; then which phases can
    // reach an event.
    void buildJumpTable();
    void writeJumpSums();
    void markPhasesReachingEvents();

    OwnStream stream;
    unsigned currentState = 0;

    // Jump table for the generator, valid for the matrices of `tableRevision`.
    unsigned order = 0;
    std::vector<double> sojournRate;
    std::vector<double> jumpSums;  // order rows of 2 * order - 1 partial sums
    std::vector<unsigned> jumpTarget;
    std::vector<unsigned char> reachesEvent;  // an event has a positive chance from the phase
    unsigned long tableRevision = 0;
    bool tableBuilt = false;
};

}  // namespace velmora

#endif
