// Key-value configuration: file and command-line grammars.
#include "config/conf.h"

#include <fstream>

#include "core/libvelmora_settings.h"
#include "core/misc_string.h"

namespace velmora {

Config::Config() = default;

Config::Config(int argc, char** argv) { loadConfigFromCommandLine(argc, argv, false); }

Config::Config(int argc, char** argv, int first, int last) {
    loadConfigFromCommandLine(argc, argv, first, last, false);
}

Config::Config(std::string file) { loadConfigFromFile(file, false); }

bool Config::existsKey(std::string key) { return values.count(tolower(key)) > 0; }

std::string Config::getValue(std::string key) {
    auto it = values.find(tolower(key));
    if (it == values.end()) throw Exception("conf", __LINE__, "Key " + key + " does not exist.");
    return it->second;
}

double Config::getValueAsDouble(std::string key) { return toDouble(getValue(key)); }

int Config::getValueAsInt(std::string key) { return toInt(getValue(key)); }

std::vector<std::string> Config::getKeys() const {
    std::vector<std::string> keys;
    for (const auto& entry : values) keys.push_back(entry.first);
    return keys;
}

void Config::setValue(std::string key, std::string value, bool overwrite) {
    if (overwrite || values.count(key) == 0) values[key] = value;
}

void Config::loadConfigFromFile(std::string file, bool overwrite) {
    std::ifstream in(file.c_str());
    if (!in.is_open()) throw Exception("conf", __LINE__, "Cannot open file.");

    std::string key;
    std::string value;
    bool stored = false;  // whether the current key was stored, so its continuations are too
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::string::size_type eq = line.find('=');
        if (eq == std::string::npos) {
            value += "\n" + trimString(line);
            if (overwrite || stored) values[key] = value;
            continue;
        }
        key = tolower(trimString(line.substr(0, eq)));
        value = trimString(line.substr(eq + 1));
        if (value.empty()) throw Exception("conf", __LINE__, "No value for key.");
        if (overwrite || values.count(key) == 0) {
            values[key] = value;
            stored = true;
        } else {
            stored = false;
        }
    }
}

void Config::loadConfigFromCommandLine(int argc, char** argv, bool overwrite) {
    loadConfigFromCommandLine(argc, argv, 1, argc - 1, overwrite);
}

void Config::loadConfigFromCommandLine(int argc, char** argv, int first, int last, bool overwrite) {
    // Indices outside the argument vector are skipped rather than read.
    for (int i = first; i <= last; ++i) {
        if (i < 0 || i >= argc || argv[i] == nullptr) continue;
        std::string argument(argv[i]);
        std::string::size_type eq = argument.find('=');
        if (eq == std::string::npos) throw Exception("conf", __LINE__, "Invalid command line parameter.");
        std::string keyPart = argument.substr(0, eq);
        std::string value = argument.substr(eq + 1);
        if (keyPart.empty() || keyPart[0] != '-' || keyPart.size() == 1)
            throw Exception("conf", __LINE__, "Invalid command line parameter.");
        if (value.empty()) throw Exception("conf", __LINE__, "No value for key.");
        std::string key = tolower(keyPart.substr(1));
        if (overwrite || values.count(key) == 0) values[key] = value;
    }
}

}  // namespace velmora
