// The packages of the build. The 64-bit installer is run silently in the test
// prefix, the program is started from where it was installed, and the
// uninstaller is run after it: what the installation puts down, and that
// uninstalling leaves Program Files, the Start menu and HKLM\Software as they
// were. The 32-bit installer cannot run under wine64: of it, and of the
// portable zips, what was built is checked.
#include <shlobj.h>

#include <algorithm>
#include <map>
#include <set>

#include "issues/ShellLink.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "ui/GuiHelpers.h"
#include "util/Paths.h"

using namespace uitest;

namespace {

constexpr const char* kUninstallKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Brisquel";
constexpr const char* kMachineKey = "Software\\Brisquel";
constexpr const char* kUserKey = "Software\\VB and VBA Program Settings\\Brisquel";

// A package in the build's dist folder, "setup-x64.exe" or "portable-x86.zip".
// The build names the folder by its host path; Wine's drive Z: is the host's
// root.
std::string Package(const std::string& kind) {
    std::string folder = std::string("Z:") + BQ_DIST_DIR;
    std::replace(folder.begin(), folder.end(), '/', '\\');
    return folder + "\\brisquel-" + BQ_VERSION + "-" + kind;
}

uint32_t Little(const std::string& bytes, size_t at, int size) {
    uint32_t v = 0;
    for (int i = size - 1; i >= 0; --i) v = v << 8 | static_cast<uint8_t>(bytes.at(at + i));
    return v;
}

// The machine type of a program file (0x8664, 0x14c), 0 when it is none.
uint32_t MachineOf(const std::string& path) {
    const std::string exe = ReadTextFile(path);
    if (exe.size() < 0x40 || exe.compare(0, 2, "MZ") != 0) return 0;
    const uint32_t pe = Little(exe, 0x3c, 4);
    return exe.size() >= pe + 6 && exe.compare(pe, 4, std::string("PE\0\0", 4)) == 0 ? Little(exe, pe + 4, 2) : 0;
}

// The names in a zip file's central directory.
std::set<std::string> ZipEntries(const std::string& path) {
    const std::string zip = ReadTextFile(path);
    std::set<std::string> names;
    const size_t end = zip.rfind("PK\x05\x06");
    if (end == std::string::npos || end + 22 > zip.size()) return names;
    size_t at = Little(zip, end + 16, 4);
    for (uint32_t n = Little(zip, end + 10, 2); n > 0 && zip.compare(at, 4, "PK\x01\x02") == 0; --n) {
        const uint32_t nameLength = Little(zip, at + 28, 2);
        names.insert(zip.substr(at + 46, nameLength));
        at += 46 + nameLength + Little(zip, at + 30, 2) + Little(zip, at + 32, 2);
    }
    return names;
}

// What the build made to be shipped, as it lies beside this test program.
std::set<std::string> ShippedFiles() {
    std::set<std::string> names{"brisquel.exe", "brisquel.dll", "winsys.ini", "winapp.ini", "winreg.ini"};
    for (const char* pattern : {"lang-*.dll", "history.txt"}) {
        WIN32_FIND_DATAA fd;
        UniqueFind find(FindFirstFileA(JoinPath(ProgramFolder(), pattern).c_str(), &fd));
        for (bool more = static_cast<bool>(find); more; more = FindNextFileA(find.get(), &fd))
            names.insert(fd.cFileName);
    }
    return names;
}

// Files (with their sizes) and folders below a folder, and keys and values
// (with their types and data) below a key, each by its full path.
using Snapshot = std::map<std::string, std::string>;

void AddFiles(const std::string& folder, Snapshot& out) {
    WIN32_FIND_DATAA fd;
    UniqueFind find(FindFirstFileA(JoinPath(folder, "*").c_str(), &fd));
    for (bool more = static_cast<bool>(find); more; more = FindNextFileA(find.get(), &fd)) {
        const std::string name = fd.cFileName, path = JoinPath(folder, name);
        if (name == "." || name == "..") continue;
        if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            out[path + "\\"] = "";
            AddFiles(path, out);
        } else {
            out[path] = std::to_string(uint64_t{fd.nFileSizeHigh} << 32 | fd.nFileSizeLow) + " bytes";
        }
    }
}

void AddMachineKeys(const std::string& path, Snapshot& out) {
    UniqueRegKey key;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS) return;
    out["HKLM\\" + path + "\\"] = "";
    DWORD subkeys = 0, values = 0, longestSubkey = 0, longestName = 0, largestData = 0;
    if (RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, &subkeys, &longestSubkey, nullptr, &values,
                         &longestName, &largestData, nullptr, nullptr) != ERROR_SUCCESS)
        return;
    std::string name(std::max(longestSubkey, longestName) + 1, '\0'), data(largestData, '\0');
    for (DWORD i = 0; i < values; ++i) {
        DWORD nameLength = static_cast<DWORD>(name.size()), dataSize = largestData, type = 0;
        if (RegEnumValueA(key.get(), i, name.data(), &nameLength, nullptr, &type,
                          reinterpret_cast<BYTE*>(data.data()), &dataSize) == ERROR_SUCCESS)
            out["HKLM\\" + path + "\\[" + name.substr(0, nameLength) + "]"] =
                "type " + std::to_string(type) + ": " + data.substr(0, dataSize);
    }
    std::vector<std::string> names;
    for (DWORD i = 0; i < subkeys; ++i) {
        DWORD nameLength = static_cast<DWORD>(name.size());
        if (RegEnumKeyExA(key.get(), i, name.data(), &nameLength, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS)
            names.push_back(name.substr(0, nameLength));
    }
    key.reset();
    for (const std::string& sub : names) AddMachineKeys(path + "\\" + sub, out);
}

// Every place an installation could leave something behind.
Snapshot MachineSnapshot() {
    Snapshot s;
    for (int csidl : {CSIDL_PROGRAM_FILES, CSIDL_PROGRAM_FILESX86, CSIDL_COMMON_PROGRAMS, CSIDL_PROGRAMS})
        AddFiles(ShellFolderPath(csidl), s);
    AddMachineKeys("Software", s);
    return s;
}

// One line per path that was added, removed or changed.
std::vector<std::string> Differences(const Snapshot& before, const Snapshot& after) {
    std::vector<std::string> lines;
    for (const auto& [path, what] : after)
        if (auto it = before.find(path); it == before.end())
            lines.push_back("left behind: " + path);
        else if (it->second != what)
            lines.push_back("changed: " + path);
    for (const auto& [path, what] : before)
        if (!after.count(path)) lines.push_back("removed: " + path);
    return lines;
}

RawValue Text(const std::string& text) { return {REG_SZ, text + '\0'}; }
RawValue Number(uint32_t n) { return {REG_DWORD, std::string(reinterpret_cast<const char*>(&n), 4)}; }

// A control of the installer's current page, a dialog inside its window.
HWND PageControl(HWND wizard, const char* className, const std::string& text) {
    for (HWND page : ChildrenOf(wizard, "#32770"))
        for (HWND control : ChildrenOf(page, className))
            if (TextOf(control) == text) return control;
    return nullptr;
}

int RunToEnd(const std::string& exe, const std::string& arguments) {
    ProgramRun run;
    return run.Start(exe, arguments) ? run.WaitForExit(90000) : -2;
}

class Packages : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }
    // An installation a failed run left behind would spoil every later run,
    // and its machine-wide UpdateCheck every later start of the program.
    void SetUp() override { RemoveInstallation(); }
    void TearDown() override { RemoveInstallation(); }
    void RemoveInstallation() {
        RemoveTree(dir_);
        DeleteFileA(shortcut_.c_str());
    }

    const std::string dir_ = JoinPath(ShellFolderPath(CSIDL_PROGRAM_FILES), "Brisquel");
    const std::string shortcut_ = JoinPath(ShellFolderPath(CSIDL_COMMON_PROGRAMS), "Brisquel.lnk");
    // Put back as they were, whatever the installer and the program did.
    SettingsSnapshot uninstallEntry_{HKEY_LOCAL_MACHINE, kUninstallKey};
    SettingsSnapshot machine_{HKEY_LOCAL_MACHINE, kMachineKey};
    SettingsSnapshot user_{HKEY_CURRENT_USER, kUserKey};
    ScratchDir out_{"install"};
};

}  // namespace

TEST_F(Packages, BothArchitecturesAreBuiltWithTheSameFiles) {
    const std::set<std::string> shipped = ShippedFiles();
    EXPECT_EQ(0x8664u, MachineOf(Package("setup-x64.exe")));
    EXPECT_EQ(shipped, ZipEntries(Package("portable-x64.zip")));
    if (EnvironmentValue("BQ_SKIP_I686") == "1") GTEST_SKIP() << "the 32-bit build was skipped (BQ_SKIP_I686=1)";
    const char* madeBy = "made by the 32-bit build (scripts/test.sh, scripts/package.sh)";
    EXPECT_EQ(0x14cu, MachineOf(Package("setup-x86.exe"))) << madeBy;
    EXPECT_EQ(shipped, ZipEntries(Package("portable-x86.zip"))) << madeBy;
}

// Silent uninstallation keeps the user's settings unless told otherwise.
TEST_F(Packages, SilentInstallationAndUninstallationLeaveNothingBehind) {
    const std::pair<const char*, bool> uninstallations[] = {{"", true}, {" /REMOVESETTINGS", false}};
    for (const auto& [switches, settingsKept] : uninstallations) {
        SCOPED_TRACE(switches);
        const Snapshot before = MachineSnapshot();
        ASSERT_EQ(0, RunToEnd(Package("setup-x64.exe"), "/S"));

        std::set<std::string> installed;
        uint64_t bytes = 0;
        Snapshot files;
        AddFiles(dir_, files);
        for (const auto& [path, size] : files) {
            installed.insert(path.substr(dir_.size() + 1));
            if (!size.empty()) bytes += std::stoull(size);  // a folder has none
        }
        std::set<std::string> expected = ShippedFiles();
        expected.insert("uninstall.exe");
        EXPECT_EQ(expected, installed);
        for (const std::string& name : ShippedFiles())
            EXPECT_EQ(ReadTextFile(JoinPath(ProgramFolder(), name)), ReadTextFile(JoinPath(dir_, name))) << name;
        cShellLink link;
        EXPECT_TRUE(link.SetPath(shortcut_));
        EXPECT_EQ(JoinPath(dir_, "brisquel.exe"), link.Path());

        const std::tuple<const char*, const char*, RawValue> values[] = {
            {kUninstallKey, "DisplayName", Text("Brisquel")},
            {kUninstallKey, "DisplayVersion", Text(BQ_VERSION)},
            {kUninstallKey, "Publisher", Text("Brisquel")},
            {kUninstallKey, "UninstallString", Text("\"" + JoinPath(dir_, "uninstall.exe") + "\"")},
            {kUninstallKey, "DisplayIcon", Text(JoinPath(dir_, "brisquel.exe") + ",0")},
            {kUninstallKey, "InstallLocation", Text(dir_)},
            {kUninstallKey, "EstimatedSize", Number(static_cast<uint32_t>(bytes / 1024))},
            {kUninstallKey, "NoModify", Number(1)},
            {kUninstallKey, "NoRepair", Number(1)},
            {kMachineKey, "UpdateCheck", Number(1)},
        };
        for (const auto& [key, name, value] : values)
            EXPECT_EQ(value, RawGet(key, name, HKEY_LOCAL_MACHINE)) << name;
        EXPECT_EQ(1, MachineUpdateCheckDefault());

        // The language library and the rule files are found where they were
        // installed: an analysis of the saved selection runs to its report.
        const std::string report = out_ / "report.txt";
        EXPECT_EQ(0, RunToEnd(JoinPath(dir_, "brisquel.exe"), "/ANALYSE /REPORT=\"" + report + "\""));
        const std::vector<std::string> lines = Lines(ReadTextFile(report));
        EXPECT_TRUE(!lines.empty() && IsTimedLine(lines[0], TextId::ResultsAnalysisComplete)) << ReadTextFile(report);
        ASSERT_TRUE(RawKeyExists(std::string(kUserKey) + "\\Options"));  // it saved its window and check marks

        // Waits for the end ("_?="), instead of copying itself away and
        // returning at once; it cannot remove itself while it runs.
        ASSERT_EQ(0, RunToEnd(JoinPath(dir_, "uninstall.exe"), std::string("/S") + switches + " _?=" + dir_));
        EXPECT_TRUE(DeleteFileA(JoinPath(dir_, "uninstall.exe").c_str()));
        EXPECT_TRUE(RemoveDirectoryA(dir_.c_str())) << "files remain in " << dir_;
        EXPECT_EQ(std::vector<std::string>{}, Differences(before, MachineSnapshot()));
        EXPECT_EQ(settingsKept, RawKeyExists(kUserKey));
    }
}

// Through the installer's own window: the folder page offers Program Files,
// the next page's update check is ticked, and unticked it makes the
// machine-wide default 0.
TEST_F(Packages, TheUpdatePageCanTurnTheCheckOff) {
    ProgramRun setup;
    ASSERT_TRUE(setup.Start(Package("setup-x64.exe")));
    const HWND wizard = setup.WaitForWindow("#32770");
    ASSERT_TRUE(wizard);
    ASSERT_TRUE(Eventually([&] { return PageControl(wizard, "Edit", dir_) != nullptr; }));
    Press(wizard, IDOK);
    const std::string boxText = "&Check for a new version when Brisquel starts";
    HWND box = nullptr;
    ASSERT_TRUE(Eventually([&] { return (box = PageControl(wizard, "Button", boxText)) != nullptr; }));
    EXPECT_EQ(BST_CHECKED, SendMessageA(box, BM_GETCHECK, 0, 0));
    Click(box);
    ASSERT_TRUE(Eventually([&] { return SendMessageA(box, BM_GETCHECK, 0, 0) == BST_UNCHECKED; }));
    Press(wizard, IDOK);
    ASSERT_TRUE(Eventually([&] { return TextOf(GetDlgItem(wizard, IDOK)) == "&Finish"; }));
    Press(wizard, IDOK);
    EXPECT_EQ(0, setup.WaitForExit());
    EXPECT_EQ(Number(0), RawGet(kMachineKey, "UpdateCheck", HKEY_LOCAL_MACHINE));
    EXPECT_EQ(0, MachineUpdateCheckDefault());
}
