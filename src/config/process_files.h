// The file conventions that every model class shares. `loadProcessFile`
// reads a key-value file into a Config, or an XML file into an XMLConfig,
// and hands it to the class's own reader; `saveProcessFile` truncates the
// file and writes the model's text, an XML text inside the document
// envelope. The failures carry the class's own source name and message.
#ifndef VELMORA_CONFIG_PROCESS_FILES_H
#define VELMORA_CONFIG_PROCESS_FILES_H

#include <functional>
#include <string>

#include "core/process.h"

namespace velmora {

// The reading behind loadProcessFile, with the two readers passed in, so that
// this header needs no definition of Config or XMLConfig.
void readProcessFile(const std::string& file, format f, const char* module, const char* unsupportedFormat,
                     const std::function<void(Config*)>& fromConfig,
                     const std::function<void(XMLConfig*)>& fromDocument);

template <class Model>
void loadProcessFile(Model& model, const std::string& file, format f, const char* module,
                     const char* unsupportedFormat) {
    readProcessFile(
        file, f, module, unsupportedFormat, [&model](Config* config) { model.load(config); },
        [&model](XMLConfig* document) { model.load(document); });
}

// The whole text of a model file: the model's toString, inside the document
// envelope for XML.
std::string processFileText(Process& process, format f);

// The format is checked by the model's toString, after the file has been
// emptied and, for XML, the envelope opened.
void saveProcessFile(Process& process, const std::string& file, format f, const char* module);

// The <numerics> child of a model element: absent or "specified" gives
// false, "exact" gives true; any other value throws from `module`.
bool read_numerics_element(XMLElement* element, const char* module);

}  // namespace velmora

#endif
