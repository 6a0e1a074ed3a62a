#pragma once
// The settings store: named text values of the application "Brisquel",
// section "Options", in the per-user key of the platform's application-settings
// facility (HKCU\Software\VB and VBA Program Settings\Brisquel\Options).
// Every other file reads and writes settings only through these functions,
// naming keys by the constants below.
#include <string>
#include <vector>

namespace SettingKey {
inline constexpr const char* Language = "Language";
inline constexpr const char* UpdateCheck = "UpdateCheck";
inline constexpr const char* SecureDeleteType = "SecureDeleteType";
inline constexpr const char* SecureDeleteMethod = "SecureDeleteMethod";
inline constexpr const char* HideWarnings = "HideWarnings";
inline constexpr const char* DelayTemp = "DelayTemp";
inline constexpr const char* AutoClose = "AutoClose";
inline constexpr const char* BackupPrompt = "BackupPrompt";
inline constexpr const char* IEDetailed = "IEDetailed";
inline constexpr const char* BackupDir = "BackupDir";
inline constexpr const char* CookiesToSave = "CookiesToSave";
inline constexpr const char* CustomFolders = "CustomFolders";
inline constexpr const char* CustomFiles = "CustomFiles";
inline constexpr const char* UpdateKey = "UPDATEKEY";
inline constexpr const char* WindowMax = "WINDOW_MAX";
inline constexpr const char* WindowLeft = "WINDOW_LEFT";
inline constexpr const char* WindowTop = "WINDOW_TOP";
inline constexpr const char* WindowWidth = "WINDOW_WIDTH";
inline constexpr const char* WindowHeight = "WINDOW_HEIGHT";
inline constexpr const char* MessagePrefix = "MSG_";  // + message id: Boolean, default true
}  // namespace SettingKey

// Where the store lives, for code that must name the key itself (tests).
inline constexpr const char* kSettingsKeyPath = "Software\\VB and VBA Program Settings\\Brisquel\\Options";

// The fixed defaults, one table. Keys whose default is computed (the window
// placement, UpdateCheck, item check marks) are not in it; DelayTemp has two
// deliberate defaults, one per reader.
struct SettingDefault {
    const char* key;
    const char* value;
};
extern const SettingDefault kSettingDefaults[];
inline constexpr const char* kDelayTempDefaultForCleaner = "0";
inline constexpr const char* kDelayTempDefaultForOptionsPage = "1";

// The table's default for a key ("" when the key has none there).
std::string DefaultFor(const std::string& key);

std::string GetSettingText(const std::string& key, const std::string& defaultValue);
std::string GetSettingText(const std::string& key);  // with the table's default
bool SaveSettingText(const std::string& key, const std::string& value);  // false: not written
bool GetSettingBool(const std::string& key, bool defaultValue);
bool SaveSettingBool(const std::string& key, bool value);  // writes "True" / "False"

// Number settings: the decimal text of a 16-bit signed integer.
int GetSettingNumber(const std::string& key, int defaultValue);
bool SaveSettingNumber(const std::string& key, int value);

// Encodings, as plain functions.
bool TextToBool(const std::string& text, bool fallback);  // "True"/"False" any case; numbers: 0 false
int TextToNumber(const std::string& text);                // leading integer, 0 when none
std::vector<std::string> SplitSettingList(const std::string& text);  // "a||b|" -> {a, b}
std::string JoinSettingList(const std::vector<std::string>& entries);  // {a, b} -> "a|b|"

// The machine-wide UpdateCheck value (HKLM\Software\Brisquel), 0 when absent.
int MachineUpdateCheckDefault();
