// Helpers shared by the time-series tests: model files in the test's
// temporary folder and the failure an action raises.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include "core/libvelmora_settings.h"

namespace timeseries_test {

inline std::string writeFile(const std::string& name, const std::string& text) {
    std::string path = testing::TempDir() + name;
    std::ofstream(path.c_str(), std::ios::binary) << text;
    return path;
}

inline std::string readFile(const std::string& path) {
    std::ifstream in(path.c_str());
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// "<source>: <message>" of the Exception that f raises.
inline std::string failure(const std::function<void()>& f) {
    try {
        f();
    } catch (velmora::Exception& e) {
        return e.file + ": " + e.message;
    }
    return "(no exception)";
}

}  // namespace timeseries_test
