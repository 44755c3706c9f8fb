// The two model factories. Which class a model file builds is decided by the
// first tag (XML) or key (key-value) found, in the factories' fixed order.
#include "fitting/process_factory.h"

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "distributions/dist_process.h"
#include "markov/capp.h"
#include "markov/chep.h"
#include "markov/cph.h"
#include "markov/maps.h"
#include "markov/mep.h"
#include "timeseries/arima.h"
#include "timeseries/arta.h"
#include "traces/trace.h"

namespace velmora {

namespace {

Exception errorLoadingModel(int line) { return Exception("process", line, "Error loading model."); }

// Builds the model class that a factory tag or model name stands for; null
// for a name without a class.
Process* buildFromXML(const std::string& tag, XMLConfig* document) {
    if (tag == "ph") return new CPH(document);
    if (tag == "map") return new MAP(document);
    if (tag == "arima") return new ARIMA(document);
    if (tag == "arta") return new ARTA(document);
    if (tag == "chep") return new chep(document);
    if (tag == "capp") return new capp(document);
    if (tag == "dist") return new DistProcess(document);
    return nullptr;
}

Process* buildFromConfig(const std::string& model, Config* config) {
    if (model == "arta") return new ARTA(config);
    if (model == "mep") return new MEP(config);
    if (model == "map") return new MAP(config);
    if (model == "cph") return new CPH(config);
    if (model == "f-arima") return new ARIMA(config);
    if (model == "trace") return new Trace(config);
    if (model == "distribution") return new DistProcess(config);
    if (model == "chep") return new chep(config);
    if (model == "capp") return new capp(config);
    return nullptr;
}

}  // namespace

Process* load_process(XMLConfig* document) {
    // A run without a document cannot name a model.
    if (document == nullptr || document->getDocumentRoot() == nullptr) throw errorLoadingModel(__LINE__);
    XMLElement* root = document->getDocumentRoot();
    if (root->getTag() != "velmora") throw errorLoadingModel(__LINE__);
    static const char* const tags[] = {"ph", "map", "arima", "arta", "chep", "capp", "dist"};
    for (const char* tag : tags) {
        if (root->getChildElement(tag) == nullptr) continue;
        Process* process = buildFromXML(tag, document);
        if (process == nullptr) throw errorLoadingModel(__LINE__);
        return process;
    }
    throw errorLoadingModel(__LINE__);
}

Process* load_process(Config* config) {
    if (config == nullptr) throw Exception("process", __LINE__, "Unknown model type.");
    struct Source {
        const char* key;
        const char* model;  // null: the file names its own model
        bool load;
        bool overwrite;
    };
    static const Source sources[] = {
        {"paramfile", nullptr, true, false}, {"model", nullptr, true, true},
        {"arta", "arta", true, true},        {"mep", "mep", true, true},
        {"map", "map", true, true},          {"cph", "cph", true, true},
        {"f-arima", "f-arima", true, true},  {"trace", "trace", false, true},
        {"distribution", "distribution", true, true},
        {"chep", "chep", true, true},        {"capp", "capp", true, true},
    };
    const Source* found = nullptr;
    for (const Source& source : sources) {
        if (config->existsKey(source.key)) {
            found = &source;
            break;
        }
    }
    if (found == nullptr) throw Exception("process", __LINE__, "Unknown model type.");
    if (found->load) config->loadConfigFromFile(config->getValue(found->key), found->overwrite);
    if (found->model != nullptr) config->setValue("model", found->model, true);

    std::string model = config->getValue("model");
    static const char* const models[] = {"arta",  "mep",          "map",  "cph", "f-arima",
                                         "trace", "distribution", "chep", "capp"};
    for (const char* name : models) {
        if (model != name) continue;
        Process* process = buildFromConfig(name, config);
        if (process == nullptr) throw errorLoadingModel(__LINE__);
        return process;
    }
    throw errorLoadingModel(__LINE__);
}

}  // namespace velmora
