// The readers of distributions from key-value and XML descriptions.
#include "distributions/dist_load.h"

#include "config/conf.h"
#include "core/libvelmora_settings.h"

namespace velmora {

Dist* loadDistribution(Config*) {
    throw Exception("dist", __LINE__, "Distribution loader not ready.");
}

Dist* loadDistribution(XMLConfig*) {
    throw Exception("dist", __LINE__, "Distribution loader not ready.");
}

Dist* loadDistribution(XMLElement*) {
    throw Exception("dist", __LINE__, "Distribution loader not ready.");
}

}  // namespace velmora
