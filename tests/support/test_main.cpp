// Test programs' main: each process gets a temporary folder of its own, so
// that tests run in parallel never share the files they write.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

int main(int argc, char** argv) {
    std::string base = std::filesystem::temp_directory_path().string() + "/velmora_test_XXXXXX";
    std::string folder;
    if (mkdtemp(&base[0]) != nullptr) {
        folder = base;
        setenv("TEST_TMPDIR", (folder + "/").c_str(), 1);
    }
    testing::InitGoogleTest(&argc, argv);
    int result = RUN_ALL_TESTS();
    if (!folder.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    return result;
}
