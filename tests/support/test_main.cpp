// Test programs' main: each process gets a temporary folder of its own, so tests run in parallel share no files.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

int main(int argc, char** argv) {
    std::string folder = std::filesystem::temp_directory_path().string() + "/velmora_test_XXXXXX";
    const bool made = mkdtemp(&folder[0]) != nullptr;
    if (made) setenv("TEST_TMPDIR", (folder + "/").c_str(), 1);
    testing::InitGoogleTest(&argc, argv);
    int result = RUN_ALL_TESTS();
    std::error_code ignored;
    if (made) std::filesystem::remove_all(folder, ignored);
    return result;
}
