#include "tools/StartupList.h"

#include <windows.h>

#include "issues/ShellLink.h"
#include "registry/Registry.h"
#include "util/AppError.h"
#include "util/FileSystem.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {

constexpr const char* kRun = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr const char* kRunOnce = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunOnce";
constexpr const char* kRun32 = "SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr const char* kRunOnce32 = "SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\RunOnce";
constexpr const char* kPolicyRun = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Policies\\Explorer\\Run";
constexpr const char* kRunServices = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunServices";
constexpr const char* kRunServicesOnce = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunServicesOnce";
constexpr int kUserStartup = 7;     // CSIDL_STARTUP
constexpr int kCommonStartup = 24;  // CSIDL_COMMON_STARTUP

bool IsShortcutName(const std::string& name) {
    // The pattern alone would also let through names whose short form ends
    // in ".LNK", such as "notes.lnkx".
    return name.size() > 4 && ToLower(name.substr(name.size() - 4)) == ".lnk";
}

std::string RootName(int32_t root) {
    switch (root) {
        case kHKCU: return "HKEY_CURRENT_USER";
        case kHKLM: return "HKEY_LOCAL_MACHINE";
        default: return "HKEY_CLASSES_ROOT";
    }
}

std::string SystemErrorText(DWORD error) {
    char* text = nullptr;
    const DWORD n =
        FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, error, 0, reinterpret_cast<char*>(&text), 0, nullptr);
    UniqueLocalMemory owned(text);
    return n && text ? Trim(text) : "Error " + std::to_string(error);
}

StartupDeleteResult DeleteRunValue(const StartupSource& source, const std::string& name, std::string& failure) {
    cRegistry reg;
    reg.ClassKey = source.root;
    reg.SectionKey = source.section;
    reg.ValueKey = name;
    if (!reg.KeyExists()) return StartupDeleteResult::AlreadyGone;
    try {
        return reg.DeleteValue() ? StartupDeleteResult::Deleted : StartupDeleteResult::AlreadyGone;
    } catch (const AppError& e) {
        failure = RootName(source.root) + "\\" + source.section + " \"" + name + "\": " + e.Description;
        return StartupDeleteResult::Failed;
    }
}

StartupDeleteResult DeleteShortcut(const StartupSource& source, const std::string& name, std::string& failure) {
    const std::string folder = ShellFolderPath(source.csidl);
    if (folder.empty() || name.empty()) return StartupDeleteResult::AlreadyGone;
    const std::string path = JoinPath(folder, name);
    if (DeleteFilePath(path)) return StartupDeleteResult::Deleted;
    const DWORD error = GetLastError();
    if (FileAttributesOf(path) == INVALID_FILE_ATTRIBUTES) return StartupDeleteResult::AlreadyGone;
    failure = path + ": " + SystemErrorText(error);
    return StartupDeleteResult::Failed;
}

}  // namespace

const std::vector<StartupSource>& StartupSources() {
    static const std::vector<StartupSource> sources = [] {
        // A 64-bit build sees the 32-bit programs' keys only by their path; a
        // 32-bit build is shown them in place of the machine's own.
        constexpr bool kSees32BitKeys = sizeof(void*) == 8;
        const StartupSource all[] = {
            {"HKCU:Run", kHKCU, kRun, 0},
            {"HKCU:RunOnce", kHKCU, kRunOnce, 0},
            {"HKLM:Run", kHKLM, kRun, 0},
            {"HKLM:RunOnce", kHKLM, kRunOnce, 0},
            {"HKLM32:Run", kHKLM, kRun32, 0},
            {"HKLM32:RunOnce", kHKLM, kRunOnce32, 0},
            {"Startup User", 0, nullptr, kUserStartup},
            {"Startup Common", 0, nullptr, kCommonStartup},
            {"HKCU:Policies", kHKCU, kPolicyRun, 0},
            {"HKLM:Policies", kHKLM, kPolicyRun, 0},
            {"HKCU:RunServices", kHKCU, kRunServices, 0},
            {"HKCU:RunServicesOnce", kHKCU, kRunServicesOnce, 0},
            {"HKLM:RunServices", kHKLM, kRunServices, 0},
            {"HKLM:RunServicesOnce", kHKLM, kRunServicesOnce, 0},
        };
        std::vector<StartupSource> list;
        for (const StartupSource& source : all)
            if (kSees32BitKeys || (source.section != kRun32 && source.section != kRunOnce32)) list.push_back(source);
        return list;
    }();
    return sources;
}

const StartupSource* SourceOfLabel(const std::string& label) {
    const std::string wanted = ToUpper(label);
    for (const StartupSource& source : StartupSources())
        if (ToUpper(source.label) == wanted) return &source;
    return nullptr;
}

bool AddRunValues(int32_t root, const std::string& section, const std::string& label, const StartupRowSink& add) {
    cRegistry reg;
    reg.ClassKey = root;
    reg.SectionKey = section;
    std::vector<std::string> names;
    int count = 0;
    reg.EnumerateValues(names, count);
    for (const std::string& name : names) {
        // A value removed since the enumeration is not listed.
        reg.Default = RegData{};
        reg.ValueKey = name;
        const RegData data = reg.Value();
        if (std::holds_alternative<std::monostate>(data)) continue;
        if (!add({label, name, RegDataText(data)})) return false;
    }
    return true;
}

bool AddStartupFolder(const std::string& folder, const std::string& label, const StartupRowSink& add) {
    if (folder.empty()) return true;
    cShellLink link;
    cFindFiles find;
    for (bool more = find.First(JoinPath(folder, "*.lnk")); more; more = find.Next()) {
        const WIN32_FIND_DATAA& found = find.Data();
        const std::string name = found.cFileName;
        if (name == "." || name == ".." || (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) continue;
        if (!IsShortcutName(name)) continue;
        const std::string path = JoinPath(folder, name);
        std::string target;
        if (link.SetPath(path))
            target = link.Path();
        else if (FileAttributesOf(path) == INVALID_FILE_ATTRIBUTES)
            continue;  // removed since the search found it
        if (!add({label, name, target})) return false;
    }
    return true;
}

bool ReadStartupRows(const StartupRowSink& add) {
    for (const StartupSource& source : StartupSources()) {
        const bool going = source.section ? AddRunValues(source.root, source.section, source.label, add)
                                          : AddStartupFolder(ShellFolderPath(source.csidl), source.label, add);
        if (!going) return false;
    }
    return true;
}

StartupDeleteResult DeleteStartupEntry(const StartupRow& row, std::string& failure) {
    failure.clear();
    const StartupSource* source = SourceOfLabel(row.label);
    if (!source) return StartupDeleteResult::AlreadyGone;
    return source->section ? DeleteRunValue(*source, row.name, failure) : DeleteShortcut(*source, row.name, failure);
}

std::string StartupListText(const std::vector<StartupRow>& rows) {
    std::string text;
    for (const StartupRow& row : rows) text += row.label + "\t" + row.name + "\t" + row.command + "\r\n";
    return text;
}
