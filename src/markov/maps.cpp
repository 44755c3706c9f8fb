// MAP: validity, the generator matrix, the stationary interval distribution
// by uniformization, the log-likelihood of a trace by the scaled forward
// recursion a <- a exp(D0 x) D1, and the phase-by-phase generator of
// intervals, in which a variate is the sum of all sojourns up to the first
// transition with an event.
#include "markov/maps.h"

#include <cmath>
#include <sstream>

#include "core/libvelmora_settings.h"
#include "markov/cph.h"
#include "numerics/jump_chain.h"
#include "numerics/misc_linalg.h"
#include "numerics/misc_util.h"
#include "traces/trace.h"

namespace velmora {

namespace {

// Ten times the smallest normal double: a scaling factor below it is lifted
// to it so that its logarithm stays finite.
const double kSmallestScale = 2.2250738585072014e-307;

// Divides the first n entries of the row by their sum and returns the
// logarithm of that sum, lifted to kSmallestScale.
double scaleToOne(std::vector<double>& row, unsigned n) {
    double s = 0;
    for (unsigned k = 0; k < n; k++) s += row[k];
    for (unsigned k = 0; k < n; k++) row[k] = row[k] / s;
    if (s < kSmallestScale) s = kSmallestScale;
    return std::log(s);
}

}  // namespace

MAP::MAP(Matrix d0, Matrix d1) : MEP(std::move(d0), std::move(d1)) { setIdentity(); }
MAP::MAP(std::string file, format f) : MEP(file, f) { setIdentity(); }
// A MAP read from a file must be one: D0 + D1 a generator within 1e-9.
MAP::MAP(Config* config) : MEP(config) {
    setIdentity();
    requireGenerator("D0", "D1");
}
MAP::MAP(XMLConfig* document) : MEP(document) {
    setIdentity();
    requireGenerator("d0", "d1");
}

void MAP::requireGenerator(const char* d0Name, const char* d1Name) const {
    const std::string problem = generator_problem(D0, &D1, false, 1e-9, d0Name, d1Name);
    if (!problem.empty())
        throw Exception("maps", __LINE__, "The map element is no Markovian arrival process: " + problem + ".");
}

void MAP::setIdentity() {
    type = PROCESS_MAP;
    typeName = "MAP";
    modelName = "map";
}

// ---------------------------------------------------------------------------
// Validity

bool MAP::valid_map() { return valid_map(D0, D1); }

bool MAP::valid_map(Matrix d0) { return d0.isSubgeneratorMatrix(); }

bool MAP::valid_map(Matrix d0, Matrix d1) {
    unsigned n = d0.getNumberRows();
    if (n == 0 || d0.getNumberCols() != n || d1.getNumberRows() != n || d1.getNumberCols() != n) return false;
    for (unsigned i = 0; i < n; i++) {
        const std::vector<double>& r0 = d0[i];
        const std::vector<double>& r1 = d1[i];
        double offDiagonal = 0;
        double events = 0;
        if (r0[i] > 0) return false;
        for (unsigned j = 0; j < n; j++) {
            if (j != i) {
                if (r0[j] < 0) return false;
                offDiagonal += r0[j];
            }
            if (r1[j] < 0) return false;
            events += r1[j];
        }
        // Written as a test that must hold, so that a row of NaN doesn't close.
        if (!(std::fabs(r0[i] + offDiagonal + events) <= 1e-7)) return false;
    }
    return true;
}

Matrix MAP::get_generator_matrix() {
    if (!valid_map()) throw Exception("maps", __LINE__, "Not a valid MAP!");
    return D0 + D1;
}

// ---------------------------------------------------------------------------
// Summary and distribution

std::string MAP::getSummary(unsigned moments, unsigned jointMoments, unsigned lags) {
    std::ostringstream out;
    out << MEP::getSummary(moments, jointMoments, lags) << std::endl;
    out.setf(std::ios::fixed, std::ios::floatfield);
    out.precision(5);
    out << std::endl;
    out << "t\t\tpdf\t\tcdf" << std::endl;
    out << "=\t\t===\t\t===" << std::endl;
    // Five additions of 0.2 reach 1.0 exactly, so the table has six rows.
    for (double x = 0.0; x <= 1.0; x += 0.2)
        out << x << "\t\t" << evalPDF(x) << "\t\t" << evalCDF(x) << std::endl;
    return out.str();
}

Distribution MAP::computeDistribution(double lower, double upper) {
    return CPH::computeDistribution(lower, upper, D0, steady_state_vector_embedded_dtmc(), D1);
}

double MAP::evalCDF(double x) {
    Distribution d = computeDistribution(x, x);
    if (d.cdf.empty()) throw Exception("maps", __LINE__, "Invalid range for distribution.");
    return d.cdf[0].second;
}

double MAP::evalPDF(double x) {
    Distribution d = computeDistribution(x, x);
    if (d.pdf.empty()) throw Exception("maps", __LINE__, "Invalid range for distribution.");
    return d.pdf[0].second;
}

double MAP::evalCCDF(double x) { return 1 - evalCDF(x); }

// ---------------------------------------------------------------------------
// Likelihood

double MAP::computeLikelihood(Trace* trace) {
    const unsigned K = trace->getSize();
    const double lambda = D0.getLargestValueAbsDiag();
    const unsigned n = D0.getNumberRows();
    Matrix P0 = D0 / lambda + Matrix(n, n, MATRIX_IDENTITY);
    Matrix P1 = D1 / lambda;
    if (P1.getNumberRows() != n || P1.getNumberCols() != n)
        throw Exception("maps", __LINE__, "Invalid matrix dimensions.");

    Matrix a = steady_state_vector_embedded_dtmc();
    Matrix b(1, n);
    Matrix scratch(1, n);

    // c is the running logarithm of the scaling factors.
    double c = 0;
    for (unsigned i = 0; i < K; i++) {
        const double x = trace->getElement(i);
        map_ph_randomization(&P0, &a, &scratch, &b, lambda, x, 1e-12);
        // The rows are looked up again after each call: the routine may
        // replace the matrices' storage.
        std::vector<double>& brow = b[0u];
        c = c + scaleToOne(brow, n);
        row_times_matrix(brow.data(), P1, a[0u].data());
    }
    return scaleToOne(a[0u], n) + c + K * std::log(lambda);
}

// ---------------------------------------------------------------------------
// Generation

void MAP::buildJumpTable() {
    const unsigned n = D0.getNumberRows();
    if (n == 0 || D0.getNumberCols() != n || D1.getNumberRows() != n || D1.getNumberCols() != n)
        throw Exception("maps", __LINE__, "Invalid matrix dimensions.");
    order = n;
    writeJumpSums();
    markPhasesReachingEvents();
    tableRevision = matrixRevision;
    tableBuilt = true;
}

// The partial sums are formed exactly as the walk would form them, so that
// looking them up gives the same phase as summing on the fly.
void MAP::writeJumpSums() {
    const unsigned n = order;
    const unsigned width = 2 * n - 1;
    sojournRate.assign(n, 0.0);
    jumpSums.assign(static_cast<std::size_t>(n) * width, 0.0);
    jumpTarget.assign(static_cast<std::size_t>(n) * width, 0);
    for (unsigned s = 0; s < n; s++) {
        const double rate = -D0[s][s];
        sojournRate[s] = rate;
        double* sums = &jumpSums[static_cast<std::size_t>(s) * width];
        unsigned* targets = &jumpTarget[static_cast<std::size_t>(s) * width];
        double a = 0;
        const unsigned k = write_jump_sums(D0[s].data(), n, s, rate, &a, sums, targets);
        write_jump_sums(D1[s].data(), n, n, rate, &a, sums + k, targets + k);
    }
}

// A phase from which no event can ever be reached would make the walk run
// for ever; it is marked, and the walk refuses to go on in it. A phase whose
// sojourn rate the exponential draw refuses ends the walk there with that
// draw's message, and counts as an end.
void MAP::markPhasesReachingEvents() {
    const unsigned n = order;
    const unsigned width = 2 * n - 1;
    std::vector<unsigned char> ends(n, 0);
    std::vector<std::vector<unsigned>> next(n);
    std::vector<unsigned char> possible(width);
    for (unsigned s = 0; s < n; s++) {
        const unsigned* targets = &jumpTarget[static_cast<std::size_t>(s) * width];
        mark_possible_jumps(&jumpSums[static_cast<std::size_t>(s) * width], width, possible.data());
        if (!(sojournRate[s] > 0)) ends[s] = 1;
        for (unsigned k = n - 1; k < width; k++)
            if (possible[k]) ends[s] = 1;
        for (unsigned k = 0; k + 1 < n; k++)
            if (possible[k]) next[s].push_back(targets[k]);
    }
    reachesEvent = states_reaching(next, std::move(ends));
}

void MAP::initRandomNumberGeneration(unsigned seed) {
    rngInitialized = true;
    Rand& rng = stream.rand.emplace(seed);
    // The start phase is drawn before anything else of the stream.
    const double u = rng.uniform(0, 1);
    const Matrix pi = steady_state_vector_embedded_dtmc();
    const std::vector<double>& p = pi[0u];
    currentState = static_cast<unsigned>(first_index_reaching(p.data(), p.size(), u));
    // Rounding may keep the sum below u; u is then next to 1, and the last
    // phase that can be entered is the nearest choice.
    if (currentState == p.size()) {
        currentState = 0;
        for (unsigned j = 0; j < p.size(); j++)
            if (p[j] > 0) currentState = j;
    }
    buildJumpTable();
}

double MAP::getNextRandomVariate() {
    if (!rngInitialized || !stream.rand)
        throw Exception("maps", __LINE__, "Initialize Random Number Generation first.");
    // New matrices after the start: the walk goes on with them if the phase
    // still exists.
    if (!tableBuilt || tableRevision != matrixRevision) buildJumpTable();
    if (currentState >= order) throw Exception("maps", __LINE__, "Initialize Random Number Generation first.");

    const unsigned n = order;
    const unsigned width = 2 * n - 1;
    Rand& rng = *stream.rand;
    unsigned s = currentState;
    double t = 0;
    while (true) {
        t += rng.exponential(sojournRate[s]);
        if (!reachesEvent[s]) throw Exception("maps", __LINE__, "No event can be reached from the current phase.");
        const double v = rng.uniform(0, 1);
        const double* sums = &jumpSums[static_cast<std::size_t>(s) * width];
        unsigned k = 0;
        while (k < width && !(sums[k] >= v)) ++k;
        if (k == width) continue;  // v above all sums through rounding: same phase
        s = jumpTarget[static_cast<std::size_t>(s) * width + k];
        if (k >= n - 1) break;  // a transition with an event ends the interval
    }
    currentState = s;
    return t;
}

}  // namespace velmora
