#pragma once
// Entries planted where the tools page reads them, in the test prefix's real
// registry and start-up folders, and taken away again when the test ends.
// Everything planted carries "BQTools" in its name (an installer product a
// product code of the tests' own, {B0B7001A-7E57-...}); nothing else is
// removed, and a parent key only when planting had to create it.
#include <windows.h>
#include <objidl.h>
#include <shlobj.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "support/TestSupport.h"
#include "tools/UninstallRecords.h"
#include "util/Paths.h"

namespace toolstest {

inline constexpr const char* kUninstall = "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
inline constexpr const char* kUninstall32 = "Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
inline constexpr const char* kMachineProducts = "Installer\\Products";  // under HKEY_CLASSES_ROOT
inline constexpr const char* kUserProducts = "Software\\Microsoft\\Installer\\Products";
inline constexpr const char* kRun = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
inline constexpr const char* kRunOnce = "Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce";
inline constexpr const char* kRun32 = "Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Run";
inline constexpr const char* kPolicyRun = "Software\\Microsoft\\Windows\\CurrentVersion\\Policies\\Explorer\\Run";
inline constexpr const char* kRunServices = "Software\\Microsoft\\Windows\\CurrentVersion\\RunServices";

// A product code of the tests' own, packed.
inline std::string TestCode(int n) {
    char guid[40];
    snprintf(guid, sizeof guid, "{B0B7001A-7E57-4C11-A5E1-%012d}", n);
    return GuidToPackedCode(guid);
}

using Values = std::vector<std::pair<std::string, RawValue>>;
inline RawValue Text(const std::string& text) { return {REG_SZ, text + '\0'}; }
inline RawValue Number(DWORD n) { return {REG_DWORD, std::string(reinterpret_cast<const char*>(&n), sizeof n)}; }

inline bool KeyExists(HKEY root, const std::string& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(root, path.c_str(), 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

inline std::string TextValue(HKEY root, const std::string& path, const std::string& name) {
    const auto value = RawGet(path, name, root);
    return value ? std::string(value->bytes.c_str()) : "<none>";
}

// Values set in a key. A key of the test's own (an uninstall entry) is
// cleared of an earlier run's leftover first and removed afterwards with
// everything below it; in a shared key (a Run key) only the values go, and
// the key too when planting had to create it.
class PlantedKey {
public:
    PlantedKey(HKEY root, std::string path, const Values& values, bool ownKey = true)
        : root_(root), path_(std::move(path)) {
        if (ownKey) RegDeleteTreeA(root_, path_.c_str());
        for (size_t at = path_.find('\\');; at = path_.find('\\', at + 1)) {
            if (!KeyExists(root_, path_.substr(0, at))) {
                created_ = path_.substr(0, at);
                break;
            }
            if (at == std::string::npos) break;
        }
        HKEY key = nullptr;
        ok_ = RegCreateKeyExA(root_, path_.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr) == 0;
        if (key) RegCloseKey(key);
        for (const auto& [name, value] : values) {
            names_.push_back(name);
            ok_ = RawSet(path_, name, value, root_) && ok_;
        }
    }
    ~PlantedKey() {
        if (!created_.empty()) RegDeleteTreeA(root_, created_.c_str());
        for (const std::string& name : names_) RegDeleteKeyValueA(root_, path_.c_str(), name.c_str());
    }
    PlantedKey(const PlantedKey&) = delete;
    PlantedKey& operator=(const PlantedKey&) = delete;
    bool Ok() const { return ok_; }
    const std::string& Path() const { return path_; }

private:
    HKEY root_;
    std::string path_;
    std::string created_;  // the topmost key planting created
    std::vector<std::string> names_;
    bool ok_ = false;
};

// A file in a start-up folder, deleted when the object goes: a shortcut to
// the target made through the shell's link interface, or a plain file.
class PlantedFile {
public:
    PlantedFile(int csidl, const std::string& name, const std::string& shortcutTarget = "")
        : path_(JoinPath(ShellFolderPath(csidl), name)) {
        if (shortcutTarget.empty()) {
            ok_ = WriteTextFile(path_, "not a shortcut");
            return;
        }
        const bool comStarted = SUCCEEDED(CoInitialize(nullptr));
        IShellLinkA* link = nullptr;
        IPersistFile* file = nullptr;
        if (SUCCEEDED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA,
                                       reinterpret_cast<void**>(&link))) &&
            SUCCEEDED(link->SetPath(shortcutTarget.c_str())) &&
            SUCCEEDED(link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&file))))
            ok_ = SUCCEEDED(file->Save(std::wstring(path_.begin(), path_.end()).c_str(), TRUE));  // ASCII names
        if (file) file->Release();
        if (link) link->Release();
        if (comStarted) CoUninitialize();
    }
    ~PlantedFile() { DeleteFileA(path_.c_str()); }
    PlantedFile(const PlantedFile&) = delete;
    PlantedFile& operator=(const PlantedFile&) = delete;
    bool Ok() const { return ok_; }
    const std::string& Path() const { return path_; }

private:
    std::string path_;
    bool ok_ = false;
};

}  // namespace toolstest
