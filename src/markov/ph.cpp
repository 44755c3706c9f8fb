// What all phase-type models share: the fields T and tau, file reading and
// writing through the class's own text forms, the summary, the uncorrelated
// autocorrelations and the random stream.
#include "markov/ph.h"
#include "config/process_files.h"

#include <fstream>
#include <sstream>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"

namespace velmora {

// A row vector stays, a column vector becomes one.
static Vector asRow(const Vector& v) { return v.isRowVector() ? v : v.transpose(); }

PH::PH() = default;

PH::PH(Matrix T, Vector tau) : T(std::move(T)), tau(asRow(tau)) {}

std::string PH::getProcessDescription() { return typeName + "(" + velmora::toString(getOrder()) + ")"; }

void PH::load(std::string file, format f) { loadProcessFile(*this, file, f, "ph", "Unsupported format."); }

void PH::save(std::string file, format f) { saveProcessFile(*this, file, f, "ph"); }

std::string PH::getSummary() { return getSummary(5, 0, 0); }

std::string PH::getSummary(unsigned moments, unsigned, unsigned) {
    std::ostringstream out;
    out << "Summary:" << std::endl;
    out << "=========================" << std::endl;
    out << std::endl;
    out << toString(FORMAT_CONFIG) << std::endl;
    std::vector<double> m = getMoments(0, moments);
    for (unsigned i = 0; i < m.size(); i++) out << "Moment " << i << ": " << m[i] << std::endl;
    out << "Variance: " << getVariance() << std::endl;
    return out.str();
}

std::vector<double> PH::getAutocorrelations(unsigned first, unsigned last) const {
    std::vector<double> result;
    // A wide counter, so that last = UINT_MAX ends the loop.
    for (unsigned long long lag = first; lag <= last; lag++) result.push_back(lag == 0 ? 1.0 : 0.0);
    return result;
}

void PH::initRandomNumberGeneration(unsigned seed) {
    rngInitialized = true;
    rng.emplace(seed);
}

unsigned PH::getOrder() const { return T.getNumberRows(); }
Matrix PH::getT() const { return T; }
void PH::setT(Matrix T) { this->T = std::move(T); }
Vector PH::getTau() const { return tau; }
void PH::setTau(Vector tau) { this->tau = std::move(tau); }

double PH::getTau0() const {
    double sum = 0;
    for (unsigned i = 0; i < tau.getNumberEntries(); i++) sum += tau(i);
    return 1.0 - sum;
}

bool PH::isAcyclic() const { return valid_ph() && (T.isLowerTriangular() || T.isUpperTriangular()); }

}  // namespace velmora
