#include <gtest/gtest.h>

#include <fstream>
#include <functional>
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
