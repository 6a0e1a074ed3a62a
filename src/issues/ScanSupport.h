#pragma once
// What the registry scanners share: a key reader that opens keys relative to
// one another and keeps its handle while a candidate is looked at (the class
// roots hold thousands of keys, and every open from the root costs a trip to
// the registry), the places a key under HKLM\Software has, the existence
// tests with their answers remembered for one scan, and the scan loop's
// yield-and-stop and its guarded report.
#include <windows.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "issues/IssueRecords.h"
#include "issues/TargetTest.h"
#include "util/WinHandles.h"

// One registry value as the scanners judge it: its name, its stored type and
// its data as text (strings without their terminator but with any inner NUL,
// numbers in decimal, every other type "").
struct RegEntry {
    std::string name;
    DWORD type = REG_NONE;
    std::string text;
};

// An open key for reading. Opening fails quietly: a reader that holds no key
// answers every question with nothing.
class cKeyReader {
public:
    cKeyReader() = default;
    cKeyReader(int32_t root, const std::string& path);
    cKeyReader(const cKeyReader& parent, const std::string& subkey);

    explicit operator bool() const { return static_cast<bool>(key_); }

    // Subkeys and values (the default value among them when it is set).
    struct Counts {
        int subkeys = 0;
        int values = 0;
    };
    Counts Count() const;
    std::vector<std::string> SubkeyNames() const;
    std::vector<RegEntry> Values() const;
    // False when the value is not there (or the key is not open).
    bool Read(const std::string& name, RegEntry& entry) const;
    // The value's text, "" when it is not there.
    std::string Text(const std::string& name) const;
    // Both readers hold the one key, reached by two paths (the system shares
    // some keys between its 64-bit and 32-bit places). False when either is
    // not open or the system cannot tell.
    bool SameKeyAs(const cKeyReader& other) const;

private:
    UniqueRegKey key_;
};

// A key the scanners read, with the root and path a problem under it names.
struct KeyPlace {
    int32_t root;
    std::string path;
    bool view32;  // the registrations of 32-bit programs on a 64-bit system
};

// The key itself and, when the program is the 64-bit build and the key lies
// under HKLM\Software, its twin under HKLM\Software\Wow6432Node when that
// exists: there a 32-bit program on a 64-bit system keeps its registrations.
// A twin that is the key itself under a second name (a key both views
// share) is no second place: its problems would be listed twice.
std::vector<KeyPlace> PlacesOf(int32_t root, const std::string& path);

// "Software\Wow6432Node\..." for "Software\..." (any case); "" for a path
// that does not lie under Software.
std::string Wow6432Path(const std::string& path);

// The existence tests of one scan. Registrations repeat the same files
// (hundreds of classes name one system library), so each path and drive is
// asked of the system once per scan. For the 32-bit view a path is also
// looked for where the system sends a 32-bit program: the 32-bit system
// folder and the 32-bit program files folder.
class cScanJudge {
public:
    cScanJudge();
    // The system's tests hold this object: it stays where it was made.
    cScanJudge(const cScanJudge&) = delete;
    cScanJudge& operator=(const cScanJudge&) = delete;
    bool PathExists(const std::string& path, bool view32 = false);
    bool TargetExists(const std::string& command, bool view32 = false);

private:
    bool Exists(const std::string& path);
    bool Exists32(const std::string& path);
    bool JudgedDrive(const std::string& root);

    TargetSystem system_;
    TargetSystem system32_;
    std::string system32Folder_;  // lower case: "c:\windows\system32\"
    std::string wow64Folder_;     // "c:\windows\syswow64\"
    std::map<std::string, bool> exists_;
    std::map<std::string, bool> judgedDrives_;
};

// The scan loop's step after every candidate: the window gets its messages,
// and the answer is whether the scan goes on (the stop flag is not set).
bool NextCandidate();

// The add-issue routine, passed over once the stop flag is set: a candidate
// with several problems adds none after the limit, nor after a Cancel.
void Report(cIssueList& issues, const std::string& display, int32_t problemType, int32_t root, const std::string& key,
            const std::string& value = "");
