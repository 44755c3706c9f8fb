// The process of independent variates of one distribution family: text
// forms, summary, moments, autocorrelations (0 beyond lag 0), sampled curves
// and generation, all forwarded to the family.
#include "distributions/dist_process.h"
#include "config/process_files.h"

#include <fstream>
#include <sstream>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "distributions/dist_load.h"
#include "numerics/matrix.h"

namespace velmora {

DistProcess::DistProcess(Dist* d) : dist(d) {
    type = PROCESS_DIST;
    typeName = "Dist";
}

DistProcess::DistProcess(std::string file, format f) : DistProcess(static_cast<Dist*>(nullptr)) { load(file, f); }

DistProcess::DistProcess(Config* c) : DistProcess(static_cast<Dist*>(nullptr)) { load(c); }

DistProcess::DistProcess(XMLConfig* c) : DistProcess(static_cast<Dist*>(nullptr)) { load(c); }

Dist* DistProcess::getDistribution() { return dist.get(); }

// A key-value file without "distribution" leaves the process without a
// family; everything that needs one says so here instead of failing on a
// null pointer.
Dist* DistProcess::requireDist() const {
    if (dist == nullptr) throw Exception("dist", __LINE__, "No distribution loaded.");
    return dist.get();
}

std::string DistProcess::getProcessDescription() { return getProcessTypeString(); }

void DistProcess::load(std::string file, format f) { loadProcessFile(*this, file, f, "dist", "Unsupported Format."); }

// On a failure of the reader the held family stays.
void DistProcess::load(Config* c) {
    if (c->existsKey("model") && c->getValue("model") != "distribution")
        throw Exception("dist", __LINE__, "Not a distribution.");
    dist.reset(loadDistribution(c));
}

void DistProcess::load(XMLConfig* c) { dist.reset(loadDistribution(c)); }

void DistProcess::save(std::string file, format f) { saveProcessFile(*this, file, f, "dist"); }

std::string DistProcess::toString(format f) {
    if (f == FORMAT_CONFIG) return "model = distribution\n" + requireDist()->toString(FORMAT_CONFIG) + "\n";
    if (f == FORMAT_XML) return requireDist()->toString(FORMAT_XML) + "\n";
    throw Exception("dist", __LINE__, "Output format not supported by Dists.");
}

std::string DistProcess::getSummary() { return getSummary(0, 0, 0); }

std::string DistProcess::getSummary(unsigned, unsigned, unsigned) {
    std::ostringstream out;
    out << "Distribution: \n";
    out << "=============\n";
    out << toString(FORMAT_CONFIG) << "\n";
    const DistStats stats = requireDist()->getProperties(0);
    out.setf(std::ios::fixed, std::ios::floatfield);
    out.precision(6);
    out << "mean = " << stats.mean << "\n";
    out << "variance = " << stats.variance << "\n";
    for (std::size_t i = 0; i < stats.moments.size(); ++i)
        out << "Moment " << i + 1 << ": " << stats.moments[i] << "\n";
    return out.str();
}

std::vector<double> DistProcess::getMoments(unsigned from, unsigned to) const {
    return dist_moments(requireDist(), from, to);
}

Matrix DistProcess::getJointMoments(unsigned, unsigned) const {
    throw Exception("dist", __LINE__, "Computation of Joint Moments not supported for Distribution.");
}

std::vector<double> DistProcess::getAutocorrelations(unsigned from, unsigned to) const {
    std::vector<double> result;
    if (from == 0) {
        result.push_back(1.0);
        from = 1;
    }
    for (unsigned i = from; i <= to; ++i) result.push_back(0.0);
    return result;
}

Distribution DistProcess::computeDistribution(double low, double high) {
    if (low > high) throw Exception("dist", __LINE__, "Invalid range for distribution.");
    Dist* d = requireDist();
    Distribution result;
    if (d->getType() == DIST_EXPONENTIAL && low <= 0) low = 0.0001;
    // The walk also ends once adding the step no longer moves x: one point
    // for low = high, and no endless walk for a step lost in rounding. A NaN
    // bound fails the test x <= high at once and gives empty curves.
    double x = low;
    while (x <= high) {
        try {
            result.cdf.emplace_back(x, evalCDF(x));
        } catch (Exception&) {
            result.cdf.emplace_back(0.0, 0.0);
        }
        try {
            result.ccdf.emplace_back(x, evalCCDF(x));
        } catch (Exception&) {
            result.ccdf.emplace_back(0.0, 0.0);
        }
        try {
            result.pdf.emplace_back(x, evalPDF(x));
        } catch (Exception&) {
            result.pdf.emplace_back(0.0, 0.0);
        }
        const double next = x + (high - low) / 1000;
        if (!(next > x)) break;
        x = next;
    }
    return result;
}

double DistProcess::evalCDF(double x) { return requireDist()->evalCDF(x); }
double DistProcess::evalCCDF(double x) { return requireDist()->evalCCDF(x); }
double DistProcess::evalPDF(double x) { return requireDist()->evalPDF(x); }

double DistProcess::computeLikelihood(Trace* trace) { return requireDist()->compute_loglikelihood(trace); }

void DistProcess::initRandomNumberGeneration(unsigned seed) {
    rngInitialized = true;
    requireDist()->setSeed(seed);
}

double DistProcess::getNextRandomVariate() {
    if (!rngInitialized) throw Exception("dist", __LINE__, "Initialize Random Number Generation first.");
    return requireDist()->generateVariate();
}

}  // namespace velmora
