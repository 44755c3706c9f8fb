// The readers of distributions: a registry of the families in the order of
// their type numbers, each row with the family's XML tag and its two readers,
// which live beside the family's writer. The key-value reader finds the row by
// the type name; the XML reader looks for the tags of the rows that have one,
// in the rows' order, and the first tag present decides.
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
        return family.fromXML(element);
    }
    throw Exception("dist", __LINE__, "Unsupported distribution.");
}

}  // namespace velmora
