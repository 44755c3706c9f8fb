// The ARTA process class: construction, the key-value and XML text forms,
// the summary, the marginal operations and the generator. The
// autocorrelation mapping and its integration live in arta_integral.cpp.
#include "timeseries/arta.h"
#include "config/process_files.h"

#include <fstream>
#include <sstream>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "distributions/dist.h"
#include "distributions/dist_load.h"
#include "distributions/dist_normal.h"
#include "numerics/matrix.h"
#include "timeseries/arima.h"

namespace velmora {

namespace {

std::vector<double> parseList(const std::string& text) {
    std::vector<double> values;
    for (const std::string& part : splitString(text, ' ')) values.push_back(toDouble(part));
    return values;
}

void writeList(std::ostream& out, const std::vector<double>& values) {
    for (double v : values) out << v << " ";
}

}  // namespace

ARTA::ARTA() : ArmaDrivenParts<Dist>("arta", "No marginal distribution.", nullptr, nullptr) {
    type = PROCESS_ARTA;
    typeName = "ARTA";
}

ARTA::ARTA(std::string file, format f) : ARTA() { load(file, f); }

ARTA::ARTA(Config* config) : ARTA() { load(config); }

ARTA::ARTA(XMLConfig* document) : ARTA() { load(document); }

ARTA::ARTA(Dist* marginal, std::vector<double> ar, double mean, double stddev)
    : ARTA(marginal, std::move(ar), std::vector<double>(), mean, stddev) {}

ARTA::ARTA(Dist* marginal, std::vector<double> ar, std::vector<double> ma, double mean, double stddev)
    : ArmaDrivenParts<Dist>("arta", "No marginal distribution.", nullptr, marginal) {
    type = PROCESS_ARTA;
    typeName = "ARTA";
    base = std::make_unique<ARIMA>(std::move(ar), std::move(ma), 0.0, mean, stddev * stddev, 0.0, "unknown");
    normaliseBase();
}

ARTA::~ARTA() = default;

// Everything that needs the marginal reports a missing one (a key-value
// model without "distribution") through requireMarginal instead of failing
// on a null pointer.

ARIMA* ARTA::getBaseProcess() { return base.get(); }
Dist* ARTA::getDistribution() { return marginal.get(); }

Dist* ARTA::releaseDistribution() { return marginal.release(); }

std::vector<unsigned> ARTA::getOrder() const {
    return {static_cast<unsigned>(base->getARCoefficients().size()),
            static_cast<unsigned>(base->getMACoefficients().size())};
}

std::string ARTA::getProcessDescription() {
    const std::vector<unsigned> order = getOrder();
    std::ostringstream out;
    out << typeName << "(" << order[0];
    if (order[1] != 0) out << "," << order[1];
    out << ")";
    return out.str();
}

void ARTA::load(std::string file, format f) { loadProcessFile(*this, file, f, "arta", "Format not supported!"); }

void ARTA::save(std::string file, format f) { saveProcessFile(*this, file, f, "arta"); }

void ARTA::load(Config* config) {
    resetParts();
    marginal.reset(loadDistribution(config));
    if (config->existsKey("model") && config->getValue("model") != "arta")
        throw Exception("arta", __LINE__, "Not an ARTA model.");
    // Unlike the ARIMA reader, a single 0 is one coefficient of value 0.
    if (config->existsKey("ar")) base->setARCoefficients(parseList(config->getValue("ar")));
    if (config->existsKey("ma")) base->setMACoefficients(parseList(config->getValue("ma")));
    if (config->existsKey("ar_mean")) base->setMean(config->getValueAsDouble("ar_mean"));
    if (config->existsKey("ar_variance")) base->setVariance(config->getValueAsDouble("ar_variance"));
    normaliseBase();
}

void ARTA::load(XMLConfig* document) {
    resetParts();
    XMLElement* element = model_element(document, "arta");
    if (element == nullptr) throw Exception("arta", __LINE__, "Not an ARTA model.");
    load(element);
}

void ARTA::load(XMLElement* element) {
    resetParts();
    XMLElement* dist =
        load_arma_driven_element(element, *base, "arta", "arta", "dist", "Not an ARTA model.", "Invalid ARTA model.");
    marginal.reset(loadDistribution(dist));
    normaliseBase();
    setExactNumerics(read_numerics_element(element, "arta"));
}

void ARTA::setExactNumerics(bool exact) {
    Process::setExactNumerics(exact);
    base->setExactNumerics(exact);
    if (marginal) marginal->setExact(exact);
}

std::string ARTA::toString(format f) {
    std::ostringstream out;
    if (f == FORMAT_CONFIG) {
        const std::vector<unsigned> order = getOrder();
        out << "model = arta\n";
        out << "class = ARTA\n";
        out << requireMarginal()->toString(FORMAT_CONFIG) << "\n";
        out << "order = " << static_cast<double>(order[0]) << ", " << static_cast<double>(order[1]) << "\n";
        out << "ar = ";
        writeList(out, base->getARCoefficients());
        if (order[1] > 0) {
            out << "\nma = ";
            writeList(out, base->getMACoefficients());
        }
        out << "\nar_mean = " << base->getMean() << "\n";
        out << "ar_variance = " << base->getVariance() << "\n";
    } else if (f == FORMAT_XML) {
        out << "<arta>\n";
        out << numerics_element_text(exactNumerics);
        out << base->toString(FORMAT_XML);
        out << requireMarginal()->toString(FORMAT_XML);
        out << "</arta>\n";
    } else {
        throw Exception("arta", __LINE__, "Output format not supported for ARTA models.");
    }
    return out.str();
}

std::string ARTA::getSummary() { return getSummary(0, 0, 5); }

std::string ARTA::getSummary(unsigned moments, unsigned jointMoments, unsigned lags) {
    Dist* d = requireMarginal();
    const DistStats stats = d->stats(0);
    const std::string baseSummary = base->getSummary(moments, jointMoments, lags);
    const std::string marginalText = d->toString(FORMAT_CONFIG);
    std::ostringstream out;
    out << "ARTA statistics:\n";
    out << "========================\n";
    out << "Marginal Distribution:\n";
    out << "----------------------\n";
    out << marginalText;
    out << "mean: " << stats.mean << "\n";
    out << "variance: " << stats.variance << "\n";
    out << "\n";
    out << "Base Process:\n";
    out << "----------------\n";
    out << baseSummary << "\n";
    out << "\n";
    out << "ARTA Autocorrelation:\n";
    out << "---------------------\n";
    const std::vector<double> rho = getAutocorrelations(0, lags);
    for (std::size_t i = 0; i < rho.size(); ++i) out << "Autocorrelation at lag " << i << ": " << rho[i] << "\n";
    return out.str();
}

std::vector<double> ARTA::getMoments(unsigned from, unsigned to) const {
    return dist_moments(requireMarginal(), from, to);
}

Matrix ARTA::getJointMoments(unsigned from, unsigned to) const {
    Dist* d = requireMarginal();
    if (from > to) throw Exception("arta", __LINE__, "Invalid range of joint moments.");
    const double rho1 = base->getAutocorrelation(1);
    const unsigned n = to - from + 1;
    Matrix result(n, n);
    for (unsigned i = from; i <= to; ++i)
        for (unsigned j = from; j <= to; ++j)
            result(i - from, j - from) = arta_process_compute_autocorrelation_joint_moments(d, rho1, i, j);
    return result;
}

std::vector<double> ARTA::getAutocorrelations(unsigned from, unsigned to) const {
    Dist* d = requireMarginal();
    const unsigned first = from == 0 ? 1 : from;
    std::vector<double> result = arta_process_compute_autocorrelations(d, base->getAutocorrelations(first, to));
    if (from == 0) result.insert(result.begin(), 1.0);
    return result;
}

Distribution ARTA::computeDistribution(double lower, double upper) {
    Dist* d = requireMarginal();
    if (lower > upper) throw Exception("arta", __LINE__, "Invalid range for distribution.");
    if (d->getType() == DIST_EXPONENTIAL && lower <= 0) lower = 0.0001;
    return tabulate_distribution(*this, lower, upper, (upper - lower) / 100);
}

double ARTA::evalCDF(double x) { return requireMarginal()->evalCDF(x); }
double ARTA::evalCCDF(double x) { return requireMarginal()->evalCCDF(x); }
double ARTA::evalPDF(double x) { return requireMarginal()->evalPDF(x); }

double ARTA::computeLikelihood(Trace*) { throw Exception("arta", __LINE__, "Not implemented."); }

void ARTA::initRandomNumberGeneration(unsigned seed) {
    rngInitialized = true;
    base->initRandomNumberGeneration(seed);
}

double ARTA::getNextRandomVariate() {
    if (!rngInitialized) throw Exception("arta", __LINE__, "Initialize Random Number Generation first.");
    const double z = base->getNextRandomVariate();
    if (exactNumerics) return requireMarginal()->exactNormalTransform(z);
    const double u = Normal::normal_cdf(z, 0, 1);
    return requireMarginal()->evalInverseCDF(u);
}

}  // namespace velmora
