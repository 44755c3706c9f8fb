// The readers of distributions: a family built from a key-value
// configuration, from an XML document or from one `dist` element. They are
// the only way a model or a tool reads a distribution; the caller owns the
// returned object.
#ifndef VELMORA_DISTRIBUTIONS_DIST_LOAD_H
#define VELMORA_DISTRIBUTIONS_DIST_LOAD_H

#include "distributions/dist.h"

namespace velmora {

class Config;
class XMLConfig;
class XMLElement;

// Key-value reader; returns null when the configuration has no key
// "distribution".
Dist* loadDistribution(Config* c);
// The root must be `velmora` with a child `dist`, read by the element reader.
Dist* loadDistribution(XMLConfig* c);
// XML reader of one element with the tag `dist`.
Dist* loadDistribution(XMLElement* e);

}  // namespace velmora

#endif
