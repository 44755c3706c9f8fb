// Helpers shared by every test program: files in the program's own temporary folder, the failure an action
// raises, and entrywise matrix comparison.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cmath>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "core/libvelmora_settings.h"
#include "numerics/matrix.h"

namespace velmora_test {

inline std::string tempPath(const std::string& name) { return testing::TempDir() + name; }

// Writes text to the temporary file of that name and gives its path.
inline std::string writeFile(const std::string& name, const std::string& text) {
    std::string path = tempPath(name);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    return path;
}

inline std::string readFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

// "<source>: <message>" of the Exception that f raises.
inline std::string failureOf(const std::function<void()>& f) {
    try { f(); } catch (velmora::Exception& e) { return e.file + ": " + e.message; }
    return "no failure";
}

// The message of the Exception that f raises, which must name the source.
inline std::string messageOf(const std::function<void()>& f, const std::string& source) {
    try { f(); } catch (velmora::Exception& e) {
        EXPECT_EQ(e.file, source) << e.message;
        return e.message;
    }
    return "no failure";
}

// Entrywise within tol, or within tol * |expected| when relative.
inline void expectNear(const velmora::Matrix& got, const velmora::Matrix& expected, double tol,
                       const std::string& what, bool relative = false) {
    ASSERT_EQ(got.getNumberRows(), expected.getNumberRows()) << what;
    ASSERT_EQ(got.getNumberCols(), expected.getNumberCols()) << what;
    for (unsigned i = 0; i < got.getNumberRows(); i++)
        for (unsigned j = 0; j < got.getNumberCols(); j++)
            EXPECT_NEAR(got(i, j), expected(i, j), relative ? tol * std::fabs(expected(i, j)) : tol)
                << what << " at " << i << "," << j;
}

inline void expectRelative(const velmora::Matrix& got, const velmora::Matrix& expected, double tol,
                           const std::string& what) {
    expectNear(got, expected, tol, what, true);
}

// The shell command's standard output and its exit status (-1 when it did
// not exit normally).
inline std::string commandOutput(const std::string& command, int* status) {
    std::string out;
    *status = -1;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return out;
    char buffer[4096];
    for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
    int raw = pclose(pipe);
    *status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return out;
}

// The sylvar program run with the arguments: its output, standard error
// joined, and its exit status.
struct SylvarRun { std::string out; int status; };
inline SylvarRun runSylvar(const std::string& arguments) {
    SylvarRun run{"", -1};
    run.out = commandOutput(std::string(SYLVAR_PATH) + " " + arguments + " 2>&1", &run.status);
    return run;
}

// The sylvar-fit program run with the arguments: standard output and
// standard error apart, and the exit status.
struct SylvarFitRun { std::string out; std::string err; int status; };
inline SylvarFitRun runSylvarFit(const std::string& arguments) {
    SylvarFitRun run{"", "", -1};
    const std::string errors = tempPath("sylvar_fit_stderr.txt");
    run.out = commandOutput(std::string(SYLVAR_FIT_PATH) + " " + arguments + " 2>" + errors, &run.status);
    run.err = readFile(errors);
    return run;
}

// ", line <digits>:" becomes ", line N:", so that failure texts compare
// without their informative source lines.
inline std::string withoutLineNumber(std::string text) {
    const std::string mark = ", line ";
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
        std::size_t end = at + mark.size();
        while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
        if (end > at + mark.size() && end < text.size() && text[end] == ':')
            text.replace(at + mark.size(), end - at - mark.size(), "N");
    }
    return text;
}
}  // namespace velmora_test
