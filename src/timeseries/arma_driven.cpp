#include "timeseries/arma_driven.h"

#include "config/conf.h"

namespace velmora {

XMLElement* load_arma_driven_element(XMLElement* element, ARIMA& base, const char* module, const char* tag,
                                     const char* marginalTag, const char* notModel, const char* invalid) {
    if (element == nullptr || element->getTag() != tag) throw Exception(module, __LINE__, notModel);
    XMLElement* arima = element->getChildElement("arima");
    if (arima == nullptr) throw Exception(module, __LINE__, invalid);
    base.load(arima);
    XMLElement* marginal = element->getChildElement(marginalTag);
    if (marginal == nullptr) throw Exception(module, __LINE__, invalid);
    return marginal;
}

}  // namespace velmora
