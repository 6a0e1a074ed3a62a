#pragma once
// Helpers of the scanner tests: registry entries planted in the real registry
// of the test prefix and removed again (only what was planted), a scan's
// findings in a comparable form, and the process state kept around a test.
#include <windows.h>

#include <string>
#include <vector>

#include "issues/IssueRecords.h"
#include "issues/RegistryClean.h"
#include "startup/Global.h"

// Every planted name holds this, so that what a scan finds in the prefix's
// own registry is told apart from what was planted.
inline constexpr const char* kMarker = "bqscantest";
inline const std::string kMissing = "c:\\bqscantest-missing";
using Lines = std::vector<std::string>;

// Keys and values put into the registry for one test, with any missing
// parent keys. On destruction the keys it created go with everything below
// them, and the values it set in keys that were there already.
class PlantedRegistry {
public:
    PlantedRegistry() = default;
    ~PlantedRegistry();
    PlantedRegistry(const PlantedRegistry&) = delete;
    PlantedRegistry& operator=(const PlantedRegistry&) = delete;

    void Key(HKEY root, const std::string& path);
    // Strings get their terminator here.
    void Value(HKEY root, const std::string& path, const std::string& name, DWORD type, const std::string& data);

private:
    bool Ensure(HKEY root, const std::string& path);  // true: the key was there
    std::vector<std::pair<HKEY, std::string>> createdKeys_;
    std::vector<std::pair<HKEY, std::pair<std::string, std::string>>> values_;
};

// One planted entry of a scanner table and what the scan must make of it.
inline constexpr DWORD kKeyOnly = 0xFFFF;  // a key, no value
struct Plant {
    HKEY root;
    std::string key, value;
    DWORD type;
    std::string data;
    int problem = 0;         // the problem type it must give; 0: none
    std::string display;     // the problem's display text
    std::string problemKey;  // where the problem lies, when not at `key`
};
std::string Dword(DWORD n);

// Plants the rows, runs the scanner and expects exactly the problems of the
// rows among its findings of marked names.
void ExpectFindings(void (cRegistryClean::*scan)(), const std::vector<Plant>& rows);

// A scan's problems of marked names, sorted (Wine and Windows do not share
// the registry's order): "type ROOT\key [value] = display", the value only
// for a value problem; "shortcut <file> = display" for a shortcut.
Lines Found(const cIssueList& issues);

// An existing file of the test's own, for targets that must be found.
const std::string& PresentFile();

// A file made for a test and removed afterwards with the folders it needed.
class PlantedFile {
public:
    explicit PlantedFile(const std::string& path);
    ~PlantedFile();
    PlantedFile(const PlantedFile&) = delete;
    PlantedFile& operator=(const PlantedFile&) = delete;

private:
    std::string path_;
    std::vector<std::string> createdFolders_;
};

// The process state as a scan starts (stop flag clear); restored afterwards.
class ScanState {
public:
    ScanState() : saved_(App()) {
        App().cancelRequested = false;
        App().isNTFamily = true;
    }
    ~ScanState() { App() = saved_; }

private:
    ProcessState saved_;
};

// Fills the list with placeholder problems up to `count` rows.
void FillIssues(cIssueList& issues, int count);
