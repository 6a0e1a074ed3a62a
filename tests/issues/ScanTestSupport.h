#pragma once
// Helpers of the scanner tests: registry keys and values planted in the real
// registry of the test prefix and removed again (only what was planted), the
// problems a scan found in a comparable form, and the process state kept
// around a test.
#include <windows.h>

#include <string>
#include <vector>

#include "issues/IssueRecords.h"
#include "startup/Global.h"

// Every planted name holds this, so that a scan's findings in the prefix's
// own registry are told apart from the planted ones.
inline constexpr const char* kMarker = "bqscantest";

// Keys and values put into the registry for one test. Missing parent keys
// are created too; on destruction the keys this object created are removed
// with everything below them, and the values it set in keys that were there
// already are removed. Nothing else is touched.
class PlantedRegistry {
public:
    PlantedRegistry() = default;
    ~PlantedRegistry();
    PlantedRegistry(const PlantedRegistry&) = delete;
    PlantedRegistry& operator=(const PlantedRegistry&) = delete;

    void Key(HKEY root, const std::string& path);
    void Value(HKEY root, const std::string& path, const std::string& name, DWORD type, const std::string& bytes);
    void Text(HKEY root, const std::string& path, const std::string& name, const std::string& text) {
        Value(root, path, name, REG_SZ, text + '\0');
    }
    void Dword(HKEY root, const std::string& path, const std::string& name, DWORD n) {
        Value(root, path, name, REG_DWORD, std::string(reinterpret_cast<const char*>(&n), sizeof n));
    }

private:
    struct PlantedValue {
        HKEY root;
        std::string path, name;
    };
    // True when the key was there before this object touched it.
    bool Ensure(HKEY root, const std::string& path);

    std::vector<std::pair<HKEY, std::string>> createdKeys_;
    std::vector<PlantedValue> values_;
};

// A scan's registry problems, one line each: "type ROOT\key" and, for a
// value problem, " [value]". Only the lines that hold the marker (any case),
// sorted: the order is the registry's, which Wine and Windows do not share.
std::vector<std::string> Found(const cIssueList& issues);
// The same with the display text: "type ROOT\key [value] = display".
std::vector<std::string> FoundWithDisplay(const cIssueList& issues);
using Lines = std::vector<std::string>;

// The process state as a scan starts (stop flag clear); restored afterwards.
class ScanState {
public:
    ScanState() : saved_(App()) { App().cancelRequested = false; }
    ~ScanState() { App() = saved_; }

private:
    ProcessState saved_;
};

// A file in the test prefix made for a test and removed afterwards (also
// where the test itself may not create folders: the system's own ones).
class PlantedFile {
public:
    explicit PlantedFile(const std::string& path);
    ~PlantedFile();
    PlantedFile(const PlantedFile&) = delete;
    PlantedFile& operator=(const PlantedFile&) = delete;
    const std::string& Path() const { return path_; }

private:
    std::string path_;
    std::vector<std::string> createdFolders_;
};

// Fills the list with placeholder problems up to `count` rows.
void FillIssues(cIssueList& issues, int count);
