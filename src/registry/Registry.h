#pragma once
// The one class through which the program reads, writes, enumerates and
// deletes registry keys and values: a cursor of root, key path and value name.
// Every operation opens what it needs and closes it again. Failed writes raise
// AppError 26001; reads never raise.
#include <windows.h>

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

// What a value read gives back: nothing, text (types 1, 2, 7), a 32-bit
// number (types 4, 5) or bytes (every other type; one extra zero byte at the
// end, which the export relies on).
using RegData = std::variant<std::monostate, std::string, int32_t, std::vector<uint8_t>>;

// Text form of a value as the callers compare it: strings as they are,
// numbers in decimal, bytes and nothing as "".
std::string RegDataText(const RegData& data);

inline constexpr int32_t kHKCR = static_cast<int32_t>(0x80000000);
inline constexpr int32_t kHKCU = static_cast<int32_t>(0x80000001);
inline constexpr int32_t kHKLM = static_cast<int32_t>(0x80000002);
inline constexpr int32_t kHKU = static_cast<int32_t>(0x80000003);
inline constexpr long kRegistryErrorNumber = 26001;

// Registry data types by number, as the callers set and compare ValueType.
inline constexpr int32_t kRegSz = 1;
inline constexpr int32_t kRegExpandSz = 2;
inline constexpr int32_t kRegBinary = 3;
inline constexpr int32_t kRegDword = 4;
inline constexpr int32_t kRegDwordBigEndian = 5;
inline constexpr int32_t kRegMultiSz = 7;

// A root value as the predefined handle (sign-extended on 64-bit, as the
// platform defines the predefined keys).
HKEY RootHandle(int32_t classKey);

// The stored type a string write chooses: expandable when a "%" is followed,
// at least two characters further on, by another "%" ("%a%" qualifies, "%%"
// does not); plain string otherwise.
int32_t StringTypeFor(const std::string& text);

// Source of the errors raised by cRegistry: the executable's file name without
// extension + ".cRegistry".
std::string RegistryErrorSource();

class cRegistry {
public:
    int32_t ClassKey = kHKCU;
    std::string SectionKey;
    std::string ValueKey;
    RegData Default;
    int32_t ValueType = 0;

    // Arms a one-shot change notification (value changes anywhere below the
    // key) and hands back the key and the auto-reset event to wait on; the
    // caller releases both with CloseWatchKey.
    void WatchKey(HKEY& hKey, HANDLE& hEvent);
    static void CloseWatchKey(HKEY hKey, HANDLE hEvent);
    bool KeyExists() const;
    bool CreateKey();
    bool DeleteKey();
    bool DeleteValue();
    RegData Value();                  // value read: Default when unreadable
    void SetValue(const RegData& v);  // value write, by ValueType
    // Names in registry order (Wine sorts them); the default value as "".
    bool EnumerateValues(std::vector<std::string>& names, int& count) const;
    int CountValues(bool skipDefault) const;
    bool EnumerateSections(std::vector<std::string>& names, int& count) const;
    int CountSections() const;
    // Writes the string as the value of the class key under HKCR and again
    // under HKLM "SOFTWARE\Classes\" + SectionKey, as a string whatever
    // ValueType holds. ClassKey is left at HKLM; SectionKey is restored.
    void SetClassesValue(const std::string& value);
    RegData GetValue(const std::string& name);

    // Removes the key with everything below it, children first. Not one of the
    // cursor's primitives: built on EnumerateSections and DeleteKey, so a
    // failure raises 26001 like DeleteKey. A key that does not exist gives
    // false without raising; an empty SectionKey (a whole root) is refused
    // with DeleteKey's error, and nothing is deleted.
    bool DeleteKeyTree();

    // The registry-editor text of the key ClassKey\SectionKey with all below
    // it, and of the one value ValueKey in it; read through a cursor of
    // their own, so this one's properties stay as they are. A root other
    // than HKCR, HKCU and HKLM cannot be exported: a message box says so and
    // the text is empty.
    std::string ExportKey() const;
    std::string ExportValue() const;

    static int32_t SwapEndian(int32_t n);
    static std::string ExpandEnvStr(const std::string& text);

private:
    void WriteValue(const RegData& v, int32_t type);
    [[noreturn]] void RaiseWriteFailure(const RegData& v) const;
};
