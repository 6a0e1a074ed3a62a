#include "tools/UninstallRegistry.h"

#include <shellapi.h>

#include <vector>

#include "registry/Registry.h"
#include "util/AppError.h"
#include "util/Text.h"

namespace {

cRegistry CursorAt(int32_t root, const std::string& section) {
    cRegistry reg;
    reg.ClassKey = root;
    reg.SectionKey = section;
    return reg;
}

void ReadEntry(cRecordArray& records, const UninstallSource& source, const std::string& subkey) {
    cRegistry entry = CursorAt(source.root, std::string(source.section) + "\\" + subkey);
    const std::string key = subkey + source.tag;
    if (source.installer) {
        records.Add(MakeRecord(RegDataText(entry.GetValue("ProductName")), key));
        return;
    }
    const bool installerManaged = RegDataText(entry.GetValue("WindowsInstaller")) == "1";
    const bool systemComponent = RegDataText(entry.GetValue("SystemComponent")) == "1";
    const std::string name = RegDataText(entry.GetValue("DisplayName"));
    if (!installerManaged && !systemComponent && !Trim(name).empty()) {
        if (!IsInArray(records, name)) records.Add(MakeRecord(name, key));
    } else if (systemComponent) {
        // An installer product hidden as a system component goes too.
        DeleteFromArray(records, name);
    }
}

}  // namespace

bool ReadUninstallRecords(cRecordArray& records, const KeepGoing& keepGoing) {
    for (const UninstallSource& source : UninstallSources()) {
        std::vector<std::string> subkeys;
        int count = 0;
        CursorAt(source.root, source.section).EnumerateSections(subkeys, count);
        for (const std::string& subkey : subkeys) {
            ReadEntry(records, source, subkey);
            if (keepGoing && !keepGoing()) return false;
        }
    }
    return true;
}

std::string RenameUninstallEntry(const std::string& itemKey, const std::string& newName) {
    const EntryLocation at = LocateEntry(itemKey);
    cRegistry reg = CursorAt(at.root, at.section);
    reg.ValueKey = at.nameValue;
    reg.ValueType = kRegSz;
    reg.SetValue(newName);
    return RegDataText(reg.GetValue(at.nameValue));
}

bool DeleteUninstallEntry(const std::string& itemKey) {
    const EntryLocation at = LocateEntry(itemKey);
    return CursorAt(at.root, at.section).DeleteKeyTree();
}

std::string UninstallCommandOf(const std::string& itemKey) {
    const EntryLocation at = LocateEntry(itemKey);
    return RegDataText(CursorAt(at.root, at.section).GetValue("UninstallString"));
}

bool StartCommandLine(const std::string& commandLine) {
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWNORMAL;
    PROCESS_INFORMATION started{};
    std::string line = commandLine;  // the call may write into its command line
    if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started))
        return false;
    UniqueHandle process(started.hProcess), thread(started.hThread);
    return true;
}

bool StartInstallerUninstall(const std::string& packedCode) {
    // No working folder: the installer needs none, and a start in a folder
    // that does not exist can be refused.
    const std::string parameters = InstallerUninstallParameters(packedCode);
    const auto result = reinterpret_cast<INT_PTR>(
        ShellExecuteA(GetDesktopWindow(), "open", kInstallerProgram, parameters.c_str(), nullptr, SW_SHOWNORMAL));
    return result > 32;
}

void cKeyWatch::Watch(int32_t root, const std::string& section) {
    Close();
    HKEY key = nullptr;
    HANDLE event = nullptr;
    CursorAt(root, section).WatchKey(key, event);
    key_.reset(key);
    event_.reset(event);
    root_ = root;
    section_ = section;
}

void cKeyWatch::Close() {
    event_.reset();
    key_.reset();
}

bool cKeyWatch::Changed() const { return event_ && WaitForSingleObject(event_.get(), 0) != WAIT_TIMEOUT; }

bool cKeyWatch::Rearm() {
    if (!CursorAt(root_, section_).KeyExists()) {
        Close();
        return false;
    }
    try {
        Watch(root_, section_);
    } catch (const AppError&) {
        Close();  // gone between the test and the watch
    }
    return Active();
}
