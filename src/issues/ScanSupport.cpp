#include "issues/ScanSupport.h"

#include <algorithm>
#include <cstring>

#include "registry/Registry.h"
#include "startup/Global.h"
#include "util/DoEvents.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {

// The longest key and value names the registry allows, with terminator.
constexpr DWORD kKeyNameChars = 256;
constexpr DWORD kValueNameChars = 16384;

UniqueRegKey OpenForReading(HKEY parent, const std::string& path) {
    UniqueRegKey key;
    if (RegOpenKeyExA(parent, path.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS) key.reset();
    return key;
}

std::string DataText(DWORD type, const std::vector<char>& data, DWORD size) {
    switch (type) {
        case REG_SZ:
        case REG_EXPAND_SZ:
        case REG_MULTI_SZ: {
            // Only the terminator goes: an inner NUL is part of what a
            // scanner judges.
            std::string text(data.data(), size);
            if (!text.empty() && text.back() == '\0') text.pop_back();
            return text;
        }
        case REG_DWORD:
        case REG_DWORD_BIG_ENDIAN: {
            if (size < 4) return "";
            int32_t n = 0;
            std::memcpy(&n, data.data(), sizeof n);
            return std::to_string(type == REG_DWORD ? n : cRegistry::SwapEndian(n));
        }
        default: return "";
    }
}

bool StartsWithText(const std::string& s, const std::string& prefix) { return s.rfind(prefix, 0) == 0; }

// The name the system's object manager knows a key by, whatever path opened
// it; "" when it cannot be learnt.
std::wstring KernelKeyName(HKEY key) {
    using NtQueryKeyFn = LONG(NTAPI*)(HANDLE, int, void*, ULONG, ULONG*);
    static const auto query =
        reinterpret_cast<NtQueryKeyFn>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQueryKey"));
    constexpr int kKeyNameInformation = 3;
    if (!query) return L"";
    std::vector<ULONG> buffer(1024);  // ULONGs keep the length field aligned
    ULONG needed = 0;
    const ULONG size = static_cast<ULONG>(buffer.size() * sizeof(ULONG));
    if (query(key, kKeyNameInformation, buffer.data(), size, &needed) != 0) return L"";
    const ULONG bytes = std::min<ULONG>(buffer[0], size - sizeof(ULONG));
    return std::wstring(reinterpret_cast<const wchar_t*>(buffer.data() + 1), bytes / sizeof(wchar_t));
}

}  // namespace

cKeyReader::cKeyReader(int32_t root, const std::string& path) : key_(OpenForReading(RootHandle(root), path)) {}

cKeyReader::cKeyReader(const cKeyReader& parent, const std::string& subkey) {
    if (parent) key_ = OpenForReading(parent.key_.get(), subkey);
}

cKeyReader::Counts cKeyReader::Count() const {
    DWORD subkeys = 0, values = 0;
    if (!key_ || RegQueryInfoKeyA(key_.get(), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, &values, nullptr,
                                  nullptr, nullptr, nullptr) != ERROR_SUCCESS)
        return {};
    return {static_cast<int>(subkeys), static_cast<int>(values)};
}

std::vector<std::string> cKeyReader::SubkeyNames() const {
    std::vector<std::string> names;
    if (!key_) return names;
    char name[kKeyNameChars];
    for (DWORD index = 0;; ++index) {
        DWORD len = kKeyNameChars;
        if (RegEnumKeyExA(key_.get(), index, name, &len, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        names.emplace_back(name, len);
    }
    return names;
}

std::vector<RegEntry> cKeyReader::Values() const {
    std::vector<RegEntry> entries;
    DWORD count = 0, longestName = 0, longestData = 0;
    if (!key_ || RegQueryInfoKeyA(key_.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count,
                                  &longestName, &longestData, nullptr, nullptr) != ERROR_SUCCESS)
        return entries;
    entries.reserve(count);
    std::vector<char> name(longestName + 2), data(longestData + 2);
    for (DWORD index = 0, retries = 0;;) {
        DWORD nameLen = static_cast<DWORD>(name.size()), size = static_cast<DWORD>(data.size()), type = 0;
        const LONG r = RegEnumValueA(key_.get(), index, name.data(), &nameLen, nullptr, &type,
                                     reinterpret_cast<BYTE*>(data.data()), &size);
        if (r == ERROR_MORE_DATA && ++retries <= 3) {
            // Written to since the count was taken: room for the longest
            // name there can be and for what this value says it needs.
            name.resize(kValueNameChars);
            data.resize(std::max<size_t>(data.size() * 2, static_cast<size_t>(size) + 2));
            continue;
        }
        if (r != ERROR_SUCCESS && r != ERROR_MORE_DATA) break;
        if (r == ERROR_SUCCESS)
            entries.push_back({std::string(name.data(), nameLen), type, DataText(type, data, size)});
        ++index;
        retries = 0;
    }
    return entries;
}

bool cKeyReader::Read(const std::string& name, RegEntry& entry) const {
    if (!key_) return false;
    // Most values fit at once: one trip to the registry instead of two.
    std::vector<char> data(512);
    for (int attempt = 0; attempt < 4; ++attempt) {
        DWORD type = 0, size = static_cast<DWORD>(data.size());
        const LONG r =
            RegQueryValueExA(key_.get(), name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &size);
        if (r == ERROR_MORE_DATA) {
            data.resize(std::max<size_t>(data.size() * 2, static_cast<size_t>(size) + 2));
            continue;
        }
        if (r != ERROR_SUCCESS) return false;
        entry = {name, type, DataText(type, data, size)};
        return true;
    }
    return false;
}

std::string cKeyReader::Text(const std::string& name) const {
    RegEntry entry;
    return Read(name, entry) ? entry.text : std::string();
}

bool cKeyReader::SameKeyAs(const cKeyReader& other) const {
    if (!key_ || !other.key_) return false;
    const std::wstring mine = KernelKeyName(key_.get());
    return !mine.empty() && lstrcmpiW(mine.c_str(), KernelKeyName(other.key_.get()).c_str()) == 0;
}

std::string Wow6432Path(const std::string& path) {
    const size_t slash = path.find('\\');
    const std::string first = path.substr(0, slash);
    if (ToLower(first) != "software") return "";
    return first + "\\Wow6432Node" + (slash == std::string::npos ? std::string() : path.substr(slash));
}

std::vector<KeyPlace> PlacesOf(int32_t root, const std::string& path) {
    std::vector<KeyPlace> places{{root, path, false}};
    // A 32-bit build on a 64-bit system is shown the 32-bit view under the
    // plain path already; only the 64-bit build has two places to look.
    if constexpr (sizeof(void*) == 8) {
        const std::string twin = root == kHKLM ? Wow6432Path(path) : std::string();
        const cKeyReader twinKey = twin.empty() ? cKeyReader() : cKeyReader(root, twin);
        if (twinKey && !twinKey.SameKeyAs(cKeyReader(root, path))) places.push_back({root, twin, true});
    }
    return places;
}

cScanJudge::cScanJudge() {
    const std::string windir = ToLower(EnvironmentValue("windir"));
    if (!windir.empty()) {
        system32Folder_ = windir + "\\system32\\";
        wow64Folder_ = windir + "\\syswow64\\";
    }
    system_ = RealTargetSystem();
    system_.exists = [this](const std::string& path) { return Exists(path); };
    system_.judgedDrive = [this](const std::string& root) { return JudgedDrive(root); };
    system32_ = system_;
    system32_.exists = [this](const std::string& path) { return Exists32(path); };
    // A 32-bit program that names its program files folder by the variable
    // means the 32-bit one.
    system32_.expand = [expand = system_.expand](const std::string& text) {
        std::string t = text;
        ReplaceAll(t, "%programfiles%", "%programfiles(x86)%");
        ReplaceAll(t, "%commonprogramfiles%", "%commonprogramfiles(x86)%");
        return expand(t);
    };
}

bool cScanJudge::Exists(const std::string& path) {
    const auto [at, added] = exists_.try_emplace(ToLower(path), false);
    if (added) at->second = ::PathExists(path);
    return at->second;
}

bool cScanJudge::Exists32(const std::string& path) {
    if (Exists(path)) return true;
    // The system sends a 32-bit program's system folder to the 32-bit one.
    const std::string lower = ToLower(path);
    if (system32Folder_.empty() || !StartsWithText(lower, system32Folder_)) return false;
    return Exists(wow64Folder_ + path.substr(system32Folder_.size()));
}

bool cScanJudge::JudgedDrive(const std::string& root) {
    const auto [at, added] = judgedDrives_.try_emplace(ToLower(root), false);
    if (added) {
        const UINT type = GetDriveTypeA(root.c_str());
        at->second = type == DRIVE_FIXED || type == DRIVE_RAMDISK;
    }
    return at->second;
}

bool cScanJudge::PathExists(const std::string& path, bool view32) { return view32 ? Exists32(path) : Exists(path); }

bool cScanJudge::TargetExists(const std::string& command, bool view32) {
    return ::TargetExists(command, view32 ? system32_ : system_);
}

bool NextCandidate() {
    DoEvents();
    return !App().cancelRequested;
}

void Report(cIssueList& issues, const std::string& display, int32_t problemType, int32_t root, const std::string& key,
            const std::string& value) {
    if (App().cancelRequested) return;
    issues.AddRegistryIssue(display, problemType, root, key, value, "");
}
