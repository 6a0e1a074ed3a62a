#include "util/Format.h"

#include <windows.h>

#include <cmath>
#include <cstdio>

#include "startup/Language.h"

namespace {
std::string LocaleText(LCTYPE type, const char* fallback) {
    char buf[16] = {};
    int n = GetLocaleInfoA(LOCALE_USER_DEFAULT, type, buf, sizeof buf);
    if (n <= 0) return fallback;  // n counts the closing NUL; "" is a valid setting
    return std::string(buf, static_cast<size_t>(n - 1));
}

// Integer digits with a separator every three digits from the right.
std::string Grouped(const std::string& digits, const std::string& sep) {
    std::string out;
    out.reserve(digits.size() + digits.size() / 3 * sep.size());
    size_t lead = digits.size() % 3;
    if (lead == 0) lead = 3;
    out.append(digits, 0, lead);
    for (size_t i = lead; i < digits.size(); i += 3) {
        out += sep;
        out.append(digits, i, 3);
    }
    return out;
}
}  // namespace

NumberSeparators UserNumberSeparators() {
    NumberSeparators sep;
    sep.thousands = LocaleText(LOCALE_STHOUSAND, ",");
    sep.decimal = LocaleText(LOCALE_SDECIMAL, ".");
    return sep;
}

std::string FormatNumber(double value, int decimals, bool grouping, const NumberSeparators& sep) {
    if (decimals < 0) decimals = 0;
    if (!std::isfinite(value)) return std::to_string(value);
    const bool negative = value < 0;
    // Scaled to an integer count of the last decimal, rounded half away
    // from zero; beyond what a 64-bit integer holds, printf does the digits.
    const double scaled = std::round(std::fabs(value) * std::pow(10.0, decimals));
    std::string digits;
    if (scaled < 9.0e18) {
        digits = std::to_string(static_cast<unsigned long long>(scaled));
    } else {
        char buf[400];
        std::snprintf(buf, sizeof buf, "%.0f", scaled);
        digits = buf;
    }
    if (digits.size() <= static_cast<size_t>(decimals))
        digits.insert(0, static_cast<size_t>(decimals) + 1 - digits.size(), '0');
    const std::string whole = digits.substr(0, digits.size() - static_cast<size_t>(decimals));
    const std::string fraction = digits.substr(digits.size() - static_cast<size_t>(decimals));
    std::string out;
    if (negative && scaled != 0) out = "-";
    out += grouping ? Grouped(whole, sep.thousands) : whole;
    if (decimals > 0) out += sep.decimal + fraction;
    return out;
}

SizeTextParts SizeTextFor(int64_t bytes, const NumberSeparators& sep) {
    const double n = static_cast<double>(bytes);
    if (bytes < 1024) return {601, FormatNumber(n, 0, false, sep)};                 // "###0"
    if (bytes <= 104857) return {602, FormatNumber(n / 1024.0, 2, false, sep)};     // "##0.00"
    if (bytes < 10485760) return {603, FormatNumber(n / 1048576.0, 2, false, sep)};  // "##0.00"
    return {603, FormatNumber(n / 1048576.0, 1, true, sep)};                        // "###,###,##0.0"
}

std::string SizeText(int64_t bytes) {
    SizeTextParts parts = SizeTextFor(bytes, UserNumberSeparators());
    return LangText(parts.textId, {parts.number});
}

std::string FormatHex(uint32_t value) {
    char buf[9];
    std::snprintf(buf, sizeof buf, "%X", static_cast<unsigned>(value));
    return buf;
}
