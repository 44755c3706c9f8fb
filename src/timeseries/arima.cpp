// The ARIMA model class: its data, construction, the key-value and XML text
// forms, the summary and the operations the class does not offer. The
// analysis and the generator live in arima_analysis.cpp.
#include "timeseries/arima.h"
#include "config/process_files.h"

#include <cmath>
#include <fstream>
#include <sstream>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "numerics/matrix.h"
#include "numerics/misc_math.h"

namespace velmora {

namespace {

// A coefficient list as written in both text forms: a single part that reads
// as 0 (or no part at all) means the model has no terms of that kind.
std::vector<double> parseCoefficients(const std::string& text) {
    std::vector<std::string> parts = splitString(text, ' ');
    std::vector<double> coefficients;
    if (parts.empty() || (parts.size() == 1 && toDouble(parts[0]) == 0)) return coefficients;
    coefficients.reserve(parts.size());
    for (const std::string& part : parts) coefficients.push_back(toDouble(part));
    return coefficients;
}

void writeList(std::ostream& out, const std::vector<double>& values) {
    for (double v : values) out << v << " ";
}

}  // namespace

ARIMA::ARIMA() : d(0.0), mean(0.0), intercept(0.0), variance(1.0) {
    type = PROCESS_ARIMA;
    typeName = "ARIMA";
}

ARIMA::ARIMA(std::vector<double> ar, std::vector<double> ma, double d, double mean, double variance,
             double intercept, std::string method)
    : ar(std::move(ar)), ma(std::move(ma)), d(d), mean(mean), intercept(intercept), variance(variance),
      method(std::move(method)) {
    type = PROCESS_ARIMA;
    typeName = "ARIMA";
}

ARIMA::ARIMA(std::string file, format f) : ARIMA() { load(file, f); }

ARIMA::ARIMA(Config* config) : ARIMA() { load(config); }

ARIMA::ARIMA(XMLConfig* document) : ARIMA() { load(document); }

// The six model fields; the method text is kept, so a file without a method
// key leaves the earlier one in place.
void ARIMA::resetModel() {
    ar.clear();
    ma.clear();
    d = 0.0;
    mean = 0.0;
    intercept = 0.0;
    variance = 1.0;
}

std::vector<double> ARIMA::getARCoefficients() const { return ar; }
void ARIMA::setARCoefficients(std::vector<double> coefficients) { ar = std::move(coefficients); }
std::vector<double> ARIMA::getMACoefficients() const { return ma; }
void ARIMA::setMACoefficients(std::vector<double> coefficients) { ma = std::move(coefficients); }
double ARIMA::getDegreeOfDifferencing() const { return d; }
void ARIMA::setDegreeOfDifferencing(double d) { this->d = d; }
double ARIMA::getMean() const { return mean; }
void ARIMA::setMean(double mean) { this->mean = mean; }
double ARIMA::getIntercept() const { return intercept; }
void ARIMA::setIntercept(double intercept) { this->intercept = intercept; }
double ARIMA::getVariance() const { return variance; }
void ARIMA::setVariance(double variance) { this->variance = variance; }

std::vector<double> ARIMA::getOrder() const {
    return {static_cast<double>(ar.size()), d, static_cast<double>(ma.size())};
}

std::string ARIMA::getClass() const {
    if (d > 0) return velmora::round(d, 0) == d ? "Arima" : "fArima";
    std::string word;
    if (!ar.empty()) word += "ar";
    if (!ma.empty()) word += "ma";
    return word;
}

std::string ARIMA::getProcessDescription() {
    std::ostringstream out;
    out << typeName << "(" << static_cast<double>(ar.size()) << "," << d << ","
        << static_cast<double>(ma.size()) << ")";
    return out.str();
}

void ARIMA::load(std::string file, format f) { loadProcessFile(*this, file, f, "arima", "Format not supported!"); }

void ARIMA::save(std::string file, format f) { saveProcessFile(*this, file, f, "arima"); }

void ARIMA::load(Config* config) {
    resetModel();
    if (config->existsKey("model") && config->getValue("model") != "f-arima")
        throw Exception("arima", __LINE__, "Not an F-ARIMA model.");
    if (config->existsKey("order")) {
        std::vector<std::string> parts = splitString(config->getValue("order"), ' ');
        if (parts.size() != 3) throw Exception("arima", __LINE__, "Invalid model order.");
        // p and q follow from the coefficient lists; only d is taken.
        d = toDouble(parts[1]);
    }
    if (config->existsKey("ar")) ar = parseCoefficients(config->getValue("ar"));
    if (config->existsKey("ma")) ma = parseCoefficients(config->getValue("ma"));
    if (config->existsKey("mean")) mean = config->getValueAsDouble("mean");
    if (config->existsKey("variance")) variance = config->getValueAsDouble("variance");
    if (config->existsKey("intercept")) intercept = config->getValueAsDouble("intercept");
    if (config->existsKey("method")) method = config->getValue("method");
}

void ARIMA::load(XMLConfig* document) {
    XMLElement* element = model_element(document, "arima");
    if (element == nullptr) throw Exception("arima", __LINE__, "Not an F-ARIMA model.");
    load(element);
}

void ARIMA::load(XMLElement* element) {
    resetModel();
    if (element == nullptr || element->getTag() != "arima")
        throw Exception("arima", __LINE__, "Not an F-ARIMA model.");
    if (XMLElement* child = element->getChildElement("d")) d = toDouble(child->getValue());
    if (XMLElement* child = element->getChildElement("ar")) ar = parseCoefficients(child->getValue());
    if (XMLElement* child = element->getChildElement("ma")) ma = parseCoefficients(child->getValue());
    if (XMLElement* child = element->getChildElement("mean")) mean = toDouble(child->getValue());
    if (XMLElement* child = element->getChildElement("variance")) variance = toDouble(child->getValue());
    checkRunnable();
}

// A model read from a file must be able to generate: finite parameters, a
// positive noise variance and, without differencing, a stationary AR part
// (otherwise the values grow without bound).
void ARIMA::checkRunnable() const {
    auto fail = [](const std::string& what) {
        throw Exception("arima", __LINE__, "The arima element cannot generate: " + what + ".");
    };
    for (double c : ar)
        if (!std::isfinite(c)) fail("an AR coefficient is not finite");
    for (double c : ma)
        if (!std::isfinite(c)) fail("an MA coefficient is not finite");
    if (!std::isfinite(d) || !std::isfinite(mean)) fail("<d> and <mean> must be finite");
    if (!(variance > 0) || !std::isfinite(variance)) fail("<variance> must be positive and finite");
    if (d == 0 && !isStationary())
        fail("its AR part is not stationary (a root of the AR polynomial lies on or inside the unit circle)");
}

std::string ARIMA::toString(format f) {
    std::ostringstream out;
    if (exactNumerics || FullPrecisionText::active()) out.precision(FullPrecisionText::kDigits);
    if (f == FORMAT_CONFIG) {
        out << "model = f-arima\n";
        out << "class = " << getClass() << "\n";
        out << "order = " << ar.size() << " " << d << " " << ma.size() << "\n";
        if (!ar.empty()) {
            out << "ar = ";
            writeList(out, ar);
        }
        if (!ma.empty()) {
            out << "\nma = ";
            writeList(out, ma);
        }
        out << "\nmean = " << mean << "\n";
        out << "intercept = " << intercept << "\n";
        out << "method = " << method << "\n";
        out << "variance = " << variance << "\n";
    } else if (f == FORMAT_XML) {
        // <mean> carries the process mean, so the intercept is folded into it
        // and the text reads back with intercept 0.
        const double processMean = compute_mean_and_variance().first;
        out << "<arima>\n";
        out << "<arcount>" << ar.size() << "</arcount>\n";
        out << "<ar>";
        writeList(out, ar);
        out << "</ar>\n";
        out << "<macount>" << ma.size() << "</macount>\n";
        out << "<ma>";
        writeList(out, ma);
        out << "</ma>\n";
        out << "<d>" << d << "</d>\n";
        out << "<mean>" << processMean << "</mean>\n";
        out << "<variance>" << variance << "</variance>\n";
        out << "</arima>\n";
    } else {
        throw Exception("arima", __LINE__, "Output format is not supported for ARMA models.");
    }
    return out.str();
}

std::string ARIMA::getSummary() { return getSummary(0, 0, 5); }

std::string ARIMA::getSummary(unsigned, unsigned, unsigned lags) {
    std::ostringstream out;
    out << "ARIMA statistics:\n";
    out << "========================\n";
    out << "Model class: " << getClass() << "\n";
    out << "Order (p, d, q): " << ar.size() << " " << d << " " << ma.size() << "\n";
    for (unsigned i = 0; i < ar.size(); ++i) out << "AR coefficient " << i << ": " << ar[i] << "\n";
    for (unsigned i = 0; i < ma.size(); ++i) out << "MA coefficient " << i << ": " << ma[i] << "\n";
    out << "Intercept: " << intercept << "\n";
    out << "Mean: " << mean << "\n";
    out << "Variance of white noise: " << variance << "\n";
    // Each of the three statistics blocks stops silently at the first failure
    // (a model with d != 0, a singular system) and the next block is tried.
    try {
        std::pair<double, double> mv = compute_mean_and_variance();
        out << "Distribution of Process: N(" << mv.first << ", " << mv.second << ")\n";
    } catch (Exception&) {
    }
    if (lags > 0) {
        try {
            std::vector<double> gamma = computeAutocovariances(lags - 1);
            for (unsigned k = 0; k < lags; ++k) out << "Autocovariance at lag " << k << ": " << gamma[k] << "\n";
        } catch (Exception&) {
        }
        try {
            std::vector<double> rho = computeAutocorrelations(lags - 1);
            for (unsigned k = 0; k < lags; ++k) out << "Autocorrelation at lag " << k << ": " << rho[k] << "\n";
        } catch (Exception&) {
        }
    }
    return out.str();
}

Matrix ARIMA::getJointMoments(unsigned, unsigned) const {
    throw Exception("arima", __LINE__, "Computation of Joint Moments not supported for ARIMA.");
}

double ARIMA::computeLikelihood(Trace*) { throw Exception("arima", __LINE__, "Not implemented."); }

}  // namespace velmora
