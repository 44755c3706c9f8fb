// The library's one exception type, its message functions and its name.
// Messages go to standard output only, each as one line, flushed at once.
#ifndef VELMORA_CORE_LIBVELMORA_SETTINGS_H
#define VELMORA_CORE_LIBVELMORA_SETTINGS_H

#include <string>

namespace velmora {

// A failure: the base name of the raising module ("conf", "matrix", ...), the
// source line (informative only) and the message.
class Exception {
public:
    Exception(std::string file, int line, std::string message);

    // "Error in: <file>, line <line>: <message>\n", or "Error: <message>\n"
    // when the file name is empty.
    std::string toString();

    std::string message;
    int line;
    std::string file;
};

void libvelmora_warning(std::string message);
void libvelmora_warning(std::string file, int line, std::string message);
void libvelmora_infomsg(std::string message);
void libvelmora_debugmsg(std::string message);
void libvelmora_debugmsg(std::string file, int line, std::string message);

// "libVelmora 0.11.3.3"
std::string libVelmora_name_full();

}  // namespace velmora

#endif
