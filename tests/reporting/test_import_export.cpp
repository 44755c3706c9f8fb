// The side formats: sparse matrices written and read back, the readers'
// tolerance of comments and blanks, hyper-Erlang result files, and every
// malformed input ending in its message rather than a search without end.
#include "distributions/dist.h"
#include "reporting/import_export.h"
#include "support/test_support.h"

using namespace velmora;
using namespace velmora_test;

namespace {

const std::string branches = "# number of different Erlang branches, m\n";
const std::string phases = "# number of phases of i-th Erlang branch, i = 1,...,m\n";
const std::string lambdas = "# lambda values of i-th Erlang branch, i = 1,...,m\n";
const std::string probabilities = "# initial probabilities of i-th Erlang branch, i = 1,...,m\n";

}  // namespace

TEST(SparseMatrix, ExportedTextReadsBackInBothDiagonalModes) {
    const Matrix m({{-3.5, 0, 1.25}, {0, 0, 0}, {2, 0, -1e-7}});
    // The diagonal behind the count, zero or not, and no entry line for it.
    EXPECT_EQ(io_export::export_sparse_matrix(m, true, 2), "1\n1\n0\n3\n1 -3.5\n2 1.25\n0 0\n1 -1e-07\n0 2\n");
    EXPECT_EQ(io_export::export_sparse_matrix(Matrix(2, 2), false, 0), "0\n0\n");
    EXPECT_EQ(io_export::export_sparse_matrices(Matrix({{-2}}), Matrix({{2}})), "2\n1\n0\n1\n0\n0 -2\n1\n1\n0 2\n");
    for (int mode : {1, 2}) {
        std::string file = writeFile("sparse_mode.txt", io_export::export_sparse_matrix(m, true, mode));
        expectNear(import::import_sparse_matrix(file, true), m, 0, "mode " + std::to_string(mode));
    }
    // Any other mode drops the diagonal.
    std::string file = writeFile("sparse_mode0.txt", io_export::export_sparse_matrix(m, true, 0));
    expectNear(import::import_sparse_matrix(file, true), Matrix({{0, 0, 1.25}, {0, 0, 0}, {2, 0, 0}}), 0, "mode 0");
}

TEST(SparseMatrix, CommentsBlanksAndLeadingBlanksAreSkippedOrTrimmed) {
    // Row 0: diagonal -3.5 from the row line, overwritten by its entry line.
    std::string file = writeFile("sparse_comments.txt",
                                 "header\n\n# note\nheader\n  2\n2 -3.5\n# note\n  0 1\n\n1 2\n0\n");
    expectNear(import::import_sparse_matrix(file, false), Matrix({{1, 2}, {0, 0}}), 0, "matrix");
    file = writeFile("sparse_vector.txt", "header\n3\n1.5\n# note\n -2\n4\n");
    Vector v = import::import_sparse_vector(file, true);
    EXPECT_FALSE(v.isRowVector());
    EXPECT_EQ(v.asVector(), (std::vector<double>{1.5, -2, 4}));
}

TEST(HyperErlangResult, TwoBranchesImportWithTheirMean) {
    std::string file = writeFile("gfit.txt", "# fitter output\n" + branches + "2\n" + phases + "1\n3\n" + lambdas +
                                                 "0.5\n4\n" + probabilities + "0.25\n0.75\n");
    std::unique_ptr<Dist> d(import::import_gfit(file));
    EXPECT_EQ(d->getType(), DIST_HYPERERLANG);
    // 0.25 * 1 / 0.5 + 0.75 * 3 / 4
    EXPECT_NEAR(d->getProperties(1).mean, 1.0625, 1e-15);
}

TEST(ImportExport, MalformedInputEndsInItsMessage) {
    const std::string parse = "import_export: Parse error.";
    const std::string dims = "dist: Dimensions for Hyper-Erlang vectors do not match.";
    struct Case { int reader; std::string text, expected; };  // 0 matrix, 1 vector, 2 result file
    const Case cases[] = {
        {0, "", parse},                                     // no header
        {0, "h\nh\n2\n1\n0 1\n", parse},                    // the second row is missing
        {0, "h\nh\n1\n2\n0 1\n", parse},                    // an entry line is missing
        {0, "h\nh\n1\n1\n0 1 2\n", parse},                  // three pieces
        {0, "h\nh\n1\n1\n0\n", parse},                      // one piece
        {0, "h\nh\n-1\n", parse},                           // a negative order
        {0, "h\nh\n2000000000\n0\n", parse},                // an order the file cannot hold
        {0, "h\nh\n1\n1\n3 1\n", "matrix: Invalid row or col index."},
        {1, "3\n1\n2\n", parse},                            // one value short
        // A comment line one blank off leaves its block unread.
        {2, branches + "1\n" + phases + "1\n" + lambdas + "2\n" +
                "# initial  probabilities of i-th Erlang branch, i = 1,...,m\n1\n", dims},
        {2, branches + "1\n" + phases + "1\n" + probabilities + "1\n", dims},  // no rates
        {2, "", "dist: Invalid parameters for Hyper-Erlang distribution."},
    };
    // The readers in the order of the table's first column.
    auto read = [](int reader, const std::string& file) {
        if (reader == 0) import::import_sparse_matrix(file, false);
        if (reader == 1) import::import_sparse_vector(file, false);
        if (reader == 2) delete import::import_gfit(file);
    };
    for (const Case& c : cases)
        EXPECT_EQ(failureOf([&] { read(c.reader, writeFile("bad.txt", c.text)); }), c.expected) << c.text;
    for (int reader = 0; reader < 3; reader++)
        EXPECT_EQ(failureOf([&] { read(reader, tempPath("no_such_file.txt")); }), "import_export: Cannot open file.");
}
