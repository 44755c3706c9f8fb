// The model factories: a model of any class from a key-value configuration or
// an XML document. They reach every model class, so they sit above the
// models, with the fitters and everything else that reads model files.
#ifndef VELMORA_FITTING_PROCESS_FACTORY_H
#define VELMORA_FITTING_PROCESS_FACTORY_H

#include "core/process.h"

namespace velmora {

class Config;
class XMLConfig;

Process* load_process(Config* config);
Process* load_process(XMLConfig* document);

}  // namespace velmora

#endif
