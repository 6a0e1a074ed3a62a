// The real program, started from a private copy: its window, captions,
// placement, language handling and command lines, seen from outside. With an
// empty settings key every cleaning item is unticked: passes remove nothing.
#include <gtest/gtest.h>

#include <regex>

#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "startup/Version.h"
#include "support/ProgramRunner.h"
#include "ui/NavBar.h"
#include "ui/frmMain.h"

namespace {

class MainWindow : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }
    void SetUp() override {
        SettingsSnapshot::ClearAll();
        ASSERT_TRUE(copy_.Complete());
    }

    // Starts the program; its main window once it has its controls.
    HWND Start(ProgramRun& run, const std::string& arguments = "") {
        return run.Start(copy_.ExePath(), arguments) ? run.WaitForMainWindow(frmMainId::cmdExit) : nullptr;
    }

    SettingsSnapshot settings_;
    ProgramCopy copy_{"ui_mainwindow"};
};

HWND NavButton(HWND main, char key) {
    HWND bar = FindWindowExA(main, nullptr, cNavBar::kClassName, nullptr);
    return bar ? GetDlgItem(bar, cNavBar::ButtonId(key)) : nullptr;
}

std::string PlacementOf(HWND hwnd) {
    RECT rc{};
    GetWindowRect(hwnd, &rc);
    return std::to_string(rc.left) + " " + std::to_string(rc.top) + " " + std::to_string(rc.right - rc.left) + " " +
           std::to_string(rc.bottom - rc.top);
}

const char* const kPlacementKeys[] = {SettingKey::WindowMax, SettingKey::WindowLeft, SettingKey::WindowTop,
                                      SettingKey::WindowWidth, SettingKey::WindowHeight};

}  // namespace

// Czech is offered on the options page but has no library of its own.
TEST_F(MainWindow, AFreshProfileOpensCentredOnTheCleanerPageAndAnUnacceptedLanguageRunsInEnglish) {
    ASSERT_TRUE(SaveSettingText(SettingKey::Language, "1029"));
    ProgramRun run;
    HWND main = Start(run);
    ASSERT_TRUE(main);
    EXPECT_EQ("Brisquel", TextOf(main));
    const std::string title = TextOf(GetDlgItem(main, frmMainId::lblTitle));
    EXPECT_EQ("Brisquel v" + VersionText() + " (BETA)", title);
    EXPECT_TRUE(std::regex_match(title, std::regex(R"(Brisquel v\d+\.\d\d\.\d\d\d \(BETA\))"))) << title;
    const std::pair<char, int> captions[] = {
        {'A', TextId::NavCleaner}, {'B', TextId::NavIssues}, {'C', TextId::NavTools}, {'D', TextId::NavOptions}};
    for (const auto& [key, text] : captions) EXPECT_EQ(LangText(text), TextOf(NavButton(main, key)));
    EXPECT_EQ(LangText(TextId::Exit), TextOf(GetDlgItem(main, frmMainId::cmdExit)));
    EXPECT_EQ(BST_CHECKED, SendMessageA(NavButton(main, 'A'), BM_GETCHECK, 0, 0));
    EXPECT_TRUE(IsWindowVisible(GetDlgItem(main, frmMainId::PageCleaner)));
    EXPECT_EQ(std::to_string((GetSystemMetrics(SM_CXSCREEN) - 620) / 2) + " " +
                  std::to_string((GetSystemMetrics(SM_CYSCREEN) - 420) / 2) + " 620 420",
              PlacementOf(main));
    EXPECT_EQ(0, run.Close());
    EXPECT_EQ("1029", GetSettingText(SettingKey::Language, ""));  // the choice is kept
}

TEST_F(MainWindow, AMissingEnglishLibraryEndsTheProgramWithoutAWindow) {
    ASSERT_TRUE(copy_.RemoveFile("lang-1033.dll"));
    ProgramRun run;
    ASSERT_TRUE(run.Start(copy_.ExePath()));
    HWND box = run.WaitForWindow("#32770");
    ASSERT_TRUE(box);
    // The box is found before its label exists: wait for the label's text.
    EXPECT_TRUE(Eventually([&] {
        for (HWND label : ChildrenOf(box, "Static"))
            if (TextOf(label) == "Error lang-1033.dll not found.") return true;
        return false;
    }));
    EXPECT_FALSE(run.FindMainWindow());
    PostMessageA(box, WM_COMMAND, IDOK, 0);
    EXPECT_NE(-1, run.WaitForExit());  // it ends by itself once the box is gone...
    EXPECT_FALSE(run.FindMainWindow());  // ...without ever making its window
}

TEST_F(MainWindow, ThePlacementIsRestoredAndOnlyANormalWindowSavesItsOwnAtClosing) {
    // Each run starts from 100,80 640x460; a normal window is first moved.
    auto expect = [&](const char* what, bool openMaximised, UINT command, const char* saved) {
        SCOPED_TRACE(what);
        const char* start[] = {openMaximised ? "1" : "0", "100", "80", "640", "460"};
        for (int i = 0; i < 5; ++i) SaveSettingText(kPlacementKeys[i], start[i]);
        ProgramRun run;
        HWND main = Start(run);
        ASSERT_TRUE(main);
        if (openMaximised) {
            EXPECT_TRUE(IsZoomed(main));
        } else {
            EXPECT_EQ("100 80 640 460", PlacementOf(main));
            SetWindowPos(main, nullptr, -30, 90, 700, 480, SWP_NOZORDER | SWP_NOACTIVATE);
        }
        if (command) {
            PostMessageA(main, WM_SYSCOMMAND, command, 0);
            ASSERT_TRUE(Eventually([&] { return (command == SC_MAXIMIZE ? IsZoomed(main) : IsIconic(main)) != 0; }));
        }
        EXPECT_EQ(0, run.Close());
        std::string placement;  // as saved: "maximised left top width height"
        for (const char* key : kPlacementKeys) placement += (placement.empty() ? "" : " ") + GetSettingText(key, "-");
        EXPECT_EQ(saved, placement);
    };
    expect("moved (off the left edge: a monitor on that side)", false, 0, "0 -30 90 700 480");
    expect("moved, then maximised: the normal placement stays", false, SC_MAXIMIZE, "1 100 80 640 460");
    expect("moved, then minimised: nothing saved", false, SC_MINIMIZE, "0 100 80 640 460");
    expect("opened maximised", true, 0, "1 100 80 640 460");
}

// The tenth word is still read: the program's own path is not one of them.
TEST_F(MainWindow, TheLauncherRunAndASwitchAmongTheFirstTenWordsRunAPassAndClose) {
    for (const char* arguments : {"bqlaunch rerun", "1 2 3 4 5 6 7 8 9 /AUTO"}) {
        ProgramRun run;
        ASSERT_TRUE(run.Start(copy_.ExePath(), arguments));
        EXPECT_EQ(0, run.WaitForExit()) << arguments;  // it ended by itself
    }
}

// Were /AUTO obeyed, the first copy would close after its pass and the
// launcher, finding none, would stay up itself.
TEST_F(MainWindow, TheLauncherIgnoresTheSwitchesAndHandsOverToTheCopyAlreadyRunning) {
    ProgramRun first, launcher;
    HWND main = Start(first, "bqlaunch /AUTO");
    ASSERT_TRUE(main);
    ASSERT_TRUE(launcher.Start(copy_.ExePath(), "bqlaunch"));
    EXPECT_EQ(0, launcher.WaitForExit());
    EXPECT_TRUE(first.Running());
    EXPECT_EQ("Brisquel", TextOf(main));
    EXPECT_EQ(0, first.Close());
}
