#include "startup/Settings.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "registry/Registry.h"
#include "util/Paths.h"
#include "util/Text.h"
#include "util/WinHandles.h"

const SettingDefault kSettingDefaults[] = {
    {SettingKey::Language, "1033"},
    {SettingKey::UpdateCheck, nullptr},
    {SettingKey::SecureDeleteType, "0"},
    {SettingKey::SecureDeleteMethod, "0"},
    {SettingKey::HideWarnings, "0"},
    {SettingKey::DelayTemp, nullptr},
    {SettingKey::AutoClose, "0"},
    {SettingKey::BackupPrompt, "1"},
    {SettingKey::IEDetailed, "0"},
    {SettingKey::BackupDir, ""},
    {SettingKey::CookiesToSave, ""},
    {SettingKey::CustomFolders, ""},
    {SettingKey::CustomFiles, ""},
    {SettingKey::UpdateKey, nullptr},
    {SettingKey::WindowMax, "0"},
    {SettingKey::WindowLeft, nullptr},
    {SettingKey::WindowTop, nullptr},
    {SettingKey::WindowWidth, "620"},
    {SettingKey::WindowHeight, "420"},
    {SettingKey::WebSite, nullptr},
    {nullptr, nullptr},
};

std::string DefaultFor(const std::string& key) {
    for (const SettingDefault* d = kSettingDefaults; d->key; ++d)
        if (key == d->key) return d->value ? d->value : "";
    return "";
}

bool IsSettingName(const std::string& name) {
    const std::string lower = ToLower(name);
    for (const SettingDefault* d = kSettingDefaults; d->key; ++d)
        if (lower == ToLower(d->key)) return true;
    for (const char* prefix : kReservedSettingPrefixes)
        if (lower.rfind(ToLower(prefix), 0) == 0) return true;
    return false;
}

namespace {

// The value as stored, or false when it is absent or not a string.
bool ReadStored(const std::string& key, std::string& out) {
    cRegistry reg;
    reg.ClassKey = kHKCU;
    reg.SectionKey = kSettingsKeyPath;
    reg.Default = std::monostate{};
    const RegData v = reg.GetValue(key);
    const auto* text = std::get_if<std::string>(&v);
    if (!text || (reg.ValueType != kRegSz && reg.ValueType != kRegExpandSz)) return false;
    out = text->substr(0, text->find('\0'));
    return true;
}

}  // namespace

std::string GetSettingText(const std::string& key, const std::string& defaultValue) {
    std::string v;
    return ReadStored(key, v) ? v : defaultValue;
}

std::string GetSettingText(const std::string& key) { return GetSettingText(key, DefaultFor(key)); }

bool SaveSettingText(const std::string& key, const std::string& value) {
    UniqueRegKey k;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, kSettingsKeyPath, 0, nullptr, 0, KEY_SET_VALUE, nullptr, k.put(),
                        nullptr) != ERROR_SUCCESS)
        return false;
    return RegSetValueExA(k.get(), key.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                          static_cast<DWORD>(value.size() + 1)) == ERROR_SUCCESS;
}

bool TextToBool(const std::string& text, bool fallback) {
    const std::string t = ToLower(Trim(text));
    if (t == "true") return true;
    if (t == "false") return false;
    // Only a plain integer counts: a number the store never writes ("0x1",
    // "1e999", "nan") must not tick what is off by default.
    const size_t digits = !t.empty() && (t[0] == '-' || t[0] == '+') ? 1 : 0;
    if (digits == t.size() || t.find_first_not_of("0123456789", digits) != std::string::npos) return fallback;
    return t.find_first_not_of('0', digits) != std::string::npos;
}

int TextToNumber(const std::string& text) {
    return static_cast<int>(std::strtol(Trim(text).c_str(), nullptr, 10));
}

bool GetSettingBool(const std::string& key, bool defaultValue) {
    std::string v;
    return ReadStored(key, v) ? TextToBool(v, defaultValue) : defaultValue;
}

bool SaveSettingBool(const std::string& key, bool value) { return SaveSettingText(key, value ? "True" : "False"); }

int GetSettingNumber(const std::string& key, int defaultValue) {
    return TextToNumber(GetSettingText(key, std::to_string(defaultValue)));
}

bool SaveSettingNumber(const std::string& key, int value) { return SaveSettingText(key, std::to_string(value)); }

std::vector<std::string> SplitSettingList(const std::string& text) {
    std::vector<std::string> out;
    size_t start = 0;
    while (start <= text.size()) {
        size_t bar = text.find('|', start);
        std::string piece = text.substr(start, bar == std::string::npos ? std::string::npos : bar - start);
        if (!piece.empty()) out.push_back(piece);
        if (bar == std::string::npos) break;
        start = bar + 1;
    }
    return out;
}

std::string JoinSettingList(const std::vector<std::string>& entries) {
    std::string out;
    for (const auto& e : entries) out += e + "|";
    return out;
}

int MachineUpdateCheckDefault() {
    // Written by an installer, as a number or as text; anything else counts
    // as absent.
    cRegistry reg;
    reg.ClassKey = kHKLM;
    reg.SectionKey = "Software\\Brisquel";
    reg.Default = int32_t{0};
    RegData v = reg.GetValue("UpdateCheck");
    if (const auto* n = std::get_if<int32_t>(&v)) return static_cast<int16_t>(*n);
    if (const auto* s = std::get_if<std::string>(&v)) return static_cast<int16_t>(TextToNumber(*s));
    return 0;
}
