// The continuous phase-type distribution (T, tau): construction, the two
// text forms, raw moments E[X^i] = i! tau (-T)^(-i) 1, generation by walking
// the absorbing chain, and the validity tests.
#include "markov/cph.h"

#include <cmath>
#include <sstream>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "numerics/jump_chain.h"
#include "numerics/misc_linalg.h"
#include "numerics/misc_math.h"
#include "numerics/misc_util.h"

namespace velmora {

// ---------------------------------------------------------------------------
// Construction and text forms

CPH::CPH() : PH() {
    type = PROCESS_CPH;
    typeName = "CPH";
}

CPH::CPH(Matrix T, Vector tau) : PH(std::move(T), std::move(tau)) {
    type = PROCESS_CPH;
    typeName = "CPH";
}

CPH::CPH(std::string file, format f) : CPH() { PH::load(file, f); }

CPH::CPH(Config* config) : CPH() { load(config); }

CPH::CPH(XMLConfig* document) : CPH() { load(document); }

void CPH::load(Config* config) {
    if (config->existsKey("model") && config->getValue("model") != "cph")
        throw Exception("cph", __LINE__, "Not a CPH.");
    T = config->getValueAsMatrix("T");
    tau = Vector(config->getValueAsMatrix("tau").getRow(0), true);
    requirePhaseType("T", "tau");
}

void CPH::load(XMLConfig* document) {
    XMLElement* root = document->getDocumentRoot();
    if (root == nullptr || root->getTag() != "velmora" || root->getChildElement("ph") == nullptr)
        throw Exception("cph", __LINE__, "Not a PH distribution.");
    load(root->getChildElement("ph"));
}

// "d0" is one flat list of the entries of T, row after row.
void CPH::load(XMLElement* element) {
    if (element->getTag() != "ph") throw Exception("cph", __LINE__, "Not a PH distribution.");
    XMLElement* d0 = element->getChildElement("d0");
    XMLElement* pi = element->getChildElement("pi");
    if (d0 == nullptr || pi == nullptr) throw Exception("cph", __LINE__, "Not a PH description.");

    T = square_matrix_from_list(d0->getValue());
    tau = Vector(Matrix(pi->getValue()).getRow(0), true);
    requirePhaseType("d0", "pi");
}

// T a sub-generator within 1e-9, tau of finite non-negative entries; the
// names are those of the file's parts.
void CPH::requirePhaseType(const char* matrixName, const char* vectorName) const {
    std::string problem = generator_problem(T, nullptr, true, 1e-9, matrixName, "");
    for (unsigned i = 0; problem.empty() && i < tau.getNumberEntries(); ++i)
        if (!(tau(i) >= 0) || !std::isfinite(tau(i)))
            problem = "entry " + std::to_string(i + 1) + " of " + vectorName + " is " + velmora::toString(tau(i));
    if (!problem.empty())
        throw Exception("cph", __LINE__, "The ph element is no phase-type distribution: " + problem + ".");
}

std::string CPH::toString(format f) {
    std::ostringstream out;
    if (f == FORMAT_CONFIG) {
        out << "model = cph" << std::endl;
        out << "T = " << T.toString(10) << std::endl;
        out << "tau = " << tau.toString(10) << std::endl;
    } else if (f == FORMAT_XML) {
        out << "<ph>" << std::endl;
        out << "<states>" << getOrder() << "</states>" << std::endl;
        // Exact numerics write every bit (17 digits), as the models that hold the chain do.
        out << "<d0>" << T.toString(exactNumerics ? 17 : 10) << "</d0>" << std::endl;
        out << "<pi>" << tau.toString(exactNumerics ? 17 : 10) << "</pi>" << std::endl;
        out << "</ph>" << std::endl;
    } else {
        throw Exception("cph", __LINE__, "Output format not supported for CPHs.");
    }
    return out.str();
}

// ---------------------------------------------------------------------------
// Moments

std::vector<double> CPH::getMoments(unsigned first, unsigned last) const {
    return phase_type_moments(T, tau, first, last);
}

double CPH::getVariance() const {
    std::vector<double> m = getMoments(1, 2);
    return m[1] - m[0] * m[0];
}

Vector CPH::getExitRates() const {
    Vector result(getOrder(), false);
    for (unsigned i = 0; i < getOrder(); i++) result[i] = -T.getRowSum(i);
    return result;
}

// ---------------------------------------------------------------------------
// Generation

// True if absorption can be reached from `start` with positive probability:
// the walk is absorbed in a phase whose jump sums a draw can pass all, and
// ends in one whose sojourn rate the exponential draw refuses.
static bool absorptionReachable(const Matrix& T, unsigned start) {
    const unsigned n = T.getNumberRows();
    std::vector<std::vector<unsigned>> next(n);
    std::vector<unsigned char> ends(n, 0);
    std::vector<double> sums(n);
    std::vector<unsigned> targets(n);
    std::vector<unsigned char> possible(n);
    for (unsigned s = 0; s < n; s++) {
        const std::vector<double>& row = T[s];
        const double rate = -row[s];
        if (!(rate > 0)) {
            ends[s] = 1;
            continue;
        }
        double a = 0;
        const unsigned count = write_jump_sums(row.data(), n, s, rate, &a, sums.data(), targets.data());
        if (mark_possible_jumps(sums.data(), count, possible.data())) ends[s] = 1;
        for (unsigned k = 0; k < count; k++)
            if (possible[k]) next[s].push_back(targets[k]);
    }
    return states_reaching(next, ends)[start] != 0;
}

// Draw order per variate: one uniform for the start; then per visited phase
// one exponential sojourn and one uniform for the jump.
double CPH::getNextRandomVariate() {
    if (!rngInitialized) throw Exception("cph", __LINE__, "Initialize Random Number Generation first.");
    const unsigned n = getOrder();
    const unsigned m = tau.getNumberEntries();
    // A T that is not square, or a start phase beyond its order, has no row
    // to walk on.
    if (T.getNumberCols() != n) throw Exception("cph", __LINE__, "Invalid matrix dimensions.");

    double u = rng->uniform(0, 1);
    const double tau0 = getTau0();
    if (tau0 >= u) return 0.0;
    // Rounding that keeps every running sum below u starts in phase 0.
    const Vector& start = tau;
    unsigned c = static_cast<unsigned>(first_index_reaching([&start](std::size_t i) { return start(i); }, m, u, tau0));
    if (c == m) c = 0;

    if (c >= n) throw Exception("cph", __LINE__, "Invalid matrix dimensions.");

    double t = 0;
    // A chain from which absorption can't be reached would walk for ever;
    // after every 2^20 visits the walk checks that an exit is still ahead.
    unsigned long visits = 0;
    while (true) {
        const std::vector<double>& row = T[c];
        const double rate = -row[c];
        t += rng->exponential(rate);
        double v = rng->uniform(0, 1);
        double a = 0;
        unsigned next = n;
        for (unsigned j = 0; j < n; j++) {
            if (j == c) continue;
            a += row[j] / rate;
            if (a >= v) {
                next = j;
                break;
            }
        }
        if (next == n) break;
        c = next;
        if ((++visits & 0xFFFFF) == 0 && !absorptionReachable(T, c))
            throw Exception("cph", __LINE__, "Absorption can't be reached from the current phase.");
    }
    return t;
}

// ---------------------------------------------------------------------------
// Validity and structure

bool CPH::valid_ph() const {
    if (!T.isSubgeneratorMatrix()) return false;
    const unsigned m = tau.getNumberEntries();
    double sum = 0;
    for (unsigned i = 0; i < m; i++) {
        if (tau(i) < 0) return false;
        sum += tau(i);
    }
    return std::fabs(sum - 1.0) <= 1e-5;
}

bool CPH::isExponential() const { return valid_ph() && getOrder() == 1 && tau(0) == 1.0; }

// No tolerance: the rates must be equal to the last bit.
bool CPH::isErlang() const {
    if (!valid_ph() || tau(0) != 1.0) return false;
    const unsigned n = getOrder();
    const double lambda = T[n - 1][n - 1];
    for (unsigned i = 0; i + 1 < n; i++)
        if (T[i][i] != lambda || -T[i][i + 1] != lambda) return false;
    return hasSeriesCF();
}

}  // namespace velmora
