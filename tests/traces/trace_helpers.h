// Helpers shared by the trace tests: files in the test program's temporary
// folder, the values of a trace, and the failure an action raises.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include <vector>

#include "core/libvelmora_settings.h"
#include "traces/trace.h"

namespace trace_test {

inline std::string tempPath(const std::string& name) { return ::testing::TempDir() + "velmora_trace_" + name; }

inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline void writeFile(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

inline std::vector<double> contentsOf(velmora::Trace& trace) {
    std::vector<double> v;
    for (unsigned i = 0; i < trace.getSize(); ++i) v.push_back(trace.getElement(i));
    return v;
}

// "<source>: <message>" of the Exception that f raises.
inline std::string failureOf(const std::function<void()>& f) {
    try {
        f();
    } catch (velmora::Exception& e) {
        return e.file + ": " + e.message;
    }
    return "no failure";
}

}  // namespace trace_test
