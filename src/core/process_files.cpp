#include "core/process_files.h"

#include <fstream>

namespace velmora {

void saveProcessFile(Process& process, const std::string& file, format f, const char* module) {
    std::ofstream out(file.c_str(), std::ios::out | std::ios::trunc);
    if (!out.is_open()) throw Exception(module, __LINE__, "Cannot open file.");
    if (f == FORMAT_XML) out << "<?xml version=\"1.0\"?>\n<velmora>\n";
    out << process.toString(f);
    if (f == FORMAT_XML) out << "</velmora>\n";
}

}  // namespace velmora
