// The library's one exception type, its message functions and its name.
// Progress, warnings and debug text go through one settable sink; the
// default writes each message and a line end to standard output and flushes.
#ifndef VELMORA_CORE_LIBVELMORA_SETTINGS_H
#define VELMORA_CORE_LIBVELMORA_SETTINGS_H

#include <functional>
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

enum class MessageKind { Warning, Info, Debug };

// A handler of the library's messages: the kind and the full text as the
// default prints it ("Warning: ...", "DEBUG: ..."), without the line end; a
// text may span several lines. It may be called from several threads at
// once, one message at a time.
typedef std::function<void(MessageKind, const std::string&)> MessageSink;

// Installs the handler of every message from now on; an empty one restores
// the default. Programs and bindings choose where messages go.
void set_message_sink(MessageSink sink);

// Hands text to the sink as it is.
void libvelmora_message(MessageKind kind, const std::string& text);

void libvelmora_warning(std::string message);
void libvelmora_warning(std::string file, int line, std::string message);
void libvelmora_infomsg(std::string message);
void libvelmora_debugmsg(std::string message);
void libvelmora_debugmsg(std::string file, int line, std::string message);

// "libVelmora 0.11.3.3"
std::string libVelmora_name_full();

}  // namespace velmora

#endif
