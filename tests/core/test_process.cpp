#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/process.h"

using namespace velmora;

namespace {

std::string writeModel(const std::string& name, const std::string& text) {
    std::string path = testing::TempDir() + name;
    std::ofstream(path.c_str()) << text;
    return path;
}

std::string loadMessage(const std::function<Process*()>& load) {
    try {
        delete load();
    } catch (Exception& e) {
        return e.message;
    }
    return "(loaded)";
}

}  // namespace

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
        XMLConfig document(writeModel("p" + std::to_string(i++) + ".xml", text));
        EXPECT_EQ(loadMessage([&] { return load_process(&document); }), "Error loading model.") << text;
    }
    EXPECT_EQ(loadMessage([] { return load_process(static_cast<XMLConfig*>(nullptr)); }),
              "Error loading model.");
}

TEST(LoadProcessConfig, NeedsOneOfItsKeysAndAnExactModelName) {
    Config none;
    none.setValue("seed", "1", true);
    EXPECT_EQ(loadMessage([&] { return load_process(&none); }), "Unknown model type.");

    Config capitals;
    capitals.setValue("model", writeModel("cap.txt", "model = MAP\n"), true);
    EXPECT_EQ(loadMessage([&] { return load_process(&capitals); }), "Error loading model.");
    EXPECT_EQ(capitals.getValue("model"), "MAP");  // the file wins over the command line

    Config missingFile;
    missingFile.setValue("arta", testing::TempDir() + "no/such/file", true);
    EXPECT_EQ(loadMessage([&] { return load_process(&missingFile); }), "Cannot open file.");

    Config withoutModel;
    withoutModel.setValue("paramfile", writeModel("nomodel.txt", "seed = 3\n"), true);
    EXPECT_EQ(loadMessage([&] { return load_process(&withoutModel); }), "Key model does not exist.");
}

TEST(LoadProcessConfig, ParamfileKeepsWhatTheConfigAlreadyHolds) {
    Config config;
    config.setValue("model", "unknown-model", true);
    config.setValue("paramfile", writeModel("pf.txt", "model = map\n"), true);
    EXPECT_EQ(loadMessage([&] { return load_process(&config); }), "Error loading model.");
    EXPECT_EQ(config.getValue("model"), "unknown-model");
}

namespace {

std::string example(const std::string& name) { return std::string(VELMORA_SOURCE_DIR) + "/examples/" + name; }

}  // namespace

TEST(LoadProcessXML, EachModelTagBuildsItsClass) {
    struct Case { const char* file; process_type type; const char* name; } cases[] = {
        {"ph.xml", PROCESS_CPH, "CPH"},     {"map.xml", PROCESS_MAP, "MAP"},
        {"arma.xml", PROCESS_ARIMA, "ARIMA"}, {"arta.xml", PROCESS_ARTA, "ARTA"},
        {"dist.xml", PROCESS_DIST, "Dist"},
    };
    for (const auto& c : cases) {
        XMLConfig document(example(c.file));
        std::unique_ptr<Process> process(load_process(&document));
        EXPECT_EQ(process->getProcessType(), c.type) << c.file;
        EXPECT_EQ(process->getProcessTypeString(), c.name) << c.file;
    }
}

TEST(LoadProcessXML, TableOrderDecidesBetweenSeveralModels) {
    XMLConfig model(example("ph.xml"));
    XMLConfig dist(example("dist.xml"));
    XMLElement* ph = model.getDocumentRoot()->getChildElement("ph");
    XMLElement* gamma = dist.getDocumentRoot()->getChildElement("dist");
    ASSERT_NE(ph, nullptr);
    ASSERT_NE(gamma, nullptr);
    // The dist element comes first in the file, but ph is tested first.
    std::string text = "<velmora><dist>" + std::string("<type>exponential</type><rate>2</rate>") + "</dist><ph>";
    for (XMLElement* child : ph->getChildElements())
        text += "<" + child->getTag() + "> " + child->getValue() + " </" + child->getTag() + ">";
    text += "</ph></velmora>";
    XMLConfig both(writeModel("both.xml", text));
    std::unique_ptr<Process> process(load_process(&both));
    EXPECT_EQ(process->getProcessType(), PROCESS_CPH);
}

TEST(LoadProcessConfig, EachModelKeyBuildsItsClassFromKeyValueText) {
    struct Case { const char* example; const char* key; process_type type; } cases[] = {
        {"ph.xml", "cph", PROCESS_CPH},       {"map.xml", "map", PROCESS_MAP},
        {"map.xml", "mep", PROCESS_MEP},      {"arta.xml", "arta", PROCESS_ARTA},
        {"dist.xml", "distribution", PROCESS_DIST},
    };
    for (const auto& c : cases) {
        XMLConfig document(example(c.example));
        std::unique_ptr<Process> original(load_process(&document));
        std::string file = writeModel(std::string("kv_") + c.key + ".txt", original->toString(FORMAT_CONFIG));
        Config config;
        config.setValue(c.key, file, true);
        std::unique_ptr<Process> loaded(load_process(&config));
        EXPECT_EQ(loaded->getProcessType(), c.type) << c.key;
        EXPECT_EQ(config.getValue("model"), c.key);
        if (c.type != PROCESS_MEP) {
            EXPECT_EQ(loaded->toString(FORMAT_CONFIG), original->toString(FORMAT_CONFIG)) << c.key;
        }
    }

    // The key-value text of a model without a method names the method with an
    // empty value, which a key-value file can't hold: write one with a method.
    Config arima;
    arima.setValue("f-arima", writeModel("arma.txt", "ar = 0.6 -0.2\nma = 0.5\nmean = 2\nmethod = fit\n"), true);
    std::unique_ptr<Process> arma(load_process(&arima));
    EXPECT_EQ(arma->getProcessType(), PROCESS_ARIMA);
    EXPECT_EQ(arma->getMoments(1, 1)[0], 2.0);

    Config trace;
    trace.setValue("trace", writeModel("values.txt", "1\n2\n3\n"), true);
    std::unique_ptr<Process> replay(load_process(&trace));
    EXPECT_EQ(replay->getProcessType(), PROCESS_TRACE);
    EXPECT_EQ(replay->getMoments(1, 1)[0], 2.0);

    Config ordered;  // arta is tested before map
    ordered.setValue("map", writeModel("m.txt", "model = map\n"), true);
    ordered.setValue("arta", writeModel("a.txt", "x = 1\n"), true);
    try {
        delete load_process(&ordered);
    } catch (Exception&) {
    }
    EXPECT_EQ(ordered.getValue("model"), "arta");
}
