// The value readers that the families' text readers share: a key of a
// key-value configuration or a child of a family element, with the family's
// default when it is missing, and the lists of the vector families. Internal
// to the distribution files.
#ifndef VELMORA_DISTRIBUTIONS_DIST_READ_H
#define VELMORA_DISTRIBUTIONS_DIST_READ_H

#include <string>
#include <vector>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"

namespace velmora {
namespace distread {

inline double keyDouble(Config* c, const std::string& key, double fallback) {
    return c->existsKey(key) ? c->getValueAsDouble(key) : fallback;
}

inline int keyInt(Config* c, const std::string& key, int fallback) {
    return c->existsKey(key) ? c->getValueAsInt(key) : fallback;
}

inline double tagDouble(XMLElement* family, const std::string& tag, double fallback) {
    XMLElement* child = family->getChildElement(tag);
    return child != nullptr ? toDouble(child->getValue()) : fallback;
}

inline int tagInt(XMLElement* family, const std::string& tag, int fallback) {
    XMLElement* child = family->getChildElement(tag);
    return child != nullptr ? toInt(child->getValue()) : fallback;
}

// A list value: pieces separated by single blanks.
inline std::vector<double> doubleList(const std::string& text) {
    std::vector<double> values;
    for (const std::string& piece : splitString(text, ' ')) values.push_back(toDouble(piece));
    return values;
}

// A count of phases. An Erlang variate takes one uniform draw per phase, so a
// model file may name at most a million phases (a few milliseconds a value);
// a negative count would wrap to some four billion and is refused as well.
const int kMaxPhases = 1000000;

inline unsigned phaseCount(int count) {
    if (count < 0) throw Exception("dist", __LINE__, "Negative number of phases.");
    if (count > kMaxPhases) throw Exception("dist", __LINE__, "Number of phases above the limit of 1000000.");
    return static_cast<unsigned>(count);
}

inline std::vector<unsigned> phaseList(const std::string& text) {
    std::vector<unsigned> values;
    for (const std::string& piece : splitString(text, ' ')) values.push_back(phaseCount(toInt(piece)));
    return values;
}

inline double sumOf(const std::vector<double>& values) {
    double sum = 0;
    for (double value : values) sum += value;
    return sum;
}

}  // namespace distread
}  // namespace velmora

#endif
