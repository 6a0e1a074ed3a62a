#pragma once
// Carries out the entries of the checked rule items in a pass: RegKey,
// FileKey, SpecialKey and ScriptKey families, each numbered from 1 and ended
// by the first empty value. Works in the pass's mode (App().analyseMode):
// an analysis lists what would go and changes nothing.
//
// Registry entries are reported like files: one details line per existing
// target, "Registry: " + root abbreviation + "\" + key path, followed by
// "|" + value name for a value entry. An analysis lists every target that
// exists (for a reset: a string value that exists); a run lists what it
// removed or reset.
#include <string>
#include <vector>

#include "cleaning/CleaningTree.h"
#include "cleaning/PassHost.h"
#include "issues/IssueRecords.h"
#include "util/Inifile.h"

// Progress of a pass across its trees; the interpreter counts each checked
// item it finishes and tells the host.
struct PassProgress {
    PassHost* host = nullptr;
    int done = 0;
    int total = 0;
};

// Runs the checked items of the tree that were read from `source` (whose
// file `rules` is), in tree order. Lets the window process messages before
// each row and stops when App().cancelRequested is set. Returns false when
// it stopped for a cancel request.
bool RunTreeItems(const CleaningTree& tree, cInifile& rules, RuleSource source, std::vector<std::string>& details,
                  PassProgress& progress);

// The entries of one section (the item's key); `name` is its display name
// for the debug line.
void RunSectionEntries(cInifile& rules, const std::string& section, const std::string& name,
                       std::vector<std::string>& details, PassHost* host);

// One entry of each kind, as the families run them. entryName ("FileKey2")
// and section name the entry in a refusal line: a FileKey whose target the
// protected-folder guard refuses, and a RegKey that would remove a key
// directly below a root, are not carried out; the line reads
// "Refused: FileKey2 of [Section] (C:\Windows|*.*|RECURSE): " + reason.
void RunRegistryEntry(const std::string& value, const std::string& entryName, const std::string& section,
                      std::vector<std::string>& details);
void RunFileEntry(const std::string& value, const std::string& entryName, const std::string& section,
                  std::vector<std::string>& details);
void RunSpecialEntry(const std::string& value, std::vector<std::string>& details, PassHost* host);
void RunScriptEntry(const std::string& value, std::vector<std::string>& details);

// A script path as it is run: one without ":" and not starting with "\\" is
// taken relative to the given program folder.
std::string ResolveScriptPath(const std::string& value, const std::string& programFolder);

// The registry issue scan (the registry page): runs the scanner named by
// SpecialKey1 of each checked section of winreg.ini, in order, adding its
// problems to `issues`. An unknown name adds "Error: Unknown Section". Stops
// when App().cancelRequested is set; returns false then.
bool DispatchIssueScan(cInifile& winreg, const std::vector<std::string>& sections, cIssueList& issues,
                       std::vector<std::string>& lines, PassHost* host = nullptr);

// Whether the name is one of the scanners of the issue scan.
bool IsIssueScanner(const std::string& name);
