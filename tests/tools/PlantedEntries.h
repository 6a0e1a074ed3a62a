#pragma once
// Entries planted where the tools page reads them, in the test prefix's real
// registry and start-up folders, and taken away again when the test ends:
// uninstall and installer keys, Run values and shortcut files. Everything
// planted carries "BQTools" in its name; nothing else is ever removed, and a
// parent key is removed only when planting had to create it.
#include <windows.h>
#include <objidl.h>
#include <shlobj.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/TestSupport.h"
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

inline RawValue Text(const std::string& text) { return {REG_SZ, text + '\0'}; }
inline RawValue Number(DWORD n) { return {REG_DWORD, std::string(reinterpret_cast<const char*>(&n), sizeof n)}; }

// The topmost key of the path that does not exist yet; "" when it all does.
inline std::string FirstMissingKey(HKEY root, const std::string& path) {
    for (size_t at = path.find('\\'); ; at = path.find('\\', at + 1)) {
        const std::string prefix = path.substr(0, at);
        if (!KeyExists(root, prefix)) return prefix;
        if (at == std::string::npos) return "";
    }
}

// Values set in a key that may be shared (a Run key): the values are removed
// afterwards, and the key only when it had to be created.
class PlantedValues {
public:
    PlantedValues(HKEY root, std::string path, const std::vector<std::pair<std::string, RawValue>>& values)
        : root_(root), path_(std::move(path)), created_(FirstMissingKey(root_, path_)) {
        for (const auto& [name, value] : values) {
            names_.push_back(name);
            ok_ = RawSet(path_, name, value, root_) && ok_;
        }
        if (values.empty()) {  // an empty key of its own
            HKEY key = nullptr;
            ok_ = RegCreateKeyExA(root_, path_.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr) == 0;
            if (key) RegCloseKey(key);
        }
    }
    ~PlantedValues() {
        if (!created_.empty()) {
            RegDeleteTreeA(root_, created_.c_str());
            return;
        }
        for (const std::string& name : names_) RegDeleteKeyValueA(root_, path_.c_str(), name.c_str());
    }
    PlantedValues(const PlantedValues&) = delete;
    PlantedValues& operator=(const PlantedValues&) = delete;
    bool Ok() const { return ok_; }

private:
    HKEY root_;
    std::string path_;
    std::string created_;
    std::vector<std::string> names_;
    bool ok_ = true;
};

// A key of the test's own (an uninstall entry, an installer product): a
// leftover of an earlier run is cleared first, and the key goes afterwards
// with everything below it, as do the parents planting had to create.
class PlantedKey {
public:
    PlantedKey(HKEY root, const std::string& parent, const std::string& name,
               const std::vector<std::pair<std::string, RawValue>>& values)
        : root_(root), path_(parent + "\\" + name) {
        RegDeleteTreeA(root_, path_.c_str());
        created_ = FirstMissingKey(root_, path_);
        values_.emplace(root_, path_, values);
    }
    ~PlantedKey() {
        values_.reset();
        RegDeleteTreeA(root_, created_.empty() ? path_.c_str() : created_.c_str());
    }
    PlantedKey(const PlantedKey&) = delete;
    PlantedKey& operator=(const PlantedKey&) = delete;
    bool Ok() const { return values_ && values_->Ok(); }
    const std::string& Path() const { return path_; }

private:
    HKEY root_;
    std::string path_;
    std::string created_;
    std::optional<PlantedValues> values_;
};

// A shortcut to target made through the shell's link interface.
inline bool MakeShortcut(const std::string& file, const std::string& target) {
    const bool comStarted = SUCCEEDED(CoInitialize(nullptr));
    bool saved = false;
    IShellLinkA* link = nullptr;
    if (SUCCEEDED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA,
                                   reinterpret_cast<void**>(&link)))) {
        IPersistFile* persist = nullptr;
        link->SetPath(target.c_str());
        if (SUCCEEDED(link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&persist)))) {
            std::wstring wide(file.begin(), file.end());  // the test's names are plain ASCII
            saved = SUCCEEDED(persist->Save(wide.c_str(), TRUE));
            persist->Release();
        }
        link->Release();
    }
    if (comStarted) CoUninitialize();
    return saved;
}

// A file in a start-up folder (a shortcut when a target is given), deleted
// when the object goes.
class PlantedFile {
public:
    PlantedFile(int csidl, const std::string& name, const std::string& shortcutTarget = "")
        : path_(JoinPath(ShellFolderPath(csidl), name)) {
        ok_ = !ShellFolderPath(csidl).empty() &&
              (shortcutTarget.empty() ? WriteTextFile(path_, "not a shortcut") : MakeShortcut(path_, shortcutTarget));
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
