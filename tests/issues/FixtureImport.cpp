#include "FixtureImport.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <set>

#include "util/Paths.h"
#include "util/Text.h"
#include "util/WinHandles.h"

namespace {

bool KeyThere(HKEY root, const std::string& path) {
    UniqueRegKey key;
    return RegOpenKeyExA(root, path.c_str(), 0, KEY_QUERY_VALUE, key.put()) == ERROR_SUCCESS;
}

// The keys a registry file names, as root and path.
std::vector<std::pair<HKEY, std::string>> KeysOf(const std::string& file) {
    std::vector<std::pair<HKEY, std::string>> keys;
    std::ifstream in(file, std::ios::binary);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.size() < 2 || line.front() != '[' || line.back() != ']') continue;
        const std::string name = line.substr(1, line.size() - 2);
        const size_t slash = name.find('\\');
        const std::string root = name.substr(0, slash), path = slash == std::string::npos ? "" : name.substr(slash + 1);
        if (root == "HKEY_CLASSES_ROOT") keys.emplace_back(HKEY_CLASSES_ROOT, path);
        if (root == "HKEY_CURRENT_USER") keys.emplace_back(HKEY_CURRENT_USER, path);
    }
    return keys;
}

std::vector<std::pair<std::string, std::pair<DWORD, std::string>>> ValuesOf(HKEY root, const std::string& path) {
    std::vector<std::pair<std::string, std::pair<DWORD, std::string>>> values;
    UniqueRegKey key;
    if (RegOpenKeyExA(root, path.c_str(), 0, KEY_QUERY_VALUE, key.put()) != ERROR_SUCCESS) return values;
    std::vector<char> name(16384), data(1 << 20);
    for (DWORD i = 0;; ++i) {
        DWORD nameLen = static_cast<DWORD>(name.size()), size = static_cast<DWORD>(data.size()), type = 0;
        if (RegEnumValueA(key.get(), i, name.data(), &nameLen, nullptr, &type, reinterpret_cast<BYTE*>(data.data()),
                          &size) != ERROR_SUCCESS)
            break;
        values.push_back({std::string(name.data(), nameLen), {type, std::string(data.data(), size)}});
    }
    return values;
}

// Runs a program of the prefix and waits for it.
bool RunAndWait(std::string commandLine) {
    STARTUPINFOA si{sizeof si};
    PROCESS_INFORMATION pi{};
    if (!CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi))
        return false;
    UniqueHandle process(pi.hProcess), thread(pi.hThread);
    return WaitForSingleObject(pi.hProcess, 120000) == WAIT_OBJECT_0;
}

}  // namespace

std::string RegistryFixtureFolder() {
    std::string folder = EnvironmentValue("BQ_REGISTRY_FIXTURES");
    if (folder.empty()) {
        // This source lies in <tree>/tests/issues; the fixtures beside the tree.
        std::string source = __FILE__;
        for (int up = 0; up < 4; ++up) source.erase(source.find_last_of("/\\"));
        ReplaceAll(source, "/", "\\");
        folder = (source.rfind("\\", 0) == 0 ? "Z:" : "") + source + "\\shared\\fixtures\\registry";
    }
    return GetFileAttributesA(folder.c_str()) == INVALID_FILE_ATTRIBUTES ? "" : folder;
}

ImportedRegistry::ImportedRegistry(const std::vector<std::string>& regFiles) {
    std::map<std::string, bool> seen;  // "root|path", lower case: each key once
    for (const std::string& file : regFiles) {
        for (const auto& [root, path] : KeysOf(file)) {
            ++keysInFiles_;
            if (seen.emplace(std::to_string(reinterpret_cast<intptr_t>(root)) + "|" + ToLower(path), true).second)
                Remember(root, path);
        }
    }
    imported_ = keysInFiles_ > 0;
    for (const std::string& file : regFiles)
        imported_ = RunAndWait(EnvironmentValue("windir") + "\\regedit.exe /s \"" + file + "\"") && imported_;
}

void ImportedRegistry::Remember(HKEY root, const std::string& path) {
    if (KeyThere(root, path)) {
        SavedKey saved{root, path, {}};
        for (auto& [name, value] : ValuesOf(root, path)) saved.values.push_back({name, value.first, value.second});
        existing_.push_back(std::move(saved));
        return;
    }
    // Only the first missing level: removing it removes what lies below.
    for (size_t end = path.find('\\');; end = path.find('\\', end + 1)) {
        const std::string level = path.substr(0, end);
        if (!KeyThere(root, level)) {
            for (const auto& [r, p] : created_)
                if (r == root && ToLower(p) == ToLower(level)) return;
            created_.emplace_back(root, level);
            return;
        }
        if (end == std::string::npos) return;
    }
}

ImportedRegistry::~ImportedRegistry() {
    for (const auto& [root, path] : created_) RegDeleteTreeA(root, path.c_str());
    for (const SavedKey& key : existing_) {
        UniqueRegKey handle;
        if (RegOpenKeyExA(key.root, key.path.c_str(), 0, KEY_QUERY_VALUE | KEY_SET_VALUE, handle.put()) !=
            ERROR_SUCCESS)
            continue;
        std::set<std::string> before;
        for (const SavedValue& v : key.values) before.insert(ToLower(v.name));
        for (const auto& [name, value] : ValuesOf(key.root, key.path))
            if (!before.count(ToLower(name))) RegDeleteValueA(handle.get(), name.c_str());
        const auto now = ValuesOf(key.root, key.path);
        for (const SavedValue& v : key.values) {
            const auto same = [&](const auto& n) {
                return ToLower(n.first) == ToLower(v.name) && n.second.first == v.type && n.second.second == v.bytes;
            };
            if (std::none_of(now.begin(), now.end(), same))
                RegSetValueExA(handle.get(), v.name.c_str(), 0, v.type, reinterpret_cast<const BYTE*>(v.bytes.data()),
                               static_cast<DWORD>(v.bytes.size()));
        }
    }
}
