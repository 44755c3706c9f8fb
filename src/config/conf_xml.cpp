// The XML reader: elements and text only, found by repeated string search.
// The end of an element is found by counting opening and closing tags of the
// same name; other tags are not looked at until their content is split.
#include <algorithm>
#include <fstream>
#include <memory>
#include <sstream>
#include <string_view>
#include <utility>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"

namespace velmora {

namespace {

// Model files nest a handful of levels. Splitting a level looks at all of its
// text again, so deeper documents are refused to keep the work bounded.
const unsigned kMaxDepth = 10000;

Exception parseError(int line) { return Exception("conf", line, "XML parse error."); }

std::string::size_type skipBlanks(const std::string& text, std::string::size_type pos,
                                  std::string::size_type end) {
    while (pos < end && text[pos] == ' ') ++pos;
    return pos;
}

// First occurrence of `pattern` starting in [from, limit), or npos.
std::string::size_type findBefore(const std::string& text, const std::string& pattern,
                                  std::string::size_type from, std::string::size_type limit) {
    if (from >= limit) return std::string::npos;
    std::string_view window(text);
    window = window.substr(0, std::min(text.size(), limit + pattern.size() - 1));
    return window.find(pattern, from);
}

// The part of the text not yet split, [begin, end). The trailing blanks are
// cut once, at the first step past a tag; the leading blanks at every step.
struct Rest {
    std::string::size_type begin;
    std::string::size_type end;
    bool trimmed;
};

void skipPast(const std::string& text, std::string::size_type from, Rest& rest) {
    if (!rest.trimmed) {
        while (rest.end > from && text[rest.end - 1] == ' ') --rest.end;
        rest.trimmed = true;
    }
    rest.begin = skipBlanks(text, from, rest.end);
    if (rest.begin > rest.end) rest.begin = rest.end;
}

// The position of the closing tag that ends the element whose content starts
// at `from`: each opening tag of the same name found before the closing tag
// in view calls for one more closing tag.
std::string::size_type findMatchingClose(const std::string& text, const std::string& openTag,
                                         const std::string& closeTag, std::string::size_type from) {
    std::string::size_type close = text.find(closeTag, from);
    if (close == std::string::npos) throw parseError(__LINE__);
    std::string::size_type openFrom = from;  // no opening tag starts in [from, openFrom)
    unsigned long depth = 1;
    while (true) {
        std::string::size_type open = findBefore(text, openTag, openFrom, close);
        while (open != std::string::npos) {
            ++depth;
            openFrom = open + 1;
            open = findBefore(text, openTag, openFrom, close);
        }
        --depth;
        if (depth == 0) return close;
        openFrom = std::max(openFrom, close);
        close = text.find(closeTag, close + 1);
        if (close == std::string::npos) throw parseError(__LINE__);
    }
}

// Splits off the element whose opening tag spans [lt, gt] as (tag, trimmed
// content) and returns the position just past its closing tag.
std::string::size_type splitElement(const std::string& text, std::string::size_type lt, std::string::size_type gt,
                                    std::vector<std::pair<std::string, std::string>>& parts) {
    std::string tag = trimString(text.substr(lt + 1, gt - lt - 1));
    const std::string openTag = "<" + tag + ">";
    const std::string closeTag = "</" + tag + ">";
    const std::string::size_type close = findMatchingClose(text, openTag, closeTag, gt + 1);
    parts.emplace_back(std::move(tag), trimString(text.substr(gt + 1, close - gt - 1)));
    return close + closeTag.size();
}

// The deepest nesting of tags, counted in one pass: an opening tag goes one
// level down, a closing tag one up; declarations and comments don't count.
// It can only overstate the depth the parser finds, so it refuses early what
// the parser would refuse after splitting every level.
unsigned long nestingDepth(const std::string& text) {
    unsigned long depth = 0, deepest = 0;
    for (std::string::size_type lt = text.find('<'); lt != std::string::npos; lt = text.find('<', lt + 1)) {
        const char marker = lt + 1 < text.size() ? text[lt + 1] : '\0';
        if (marker == '/') {
            if (depth > 0) --depth;
        } else if (marker != '?' && marker != '!') {
            deepest = std::max(deepest, ++depth);
        }
    }
    return deepest;
}

// Element texts waiting to be split, with the element that receives their
// parts. The work list replaces recursion, so the depth of a document never
// reaches the depth of the call stack; each text is handed down by moving it,
// so a level holds only what is still to be split.
struct Pending {
    std::string text;
    XMLElement* element;
    unsigned depth;
};

void parseInto(std::string text, XMLElement* parent, unsigned depth, std::unique_ptr<XMLElement>& root) {
    if (nestingDepth(text) > kMaxDepth + 1) throw parseError(__LINE__);
    std::vector<Pending> work;
    if (parent == nullptr) {
        if (depth > kMaxDepth) throw parseError(__LINE__);
        std::vector<std::pair<std::string, std::string>> parts = XMLConfig::splitXML(std::move(text));
        if (parts.size() != 1) throw parseError(__LINE__);
        root.reset(new XMLElement(parts[0].first, ""));
        work.push_back({std::move(parts[0].second), root.get(), depth + 1});
    } else {
        work.push_back({std::move(text), parent, depth});
    }
    while (!work.empty()) {
        Pending next = std::move(work.back());
        work.pop_back();
        if (next.depth > kMaxDepth) throw parseError(__LINE__);
        std::vector<std::pair<std::string, std::string>> parts = XMLConfig::splitXML(std::move(next.text));
        for (auto& part : parts) {
            if (part.first.empty()) {
                next.element->setValue(part.second);
                continue;
            }
            XMLElement* child = new XMLElement(part.first, "");
            next.element->addChildElement(child);
            work.push_back({std::move(part.second), child, next.depth + 1});
        }
    }
}

}  // namespace

XMLElement::XMLElement(std::string tag, std::string value) : tag(std::move(tag)), value(std::move(value)) {}

void XMLElement::setTag(std::string newTag) { tag = newTag; }
std::string XMLElement::getTag() { return tag; }
void XMLElement::setValue(std::string newValue) { value = newValue; }
std::string XMLElement::getValue() { return value; }
std::vector<XMLElement*> XMLElement::getChildElements() {
    std::vector<XMLElement*> elements;
    elements.reserve(children.size());
    for (const auto& child : children) elements.push_back(child.get());
    return elements;
}

XMLElement* XMLElement::getChildElement(std::string childTag) {
    for (const auto& child : children)
        if (child->tag == childTag) return child.get();
    return nullptr;
}

void XMLElement::addChildElement(XMLElement* child) {
    std::unique_ptr<XMLElement> owned(child);
    children.push_back(std::move(owned));
}

namespace {

// Lines are joined with nothing between them where a tag ends or begins,
// and with a blank inside text, so that the rows of a matrix need no blank
// at their ends. A CR before the line end is dropped.
std::string joinedLines(std::istream& in) {
    std::string text;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!text.empty() && !line.empty() && text.back() != '>' && line.front() != '<') text += ' ';
        text += line;
    }
    return text;
}

}  // namespace

XMLConfig::XMLConfig(std::string file) {
    std::ifstream in(file.c_str());
    if (!in.is_open()) throw Exception("conf", __LINE__, "Cannot open file.");
    root.reset(parseXML(joinedLines(in), nullptr));
}

std::unique_ptr<XMLConfig> XMLConfig::fromText(const std::string& text) {
    std::istringstream in(text);
    std::unique_ptr<XMLConfig> document(new XMLConfig());
    document->root.reset(parseXML(joinedLines(in), nullptr));
    return document;
}

XMLElement* XMLConfig::getDocumentRoot() { return root.get(); }

XMLElement* model_element(XMLConfig* document, const std::string& tag) {
    XMLElement* root = document->getDocumentRoot();
    return (root != nullptr && root->getTag() == "velmora") ? root->getChildElement(tag) : nullptr;
}

// A failure leaves no half-built tree behind: a new root is released only
// when the whole text has been read; into a given parent, what was read before
// the failure stays with it.
XMLElement* XMLConfig::parseXML(std::string text, XMLElement* parent) {
    std::unique_ptr<XMLElement> root;
    parseInto(std::move(text), parent, 0, root);
    return parent != nullptr ? parent : root.release();
}

std::vector<std::pair<std::string, std::string>> XMLConfig::splitXML(std::string text) {
    std::vector<std::pair<std::string, std::string>> parts;
    // The rest of the text is [begin, end); it is walked by position, not copied.
    Rest rest{0, text.size(), false};
    while (true) {
        std::string::size_type lt = text.find('<', rest.begin);
        if (lt == std::string::npos || lt >= rest.end) {
            parts.emplace_back(std::string(), text.substr(rest.begin, rest.end - rest.begin));
            break;
        }
        std::string::size_type gt = text.find('>', rest.begin);
        if (gt == std::string::npos || gt >= rest.end || !(lt + 1 < gt)) throw parseError(__LINE__);

        const char marker = text[lt + 1];
        if (marker == '?' || marker == '!')
            skipPast(text, gt + 1, rest);  // a declaration or comment is dropped
        else
            skipPast(text, splitElement(text, lt, gt, parts), rest);
        if (rest.begin >= rest.end) break;
    }
    return parts;
}

}  // namespace velmora
