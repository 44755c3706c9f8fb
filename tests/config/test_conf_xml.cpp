#include "config/conf.h"
#include "support/test_support.h"

using namespace velmora;
using namespace velmora_test;

namespace {
std::unique_ptr<XMLElement> parse(const std::string& text) {
    return std::unique_ptr<XMLElement>(XMLConfig::parseXML(text, nullptr));
}
std::string parseMessage(const std::string& text) { return messageOf([&] { parse(text); }, "conf"); }
}  // namespace

// Lines join with nothing at tags and with a blank inside text.
TEST(XMLConfig, ReadsElementsValuesAndJoinsTextLinesWithABlank) {
    XMLConfig document(writeFile("x1.xml",
                                "<?xml version=\"1.0\"?>\n<!-- a model -->\n<velmora>\n <map>\n  <d0>1 2\n3 4</d0>\n"
                                "  <d1> 5 </d1>\n </map>\n</velmora>\n"));
    XMLElement* root = document.getDocumentRoot();
    EXPECT_EQ(root->getTag(), "velmora");
    XMLElement* map = root->getChildElement("map");
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(map->getChildElement("d0")->getValue(), "1 2 3 4");
    EXPECT_EQ(map->getChildElement("d1")->getValue(), "5");
    EXPECT_EQ(map->getChildElements().size(), 2u);
    EXPECT_EQ(root->getChildElement("Map"), nullptr);
    EXPECT_EQ(root->getChildElement("d0"), nullptr);  // only direct children
}

TEST(XMLConfig, SameTagNestingIsCountedAndTextBesideChildrenIsTheRest) {
    auto root = parse("<a><a>x</a></a>");
    ASSERT_EQ(root->getChildElements().size(), 1u);
    EXPECT_EQ(root->getChildElement("a")->getValue(), "x");
    root = parse("<r><a><a><a>y</a></a></a><b>2</b><b>3</b></r>");
    EXPECT_EQ(root->getChildElement("a")->getChildElement("a")->getChildElement("a")->getValue(), "y");
    EXPECT_EQ(root->getChildElement("b")->getValue(), "2");
    EXPECT_EQ(root->getChildElements().size(), 3u);
    // Text beside children keeps only the rest after the last child.
    root = parse("<r>before<c>1</c>after</r>");
    EXPECT_EQ(root->getValue(), "after");
    EXPECT_EQ(root->getChildElement("c")->getValue(), "1");
    root = parse("<r>\t<c></c></r>");
    EXPECT_EQ(root->getValue(), "");
    EXPECT_EQ(root->getChildElement("c")->getValue(), "");
}

TEST(XMLConfig, CommentEndsAtItsFirstGreaterThanAndTextAloneIsNoElement) {
    auto root = parse("<!-- a --><r>1</r>");
    EXPECT_EQ(root->getTag(), "r");
    EXPECT_EQ(root->getValue(), "1");
    // The rest "b -->" has its '>' before the next '<'.
    EXPECT_EQ(parseMessage("<!-- a > b --><r>1</r>"), "XML parse error.");
    EXPECT_EQ(parse("<!-- a > b <r>1</r>")->getTag(), "r");
    auto parts = XMLConfig::splitXML("<r>1</r><!-- x > tail -->");
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(parts[1].first, "");
    EXPECT_EQ(parts[1].second, "tail -->");
    // Documents without elements.
    for (const char* text : {"", "just text"}) {
        XMLConfig document(writeFile("x2.xml", text));
        EXPECT_EQ(document.getDocumentRoot()->getTag(), "");
        EXPECT_EQ(document.getDocumentRoot()->getValue(), text);
    }
}

TEST(XMLConfig, MalformedDocumentsAndMissingFilesAreRefusedDeepOrHugeOnesRead) {
    const char* bad[] = {
        "<?xml version=\"1.0\"?>", "<a>1</a><b>2</b>", "<a b=\"c\">1</a>", "<a/>", "<a><a></a>",
        "<r><a><a></a></r>",       "<>x",              "a > b <c>",          "<a>1",  "<a",
        "<r><x><x><x></x></x></r>",
    };
    for (const char* text : bad) EXPECT_EQ(parseMessage(text), "XML parse error.") << text;
    EXPECT_EQ(failureOf([] { XMLConfig missing(tempPath("no/such.xml")); }), "conf: Cannot open file.");
    // A thousand levels are read; beyond ten thousand the reader refuses at once, before splitting any level.
    auto nested = [](int levels) {
        std::string open, close;
        for (int i = 0; i < levels; ++i) open += "<a>", close += "</a>";
        return open + "x" + close;
    };
    auto root = parse(nested(1000));
    XMLElement* e = root.get();
    for (int i = 1; i < 1000; ++i) e = e->getChildElement("a");
    EXPECT_EQ(e->getValue(), "x");
    for (int levels : {10002, 1000000}) EXPECT_EQ(parseMessage(nested(levels)), "XML parse error.") << levels;
    std::string wide = "<r>";
    for (int i = 0; i < 400000; ++i) wide += "<v" + std::to_string(i % 7) + ">1</v" + std::to_string(i % 7) + ">";
    wide += "</r>";
    root = parse(wide);
    EXPECT_EQ(root->getChildElements().size(), 400000u);
    std::string junk;
    for (int i = 0; i < 100000; ++i) junk += static_cast<char>((i * 131) % 256);
    std::string message = parseMessage(junk);
    EXPECT_TRUE(message == "XML parse error." || message == "no failure");
}

TEST(XMLConfig, TextReadsAsTheSameFileWould) {
    const std::string text = "<?xml version=\"1.0\"?>\n<velmora>\n <map>\n  <d0>1 2\n3 4</d0>\n </map>\n</velmora>\n";
    XMLConfig fromFile(writeFile("x_text.xml", text));
    std::unique_ptr<XMLConfig> fromText = XMLConfig::fromText(text);
    EXPECT_EQ(fromText->getDocumentRoot()->getTag(), "velmora");
    EXPECT_EQ(model_element(fromText.get(), "map")->getChildElement("d0")->getValue(), "1 2 3 4");
    EXPECT_EQ(model_element(&fromFile, "map")->getChildElement("d0")->getValue(), "1 2 3 4");
    EXPECT_EQ(messageOf([] { XMLConfig::fromText("<velmora><map>"); }, "conf"),
              messageOf([] { XMLConfig(writeFile("x_bad.xml", "<velmora><map>")); }, "conf"));
}
