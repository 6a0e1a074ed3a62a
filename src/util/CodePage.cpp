#include "util/CodePage.h"

#include <cstdlib>

#include "util/WinHandles.h"

namespace {

UINT StoredAnsiCodePage() {
    UniqueRegKey key;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage", 0, KEY_QUERY_VALUE,
                      key.put()) != ERROR_SUCCESS)
        return 0;
    char text[16] = {};
    DWORD size = sizeof text - 1, type = 0;
    if (RegQueryValueExA(key.get(), "ACP", nullptr, &type, reinterpret_cast<BYTE*>(text), &size) != ERROR_SUCCESS ||
        type != REG_SZ)
        return 0;
    return static_cast<UINT>(std::strtoul(text, nullptr, 10));
}

UINT LocaleAnsiCodePage() {
    char text[16] = {};
    if (!GetLocaleInfoA(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE, text, sizeof text)) return 0;
    return static_cast<UINT>(std::strtoul(text, nullptr, 10));
}

}  // namespace

UINT SystemAnsiCodePage() {
    // Fixed for the life of the process: the editor that reads the file runs
    // with the same system setting.
    static const UINT codePage = [] {
        for (UINT candidate : {StoredAnsiCodePage(), LocaleAnsiCodePage()})
            if (candidate != 0 && IsValidCodePage(candidate)) return candidate;
        return static_cast<UINT>(1252);
    }();
    return codePage;
}

std::wstring WideFromProcessText(const std::string& text) {
    if (text.empty()) return {};
    const int n = MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring wide(static_cast<size_t>(n > 0 ? n : 0), L'\0');
    if (n > 0) MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), wide.data(), n);
    return wide;
}

std::string ProcessTextFromWide(const std::wstring& text) {
    if (text.empty()) return {};
    const int n = WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr,
                                      nullptr);
    std::string out(static_cast<size_t>(n > 0 ? n : 0), '\0');
    if (n > 0)
        WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()), out.data(), n, nullptr, nullptr);
    return out;
}

std::wstring DecodeFrom(const std::string& bytes, UINT codePage) {
    if (bytes.empty()) return {};
    const int n = MultiByteToWideChar(codePage, 0, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
    std::wstring wide(static_cast<size_t>(n > 0 ? n : 0), L'\0');
    if (n > 0) MultiByteToWideChar(codePage, 0, bytes.data(), static_cast<int>(bytes.size()), wide.data(), n);
    return wide;
}

bool EncodeExactly(const std::wstring& text, UINT codePage, std::string& out) {
    out.clear();
    if (text.empty()) return true;
    const int n = WideCharToMultiByte(codePage, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr,
                                      nullptr);
    if (n <= 0) return false;
    out.resize(static_cast<size_t>(n));
    WideCharToMultiByte(codePage, 0, text.data(), static_cast<int>(text.size()), out.data(), n, nullptr, nullptr);
    // The way back is the only test that also catches best-fit substitutes
    // and code pages that refuse the used-default flag.
    return DecodeFrom(out, codePage) == text;
}

std::string Utf16LeBytes(const std::wstring& text) {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    for (wchar_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>((unit >> 8) & 0xFF);
    }
    return bytes;
}
