// The CAPP process class: construction, the key-value and XML text forms,
// the summary, the operations passed on to the marginal and the generator.
// The pair probabilities of the paths, the autocorrelations and the joint
// moments live in capp_correlation.cpp.
#include "markov/capp.h"
#include "config/process_files.h"

#include <sstream>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "distributions/dist.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_normal.h"
#include "numerics/matrix.h"
#include "numerics/misc_numerical_dist.h"
#include "numerics/misc_util.h"
#include "timeseries/arima.h"

namespace velmora {

namespace {

// Every blank-separated part is a coefficient: a single 0 is one
// coefficient of value 0.
std::vector<double> parseList(const std::string& text) {
    std::vector<double> values;
    for (const std::string& part : splitString(text, ' ')) values.push_back(toDouble(part));
    return values;
}

void writeList(std::ostream& out, const std::vector<double>& values) {
    for (double v : values) out << v << " ";
}

Exception notAcyclic(int line) { return Exception("capp", line, "CAPP requires acyclic phase-type distribution."); }

}  // namespace

// The default constructor also holds a default base, so that no operation
// meets a missing base; only the marginal can be missing.
capp::capp() : ArmaDrivenParts<CPH>("capp", "No phase-type distribution.", nullptr, nullptr) {
    type = PROCESS_CAPP;
    typeName = "CAPP";
}

capp::capp(CPH* acph, ARIMA* base) : ArmaDrivenParts<CPH>("capp", "No phase-type distribution.", base, acph) {
    type = PROCESS_CAPP;
    typeName = "CAPP";
    if (!marginal->isAcyclic()) throw notAcyclic(__LINE__);
    init();
}

capp::capp(std::string file, format f) : capp() { load(file, f); }

capp::capp(Config* config) : capp() { load(config); }

capp::capp(XMLConfig* document) : capp() { load(document); }

capp::~capp() { clearPaths(); }

void capp::clearPaths() {
    delete_paths(paths);
    pathMeans.clear();
}

void capp::resetParts() {
    ArmaDrivenParts<CPH>::resetParts();
    clearPaths();
}

void capp::init() {
    normaliseBase();
    clearPaths();
    paths = requireMarginal()->generatePaths();
    for (const std::pair<double, HypoExponential*>& path : paths)
        pathMeans.push_back(path.second->getProperties(0).mean);
}

ARIMA* capp::getBaseProcess() { return base.get(); }
CPH* capp::getACPH() { return marginal.get(); }
const cph_path_list& capp::getPaths() const { return paths; }
const std::vector<double>& capp::getPathMeans() const { return pathMeans; }

std::vector<double> capp::getOrder() const {
    return {static_cast<double>(requireMarginal()->getOrder()), static_cast<double>(base->getARCoefficients().size()),
            static_cast<double>(base->getMACoefficients().size())};
}

std::string capp::getProcessDescription() {
    const std::vector<double> order = getOrder();
    std::ostringstream out;
    out << typeName << "(" << order[0] << "," << order[1] << "," << order[2] << ")";
    return out.str();
}

// ---------------------------------------------------------------------------
// Text forms

void capp::load(std::string file, format f) { loadProcessFile(*this, file, f, "capp", "Unsupported file format."); }

void capp::save(std::string file, format f) { saveProcessFile(*this, file, f, "capp"); }

void capp::load(Config* config) {
    if (config->existsKey("model") && config->getValue("model") != "capp")
        throw Exception("capp", __LINE__, "Not a CAPP model.");
    resetParts();
    config->setValue("model", "cph", true);
    marginal = std::make_unique<CPH>(config);
    if (!marginal->isAcyclic()) throw notAcyclic(__LINE__);
    loadBaseKeys(config);
    init();
}

void capp::loadBaseKeys(Config* config) {
    if (config->existsKey("ar")) base->setARCoefficients(parseList(config->getValue("ar")));
    if (config->existsKey("ma")) base->setMACoefficients(parseList(config->getValue("ma")));
    base->setMean(config->existsKey("arma_mean") ? config->getValueAsDouble("arma_mean") : 0.0);
    base->setVariance(config->existsKey("arma_variance") ? config->getValueAsDouble("arma_variance") : 1.0);
}

void capp::load(XMLConfig* document) {
    resetParts();
    XMLElement* element = model_element(document, "capp");
    if (element == nullptr) throw Exception("capp", __LINE__, "Not a CAPP.");
    load(element);
}

void capp::load(XMLElement* element) {
    resetParts();
    XMLElement* ph = load_arma_driven_element(element, *base, "capp", "capp", "ph", "Not a CAPP.", "Invalid CAPP.");
    marginal = std::make_unique<CPH>();
    marginal->load(ph);
    if (!marginal->isAcyclic()) throw notAcyclic(__LINE__);
    init();
    setExactNumerics(read_numerics_element(element, "capp"));
}

void capp::setExactNumerics(bool exact) {
    Process::setExactNumerics(exact);
    base->setExactNumerics(exact);
    if (marginal) marginal->setExactNumerics(exact);
}

std::string capp::toString(format f) {
    std::ostringstream out;
    if (f == FORMAT_CONFIG) {
        CPH* c = requireMarginal();
        out << "model = capp\n";
        out << "T = " << c->getT().toString(10);
        out << "tau = " << c->getTau().toString(10);
        writeBaseText(out);
    } else if (f == FORMAT_XML) {
        out << "<capp>\n";
        out << numerics_element_text(exactNumerics);
        out << requireMarginal()->toString(FORMAT_XML);
        out << base->toString(FORMAT_XML);
        out << "</capp>\n";
    } else {
        throw Exception("capp", __LINE__, "Output format not supported for CAPPs.");
    }
    return out.str();
}

void capp::writeBaseText(std::ostream& out) const {
    const std::vector<double> ar = base->getARCoefficients();
    const std::vector<double> ma = base->getMACoefficients();
    out << "order = " << ar.size() << ", " << ma.size();
    if (!ar.empty()) {
        out << "\nar = ";
        writeList(out, ar);
    }
    if (!ma.empty()) {
        out << "\nma = ";
        writeList(out, ma);
    }
    out << "\narma_mean = " << base->getMean() << "\n";
    out << "arma_variance = " << base->getVariance() << "\n";
    out << "\n";
}

// ---------------------------------------------------------------------------
// Summary

std::string capp::getSummary() { return getSummary(5, 3, 10); }

std::string capp::getSummary(unsigned moments, unsigned jointMoments, unsigned lags) {
    CPH* c = requireMarginal();
    const SummaryNames names{"CAPP statistics:\n", "ACPH Distribution:\n", "CAPP Autocorrelation:\n",
                             "CAPP Joint Moments:\n"};
    return summaryText(names, c->toString(FORMAT_CONFIG), c->getMoments(1, 1)[0], c->getVariance(), moments,
                       jointMoments, lags);
}

std::string capp::summaryText(const SummaryNames& names, const std::string& marginal, double mean, double variance,
                              unsigned moments, unsigned jointMoments, unsigned lags) {
    std::ostringstream out;
    out << names.title;
    out << "========================\n";
    out << names.marginal;
    out << "----------------------\n";
    out << marginal << "\n";
    out << "mean: " << mean << "\n";
    out << "variance: " << variance << "\n";
    out << "\n";
    out << "Base ARMA Process:\n";
    out << "----------------\n";
    out << base->getSummary(moments, jointMoments, lags) << "\n";
    out << "\n";
    out << names.autocorrelation;
    out << "---------------------\n";
    const std::vector<double> rho = getAutocorrelations(0, lags);
    for (std::size_t i = 0; i < rho.size(); ++i) out << "Autocorrelation at lag " << i << ": " << rho[i] << "\n";
    out << "\n";
    out << names.jointMoments;
    out << "-------------------------\n";
    const Matrix jm = getJointMoments(0, jointMoments);
    for (unsigned i = 0; i < jm.getNumberRows(); ++i)
        for (unsigned j = 0; j < jm.getNumberCols(); ++j) out << "JM(" << i << ", " << j << "): " << jm(i, j) << "\n";
    return out.str();
}

// ---------------------------------------------------------------------------
// The marginal

std::vector<double> capp::getMoments(unsigned from, unsigned to) const {
    return requireMarginal()->getMoments(from, to);
}

// Points lower, lower + step, ... while x <= upper, with a hundredth of the
// range as the step; lower = upper gives the one point lower.
Distribution capp::computeDistribution(double lower, double upper) {
    if (lower > upper) throw Exception("capp", __LINE__, "Invalid range for distribution.");
    return tabulate_distribution(*this, lower, upper, (upper - lower) / 100);
}

double capp::evalCDF(double x) { return requireMarginal()->evalCDF(x); }
double capp::evalCCDF(double x) { return requireMarginal()->evalCCDF(x); }
double capp::evalPDF(double x) { return requireMarginal()->evalPDF(x); }

double capp::computeLikelihood(Trace*) { throw Exception("capp", __LINE__, "Not implemented."); }

// ---------------------------------------------------------------------------
// Generation

void capp::initRandomNumberGeneration(unsigned seed) {
    rngInitialized = true;
    base->initRandomNumberGeneration(seed);
    rng.emplace(seed);
}

// u equal to a cumulative probability selects the lower path. When rounding
// leaves every cumulative sum below u, the first path is taken, not the
// last.
unsigned capp::computePathNextRandomVariate() {
    if (!rngInitialized) throw Exception("capp", __LINE__, "Initialize Random Number Generation first.");
    const double z = base->getNextRandomVariate();
    const double u = exactNumerics ? as::alnorm(z, false) : Normal::normal_cdf(z, 0, 1);
    const cph_path_list& list = paths;
    const std::size_t i = first_index_reaching([&list](std::size_t k) { return list[k].first; }, list.size(), u);
    return i == list.size() ? 0 : static_cast<unsigned>(i);
}

// One base value per value, and as many draws of the own stream as the path
// has phases.
double capp::getNextRandomVariate() {
    const unsigned i = computePathNextRandomVariate();
    // A marginal whose chain never reaches absorption has no path to draw
    // from.
    if (i >= paths.size()) throw Exception("capp", __LINE__, "No path to absorption in the phase-type distribution.");
    return rng->hypo_exponential(paths[i].second->getRateList());
}

}  // namespace velmora
