// The umbrella header compiles on its own and names every public header.
#include "velmora.h"

#include <filesystem>

#include "support/test_support.h"

TEST(Umbrella, IncludesEveryPublicHeader) {
    namespace fs = std::filesystem;
    fs::path src = fs::path(VELMORA_SOURCE_DIR) / "src";
    const std::string text = velmora_test::readFile((src / "velmora.h").string());
    for (const auto& entry : fs::recursive_directory_iterator(src)) {
        if (entry.path().extension() != ".h" || entry.path().filename() == "velmora.h") continue;
        std::string relative = fs::relative(entry.path(), src).generic_string();
        EXPECT_NE(text.find("#include \"" + relative + "\""), std::string::npos) << relative;
    }
}
