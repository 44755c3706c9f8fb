// Text helpers: conversions between text and numbers that never fail (what
// can't be read gives 0), splitting and blank-only trimming.
#ifndef VELMORA_CORE_MISC_STRING_H
#define VELMORA_CORE_MISC_STRING_H

#include <string>
#include <vector>

namespace velmora {

double toDouble(std::string text);
int toInt(std::string text);  // out-of-range text gives the nearest int bound

std::string toString(char* text);
std::string toString(double value);
std::string toString(unsigned value);
std::string toString(int value);
std::string toString(bool value);
std::string toString(std::vector<std::string> items);  // each item followed by a blank

// true for "true", "t" (any case) and exactly "1".
bool toBool(std::string text);

// Pieces between separators; empty pieces are dropped.
std::vector<std::string> splitString(std::string text, char separator);

// These remove the blank (code 32) only; tabs and line ends stay.
std::string trimString(std::string text);
std::string trimLeft(std::string text);
std::string trimRight(std::string text);

std::string tolower(std::string text);

// Model texts (the models' toString and save) write numbers in each
// writer's own form: six significant digits, six decimals, ten digits for
// matrices. While a FullPrecisionText lives, the writers on its thread use
// 17 significant digits instead, which read back to the same double, so
// that a model file holds exactly the model in memory.
class FullPrecisionText {
public:
    FullPrecisionText();
    ~FullPrecisionText();
    FullPrecisionText(const FullPrecisionText&) = delete;
    FullPrecisionText& operator=(const FullPrecisionText&) = delete;
    static bool active();
    static constexpr int kDigits = 17;

private:
    bool previous;
};

// x in the printf form `form` (one double conversion) for reports: NaN
// gives "-", and a value that rounds to zero shows no minus sign (a "%+"
// form shows "+" instead).
std::string formatNumber(double x, const char* form = "%.6g");
std::string toupper(std::string text);

template <typename T>
T min(T a, T b) { return a < b ? a : b; }
template <typename T>
T max(T a, T b) { return a > b ? a : b; }

extern template double min<double>(double, double);
extern template unsigned min<unsigned>(unsigned, unsigned);
extern template double max<double>(double, double);
extern template unsigned max<unsigned>(unsigned, unsigned);

}  // namespace velmora

#endif
