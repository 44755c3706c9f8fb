// The file conventions that every model class shares. `loadProcessFile`
// reads a key-value file into a Config, or an XML file into an XMLConfig,
// and hands it to the class's own reader; `saveProcessFile` truncates the
// file and writes the model's text, an XML text inside the document
// envelope. The failures carry the class's own source name and message.
#ifndef VELMORA_CORE_PROCESS_FILES_H
#define VELMORA_CORE_PROCESS_FILES_H

#include <string>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/process.h"

namespace velmora {

template <class Model>
void loadProcessFile(Model& model, const std::string& file, format f, const char* module,
                     const char* unsupportedFormat) {
    if (f == FORMAT_CONFIG) {
        Config config(file);
        model.load(&config);
    } else if (f == FORMAT_XML) {
        XMLConfig document(file);
        model.load(&document);
    } else {
        throw Exception(module, __LINE__, unsupportedFormat);
    }
}

// The format is checked by the model's toString, after the file has been
// emptied and, for XML, the envelope opened.
void saveProcessFile(Process& process, const std::string& file, format f, const char* module);

}  // namespace velmora

#endif
