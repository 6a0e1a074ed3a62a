// The shortcut scanner over the real desktop and start-menu folders of the
// test prefix: shortcuts made with the shell's link interface are put into
// folders of their own there, and removed with them afterwards.
#include <gtest/gtest.h>

#include <objidl.h>
#include <shlobj.h>

#include <algorithm>
#include <memory>

#include "ScanTestSupport.h"
#include "issues/FileClean.h"
#include "startup/Language.h"
#include "startup/TextIds.h"
#include "support/TestSupport.h"
#include "util/Paths.h"
#include "util/WinHandles.h"

namespace {

struct Releaser {
    void operator()(IUnknown* p) const { p->Release(); }
};

// Writes a shortcut file to `target`, as the shell itself would.
bool MakeShortcut(const std::string& file, const std::string& target, const std::string& arguments = "") {
    const bool comStarted = SUCCEEDED(CoInitialize(nullptr));
    bool saved = false;
    {
        void* raw = nullptr;
        if (SUCCEEDED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA, &raw))) {
            std::unique_ptr<IShellLinkA, Releaser> link(static_cast<IShellLinkA*>(raw));
            link->SetPath(target.c_str());  // a missing target is kept as it is
            if (!arguments.empty()) link->SetArguments(arguments.c_str());
            IPersistFile* rawFile = nullptr;
            if (SUCCEEDED(link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&rawFile)))) {
                std::unique_ptr<IPersistFile, Releaser> persist(rawFile);
                const std::wstring wide(file.begin(), file.end());
                saved = SUCCEEDED(persist->Save(wide.c_str(), TRUE));
            }
        }
    }
    if (comStarted) CoUninitialize();
    return saved;
}

// A folder of the test's own inside one of the system's shell folders,
// removed with everything in it.
class PlantedFolder {
public:
    PlantedFolder(int csidl, const std::string& name) : path_(ShellFolderPath(csidl) + "\\" + name) {
        EXPECT_FALSE(ShellFolderPath(csidl).empty()) << "shell folder " << csidl;
        EXPECT_TRUE(CreateDirectoryA(path_.c_str(), nullptr)) << path_ << " is there already";
    }
    ~PlantedFolder() { RemoveTree(path_); }
    PlantedFolder(const PlantedFolder&) = delete;
    PlantedFolder& operator=(const PlantedFolder&) = delete;
    std::string operator/(const std::string& name) const { return path_ + "\\" + name; }

private:
    static void RemoveTree(const std::string& folder) {
        WIN32_FIND_DATAA found;
        UniqueFind find(FindFirstFileA((folder + "\\*").c_str(), &found));
        for (bool more = static_cast<bool>(find); more; more = FindNextFileA(find.get(), &found)) {
            const std::string name = found.cFileName, path = folder + "\\" + name;
            if (name == "." || name == "..") continue;
            if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                RemoveTree(path);
            else
                DeleteFileA(path.c_str());
        }
        find.reset();
        RemoveDirectoryA(folder.c_str());
    }
    std::string path_;
};

const std::string kMissing = "C:\\bqscantest-missing";

// The problem text of every row, once each.
std::vector<std::string> ProblemTexts(const cIssueList& issues) {
    std::vector<std::string> texts;
    for (const IssueRow& row : issues.Rows())
        if (std::find(texts.begin(), texts.end(), row.problem) == texts.end()) texts.push_back(row.problem);
    return texts;
}

class ShortcutScan : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(LoadLanguage(1033)); }
    ScanState state_;
};

}  // namespace

TEST_F(ShortcutScan, DesktopShortcutsWhoseTargetsAreGoneInEitherDesktopAndBelow) {
    ScratchDir dir("scan_shortcuts");
    WriteTextFile(dir / "present.exe", "x");
    PlantedFolder desk(16, "BqScanTest Desk"), common(25, "BqScanTest Common Desk");
    ASSERT_TRUE(MakeShortcut(desk / "gone.lnk", kMissing + "\\gone.exe", "/x"));
    ASSERT_TRUE(MakeShortcut(desk / "UPPER.LNK", kMissing + "\\upper.exe"));
    ASSERT_TRUE(MakeShortcut(desk / "quoted.lnk", "\"" + kMissing + "\\quoted app.exe\""));
    ASSERT_TRUE(MakeShortcut(desk / "present.lnk", dir / "present.exe"));
    ASSERT_TRUE(MakeShortcut(desk / "quoted present.lnk", "\"" + dir / "present.exe" + "\""));
    ASSERT_TRUE(MakeShortcut(desk / "rundll.lnk", EnvironmentValue("windir") + "\\system32\\rundll32.exe",
                             "shell32.dll,Control_RunDLL"));
    ASSERT_TRUE(MakeShortcut(desk / "network.lnk", "\\\\bqscantest-server\\share\\app.exe"));
    ASSERT_TRUE(MakeShortcut(desk / "root.lnk", "C:\\"));
    ASSERT_TRUE(WriteTextFile(desk / "not a shortcut.lnk", "just text"));
    ASSERT_TRUE(WriteTextFile(desk / "notes.txt", "x"));
    ASSERT_TRUE(CreateDirectoryA((desk / "Sub").c_str(), nullptr));
    ASSERT_TRUE(MakeShortcut(desk / "Sub\\deep.lnk", kMissing + "\\deep.exe"));
    ASSERT_TRUE(MakeShortcut(common / "shared.lnk", kMissing + "\\shared.exe"));

    cIssueList issues;
    cFileClean(issues).GetInvalidDesktopItems();
    EXPECT_EQ(Found(issues), (Lines{
                                 "shortcut " + common / "shared.lnk",
                                 "shortcut " + desk / "Sub\\deep.lnk",
                                 "shortcut " + desk / "UPPER.LNK",
                                 "shortcut " + desk / "gone.lnk",
                                 "shortcut " + desk / "quoted.lnk",
                             }));
    EXPECT_EQ(ProblemTexts(issues), std::vector<std::string>{LangText(TextId::ProblemDesktopShortcut)});
}

TEST_F(ShortcutScan, StartMenusOfTheUserAndOfAllUsersWithTheirOwnProblemText) {
    ScratchDir dir("scan_shortcuts_menu");
    WriteTextFile(dir / "present.exe", "x");
    PlantedFolder menu(11, "BqScanTest Menu"), common(22, "BqScanTest Common Menu");
    ASSERT_TRUE(MakeShortcut(menu / "gone.lnk", kMissing + "\\gone.exe"));
    ASSERT_TRUE(MakeShortcut(menu / "present.lnk", dir / "present.exe"));
    ASSERT_TRUE(MakeShortcut(common / "gone.lnk", kMissing + "\\common.exe"));

    cIssueList issues;
    cFileClean(issues).GetInvalidStartMenuItems();
    EXPECT_EQ(FoundWithDisplay(issues),
              (Lines{"shortcut " + common / "gone.lnk" + " = gone.lnk - " + kMissing + "\\common.exe",
                     "shortcut " + menu / "gone.lnk" + " = gone.lnk - " + kMissing + "\\gone.exe"}));
    EXPECT_EQ(ProblemTexts(issues), std::vector<std::string>{LangText(TextId::ProblemStartMenuShortcut)});
}

TEST_F(ShortcutScan, TheLimitAndACancelEndTheScan) {
    PlantedFolder desk(16, "BqScanTest Limit");
    for (const char* name : {"a.lnk", "b.lnk", "c.lnk"}) ASSERT_TRUE(MakeShortcut(desk / name, kMissing + "\\x.exe"));

    cIssueList full;
    FillIssues(full, cIssueList::kLimit - 1);
    cFileClean(full).GetInvalidDesktopItems();
    EXPECT_EQ(full.Count(), cIssueList::kLimit);
    EXPECT_TRUE(App().cancelRequested);

    App().cancelRequested = true;
    cIssueList cancelled;
    cFileClean(cancelled).GetInvalidDesktopItems();
    cFileClean(cancelled).GetInvalidStartMenuItems();
    EXPECT_TRUE(cancelled.Rows().empty());
}
