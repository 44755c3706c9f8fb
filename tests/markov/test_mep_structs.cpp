// The result records of the Markovian fitters: their texts, and files that
// the MAP loader reads back.
#include "markov/maps.h"
#include "markov/mep_structs.h"
#include "markov_helpers.h"

using namespace velmora;
using namespace markov_test;

namespace {
std::string head(const std::string& text, const std::string& like) { return text.substr(0, like.size()); }
}  // namespace

TEST(MepStructs, MMAPTextLabelsEachMatrix) {
    MMAP mmap({mat({{-1, 1}, {0, -1}}), mat({{0, 0}, {1, 0}})});
    EXPECT_EQ(mmap.toString(FORMAT_CONFIG), "D0: -1 1 \n0 -1 \nD1: 0 0 \n1 0 \n");
    EXPECT_EQ(mmap.toString(FORMAT_XML), "<d0>-1 1 \n0 -1 \n</d0>\n<d1>0 0 \n1 0 \n</d1>\n");
    EXPECT_EQ(MMAP({mat({{1.0 / 3}})}).toString(FORMAT_CONFIG), "D0: 0.3333333333 \n");
}

TEST(MepStructs, FilesReadBackAsMAP) {
    const Matrix D0 = order3D0(), D1 = order3D1();
    const std::string xml = tempPath("mmap.xml"), config = tempPath("rep.txt");
    // Two marked classes: the MAP loader takes d0 and d1 and passes over d2.
    MMAP({D0, D1, D1 * 0.5}).save(xml, FORMAT_XML);
    const std::string frame = "<?xml version=\"1.0\"?>\n<velmora>\n<map>\n<states>3</states>\n<d0>-3 1 0.5 \n";
    EXPECT_EQ(head(readFile(xml), frame), frame);
    MAP fromXml(xml, FORMAT_XML);
    EXPECT_EQ(fromXml.getD0(), D0);
    EXPECT_EQ(fromXml.getD1(), D1);
    // One class: the same matrices to ten digits.
    MMAP({D0 * (1.0 / 3), D1 * (1.0 / 3)}).save(xml, FORMAT_XML);
    MAP oneClass(xml, FORMAT_XML);
    expectNear(oneClass.getD0(), D0 * (1.0 / 3), 1e-10, "D0");
    expectNear(oneClass.getD1(), D1 * (1.0 / 3), 1e-10, "D1");
    MMAP({D0, D1}).save(config, FORMAT_CONFIG);
    EXPECT_EQ(readFile(config), MMAP({D0, D1}).toString(FORMAT_CONFIG));

    const map_markovian_rep rep = create_map_markovian_rep(D0 * (1.0 / 3), D1 * (1.0 / 3));
    const std::string text = "model = map\nD0 = -1 0.3333333333 0.1666666667 \n";
    EXPECT_EQ(head(map_markovian_rep_to_string(rep), text), text);
    save_map_markovian_rep(rep, config);
    EXPECT_EQ(readFile(config), map_markovian_rep_to_string(rep) + "\n");
    MAP fromConfig(config, FORMAT_CONFIG);
    expectNear(fromConfig.getD0(), rep.D0, 1e-10, "D0");
    expectNear(fromConfig.getD1(), rep.D1, 1e-10, "D1");

    const std::string missing = tempPath("no-such-dir/out.txt");
    EXPECT_EQ(failureOf([&] { save_map_markovian_rep(rep, missing); }), "mep_structs: Cannot open file.");
    EXPECT_EQ(failureOf([&] { MMAP({D0}).save(missing, FORMAT_XML); }), "mep_structs: Cannot open file.");
    EXPECT_EQ(failureOf([&] { MMAP({}).save(xml, FORMAT_XML); }), "mep_structs: MMAP without matrices.");
}
