// Key-value configuration: a map of lowercase keys to text values, filled
// from files (with multi-line continuation values) and from command lines.
#ifndef VELMORA_CONFIG_CONF_H
#define VELMORA_CONFIG_CONF_H

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velmora {

class Matrix;

class Config {
public:
    Config();
    Config(int argc, char** argv);
    Config(int argc, char** argv, int first, int last);
    explicit Config(std::string file);

    bool existsKey(std::string key);
    std::string getValue(std::string key);
    double getValueAsDouble(std::string key);
    int getValueAsInt(std::string key);
    Matrix getValueAsMatrix(std::string key);
    // The keys held, in lower case and sorted.
    std::vector<std::string> getKeys() const;

    // Stores the key as given, without lowercasing it.
    void setValue(std::string key, std::string value, bool overwrite);
    void loadConfigFromFile(std::string file, bool overwrite);
    void loadConfigFromCommandLine(int argc, char** argv, bool overwrite);
    void loadConfigFromCommandLine(int argc, char** argv, int first, int last, bool overwrite);

private:
    std::map<std::string, std::string> values;
};

// One element of an XML document: a tag, owned children in file order and
// the element's text.
class XMLElement {
public:
    XMLElement(std::string tag, std::string value);
    XMLElement(const XMLElement&) = delete;
    XMLElement& operator=(const XMLElement&) = delete;

    void setTag(std::string tag);
    std::string getTag();
    void setValue(std::string value);
    std::string getValue();
    std::vector<XMLElement*> getChildElements();
    XMLElement* getChildElement(std::string tag);  // first direct child, or null
    void addChildElement(XMLElement* child);        // takes ownership

private:
    std::string tag;
    std::vector<std::unique_ptr<XMLElement>> children;
    std::string value;
};

// A document of elements and text, read by string search: no attributes,
// entities or self-closing elements.
class XMLConfig {
public:
    explicit XMLConfig(std::string file);
    XMLConfig(const XMLConfig&) = delete;
    XMLConfig& operator=(const XMLConfig&) = delete;

    XMLElement* getDocumentRoot();

    static XMLElement* parseXML(std::string text, XMLElement* parent);
    static std::vector<std::pair<std::string, std::string>> splitXML(std::string text);

private:
    std::unique_ptr<XMLElement> root;
};

// The model element of a document: the child of that tag under the root
// element "velmora", or null when the root is another or the child is missing.
XMLElement* model_element(XMLConfig* document, const std::string& tag);

}  // namespace velmora

#endif
