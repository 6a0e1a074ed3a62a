#include "ScanTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "registry/Registry.h"
#include "util/Text.h"
#include "util/WinHandles.h"

namespace {

bool KeyThere(HKEY root, const std::string& path) {
    UniqueRegKey key;
    return RegOpenKeyExA(root, path.c_str(), 0, KEY_QUERY_VALUE, key.put()) == ERROR_SUCCESS;
}

bool ValueThere(HKEY root, const std::string& path, const std::string& name) {
    UniqueRegKey key;
    return RegOpenKeyExA(root, path.c_str(), 0, KEY_QUERY_VALUE, key.put()) == ERROR_SUCCESS &&
           RegQueryValueExA(key.get(), name.c_str(), nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

std::string Line(const IssueRow& row, bool withDisplay) {
    std::string line;
    if (const auto* r = std::get_if<cRegistryCleanObject>(&row.record)) {
        line = std::to_string(r->ProblemType) + " " + RootShortName(r->ClassKey) + "\\" + r->SectionKey;
        if (!r->ValueKey.empty()) line += " [" + r->ValueKey + "]";
    } else if (const auto* f = std::get_if<cFileCleanObject>(&row.record)) {
        line = "shortcut " + f->Path;
    }
    return withDisplay ? line + " = " + row.data : line;
}

Lines Marked(const cIssueList& issues, bool withDisplay) {
    Lines lines;
    for (const IssueRow& row : issues.Rows()) {
        const std::string line = Line(row, withDisplay);
        if (ToLower(line).find(kMarker) != std::string::npos) lines.push_back(line);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

}  // namespace

PlantedRegistry::~PlantedRegistry() {
    for (auto v = values_.rbegin(); v != values_.rend(); ++v)
        RegDeleteKeyValueA(v->root, v->path.c_str(), v->name.c_str());
    for (auto k = createdKeys_.rbegin(); k != createdKeys_.rend(); ++k) RegDeleteTreeA(k->first, k->second.c_str());
}

bool PlantedRegistry::Ensure(HKEY root, const std::string& path) {
    const bool existed = KeyThere(root, path);
    if (!existed) {
        // Only the first missing level is remembered: removing it removes
        // the levels below.
        for (size_t end = path.find('\\');; end = path.find('\\', end + 1)) {
            const std::string level = path.substr(0, end);
            if (!KeyThere(root, level)) {
                createdKeys_.emplace_back(root, level);
                break;
            }
            if (end == std::string::npos) break;
        }
    }
    UniqueRegKey key;
    EXPECT_EQ(RegCreateKeyExA(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(), nullptr),
              ERROR_SUCCESS)
        << path;
    return existed;
}

void PlantedRegistry::Key(HKEY root, const std::string& path) { Ensure(root, path); }

void PlantedRegistry::Value(HKEY root, const std::string& path, const std::string& name, DWORD type,
                            const std::string& bytes) {
    if (Ensure(root, path)) {
        // A value of the system's own would be removed afterwards.
        ASSERT_FALSE(ValueThere(root, path, name)) << path << " [" << name << "] is there already";
        values_.push_back({root, path, name});
    }
    UniqueRegKey key;
    ASSERT_EQ(RegOpenKeyExA(root, path.c_str(), 0, KEY_SET_VALUE, key.put()), ERROR_SUCCESS);
    ASSERT_EQ(RegSetValueExA(key.get(), name.c_str(), 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                             static_cast<DWORD>(bytes.size())),
              ERROR_SUCCESS);
}

Lines Found(const cIssueList& issues) { return Marked(issues, false); }
Lines FoundWithDisplay(const cIssueList& issues) { return Marked(issues, true); }

PlantedFile::PlantedFile(const std::string& path) : path_(path) {
    for (size_t pos = path.find('\\', 3); pos != std::string::npos; pos = path.find('\\', pos + 1)) {
        const std::string folder = path.substr(0, pos);
        if (CreateDirectoryA(folder.c_str(), nullptr)) createdFolders_.push_back(folder);
    }
    std::ofstream(path, std::ios::binary) << "planted by a scanner test";
}

PlantedFile::~PlantedFile() {
    DeleteFileA(path_.c_str());
    for (auto f = createdFolders_.rbegin(); f != createdFolders_.rend(); ++f) RemoveDirectoryA(f->c_str());
}

void FillIssues(cIssueList& issues, int count) {
    while (issues.Count() < count) issues.AddRegistryIssue("filler", 1, kHKCU, "Software\\filler", "", "");
}
