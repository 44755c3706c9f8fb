// Output files: only regular files are written, links written through,
// inputs never overwritten, and a failed write leaves the old file.
#include <sys/stat.h>
#include <unistd.h>

#include "core/output_file.h"
#include "support/test_support.h"

using namespace velmora;
using velmora_test::readFile;
using velmora_test::tempPath;
using velmora_test::writeFile;

TEST(OutputFile, OnlyRegularFilesThatAreNoInputAreWritten) {
    const std::string fifo = tempPath("out_fifo");
    std::remove(fifo.c_str());
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const std::string input = writeFile("out_input.txt", "1\n");
    const std::string link = tempPath("out_link.txt");
    std::remove(link.c_str());
    ASSERT_EQ(::symlink(input.c_str(), link.c_str()), 0);
    struct Case { std::string path, refusal; } cases[] = {
        {"/dev/null", "it is a device"},
        {fifo, "it is a FIFO"},
        {testing::TempDir(), "it is a directory"},
        {input, "it is the input '" + input + "'"},
        {link, "it is the input '" + input + "'"},
        {tempPath("out_new.txt"), ""},
    };
    for (const Case& c : cases) EXPECT_EQ(output_file_refusal(c.path, {input}), c.refusal) << c.path;
    EXPECT_EQ(output_file_problem("/nonexistent-dir/x", {}), "No such file or directory");
    std::remove(fifo.c_str());
    std::remove(link.c_str());
}

TEST(OutputFile, AtomicWriteGoesThroughLinksAndKeepsTheOldFileOnFailure) {
    const std::string target = writeFile("out_target.txt", "old\n");
    const std::string link = tempPath("out_to_target.txt");
    std::remove(link.c_str());
    ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);
    write_file_atomically(link, "new\n");
    struct stat st;
    ASSERT_EQ(::lstat(link.c_str(), &st), 0);
    EXPECT_TRUE(S_ISLNK(st.st_mode)) << "the link stays a link";
    EXPECT_EQ(readFile(target), "new\n");

    EXPECT_THROW(write_file_atomically(target, "bad\n", [](const std::string&) {
                     throw Exception("test", 0, "refused");
                 }),
                 Exception);
    EXPECT_EQ(readFile(target), "new\n");
    EXPECT_EQ(velmora_test::failureOf([] { write_file_atomically("/dev/null", "x"); }),
              "output_file: Cannot write '/dev/null': it is a device.");
    std::remove(link.c_str());
}
