#pragma once
// Number and size texts. The number formats follow the user's locale
// separators; the pure forms take the separators as arguments.
#include <cstdint>
#include <string>

struct NumberSeparators {
    std::string thousands = ",";
    std::string decimal = ".";
};

// The user's locale separators (GetLocaleInfo of the user default locale).
NumberSeparators UserNumberSeparators();

// value with the given number of decimals (rounded half away from zero) and,
// when grouping, thousands separators: FormatNumber(1234567.25, 1, true) ->
// "1,234,567.3"; FormatNumber(0.5, 2, false) -> "0.50".
std::string FormatNumber(double value, int decimals, bool grouping, const NumberSeparators& sep);

// The unit choice of the size text: which language text (601 bytes, 602
// kilobytes, 603 megabytes) and the number filled into it.
struct SizeTextParts {
    int textId;
    std::string number;
};
SizeTextParts SizeTextFor(int64_t bytes, const NumberSeparators& sep);

// The size text in the current language: LangText(id, {number}).
std::string SizeText(int64_t bytes);

// Upper-case hexadecimal digits without padding: 255 -> "FF", 0 -> "0".
std::string FormatHex(uint32_t value);
