#include "core/libvelmora_settings.h"

#include <iostream>
#include <sstream>
#include <utility>

namespace velmora {

Exception::Exception(std::string file, int line, std::string message)
    : message(std::move(message)), line(line), file(std::move(file)) {}

std::string Exception::toString() {
    std::ostringstream out;
    out << "Error";
    if (!file.empty()) out << " in: " << file << ", line " << line;
    out << ": " << message << "\n";
    return out.str();
}

void libvelmora_warning(std::string message) {
    std::cout << "Warning: " << message << std::endl;
}

void libvelmora_warning(std::string file, int line, std::string message) {
    std::cout << "Warning in " << file << ", line " << line << ": " << message << std::endl;
}

void libvelmora_infomsg(std::string message) {
    std::cout << message << std::endl;
}

void libvelmora_debugmsg(std::string message) {
    std::cout << "DEBUG: " << message << std::endl;
}

void libvelmora_debugmsg(std::string file, int line, std::string message) {
    std::cout << "DEBUG (" << file << ", line " << line << "): " << message << std::endl;
}

std::string libVelmora_name_full() {
    return "libVelmora 0.11.3.3";
}

}  // namespace velmora
