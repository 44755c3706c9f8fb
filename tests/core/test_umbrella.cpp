// The umbrella header compiles on its own and names every public header.
#include "velmora.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

TEST(Umbrella, IncludesEveryPublicHeader) {
    namespace fs = std::filesystem;
    fs::path src = fs::path(VELMORA_SOURCE_DIR) / "src";
    std::ifstream in(src / "velmora.h");
    std::stringstream text;
    text << in.rdbuf();
    for (const auto& entry : fs::recursive_directory_iterator(src)) {
        if (entry.path().extension() != ".h" || entry.path().filename() == "velmora.h") continue;
        std::string relative = fs::relative(entry.path(), src).generic_string();
        EXPECT_NE(text.str().find("#include \"" + relative + "\""), std::string::npos) << relative;
    }
}
