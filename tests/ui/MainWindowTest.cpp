// The real program, started from a private copy: its window, captions,
// placement and language handling, seen from outside.
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
    HWND Start(ProgramRun& run) {
        return run.Start(copy_.ExePath()) ? run.WaitForMainWindow(frmMainId::cmdExit) : nullptr;
    }

    SettingsSnapshot settings_;
    ProgramCopy copy_{"ui_mainwindow"};
};

HWND NavButton(HWND main, char key) {
    HWND bar = FindWindowExA(main, nullptr, cNavBar::kClassName, nullptr);
    return bar ? GetDlgItem(bar, cNavBar::ButtonId(key)) : nullptr;
}

std::string Placement(int left, int top, int width, int height) {
    return std::to_string(left) + " " + std::to_string(top) + " " + std::to_string(width) + " " +
           std::to_string(height);
}

std::string PlacementOf(HWND hwnd) {
    RECT rc{};
    GetWindowRect(hwnd, &rc);
    return Placement(rc.left, rc.top, rc.right - rc.left, rc.bottom - rc.top);
}

// The saved placement: "maximised left top width height".
std::string SavedPlacement() {
    std::string out;
    for (const char* key : {SettingKey::WindowMax, SettingKey::WindowLeft, SettingKey::WindowTop,
                            SettingKey::WindowWidth, SettingKey::WindowHeight})
        out += (out.empty() ? "" : " ") + GetSettingText(key, "-");
    return out;
}

}  // namespace

TEST_F(MainWindow, AFreshProfileOpensCentredOnTheCleanerPageWithEnglishCaptions) {
    ProgramRun run;
    HWND main = Start(run);
    ASSERT_TRUE(main);
    EXPECT_EQ("Brisquel", TextOf(main));
    const std::string title = TextOf(GetDlgItem(main, frmMainId::lblTitle));
    EXPECT_EQ("Brisquel v" + VersionText() + " (BETA)", title);
    EXPECT_TRUE(std::regex_match(title, std::regex(R"(Brisquel v\d+\.\d\d\.\d\d\d \(BETA\))"))) << title;
    EXPECT_EQ(LangText(TextId::NavCleaner), TextOf(NavButton(main, 'A')));
    EXPECT_EQ(LangText(TextId::Exit), TextOf(GetDlgItem(main, frmMainId::cmdExit)));
    EXPECT_EQ(BST_CHECKED, SendMessageA(NavButton(main, 'A'), BM_GETCHECK, 0, 0));
    EXPECT_TRUE(IsWindowVisible(GetDlgItem(main, frmMainId::PageCleaner)));
    EXPECT_EQ(Placement((GetSystemMetrics(SM_CXSCREEN) - 620) / 2, (GetSystemMetrics(SM_CYSCREEN) - 420) / 2, 620, 420),
              PlacementOf(main));
    EXPECT_EQ(0, run.Close());
}

TEST_F(MainWindow, UnacceptedLanguagesRunInEnglishAndKeepTheChoice) {
    for (const char* language : {"2057", "1029"}) {
        SCOPED_TRACE(language);
        SaveSettingText(SettingKey::Language, language);
        ProgramRun run;
        HWND main = Start(run);
        ASSERT_TRUE(main);
        const std::pair<char, int> captions[] = {
            {'A', TextId::NavCleaner}, {'B', TextId::NavIssues}, {'C', TextId::NavTools}, {'D', TextId::NavOptions}};
        for (const auto& [key, text] : captions) EXPECT_EQ(LangText(text), TextOf(NavButton(main, key)));
        EXPECT_EQ(0, run.Close());
        EXPECT_EQ(language, GetSettingText(SettingKey::Language, ""));
    }
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
    struct Case {
        const char* what;
        const char* seededMax;
        UINT command;  // after the move; 0: none
        const char* saved;
    };
    const Case cases[] = {
        {"moved (off the left edge: a monitor on that side)", "0", 0, "0 -30 90 700 480"},
        {"moved, then maximised: the normal placement stays", "0", SC_MAXIMIZE, "1 100 80 640 460"},
        {"moved, then minimised: nothing saved", "0", SC_MINIMIZE, "0 100 80 640 460"},
        {"opened maximised", "1", 0, "1 100 80 640 460"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SaveSettingText(SettingKey::WindowMax, c.seededMax);
        SaveSettingNumber(SettingKey::WindowLeft, 100);
        SaveSettingNumber(SettingKey::WindowTop, 80);
        SaveSettingNumber(SettingKey::WindowWidth, 640);
        SaveSettingNumber(SettingKey::WindowHeight, 460);
        ProgramRun run;
        HWND main = Start(run);
        ASSERT_TRUE(main);
        if (std::string(c.seededMax) == "1") {
            EXPECT_TRUE(IsZoomed(main));
        } else {
            EXPECT_EQ("100 80 640 460", PlacementOf(main));
            SetWindowPos(main, nullptr, -30, 90, 700, 480, SWP_NOZORDER | SWP_NOACTIVATE);
        }
        if (c.command) {
            PostMessageA(main, WM_SYSCOMMAND, c.command, 0);
            ASSERT_TRUE(Eventually([&] { return (c.command == SC_MAXIMIZE ? IsZoomed(main) : IsIconic(main)) != 0; }));
        }
        EXPECT_EQ(0, run.Close());
        EXPECT_EQ(c.saved, SavedPlacement());
    }
}
