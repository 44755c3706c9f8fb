#include "config/process_files.h"

#include <fstream>

#include "config/conf.h"
#include "core/libvelmora_settings.h"

namespace velmora {

void readProcessFile(const std::string& file, format f, const char* module, const char* unsupportedFormat,
                     const std::function<void(Config*)>& fromConfig,
                     const std::function<void(XMLConfig*)>& fromDocument) {
    if (f == FORMAT_CONFIG) {
        Config config(file);
        fromConfig(&config);
    } else if (f == FORMAT_XML) {
        XMLConfig document(file);
        fromDocument(&document);
    } else {
        throw Exception(module, __LINE__, unsupportedFormat);
    }
}

namespace {
const char* const kXmlHead = "<?xml version=\"1.0\"?>\n<velmora>\n";
const char* const kXmlTail = "</velmora>\n";
}  // namespace

std::string processFileText(Process& process, format f) {
    const std::string text = process.toString(f);
    return f == FORMAT_XML ? kXmlHead + text + kXmlTail : text;
}

void saveProcessFile(Process& process, const std::string& file, format f, const char* module) {
    std::ofstream out(file.c_str(), std::ios::out | std::ios::trunc);
    if (!out.is_open()) throw Exception(module, __LINE__, "Cannot open file.");
    if (f == FORMAT_XML) out << kXmlHead;
    out << process.toString(f);
    if (f == FORMAT_XML) out << kXmlTail;
}

bool read_numerics_element(XMLElement* element, const char* module) {
    XMLElement* numerics = element != nullptr ? element->getChildElement("numerics") : nullptr;
    if (numerics == nullptr) return false;
    const std::string value = numerics->getValue();
    if (value == "exact") return true;
    if (value == "specified") return false;
    throw Exception(module, __LINE__, "Invalid <numerics> element '" + value + "': it must be 'exact' or 'specified'.");
}

}  // namespace velmora
