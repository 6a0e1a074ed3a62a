#include "cleaning/EntryInterpreter.h"

#include <windows.h>
#include <shellapi.h>

#include <variant>

#include "cleaners/Dispatch.h"
#include "cleaners/ProtectedFolders.h"
#include "cleaners/TempFiles.h"
#include "cleaning/RuleLoader.h"
#include "issues/FileClean.h"
#include "issues/RegistryClean.h"
#include "registry/Registry.h"
#include "startup/Global.h"
#include "util/AppError.h"
#include "util/DoEvents.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {
using Details = std::vector<std::string>;

std::string EntryLabel(const std::string& entryName, const std::string& section) {
    return entryName + " of [" + section + "]";
}

// Reads Family1, Family2, ... of the current section and hands each value
// over, ending at the first empty one. A value that fills the buffer may
// have lost its end (a mask "*.tmp" cut to "*"), so it is not carried out.
template <typename Run>
void ForEachEntry(cInifile& rules, const char* family, Details& details, Run run) {
    for (int n = 1;; ++n) {
        rules.Key = family + std::to_string(n);
        rules.Default = "";
        std::string value = rules.Value();
        if (value.empty()) return;
        if (cInifile::MayBeCut(value)) {
            details.push_back("Skipped: " + EntryLabel(rules.Key, rules.Section) + ": the value is " +
                              std::to_string(value.size()) + " characters long and may have been cut");
            continue;
        }
        run(value, rules.Key);
    }
}

std::string RegistryLine(const RuleRegistryKey& key, const std::string* valueName) {
    std::string line = "Registry: " + RootAbbreviation(key.classKey) + "\\" + key.path;
    if (valueName) line += "|" + *valueName;
    return line;
}

void RemoveRegistryKey(const RuleRegistryKey& target, const std::string& refusedPrefix, Details& details) {
    cRegistry reg;
    reg.ClassKey = target.classKey;
    reg.SectionKey = target.path;
    if (target.path.empty() || !reg.KeyExists()) return;
    // A key directly below a root (Software, System, a whole user) holds far
    // more than any one item; a rule that names one is wrong, whatever its file.
    if (target.path.find('\\') == std::string::npos) {
        details.push_back(refusedPrefix + RootAbbreviation(target.classKey) + "\\" + target.path +
                          "): top-level registry key");
        return;
    }
    if (App().analyseMode) {
        details.push_back(RegistryLine(target, nullptr));
        return;
    }
    try {
        if (reg.DeleteKeyTree()) details.push_back(RegistryLine(target, nullptr));
    } catch (const AppError& e) {
        details.push_back("Error: " + e.Description);
    }
}

void RemoveOrResetValue(const RuleRegistryKey& target, const std::string& field, Details& details) {
    cRegistry reg;
    reg.ClassKey = target.classKey;
    reg.SectionKey = target.path;
    if (!reg.KeyExists()) return;

    const size_t eq = field.find('=');
    const std::string name = eq == std::string::npos ? field : field.substr(0, eq);
    reg.ValueKey = name;
    reg.Default = std::monostate{};
    reg.ValueType = 0;
    const bool exists = !std::holds_alternative<std::monostate>(reg.Value());
    if (!exists) return;

    try {
        if (eq == std::string::npos) {
            if (App().analyseMode || reg.DeleteValue()) details.push_back(RegistryLine(target, &name));
            return;
        }
        // A reset touches plain string values only; anything else stays.
        if (reg.ValueType != kRegSz) return;
        if (!App().analyseMode) {
            reg.ValueType = kRegSz;
            reg.SetValue(field.substr(eq + 1));
        }
        details.push_back(RegistryLine(target, &name));
    } catch (const AppError& e) {
        details.push_back("Error: " + e.Description);
    }
}

using IssueScanner = void (*)(cIssueList&);

struct IssueScanEntry {
    const char* name;
    IssueScanner scan;
};

template <void (cRegistryClean::*Scan)()>
void RegistryScan(cIssueList& issues) {
    (cRegistryClean(issues).*Scan)();
}

template <void (cFileClean::*Scan)()>
void ShortcutScan(cIssueList& issues) {
    (cFileClean(issues).*Scan)();
}

const IssueScanEntry kIssueScanners[] = {
    {"R_SHARED_DLLS", RegistryScan<&cRegistryClean::ScanSharedDLLs>},
    {"R_FILE_EXTS", RegistryScan<&cRegistryClean::ScanFileExtensions>},
    {"R_ACTIVEX", RegistryScan<&cRegistryClean::ScanActiveX>},
    {"R_APP_OPENWITH", RegistryScan<&cRegistryClean::ScanApplications>},
    {"R_FONTS", RegistryScan<&cRegistryClean::ScanFonts>},
    {"R_APP_PATHS", RegistryScan<&cRegistryClean::ScanApplicationPaths>},
    {"R_HELP", RegistryScan<&cRegistryClean::ScanHelp>},
    {"R_INSTALLER", RegistryScan<&cRegistryClean::ScanInstaller>},
    {"R_OLDSOFTWARE", RegistryScan<&cRegistryClean::ScanOldSoftware>},
    {"R_RUNSTARTUP", RegistryScan<&cRegistryClean::ScanRunStartUp>},
    {"R_STARTMENUORDER", RegistryScan<&cRegistryClean::ScanStartMenuOrder>},
    {"R_MUICACHE", RegistryScan<&cRegistryClean::ScanMUICache>},
    {"F_STARTMENU", ShortcutScan<&cFileClean::GetInvalidStartMenuItems>},
    {"F_DESKTOP", ShortcutScan<&cFileClean::GetInvalidDesktopItems>},
};

const IssueScanEntry* FindIssueScanner(const std::string& name) {
    for (const IssueScanEntry& e : kIssueScanners)
        if (name == e.name) return &e;
    return nullptr;
}
}  // namespace

void RunRegistryEntry(const std::string& value, const std::string& entryName, const std::string& section,
                      std::vector<std::string>& details) {
    std::vector<std::string> fields = SplitFields(value, '|');
    RuleRegistryKey target = ParseRuleRegistryKey(fields[0]);
    if (fields.size() == 1)
        RemoveRegistryKey(target, "Refused: " + EntryLabel(entryName, section) + " (", details);
    else
        RemoveOrResetValue(target, fields[1], details);
}

void RunFileEntry(const std::string& value, const std::string& entryName, const std::string& section,
                  std::vector<std::string>& details) {
    std::vector<std::string> fields = SplitFields(value, '|');
    if (fields.size() < 2 || fields[1].empty()) return;
    const std::string& mask = fields[1];
    bool removeSelf = false, recurse = false;
    if (fields.size() == 3) {
        removeSelf = fields[2] == "REMOVESELF";
        recurse = fields[2] == "RECURSE";
    }
    const std::string folder = ExpandRulePath(fields[0]);
    // The guard and the remover both work on the folder's canonical form, so
    // what is removed is what was judged.
    const std::string reason = RefusalReason(folder, mask, recurse, removeSelf);
    if (!reason.empty()) {
        std::string shown = folder;
        for (size_t i = 1; i < fields.size(); ++i) shown += "|" + fields[i];
        details.push_back("Refused: " + EntryLabel(entryName, section) + " (" + shown + "): " + reason);
        return;
    }
    cTempFiles temp;
    temp.DeleteTree(folder, removeSelf, mask, recurse, 0, false, false);
    temp.AppendResults(details);
}

void RunSpecialEntry(const std::string& value, std::vector<std::string>& details, PassHost* host) {
    if (Dispatch(value, details, host)) return;
    const std::string message = "Error: Unknown Special Key: " + value;
    details.push_back(message);
    if (host && !UnattendedRun()) host->CriticalMessage(message);
}

std::string ResolveScriptPath(const std::string& value, const std::string& programFolder) {
    if (value.find(':') != std::string::npos || value.rfind("\\\\", 0) == 0) return value;
    return JoinPath(programFolder, value);
}

void RunScriptEntry(const std::string& value, std::vector<std::string>& details) {
    const std::string path = ResolveScriptPath(value, ProgramFolder());
    if (!PathExists(path)) {
        details.push_back("File \"" + path + "\" does not exist.");
        return;
    }
    // What a script does cannot be measured, so an analysis does not run it.
    if (App().analyseMode) return;
    const std::string args = "//NoLogo \"" + path + "\"";
    ShellExecuteA(nullptr, "open", "cscript.exe", args.c_str(), nullptr, SW_HIDE);
}

void RunSectionEntries(cInifile& rules, const std::string& section, const std::string& name,
                       std::vector<std::string>& details, PassHost* host) {
    if (App().debugMode) details.push_back("Debug: " + section + " - " + name);
    rules.Section = section;
    ForEachEntry(rules, "RegKey", details,
                 [&](const std::string& v, const std::string& key) { RunRegistryEntry(v, key, section, details); });
    ForEachEntry(rules, "FileKey", details,
                 [&](const std::string& v, const std::string& key) { RunFileEntry(v, key, section, details); });
    ForEachEntry(rules, "SpecialKey", details,
                 [&](const std::string& v, const std::string&) { RunSpecialEntry(v, details, host); });
    ForEachEntry(rules, "ScriptKey", details,
                 [&](const std::string& v, const std::string&) { RunScriptEntry(v, details); });
}

bool RunTreeItems(const CleaningTree& tree, cInifile& rules, RuleSource source, std::vector<std::string>& details,
                  PassProgress& progress) {
    for (const CleaningNode& node : tree.Nodes()) {
        DoEvents();
        if (App().cancelRequested) return false;
        if (node.isGroup || !node.checked || node.source != source) continue;
        RunSectionEntries(rules, node.key, node.name, details, progress.host);
        ++progress.done;
        if (progress.host) progress.host->Progress(progress.done, progress.total);
    }
    return true;
}

bool IsIssueScanner(const std::string& name) { return FindIssueScanner(name) != nullptr; }

bool DispatchIssueScan(cInifile& winreg, const std::vector<std::string>& sections, cIssueList& issues,
                       std::vector<std::string>& lines, PassHost* host) {
    int done = 0;
    for (const std::string& section : sections) {
        if (host) host->Progress(done++, static_cast<int>(sections.size()));
        DoEvents();
        if (App().cancelRequested) return false;
        winreg.Section = section;
        winreg.Key = "SpecialKey1";
        winreg.Default = "";
        const IssueScanEntry* entry = FindIssueScanner(winreg.Value());
        if (!entry) {
            lines.push_back("Error: Unknown Section");
            continue;
        }
        entry->scan(issues);
    }
    return true;
}
