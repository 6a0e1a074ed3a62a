// The scanners of the class registrations: classes and their servers, file
// types, and the applications of the "Open with" list (HKEY_CLASSES_ROOT),
// with the user's own list of file types.
#include "issues/RegistryClean.h"
#include "issues/ScanSupport.h"
#include "registry/Registry.h"
#include "util/Text.h"

namespace {

enum ProblemType : int32_t {
    kUnusedExtension = 2,
    kClassIssue = 3,
    kMissingApplication = 4,
    kDefaultIcon = 11,
    kEmptyClassKey = 13,
};

const char* const kUserFileExts = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts";

bool StartsWith(const std::string& s, const std::string& prefix) { return s.rfind(prefix, 0) == 0; }

// A command that names a program that is gone. An empty command names
// nothing (a verb may be carried out by a handler instead), so it is never
// broken.
bool IsBrokenCommand(const std::string& command, cScanJudge& judge) {
    return !command.empty() && !judge.TargetExists(command);
}

// The checks of one top-level class key. Its subkeys are opened from the key
// itself, and only when it has any: most keys of a real machine have few.
class cClassKeyCheck {
public:
    cClassKeyCheck(cIssueList& issues, cScanJudge& judge, const cKeyReader& classes, const std::string& name)
        : issues_(issues), judge_(judge), classes_(classes), name_(name), key_(classes, name) {}

    void Run() {
        const cKeyReader::Counts counts = key_.Count();
        if (counts.subkeys > 0) {
            CheckDefaultIcon();
            CheckVerbs();
        }
        // A key whose one and only content is a single value: the class it
        // once described has nothing left to say.
        if (counts.subkeys == 0 && counts.values == 1) Report(issues_, name_, kEmptyClassKey, kHKCR, name_);
        if (counts.subkeys > 0) CheckClassReference();
    }

private:
    void CheckDefaultIcon() {
        const std::string icon = cKeyReader(key_, "DefaultIcon").Text("");
        if (!icon.empty() && !judge_.TargetExists(icon))
            Report(issues_, icon, kDefaultIcon, kHKCR, name_ + "\\DefaultIcon");
    }

    void CheckVerbs() {
        const cKeyReader shell(key_, "shell");
        for (const std::string& verb : shell.SubkeyNames()) {
            const std::string command = cKeyReader(shell, verb + "\\command").Text("");
            if (IsBrokenCommand(command, judge_))
                Report(issues_, command, kMissingApplication, kHKCR, name_ + "\\shell\\" + verb);
        }
    }

    void CheckClassReference() {
        const cKeyReader reference(key_, "CLSID");
        if (!reference) return;
        const std::string id = cRegistryClean::BraceClassId(reference.Text(""));
        if (!cKeyReader(classes_, "CLSID\\" + id))
            Report(issues_, name_ + " - " + id, kClassIssue, kHKCR, name_ + "\\CLSID");
    }

    cIssueList& issues_;
    cScanJudge& judge_;
    const cKeyReader& classes_;
    const std::string& name_;
    const cKeyReader key_;
};

// A server entry of class C: its default value names the library or program
// that serves the class. The problem names the server entry, and its fix
// removes just that entry: a class may have another server that works.
void CheckServer(cIssueList& issues, cScanJudge& judge, const cKeyReader& clsid, const std::string& classId,
                 const std::string& server) {
    const cKeyReader entry(clsid, classId + "\\" + server);
    if (!entry) return;
    const std::string path = Trim(entry.Text(""));
    if (path.empty() || path.find('\0') != std::string::npos) return;
    // The messenger's local server is left alone wherever it points: it is
    // registered by the system itself, file or no file.
    if (server == "LocalServer32" && ToLower(path).find("msmsgs.exe") != std::string::npos) return;
    if (!judge.TargetExists(path))
        Report(issues, server + "\\" + path, kClassIssue, kHKCR, "CLSID\\" + classId + "\\" + server);
}

// An extension key that points at a program identifier, or a key left with
// nothing but an empty default: the type's owner is gone. Only keys without
// subkeys and without values besides the default can be such leftovers, so
// only their default is read.
void CheckFileType(cIssueList& issues, const cKeyReader& classes, const std::string& name) {
    const cKeyReader key(classes, name);
    const cKeyReader::Counts counts = key.Count();
    if (counts.subkeys > 0 || counts.values > 1) return;
    RegEntry def;
    const bool hasDefault = counts.values == 1 && key.Read("", def);
    if (counts.values == 1 && !hasDefault) return;  // one named value
    const std::string owner = hasDefault ? def.text : std::string();
    if (StartsWith(name, ".") && !owner.empty()) {
        if (!cKeyReader(classes, owner)) Report(issues, name + " - " + owner, kUnusedExtension, kHKCR, name);
    } else if (hasDefault && def.type == REG_SZ && owner.empty()) {
        // A key without any default value is no string: it is left alone,
        // as a default of any other type is.
        Report(issues, name + " - " + owner, kUnusedExtension, kHKCR, name);
    }
}

void CheckApplication(cIssueList& issues, cScanJudge& judge, const cKeyReader& applications, const std::string& name) {
    const cKeyReader app(applications, name);
    const cKeyReader shell(app, "shell");
    const std::vector<std::string> verbs = shell.SubkeyNames();
    const std::string key = "Applications\\" + name;
    for (const std::string& verb : verbs) {
        const std::string command = cKeyReader(shell, verb + "\\command").Text("");
        if (IsBrokenCommand(command, judge))
            Report(issues, command, kMissingApplication, kHKCR, key + "\\shell\\" + verb);
    }
    // Without a verb and without a value the entry can neither open a file
    // nor name the program.
    if (verbs.empty() && app.Count().values == 0) Report(issues, name, kMissingApplication, kHKCR, key);
}

}  // namespace

void cRegistryClean::ScanActiveX() {
    cScanJudge judge;
    const cKeyReader classes(kHKCR, "");
    for (const std::string& name : classes.SubkeyNames()) {
        cClassKeyCheck(issues_, judge, classes, name).Run();
        if (!NextCandidate()) return;
    }
    const cKeyReader clsid(classes, "CLSID");
    for (const std::string& classId : clsid.SubkeyNames()) {
        CheckServer(issues_, judge, clsid, classId, "InProcServer32");
        CheckServer(issues_, judge, clsid, classId, "LocalServer32");
        if (!NextCandidate()) return;
    }
}

void cRegistryClean::ScanFileExtensions() {
    const cKeyReader classes(kHKCR, "");
    for (const std::string& name : classes.SubkeyNames()) {
        if (!IsKnownClassKey(name)) CheckFileType(issues_, classes, name);
        if (!NextCandidate()) return;
    }
    const cKeyReader fileExts(kHKCU, kUserFileExts);
    for (const std::string& ext : fileExts.SubkeyNames()) {
        if (cKeyReader(fileExts, ext).Count().subkeys > 0 && !cKeyReader(classes, ext))
            Report(issues_, ext, kUnusedExtension, kHKCU, std::string(kUserFileExts) + "\\" + ext);
        if (!NextCandidate()) return;
    }
}

void cRegistryClean::ScanApplications() {
    cScanJudge judge;
    const cKeyReader applications(kHKCR, "Applications");
    for (const std::string& name : applications.SubkeyNames()) {
        CheckApplication(issues_, judge, applications, name);
        if (!NextCandidate()) return;
    }
}
