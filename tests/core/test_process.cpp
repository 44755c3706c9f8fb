#include <fstream>
#include <iterator>
#include <memory>

#include "config/conf.h"
#include "core/process.h"
#include "config/process_files.h"
#include "fitting/process_factory.h"
#include "support/test_support.h"

using namespace velmora;
using namespace velmora_test;

TEST(LoadProcessXML, RefusesDocumentsWithoutAKnownModelElement) {
    const char* documents[] = {
        "<other><map></map></other>",
        "<velmora><nothing>1</nothing></velmora>",
        "<velmora><mep><d0>1</d0></mep></velmora>",  // MEP has no tag in model files
        "<velmora><MAP></MAP></velmora>",            // tags are case-sensitive
        "",
    };
    int i = 0;
    for (const char* text : documents) {
        XMLConfig document(writeFile("p" + std::to_string(i++) + ".xml", text));
        EXPECT_EQ(failureOf([&] { delete load_process(&document); }), "process: Error loading model.") << text;
    }
    EXPECT_EQ(failureOf([] { delete load_process(static_cast<XMLConfig*>(nullptr)); }),
              "process: Error loading model.");
}

TEST(LoadProcessConfig, NeedsOneOfItsKeysAndAnExactModelName) {
    // A model file wins over the command line; a paramfile keeps what the configuration already holds.
    const struct { std::vector<std::pair<std::string, std::string>> entries; const char *failure, *model; } cases[] = {
        {{{"seed", "1"}}, "process: Unknown model type.", nullptr},
        {{{"model", writeFile("cap.txt", "model = MAP\n")}}, "process: Error loading model.", "MAP"},
        {{{"arta", tempPath("no/such/file")}}, "conf: Cannot open file.", nullptr},
        {{{"paramfile", writeFile("nomodel.txt", "seed = 3\n")}}, "conf: Key model does not exist.", nullptr},
        {{{"model", "unknown-model"}, {"paramfile", writeFile("pf.txt", "model = map\n")}},
         "process: Error loading model.", "unknown-model"},
        // Key-value matrices are checked as the XML ones are.
        {{{"model", writeFile("badmap.txt", "model = map\nD0 = -3 1\n0 -2\nD1 = 1 0\n1 1\n")}},
         "maps: The map element is no Markovian arrival process: row 1 of D0 + D1 sums to -1.", "map"},
        {{{"model", writeFile("badph.txt", "model = cph\nT = -1 2\n0 -1\ntau = 1 0\n")}},
         "cph: The ph element is no phase-type distribution: row 1 of T sums to 1.", "cph"},
    };
    for (const auto& c : cases) {
        Config config;
        for (const auto& e : c.entries) config.setValue(e.first, e.second, true);
        EXPECT_EQ(failureOf([&] { delete load_process(&config); }), c.failure);
        if (c.model != nullptr) { EXPECT_EQ(config.getValue("model"), c.model); }
    }
}

TEST(LoadProcessXML, EachModelTagBuildsItsClassAndTheTableOrderDecides) {
    struct Case { const char* file; process_type type; const char* name; } cases[] = {
        {"ph.xml", PROCESS_CPH, "CPH"},     {"map.xml", PROCESS_MAP, "MAP"},
        {"arma.xml", PROCESS_ARIMA, "ARIMA"}, {"arta.xml", PROCESS_ARTA, "ARTA"},
        {"dist.xml", PROCESS_DIST, "Dist"},
    };
    for (const auto& c : cases) {
        XMLConfig document(std::string(VELMORA_SOURCE_DIR) + "/examples/" + c.file);
        std::unique_ptr<Process> process(load_process(&document));
        EXPECT_EQ(process->getProcessType(), c.type) << c.file;
        EXPECT_EQ(process->getProcessTypeString(), c.name) << c.file;
    }
    // The dist element comes first in the file, but ph is tested first.
    XMLConfig both(writeFile("both.xml", "<velmora><dist><type>exponential</type><rate>2</rate></dist>"
                                         "<ph><d0>-1</d0><pi>1</pi></ph></velmora>"));
    EXPECT_EQ(std::unique_ptr<Process>(load_process(&both))->getProcessType(), PROCESS_CPH);
}

TEST(LoadProcessConfig, EachModelKeyBuildsItsClassFromKeyValueText) {
    struct Case { const char* key; const char* text; process_type type; double mean; } cases[] = {
        {"cph", "T = -2\ntau = 1\n", PROCESS_CPH, 0.5},
        {"map", "D0 = -1\nD1 = 1\n", PROCESS_MAP, 1},
        {"mep", "D0 = -1\nD1 = 1\n", PROCESS_MEP, 1},
        {"arta", "distribution = exponential\nrate = 2\nar = 0.5\n", PROCESS_ARTA, 0.5},
        {"distribution", "distribution = exponential\nrate = 2\n", PROCESS_DIST, 0.5},
        // A key-value file can't hold the empty method of a model without one.
        {"f-arima", "ar = 0.6 -0.2\nma = 0.5\nmean = 2\nmethod = fit\n", PROCESS_ARIMA, 2},
        {"trace", "1\n2\n3\n", PROCESS_TRACE, 2},  // values, not keys
    };
    for (const auto& c : cases) {
        Config config;
        config.setValue(c.key, writeFile(std::string("kv_") + c.key, c.text), true);
        std::unique_ptr<Process> process(load_process(&config));
        EXPECT_EQ(process->getProcessType(), c.type) << c.key;
        EXPECT_DOUBLE_EQ(process->getMoments(1, 1)[0], c.mean) << c.key;
        EXPECT_EQ(config.getValue("model"), c.key);
    }
    Config ordered;  // arta is tested before map
    ordered.setValue("map", writeFile("m.txt", "model = map\n"), true);
    ordered.setValue("arta", writeFile("a.txt", "x = 1\n"), true);
    failureOf([&] { delete load_process(&ordered); });
    EXPECT_EQ(ordered.getValue("model"), "arta");
}

TEST(ProcessFiles, TheDocumentTextIsTheSavedFileAndReadsBackToTheModel) {
    std::unique_ptr<XMLConfig> source = XMLConfig::fromText(
        "<velmora><map><states>2</states><d0>-2 1 0 -1</d0><d1>1 0 0.5 0.5</d1></map></velmora>");
    std::unique_ptr<Process> map(load_process(source.get()));
    const std::string file = tempPath("document.xml");
    map->save(file, FORMAT_XML);
    std::ifstream in(file);
    const std::string saved((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(processFileText(*map, FORMAT_XML), saved);
    std::unique_ptr<XMLConfig> again = XMLConfig::fromText(saved);
    std::unique_ptr<Process> copy(load_process(again.get()));
    EXPECT_EQ(copy->toString(FORMAT_XML), map->toString(FORMAT_XML));
}
