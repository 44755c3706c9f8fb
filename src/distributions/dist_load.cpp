// The readers of distributions: a registry of the families in the order of
// their type numbers, each row with the family's XML tag and its two readers,
// which live beside the family's writer. The key-value reader finds the row by
// the type name; the XML reader looks for the tags of the rows that have one,
// in the rows' order, and the first tag present decides.
//
// The Johnson, geometric and hypo-geometric families are not part of the
// toolkit yet: their rows are refused with an exception until they are.
#include "distributions/dist_load.h"

#include <string>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "distributions/dist_beta.h"
#include "distributions/dist_chisquare.h"
#include "distributions/dist_deterministic.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hyperexponential.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_lognormal.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_pearsonv.h"
#include "distributions/dist_pearsonvi.h"
#include "distributions/dist_triangular.h"
#include "distributions/dist_uniform.h"
#include "distributions/dist_weibull.h"

namespace velmora {

namespace {

// A family's readers; a null reader is a form the family has no reader for
// yet, and a null tag keeps the XML reader from looking for the family.
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
    // Keys johnson (SB), gamma, delta, lambda, xi (1 each), and tags type
    // (SB), shape1, shape2, location, scale (1 each), once the family exists.
    {DIST_JOHNSON, "johnsondist", nullptr, nullptr},
    {DIST_ERLANG, "erlangdist", Erlang::fromConfig, Erlang::fromXML},
    {DIST_HYPEREXPONENTIAL, nullptr, HyperExponential::fromConfig, nullptr},
    {DIST_HYPOEXPONENTIAL, nullptr, HypoExponential::fromConfig, nullptr},
    {DIST_HYPERERLANG, "hypererlangdist", HyperErlang::fromConfig, HyperErlang::fromXML},
    {DIST_WEIBULL, "weibulldist", Weibull::fromConfig, Weibull::fromXML},
    {DIST_GAMMA, "gammadist", Gamma::fromConfig, Gamma::fromXML},
    {DIST_BETA, nullptr, Beta::fromConfig, nullptr},
    {DIST_PEARSONV, nullptr, PearsonV::fromConfig, nullptr},
    {DIST_PEARSONVI, nullptr, PearsonVI::fromConfig, nullptr},
    // Key p (0.5) once the family exists.
    {DIST_GEOMETRIC, nullptr, nullptr, nullptr},
    // Key p, a list, once the family exists.
    {DIST_HYPOGEOMETRIC, nullptr, nullptr, nullptr},
    {DIST_TRIANGULAR, "triangulardist", Triangular::fromConfig, Triangular::fromXML},
    {DIST_CHISQUARE, "chisquaredist", ChiSquare::fromConfig, ChiSquare::fromXML},
};

[[noreturn]] void notAvailable(int line, dist_type type) {
    throw Exception("dist", line, "Distribution family " + Dist::getDistType(type) + " is not available yet.");
}

}  // namespace

Dist* loadDistribution(Config* c) {
    if (!c->existsKey("distribution")) return nullptr;
    const dist_type type = Dist::getDistType(c->getValue("distribution"));
    for (const FamilyReaders& family : families) {
        if (family.type != type) continue;
        if (family.fromConfig == nullptr) notAvailable(__LINE__, type);
        return family.fromConfig(c);
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
    for (const FamilyReaders& family : families) {
        if (family.tag == nullptr) continue;
        XMLElement* element = e->getChildElement(family.tag);
        if (element == nullptr) continue;
        if (family.fromXML == nullptr) notAvailable(__LINE__, family.type);
        return family.fromXML(element);
    }
    throw Exception("dist", __LINE__, "Unsupported distribution.");
}

}  // namespace velmora
