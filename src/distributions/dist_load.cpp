// The readers of distributions. The key-value reader knows every family by
// its type name and the keys of its key-value text; the XML reader knows the
// families with a readable XML form, some of them under other names and units
// (the mean of the exponential, the standard deviation of the normal, shape
// and scale of Weibull and gamma, the degrees of freedom of chi-square).
//
// The probabilities of a hyper-exponential must sum to 1 within 0.005; those
// of a hyper-Erlang are normalised by the key-value reader when they are
// further off than that, and must sum to 1 exactly in XML.
//
// The Johnson, geometric and hypo-geometric families are not part of the
// toolkit yet: their rows are refused with an exception until they are.
#include "distributions/dist_load.h"

#include <cmath>
#include <string>
#include <vector>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"

namespace velmora {

namespace {

[[noreturn]] void notAvailable(int line, const std::string& family) {
    throw Exception("dist", line, "Distribution family " + family + " is not available yet.");
}

// A list value: pieces separated by single blanks.
std::vector<double> doubleList(const std::string& text) {
    std::vector<double> values;
    for (const std::string& piece : splitString(text, ' ')) values.push_back(toDouble(piece));
    return values;
}

// A count of phases. A negative count would wrap to some four billion phases,
// whose variates take minutes each: it is refused.
unsigned phaseCount(int count) {
    if (count < 0) throw Exception("dist", __LINE__, "Negative number of phases.");
    return static_cast<unsigned>(count);
}

std::vector<unsigned> phaseList(const std::string& text) {
    std::vector<unsigned> values;
    for (const std::string& piece : splitString(text, ' ')) values.push_back(phaseCount(toInt(piece)));
    return values;
}

double sumOf(const std::vector<double>& values) {
    double sum = 0;
    for (double value : values) sum += value;
    return sum;
}

// Key-value parameters: the value of the key, or the default when it is missing.
double keyDouble(Config* c, const std::string& key, double fallback) {
    return c->existsKey(key) ? c->getValueAsDouble(key) : fallback;
}

int keyInt(Config* c, const std::string& key, int fallback) {
    return c->existsKey(key) ? c->getValueAsInt(key) : fallback;
}

// XML parameters: the text of the child, or the default when it is missing.
double tagDouble(XMLElement* family, const std::string& tag, double fallback) {
    XMLElement* child = family->getChildElement(tag);
    return child != nullptr ? toDouble(child->getValue()) : fallback;
}

int tagInt(XMLElement* family, const std::string& tag, int fallback) {
    XMLElement* child = family->getChildElement(tag);
    return child != nullptr ? toInt(child->getValue()) : fallback;
}

Dist* loadHyperExponential(Config* c) {
    int phases = keyInt(c, "phases", 1);
    std::vector<double> probabilities;
    if (c->existsKey("prob")) {
        // A single element is neither converted nor summed: the list counts
        // as empty, with sum 0.
        std::vector<std::string> pieces = splitString(c->getValue("prob"), ' ');
        if (pieces.size() > 1)
            for (const std::string& piece : pieces) probabilities.push_back(toDouble(piece));
        if (std::fabs(sumOf(probabilities) - 1) > 0.005)
            throw Exception("dist", __LINE__, "Sum of initial probabilities for Hyper-Exponential must equal 1.");
    }
    std::vector<double> rates;
    if (c->existsKey("rates")) rates = doubleList(c->getValue("rates"));
    if (static_cast<long long>(probabilities.size()) != phases || static_cast<long long>(rates.size()) != phases)
        throw Exception("dist", __LINE__, "Dimensions for Hyper-Exponential vectors do not match.");
    return new HyperExponential(rates, probabilities);
}

// The count of phases is read and has no effect: the rates alone count.
Dist* loadHypoExponential(Config* c) {
    std::vector<double> rates;
    if (c->existsKey("rates")) rates = doubleList(c->getValue("rates"));
    return new HypoExponential(rates);
}

Dist* loadHyperErlang(Config* c) {
    std::vector<unsigned> phases;
    if (c->existsKey("phases")) phases = phaseList(c->getValue("phases"));
    std::vector<double> rates;
    if (c->existsKey("rates")) rates = doubleList(c->getValue("rates"));
    std::vector<double> probabilities;
    if (c->existsKey("prob")) {
        probabilities = doubleList(c->getValue("prob"));
        // Far off, the list is normalised; a sum within 0.005 but off by more
        // than the family's own tolerance is left for its check to refuse.
        double sum = sumOf(probabilities);
        if (std::fabs(sum - 1) > 0.005)
            for (double& p : probabilities) p /= sum;
    }
    long long branches =
        c->existsKey("branches") ? c->getValueAsInt("branches") : static_cast<long long>(phases.size());
    if (static_cast<long long>(phases.size()) != branches || static_cast<long long>(rates.size()) != branches ||
        static_cast<long long>(probabilities.size()) != branches)
        throw Exception("dist", __LINE__, "Dimensions for Hyper-Erlang vectors do not match.");
    return new HyperErlang(phases, rates, probabilities);
}

Dist* loadHyperErlang(XMLElement* family) {
    std::vector<double> probabilities;
    if (XMLElement* child = family->getChildElement("prob")) {
        probabilities = doubleList(child->getValue());
        // Exact comparison: the XML form admits no slack at all.
        if (sumOf(probabilities) != 1)
            throw Exception("dist", __LINE__, "Sum of initial probabilities for Hyper-Erlang must equal 1.");
    }
    std::vector<unsigned> phases;
    if (XMLElement* child = family->getChildElement("phases")) phases = phaseList(child->getValue());
    std::vector<double> rates;
    if (XMLElement* child = family->getChildElement("rates")) rates = doubleList(child->getValue());
    if (phases.size() != rates.size() || rates.size() != probabilities.size())
        throw Exception("dist", __LINE__, "Dimensions for Hyper-Erlang vectors do not match.");
    return new HyperErlang(phases, rates, probabilities);
}

// The family elements the XML reader knows, in the order they are looked for.
const char* const familyTags[] = {"uniformdist", "expodist",       "normaldist",      "lognormaldist",
                                  "johnsondist", "erlangdist",     "hypererlangdist", "weibulldist",
                                  "gammadist",   "triangulardist", "chisquaredist"};

}  // namespace

Dist* loadDistribution(Config* c) {
    if (!c->existsKey("distribution")) return nullptr;
    switch (Dist::getDistType(c->getValue("distribution"))) {
        case DIST_DETERMINISTIC:
            return new Deterministic(keyDouble(c, "val", 0));
        case DIST_UNIFORM:
            return new Uniform(keyDouble(c, "a", 0), keyDouble(c, "b", 1));
        case DIST_EXPONENTIAL:
            return new Exponential(keyDouble(c, "rate", 1));
        case DIST_NORMAL:
            return new Normal(keyDouble(c, "mean", 0), std::sqrt(keyDouble(c, "var", 1)));
        case DIST_LOGNORMAL:
            return new Lognormal(keyDouble(c, "mu", 0), std::sqrt(keyDouble(c, "sigma2", 1)));
        case DIST_JOHNSON:
            // Keys johnson (SB), gamma, delta, lambda, xi (1 each) once the family exists.
            notAvailable(__LINE__, "johnson");
        case DIST_ERLANG:
            return new Erlang(phaseCount(keyInt(c, "phases", 1)), keyDouble(c, "rate", 1));
        case DIST_HYPEREXPONENTIAL:
            return loadHyperExponential(c);
        case DIST_HYPOEXPONENTIAL:
            return loadHypoExponential(c);
        case DIST_HYPERERLANG:
            return loadHyperErlang(c);
        case DIST_WEIBULL:
            return new Weibull(keyDouble(c, "alpha", 1), keyDouble(c, "beta", 1));
        case DIST_GAMMA:
            return new Gamma(keyDouble(c, "alpha", 1), keyDouble(c, "beta", 1));
        case DIST_BETA:
            return new Beta(keyDouble(c, "alpha1", 1), keyDouble(c, "alpha2", 1));
        case DIST_PEARSONV:
            return new PearsonV(keyDouble(c, "alpha", 1), keyDouble(c, "beta", 1));
        case DIST_PEARSONVI:
            return new PearsonVI(keyDouble(c, "alpha1", 1), keyDouble(c, "alpha2", 1), keyDouble(c, "beta", 1));
        case DIST_GEOMETRIC:
            // Key p (0.5) once the family exists.
            notAvailable(__LINE__, "geometric");
        case DIST_HYPOGEOMETRIC:
            // Key p, a list, once the family exists.
            notAvailable(__LINE__, "hypogeometric");
        case DIST_TRIANGULAR:
            return new Triangular(keyDouble(c, "a", 0), keyDouble(c, "b", 1), keyDouble(c, "c", 0.5));
        case DIST_CHISQUARE:
            return new ChiSquare(static_cast<unsigned>(keyInt(c, "k", 2)));
    }
    throw Exception("dist", __LINE__, "Unknown distribution");
}

Dist* loadDistribution(XMLConfig* c) {
    XMLElement* root = c->getDocumentRoot();
    XMLElement* dist = (root != nullptr && root->getTag() == "velmora") ? root->getChildElement("dist") : nullptr;
    if (dist == nullptr) throw Exception("dist", __LINE__, "Not a distribution.");
    return loadDistribution(dist);
}

Dist* loadDistribution(XMLElement* e) {
    if (e == nullptr || e->getTag() != "dist") throw Exception("dist", __LINE__, "Not a distribution.");
    XMLElement* family = nullptr;
    std::string tag;
    for (const char* candidate : familyTags) {
        family = e->getChildElement(candidate);
        if (family != nullptr) {
            tag = candidate;
            break;
        }
    }
    if (family == nullptr) throw Exception("dist", __LINE__, "Unsupported distribution.");

    if (tag == "uniformdist") return new Uniform(tagDouble(family, "a", 0), tagDouble(family, "b", 1));
    if (tag == "expodist") {
        XMLElement* mean = family->getChildElement("mean");
        return new Exponential(mean != nullptr ? 1 / toDouble(mean->getValue()) : 1);
    }
    if (tag == "normaldist") return new Normal(tagDouble(family, "mean", 0), tagDouble(family, "std", 1));
    if (tag == "lognormaldist") return new Lognormal(tagDouble(family, "mu", 0), tagDouble(family, "sigma", 1));
    // Tags type (SB), shape1, shape2, location, scale (1 each) once the family exists.
    if (tag == "johnsondist") notAvailable(__LINE__, "johnson");
    if (tag == "erlangdist") return new Erlang(phaseCount(tagInt(family, "phases", 1)), tagDouble(family, "rate", 1));
    if (tag == "hypererlangdist") return loadHyperErlang(family);
    if (tag == "weibulldist") return new Weibull(tagDouble(family, "shape", 1), tagDouble(family, "scale", 1));
    if (tag == "gammadist") return new Gamma(tagDouble(family, "shape", 1), tagDouble(family, "scale", 1));
    if (tag == "triangulardist")
        return new Triangular(tagDouble(family, "a", 0), tagDouble(family, "b", 1), tagDouble(family, "c", 0.5));
    return new ChiSquare(static_cast<unsigned>(tagInt(family, "deg", 2)));
}

}  // namespace velmora
