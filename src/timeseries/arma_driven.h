// The parts shared by the models that carry the values of an ARMA base
// process through a marginal distribution (ARTA, capp, chep): the base, held
// at process variance 1 so that its values are standard normal, and the
// marginal, both owned. A model derives from this and names itself in the
// messages.
#ifndef VELMORA_TIMESERIES_ARMA_DRIVEN_H
#define VELMORA_TIMESERIES_ARMA_DRIVEN_H

#include <memory>
#include <string>

#include "core/libvelmora_settings.h"
#include "timeseries/arima.h"

namespace velmora {

class XMLElement;

// The model element of the XML form: element must have the tag `tag` (else
// notModel is thrown), its child "arima" is loaded into base, and its child
// marginalTag is returned; a missing child throws invalid. module names the
// model in the messages.
XMLElement* load_arma_driven_element(XMLElement* element, ARIMA& base, const char* module, const char* tag,
                                     const char* marginalTag, const char* notModel, const char* invalid);

template <class Marginal>
class ArmaDrivenParts {
protected:
    // Takes ownership of both; a null base is replaced by a default ARIMA.
    ArmaDrivenParts(const char* module, const char* missingMarginal, ARIMA* base, Marginal* marginal)
        : marginal(marginal), base(base != nullptr ? base : new ARIMA()), module(module), missing(missingMarginal) {}

    // Drops the marginal and puts a default ARIMA in place of the base.
    void resetParts() {
        marginal.reset();
        base = std::make_unique<ARIMA>();
    }
    // Divides the white-noise variance by gamma(0), giving process variance 1;
    // a base without variance is refused.
    void normaliseBase() { normalise_base_variance(*base, module); }
    // The marginal, or an exception when none has been loaded.
    Marginal* requireMarginal() const {
        if (!marginal) throw Exception(module, __LINE__, missing);
        return marginal.get();
    }

    // The marginal is declared first: a constructor owns it from its first
    // line, before the base is made.
    std::unique_ptr<Marginal> marginal;
    std::unique_ptr<ARIMA> base;

private:
    const char* module;
    const char* missing;
};

}  // namespace velmora

#endif
