#include "core/libvelmora_settings.h"

#include <iostream>
#include <mutex>
#include <sstream>
#include <utility>

namespace velmora {

namespace {

// The installed sink; messages are handed to it one at a time, so that the
// lines of threads that report at once never mix.
std::mutex sinkMutex;
MessageSink installedSink;

}  // namespace

void set_message_sink(MessageSink sink) {
    const std::lock_guard<std::mutex> lock(sinkMutex);
    installedSink = std::move(sink);
}

void libvelmora_message(MessageKind kind, const std::string& text) {
    const std::lock_guard<std::mutex> lock(sinkMutex);
    if (installedSink)
        installedSink(kind, text);
    else
        std::cout << text << std::endl;
}

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
    libvelmora_message(MessageKind::Warning, "Warning: " + message);
}

void libvelmora_warning(std::string file, int line, std::string message) {
    std::ostringstream out;
    out << "Warning in " << file << ", line " << line << ": " << message;
    libvelmora_message(MessageKind::Warning, out.str());
}

void libvelmora_infomsg(std::string message) {
    libvelmora_message(MessageKind::Info, message);
}

void libvelmora_debugmsg(std::string message) {
    libvelmora_message(MessageKind::Debug, "DEBUG: " + message);
}

void libvelmora_debugmsg(std::string file, int line, std::string message) {
    std::ostringstream out;
    out << "DEBUG (" << file << ", line " << line << "): " << message;
    libvelmora_message(MessageKind::Debug, out.str());
}

std::string libVelmora_name_full() {
    return "libVelmora 0.11.3.3";
}

}  // namespace velmora
