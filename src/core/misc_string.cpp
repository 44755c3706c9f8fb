#include "core/misc_string.h"

#include <cctype>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <sstream>

namespace velmora {

template double min<double>(double, double);
template unsigned min<unsigned>(unsigned, unsigned);
template double max<double>(double, double);
template unsigned max<unsigned>(unsigned, unsigned);

namespace {

// The number at the start of the text by stream extraction, which stores the
// nearest bound on overflow and 0 when nothing is read.
template <typename T>
T leadingNumber(const std::string& text) {
    std::istringstream in(text);
    T value = 0;
    in >> value;
    return value;
}

}  // namespace

double toDouble(std::string text) { return leadingNumber<double>(text); }

int toInt(std::string text) { return leadingNumber<int>(text); }

std::string toString(char* text) { return std::string(text); }

std::string toString(double value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

std::string toString(unsigned value) { return std::to_string(value); }

std::string toString(int value) { return std::to_string(value); }

std::string toString(bool value) { return value ? "1" : "0"; }

std::string toString(std::vector<std::string> items) {
    std::string out;
    for (const std::string& item : items) {
        out += item;
        out += ' ';
    }
    return out;
}

bool toBool(std::string text) {
    std::string lower = tolower(text);
    return lower == "true" || lower == "t" || text == "1";
}

std::vector<std::string> splitString(std::string text, char separator) {
    std::vector<std::string> pieces;
    std::string::size_type start = 0;
    while (start <= text.size()) {
        std::string::size_type end = text.find(separator, start);
        if (end == std::string::npos) end = text.size();
        if (end > start) pieces.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return pieces;
}

std::string trimLeft(std::string text) {
    std::string::size_type first = text.find_first_not_of(' ');
    return first == std::string::npos ? std::string() : text.substr(first);
}

std::string trimRight(std::string text) {
    std::string::size_type last = text.find_last_not_of(' ');
    return last == std::string::npos ? std::string() : text.substr(0, last + 1);
}

std::string trimString(std::string text) { return trimRight(trimLeft(text)); }

std::string tolower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string toupper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

namespace {
// Per thread, so that a model written on one thread keeps the form of one
// written on another.
thread_local bool fullPrecision = false;
}  // namespace

FullPrecisionText::FullPrecisionText() : previous(fullPrecision) { fullPrecision = true; }
FullPrecisionText::~FullPrecisionText() { fullPrecision = previous; }
bool FullPrecisionText::active() { return fullPrecision; }

std::string formatNumber(double x, const char* form) {
    if (std::isnan(x)) return "-";
    char buf[64];
    std::snprintf(buf, sizeof buf, form, x);
    std::string text = buf;
    if (std::isfinite(x) && text[0] == '-' && text.find_first_of("123456789") == std::string::npos)
        text[0] = std::strchr(form, '+') != nullptr ? '+' : ' ';
    if (text[0] == ' ') text.erase(0, 1);
    return text;
}

}  // namespace velmora
