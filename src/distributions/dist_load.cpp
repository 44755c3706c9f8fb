// The readers of distributions: a registry of the families in the order of
// their type numbers, each row with the family's XML tag and its two readers,
// which live beside the family's writer. The key-value reader finds the row by
// the type name; the XML reader looks for the tags of the rows that have one,
// in the rows' order, and the first tag present decides.
#include "distributions/dist_load.h"

#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>
#include <utility>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "distributions/dist_beta.h"
#include "distributions/dist_chisquare.h"
#include "distributions/dist_deterministic.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_geometric.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hyperexponential.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_hypogeometric.h"
#include "distributions/dist_johnson.h"
#include "distributions/dist_lognormal.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_pearsonv.h"
#include "distributions/dist_pearsonvi.h"
#include "distributions/dist_triangular.h"
#include "distributions/dist_uniform.h"
#include "distributions/dist_weibull.h"

namespace velmora {

namespace {

// A family's readers; a null tag keeps the XML reader from looking for the
// family, which then has no XML reader.
struct FamilyReaders {
    dist_type type;
    const char* tag;
    Dist* (*fromConfig)(Config*);
    Dist* (*fromXML)(XMLElement*);
};

const FamilyReaders families[] = {
    {DIST_DETERMINISTIC, nullptr, Deterministic::fromConfig, nullptr},
    {DIST_UNIFORM, "uniformdist", Uniform::fromConfig, Uniform::fromXML},
    {DIST_EXPONENTIAL, "expodist", Exponential::fromConfig, Exponential::fromXML},
    {DIST_NORMAL, "normaldist", Normal::fromConfig, Normal::fromXML},
    {DIST_LOGNORMAL, "lognormaldist", Lognormal::fromConfig, Lognormal::fromXML},
    {DIST_JOHNSON, "johnsondist", Johnson::fromConfig, Johnson::fromXML},
    {DIST_ERLANG, "erlangdist", Erlang::fromConfig, Erlang::fromXML},
    {DIST_HYPEREXPONENTIAL, nullptr, HyperExponential::fromConfig, nullptr},
    {DIST_HYPOEXPONENTIAL, nullptr, HypoExponential::fromConfig, nullptr},
    {DIST_HYPERERLANG, "hypererlangdist", HyperErlang::fromConfig, HyperErlang::fromXML},
    {DIST_WEIBULL, "weibulldist", Weibull::fromConfig, Weibull::fromXML},
    {DIST_GAMMA, "gammadist", Gamma::fromConfig, Gamma::fromXML},
    {DIST_BETA, nullptr, Beta::fromConfig, nullptr},
    {DIST_PEARSONV, nullptr, PearsonV::fromConfig, nullptr},
    {DIST_PEARSONVI, nullptr, PearsonVI::fromConfig, nullptr},
    {DIST_GEOMETRIC, nullptr, Geometric::fromConfig, nullptr},
    {DIST_HYPOGEOMETRIC, nullptr, HypoGeometric::fromConfig, nullptr},
    {DIST_TRIANGULAR, "triangulardist", Triangular::fromConfig, Triangular::fromXML},
    {DIST_CHISQUARE, "chisquaredist", ChiSquare::fromConfig, ChiSquare::fromXML},
};

// The parameters that must be positive, by family tag and element; every
// other numeric parameter must be finite.
const std::pair<const char*, const char*> positive[] = {
    {"expodist", "mean"},       {"erlangdist", "rate"},       {"erlangdist", "phases"},
    {"gammadist", "shape"},     {"gammadist", "scale"},       {"weibulldist", "shape"},
    {"weibulldist", "scale"},   {"lognormaldist", "sigma"},   {"normaldist", "std"},
    {"chisquaredist", "deg"},   {"hypererlangdist", "rates"}, {"hypererlangdist", "phases"},
    {"johnsondist", "scale"},
};

bool mustBePositive(const std::string& family, const std::string& parameter) {
    for (const auto& p : positive)
        if (family == p.first && parameter == p.second) return true;
    return false;
}

// Before a family is built from its element: each number of each parameter
// element must be finite (text that is no number reads as 0 elsewhere, and
// is refused here), and positive where the family needs it. Johnson's
// <type> is a name, not a number.
void checkParameters(XMLElement* family) {
    const std::string tag = family->getTag();
    for (XMLElement* child : family->getChildElements()) {
        const std::string name = child->getTag();
        if (tag == "johnsondist" && name == "type") continue;
        std::istringstream in(child->getValue());
        for (std::string token; in >> token;) {
            char* end = nullptr;
            const double v = std::strtod(token.c_str(), &end);
            std::string problem;
            if (end == token.c_str() || *end != '\0' || !std::isfinite(v))
                problem = "is not a finite number";
            else if (mustBePositive(tag, name) && !(v > 0))
                problem = "must be positive";
            if (!problem.empty())
                throw Exception("dist", __LINE__, "The value '" + token + "' of <" + name + "> in <" + tag + "> " +
                                                      problem + ".");
        }
    }
}

}  // namespace

Dist* loadDistribution(Config* c) {
    if (!c->existsKey("distribution")) return nullptr;
    const dist_type type = Dist::getDistType(c->getValue("distribution"));
    for (const FamilyReaders& family : families) {
        if (family.type != type) continue;
        return family.fromConfig(c);
    }
    throw Exception("dist", __LINE__, "Unknown distribution");
}

Dist* loadDistribution(XMLConfig* c) {
    XMLElement* dist = model_element(c, "dist");
    if (dist == nullptr) throw Exception("dist", __LINE__, "Not a distribution.");
    return loadDistribution(dist);
}

Dist* loadDistribution(XMLElement* e) {
    if (e == nullptr || e->getTag() != "dist") throw Exception("dist", __LINE__, "Not a distribution.");
    for (const FamilyReaders& family : families) {
        if (family.tag == nullptr) continue;
        XMLElement* element = e->getChildElement(family.tag);
        if (element == nullptr) continue;
        checkParameters(element);
        return family.fromXML(element);
    }
    throw Exception("dist", __LINE__, "Unsupported distribution.");
}

}  // namespace velmora
