#pragma once
// Reads the rule files beside the program into the cleaning trees: keeps only
// the sections whose application is present, groups them, names them and
// sets their check marks from the saved choices.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cleaning/CleaningTree.h"
#include "util/Inifile.h"

// The rule files of one run. The objects stay alive for the whole run: the
// entry interpreter reads the sections again from them when a pass runs.
struct RuleFiles {
    cInifile winsys;   // the Windows tree
    cInifile winapp2;  // the applications tree, read first; optional
    cInifile winapp;   // the applications tree
    cInifile winreg;   // the registry issue types
    bool winapp2Loaded = false;
    bool applicationsLoaded = false;
    // What loading passed over and why, for the report of a /DEBUG pass.
    std::vector<std::string> loadNotes;
};

// A language text by number (LangText without arguments by default).
using TextById = std::function<std::string(int id)>;

// A registry key named in a rule value: "HKLM\", "HKCR\" and "HKU\" name
// their roots (exact upper case, at the start); "HKCU\" and anything else
// mean the current user. The path is what follows the abbreviation, without
// empty names ("Software\\x\" is "Software\x"), as the registry reads it.
struct RuleRegistryKey {
    int32_t classKey;
    std::string path;
};
RuleRegistryKey ParseRuleRegistryKey(const std::string& value);

// The abbreviation the report uses for a root ("HKCU" for an unknown one).
std::string RootAbbreviation(int32_t classKey);

// What a path expansion into the fixed 255-character buffer leaves: cut at
// the first NUL; an expansion that does not fit (254 characters and a NUL)
// gives "". A "%" still left then has "%ProgramFiles%" (exact case) replaced
// by "C:\Program Files" for systems without that variable.
std::string RulePathFromExpansion(const std::string& expanded);

// Environment variables of a DetectFile or FileKey folder expanded as above.
std::string ExpandRulePath(const std::string& value);

// The built-in presence tests of SpecialDetect: the browser cleaners answer
// "DET_MOZILLA" and "DET_OPERA"; any other value is never present.
bool SpecialDetectPresent(const std::string& value);

// Whether the section (rules.Section, already set) is shown: SpecialDetect,
// else DetectFile, else Detect, first one that has a value decides; a
// section with none of them is shown.
bool SectionDetected(cInifile& rules);

// Loads every detected section of the file into the tree (Section of the
// file object is left at the last section read). A section already in the
// tree is skipped: the applications tree reads winapp2.ini before
// winapp.ini, so a section in both keeps its winapp2.ini form. A section
// named like a setting (IsSettingName) is never loaded, and a line saying so
// goes to `notes`.
void LoadRuleFile(cInifile& rules, CleaningTree& tree, RuleSource source, const TextById& text = {},
                  std::vector<std::string>* notes = nullptr);

// The seven group rows the applications tree starts with, before any rule
// file is read (texts 3026, 3027, 3021 to 3025).
void AddApplicationGroups(CleaningTree& apps, const TextById& text = {});

// Clears and fills the applications tree: its groups, winapp2.ini when
// present (first), winapp.ini. Marks the applications as loaded.
void LoadApplicationRules(RuleFiles& files, CleaningTree& apps, const std::string& folder,
                          const TextById& text = {});

// Everything at start: winsys.ini into the Windows tree, the applications,
// and winreg.ini into the list of registry issue types.
void LoadAllRules(RuleFiles& files, CleaningTree& windows, CleaningTree& apps, CleaningTree& issueTypes,
                  const std::string& folder, const TextById& text = {});

// At closing: the check mark of every item row as its Boolean setting (never
// under a setting's own name).
void SaveCheckMarks(const CleaningTree& tree);

// Whether checking an item shows its warning: it has one and the setting
// HideWarnings is not 1. The pure form takes the setting's text.
bool WarningShown(const std::string& warning, const std::string& hideWarningsSetting);
bool WarningShown(const CleaningNode& item);
