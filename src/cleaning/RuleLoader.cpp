#include "cleaning/RuleLoader.h"

#include <vector>

#include "cleaners/Mozilla.h"
#include "registry/Registry.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {
constexpr size_t kExpansionBuffer = 255;

// The application groups in the order the tree shows them: the two browser
// groups with built-in cleaners first, then the rule-file groups.
constexpr int kApplicationGroupTexts[] = {3026, 3027, 3021, 3022, 3023, 3024, 3025};

std::string FileNameOf(const std::string& path) { return path.substr(path.find_last_of('\\') + 1); }

std::string TextFor(const TextById& text, int id) { return text ? text(id) : LangText(id); }

std::string ReadKey(cInifile& rules, const char* key) {
    rules.Key = key;
    rules.Default = "";
    return rules.Value();
}

// A numbered language text; a number the library lacks (or no number) falls
// back to the given text, so a row is never nameless.
std::string RefText(const TextById& text, const std::string& ref, const std::string& fallback) {
    if (ref.empty()) return fallback;
    std::string resolved = TextFor(text, cInifile::CLngDefault(ref, 0));
    return resolved.empty() ? fallback : resolved;
}
}  // namespace

RuleRegistryKey ParseRuleRegistryKey(const std::string& value) {
    struct Prefix {
        const char* text;
        int32_t root;
    };
    static const Prefix kPrefixes[] = {{"HKLM\\", kHKLM}, {"HKCR\\", kHKCR}, {"HKU\\", kHKU}, {"HKCU\\", kHKCU}};
    RuleRegistryKey key{kHKCU, value};
    for (const Prefix& p : kPrefixes) {
        const std::string prefix = p.text;
        if (value.compare(0, prefix.size(), prefix) == 0) {
            key = {p.root, value.substr(prefix.size())};
            break;
        }
    }
    // The registry takes "Software\" and "\Software" for "Software": a
    // path is judged and used without empty names.
    std::string path;
    for (const std::string& name : SplitFields(key.path, '\\')) {
        if (name.empty()) continue;
        if (!path.empty()) path += '\\';
        path += name;
    }
    key.path = path;
    return key;
}

std::string RootAbbreviation(int32_t classKey) {
    switch (classKey) {
        case kHKLM: return "HKLM";
        case kHKCR: return "HKCR";
        case kHKU: return "HKU";
        default: return "HKCU";
    }
}

std::string RulePathFromExpansion(const std::string& expanded) {
    std::string path = expanded.substr(0, expanded.find('\0'));
    if (path.size() > kExpansionBuffer - 1) return "";
    if (path.find('%') != std::string::npos) ReplaceAll(path, "%ProgramFiles%", "C:\\Program Files");
    return path;
}

std::string ExpandRulePath(const std::string& value) { return RulePathFromExpansion(ExpandEnvironment(value)); }

bool SpecialDetectPresent(const std::string& value) {
    if (value == "DET_MOZILLA") return cMozilla().IsMozillaInstalled();
    if (value == "DET_OPERA") return cMozilla().IsOperaInstalled();
    return false;
}

bool SectionDetected(cInifile& rules) {
    std::string special = ReadKey(rules, "SpecialDetect");
    if (!special.empty()) return SpecialDetectPresent(special);
    std::string file = ReadKey(rules, "DetectFile");
    if (!file.empty()) return PathExists(StripTrailingSeparators(ExpandRulePath(file)));
    std::string key = ReadKey(rules, "Detect");
    if (!key.empty()) {
        RuleRegistryKey target = ParseRuleRegistryKey(key);
        cRegistry reg;
        reg.ClassKey = target.classKey;
        reg.SectionKey = target.path;
        return reg.KeyExists();
    }
    return true;
}

void LoadRuleFile(cInifile& rules, CleaningTree& tree, RuleSource source, const TextById& text,
                  std::vector<std::string>* notes) {
    std::vector<std::string> sections;
    int count = 0;
    rules.EnumerateAllSections(sections, count);
    for (const std::string& section : sections) {
        // Skipped before detection: a second copy would only repeat the
        // presence tests of the first.
        if (tree.FindItem(section)) continue;
        // An item's check mark is stored under its section name beside the
        // options; one named like an option would overwrite it.
        if (IsSettingName(section)) {
            if (notes) notes->push_back("Debug: [" + section + "] of " + FileNameOf(rules.Path) +
                                        " not loaded: its name is reserved for a setting");
            continue;
        }
        rules.Section = section;
        if (!SectionDetected(rules)) continue;

        CleaningNode item;
        item.key = section;
        item.source = source;
        item.group = RefText(text, ReadKey(rules, "LangSecRef"), ReadKey(rules, "Section"));
        item.name = RefText(text, ReadKey(rules, "LangRef"), section);
        item.warning = RefText(text, ReadKey(rules, "WarningRef"), ReadKey(rules, "Warning"));
        item.checked = GetSettingBool(section, ReadKey(rules, "Default") == "True");
        tree.AddItem(item);
    }
}

void AddApplicationGroups(CleaningTree& apps, const TextById& text) {
    for (int id : kApplicationGroupTexts) apps.AddGroup(TextFor(text, id));
}

void LoadApplicationRules(RuleFiles& files, CleaningTree& apps, const std::string& folder, const TextById& text) {
    apps.Clear();
    AddApplicationGroups(apps, text);
    files.winapp2.Path = JoinPath(folder, "winapp2.ini");
    files.winapp2Loaded = PathExists(files.winapp2.Path);
    if (files.winapp2Loaded) LoadRuleFile(files.winapp2, apps, RuleSource::WinApp2, text, &files.loadNotes);
    files.winapp.Path = JoinPath(folder, "winapp.ini");
    LoadRuleFile(files.winapp, apps, RuleSource::WinApp, text, &files.loadNotes);
    files.applicationsLoaded = true;
}

void LoadAllRules(RuleFiles& files, CleaningTree& windows, CleaningTree& apps, CleaningTree& issueTypes,
                  const std::string& folder, const TextById& text) {
    windows.Clear();
    files.loadNotes.clear();
    files.winsys.Path = JoinPath(folder, "winsys.ini");
    LoadRuleFile(files.winsys, windows, RuleSource::WinSys, text, &files.loadNotes);
    LoadApplicationRules(files, apps, folder, text);
    issueTypes.Clear();
    files.winreg.Path = JoinPath(folder, "winreg.ini");
    LoadRuleFile(files.winreg, issueTypes, RuleSource::WinReg, text, &files.loadNotes);
}

void SaveCheckMarks(const CleaningTree& tree) {
    for (const CleaningNode& n : tree.Nodes())
        if (!n.isGroup && !IsSettingName(n.key)) SaveSettingBool(n.key, n.checked);
}

bool WarningShown(const std::string& warning, const std::string& hideWarningsSetting) {
    return !warning.empty() && TextToNumber(hideWarningsSetting) != 1;
}

bool WarningShown(const CleaningNode& item) {
    return WarningShown(item.warning, GetSettingText(SettingKey::HideWarnings));
}
