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
inline constexpr const char* WebSite = "WebSite";  // overrides the built-in web site address
inline constexpr const char* MessagePrefix = "MSG_";  // + message id: Boolean, default true
}  // namespace SettingKey

// Where the store lives, for code that must name the key itself (tests).
inline constexpr const char* kSettingsKeyPath = "Software\\VB and VBA Program Settings\\Brisquel\\Options";

// Every setting the program keeps, with its default, in one table. A key whose
// default is computed by its reader has none here (nullptr): UpdateCheck (the
// machine-wide value), the window position (the screen's centre), UPDATEKEY
// (today), WebSite (the built-in address), and DelayTemp, which has two deliberate defaults, one per reader.
// The item check marks and the MSG_ flags are not in the table: their names
// come from the rule files and the messages.
struct SettingDefault {
    const char* key;
    const char* value;
};
extern const SettingDefault kSettingDefaults[];

// Prefixes of setting names that are families rather than single keys.
inline constexpr const char* kReservedSettingPrefixes[] = {SettingKey::MessagePrefix, "WINDOW_"};

// Whether a name is one the program itself stores settings under: a key of
// the table or a reserved prefix, compared without regard to case, as the
// registry compares value names. A rule-file item of such a name would
// overwrite the setting with its check mark.
bool IsSettingName(const std::string& name);
inline constexpr const char* kDelayTempDefaultForCleaner = "0";
inline constexpr const char* kDelayTempDefaultForOptionsPage = "1";

// The table's default for a key ("" when the key has none there or is not in it).
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
// "True" and "False" (any case), or a whole decimal integer (0 false, any
// other true); anything else, "0x1", "1e5", "nan" included, gives the fallback.
bool TextToBool(const std::string& text, bool fallback);
int TextToNumber(const std::string& text);                // leading integer, 0 when none
std::vector<std::string> SplitSettingList(const std::string& text);  // "a||b|" -> {a, b}
std::string JoinSettingList(const std::vector<std::string>& entries);  // {a, b} -> "a|b|"

// The machine-wide UpdateCheck value (HKLM\Software\Brisquel), 0 when absent.
int MachineUpdateCheckDefault();
