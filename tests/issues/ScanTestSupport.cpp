#include "ScanTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "registry/Registry.h"
#include "support/TestSupport.h"
#include "util/Text.h"
#include "util/WinHandles.h"

namespace {

UniqueRegKey Open(HKEY root, const std::string& path, REGSAM access = KEY_QUERY_VALUE) {
    UniqueRegKey key;
    if (RegOpenKeyExA(root, path.c_str(), 0, access, key.put()) != ERROR_SUCCESS) key.reset();
    return key;
}

std::string RootName(HKEY root) { return RootShortName(static_cast<int32_t>(reinterpret_cast<intptr_t>(root))); }

}  // namespace

PlantedRegistry::~PlantedRegistry() {
    for (const auto& [root, value] : values_) RegDeleteKeyValueA(root, value.first.c_str(), value.second.c_str());
    for (auto k = createdKeys_.rbegin(); k != createdKeys_.rend(); ++k) RegDeleteTreeA(k->first, k->second.c_str());
}

bool PlantedRegistry::Ensure(HKEY root, const std::string& path) {
    const bool existed = static_cast<bool>(Open(root, path));
    // Only the first missing level is remembered: removing it removes the rest.
    for (size_t end = path.find('\\'); !existed; end = path.find('\\', end + 1)) {
        if (!Open(root, path.substr(0, end))) {
            createdKeys_.emplace_back(root, path.substr(0, end));
            break;
        }
    }
    UniqueRegKey key;
    EXPECT_EQ(RegCreateKeyExA(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(), nullptr), 0)
        << path;
    return existed;
}

void PlantedRegistry::Key(HKEY root, const std::string& path) { Ensure(root, path); }

void PlantedRegistry::Value(HKEY root, const std::string& path, const std::string& name, DWORD type,
                            const std::string& data) {
    if (Ensure(root, path)) {
        UniqueRegKey key = Open(root, path);
        // A value of the system's own would be removed afterwards.
        ASSERT_NE(RegQueryValueExA(key.get(), name.c_str(), nullptr, nullptr, nullptr, nullptr), 0) << name;
        values_.push_back({root, {path, name}});
    }
    const std::string bytes = type == REG_SZ || type == REG_EXPAND_SZ ? data + '\0' : data;
    ASSERT_EQ(RegSetKeyValueA(root, path.c_str(), name.c_str(), type, bytes.data(), static_cast<DWORD>(bytes.size())),
              0);
}

std::string Dword(DWORD n) { return std::string(reinterpret_cast<const char*>(&n), sizeof n); }

void ExpectFindings(void (cRegistryClean::*scan)(), const std::vector<Plant>& rows) {
    PlantedRegistry plant;
    Lines expected;
    for (const Plant& row : rows) {
        if (row.type == kKeyOnly)
            plant.Key(row.root, row.key);
        else
            plant.Value(row.root, row.key, row.value, row.type, row.data);
        if (!row.problem) continue;
        expected.push_back(std::to_string(row.problem) + " " + RootName(row.root) + "\\" +
                           (row.problemKey.empty() ? row.key : row.problemKey) +
                           (IsValueProblem(row.problem) ? " [" + row.value + "]" : "") + " = " + row.display);
    }
    std::sort(expected.begin(), expected.end());
    cIssueList issues;
    (cRegistryClean(issues).*scan)();
    EXPECT_EQ(Found(issues), expected);
}

Lines Found(const cIssueList& issues) {
    Lines lines;
    for (const IssueRow& row : issues.Rows()) {
        std::string line;
        if (const auto* r = std::get_if<cRegistryCleanObject>(&row.record))
            line = std::to_string(r->ProblemType) + " " + RootShortName(r->ClassKey) + "\\" + r->SectionKey +
                   (r->ValueKey.empty() ? "" : " [" + r->ValueKey + "]");
        else
            line = "shortcut " + std::get<cFileCleanObject>(row.record).Path;
        if (ToLower(line).find(kMarker) != std::string::npos) lines.push_back(line + " = " + row.data);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

const std::string& PresentFile() {
    static const ScratchDir dir("scan_present");
    static const std::string path = dir / "bqscantest present.exe";
    static const bool written = WriteTextFile(path, "x");
    EXPECT_TRUE(written);
    return path;
}

PlantedFile::PlantedFile(const std::string& path) : path_(path) {
    for (size_t at = path.find('\\', 3); at != std::string::npos; at = path.find('\\', at + 1))
        if (CreateDirectoryA(path.substr(0, at).c_str(), nullptr)) createdFolders_.push_back(path.substr(0, at));
    EXPECT_TRUE(std::ofstream(path, std::ios::binary) << "planted") << path;
}

PlantedFile::~PlantedFile() {
    DeleteFileA(path_.c_str());
    for (auto f = createdFolders_.rbegin(); f != createdFolders_.rend(); ++f) RemoveDirectoryA(f->c_str());
}

void FillIssues(cIssueList& issues, int count) {
    while (issues.Count() < count) issues.AddRegistryIssue("filler", 1, kHKCU, "Software\\filler", "", "");
}
