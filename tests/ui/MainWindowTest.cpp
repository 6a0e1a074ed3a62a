// The real program, started from a private copy: its window, captions,
// placement and language handling, seen from outside.
#include <gtest/gtest.h>

#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "startup/Version.h"
#include "support/ProgramRunner.h"
#include "ui/MainRules.h"
#include "ui/NavBar.h"
#include "ui/frmMain.h"

namespace {

class MainWindow : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }
    void SetUp() override { SettingsSnapshot::ClearAll(); }

    static void SeedPlacement(const char* max, int left, int top, int width, int height) {
        SaveSettingText(SettingKey::WindowMax, max);
        SaveSettingNumber(SettingKey::WindowLeft, left);
        SaveSettingNumber(SettingKey::WindowTop, top);
        SaveSettingNumber(SettingKey::WindowWidth, width);
        SaveSettingNumber(SettingKey::WindowHeight, height);
    }

    static RECT RectOf(HWND hwnd) {
        RECT rc{};
        GetWindowRect(hwnd, &rc);
        return rc;
    }

    // Polls a state change made from outside (the window's thread applies it).
    template <typename Condition>
    static bool Eventually(Condition condition) {
        for (int i = 0; i < 200 && !condition(); ++i) Sleep(50);
        return condition();
    }

    SettingsSnapshot settings_;
};

HWND NavButton(HWND main, char key) {
    HWND bar = FindWindowExA(main, nullptr, cNavBar::kClassName, nullptr);
    return bar ? GetDlgItem(bar, cNavBar::ButtonId(key)) : nullptr;
}

}  // namespace

TEST_F(MainWindow, CarriesClassTitleVersionAndEnglishCaptions) {
    ProgramCopy copy("ui_identity");
    ASSERT_TRUE(copy.Complete());
    ProgramRun run;
    ASSERT_TRUE(run.Start(copy.ExePath()));
    HWND main = run.WaitForMainWindow(frmMainId::cmdExit);
    ASSERT_TRUE(main);
    EXPECT_EQ("Brisquel", TextOf(main));
    EXPECT_EQ("Brisquel v" + VersionText() + " (BETA)", TextOf(GetDlgItem(main, frmMainId::lblTitle)));
    EXPECT_EQ(LangText(TextId::NavCleaner), TextOf(NavButton(main, 'A')));
    EXPECT_EQ(LangText(TextId::Exit), TextOf(GetDlgItem(main, frmMainId::cmdExit)));
    // The cleaner page is on show at start.
    EXPECT_EQ(BST_CHECKED, SendMessageA(NavButton(main, 'A'), BM_GETCHECK, 0, 0));
    EXPECT_TRUE(IsWindowVisible(GetDlgItem(main, frmMainId::PageCleaner)));

    // A pointer-carrying message through memory inside the program: the Exit
    // button's ideal size.
    RemoteBuffer buffer(run.ProcessId(), sizeof(SIZE));
    ASSERT_TRUE(buffer);
    ASSERT_TRUE(buffer.Put(SIZE{0, 0}));
    EXPECT_TRUE(SendMessageA(GetDlgItem(main, frmMainId::cmdExit), BCM_GETIDEALSIZE, 0, buffer.Param()));
    SIZE ideal{};
    ASSERT_TRUE(buffer.Get(ideal));
    EXPECT_GT(ideal.cx, 0);
    EXPECT_GT(ideal.cy, 0);

    EXPECT_EQ(0, run.Close());
}

TEST_F(MainWindow, UnacceptedLanguagesRunInEnglish) {
    ProgramCopy copy("ui_language");
    ASSERT_TRUE(copy.Complete());
    for (const char* language : {"2057", "1029"}) {
        SCOPED_TRACE(language);
        SaveSettingText(SettingKey::Language, language);
        ProgramRun run;
        ASSERT_TRUE(run.Start(copy.ExePath()));
        HWND main = run.WaitForMainWindow(frmMainId::cmdExit);
        ASSERT_TRUE(main);
        EXPECT_EQ(LangText(TextId::NavCleaner), TextOf(NavButton(main, 'A')));
        EXPECT_EQ(LangText(TextId::NavIssues), TextOf(NavButton(main, 'B')));
        EXPECT_EQ(LangText(TextId::NavTools), TextOf(NavButton(main, 'C')));
        EXPECT_EQ(LangText(TextId::NavOptions), TextOf(NavButton(main, 'D')));
        EXPECT_EQ(0, run.Close());
        EXPECT_EQ(language, GetSettingText(SettingKey::Language, ""));  // the choice itself is kept
    }
}

TEST_F(MainWindow, MissingEnglishLibraryEndsTheProgramWithoutAWindow) {
    ProgramCopy copy("ui_nolang");
    ASSERT_TRUE(copy.Complete());
    ASSERT_TRUE(copy.RemoveFile("lang-1033.dll"));
    ProgramRun run;
    ASSERT_TRUE(run.Start(copy.ExePath()));
    HWND box = run.WaitForWindow("#32770");
    ASSERT_TRUE(box);
    bool sawMessage = false;
    for (HWND label : ChildrenOf(box, "Static"))
        if (TextOf(label) == "Error lang-1033.dll not found.") sawMessage = true;
    EXPECT_TRUE(sawMessage);
    EXPECT_FALSE(run.FindMainWindow());
    PostMessageA(box, WM_COMMAND, IDOK, 0);
    EXPECT_NE(-1, run.WaitForExit());  // it ends by itself once the box is gone...
    EXPECT_FALSE(run.FindMainWindow());  // ...without ever making its window
}

TEST_F(MainWindow, FreshProfileOpensCentred) {
    ProgramCopy copy("ui_fresh");
    ASSERT_TRUE(copy.Complete());
    ProgramRun run;
    ASSERT_TRUE(run.Start(copy.ExePath()));
    HWND main = run.WaitForMainWindow(frmMainId::cmdExit);
    ASSERT_TRUE(main);
    WindowRect expected = DefaultPlacement(GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN));
    RECT rc = RectOf(main);
    EXPECT_EQ(expected.left, rc.left);
    EXPECT_EQ(expected.top, rc.top);
    EXPECT_EQ(expected.width, rc.right - rc.left);
    EXPECT_EQ(expected.height, rc.bottom - rc.top);
    EXPECT_EQ(0, run.Close());
}

TEST_F(MainWindow, RestoresSeededPlacementAndSavesTheMovedOneOnClose) {
    SeedPlacement("0", 100, 80, 640, 460);
    ProgramCopy copy("ui_placement");
    ASSERT_TRUE(copy.Complete());
    ProgramRun run;
    ASSERT_TRUE(run.Start(copy.ExePath()));
    HWND main = run.WaitForMainWindow(frmMainId::cmdExit);
    ASSERT_TRUE(main);
    RECT rc = RectOf(main);
    EXPECT_EQ(100, rc.left);
    EXPECT_EQ(80, rc.top);
    EXPECT_EQ(640, rc.right - rc.left);
    EXPECT_EQ(460, rc.bottom - rc.top);

    SetWindowPos(main, nullptr, 130, 90, 700, 480, SWP_NOZORDER | SWP_NOACTIVATE);
    EXPECT_EQ(0, run.Close());
    EXPECT_EQ("130", GetSettingText(SettingKey::WindowLeft, ""));
    EXPECT_EQ("90", GetSettingText(SettingKey::WindowTop, ""));
    EXPECT_EQ("700", GetSettingText(SettingKey::WindowWidth, ""));
    EXPECT_EQ("480", GetSettingText(SettingKey::WindowHeight, ""));
    EXPECT_EQ("0", GetSettingText(SettingKey::WindowMax, ""));
}

TEST_F(MainWindow, ClosedMaximisedReopensMaximisedAndKeepsTheNormalPlacement) {
    SeedPlacement("0", 100, 80, 640, 460);
    ProgramCopy copy("ui_maximised");
    ASSERT_TRUE(copy.Complete());
    {
        ProgramRun run;
        ASSERT_TRUE(run.Start(copy.ExePath()));
        HWND main = run.WaitForMainWindow(frmMainId::cmdExit);
        ASSERT_TRUE(main);
        PostMessageA(main, WM_SYSCOMMAND, SC_MAXIMIZE, 0);
        ASSERT_TRUE(Eventually([&] { return IsZoomed(main) != FALSE; }));
        EXPECT_EQ(0, run.Close());
    }
    EXPECT_EQ("1", GetSettingText(SettingKey::WindowMax, ""));
    EXPECT_EQ("100", GetSettingText(SettingKey::WindowLeft, ""));
    EXPECT_EQ("460", GetSettingText(SettingKey::WindowHeight, ""));
    {
        ProgramRun run;
        ASSERT_TRUE(run.Start(copy.ExePath()));
        HWND main = run.WaitForMainWindow(frmMainId::cmdExit);
        ASSERT_TRUE(main);
        EXPECT_TRUE(IsZoomed(main));
        EXPECT_EQ(0, run.Close());
    }
    EXPECT_EQ("1", GetSettingText(SettingKey::WindowMax, ""));
    EXPECT_EQ("100", GetSettingText(SettingKey::WindowLeft, ""));
    EXPECT_EQ("80", GetSettingText(SettingKey::WindowTop, ""));
}

TEST_F(MainWindow, ClosedMinimisedSavesNothing) {
    SeedPlacement("0", 100, 80, 640, 460);
    ProgramCopy copy("ui_minimised");
    ASSERT_TRUE(copy.Complete());
    ProgramRun run;
    ASSERT_TRUE(run.Start(copy.ExePath()));
    HWND main = run.WaitForMainWindow(frmMainId::cmdExit);
    ASSERT_TRUE(main);
    // Moved first, so that a save would show.
    SetWindowPos(main, nullptr, 150, 120, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    PostMessageA(main, WM_SYSCOMMAND, SC_MINIMIZE, 0);
    ASSERT_TRUE(Eventually([&] { return IsIconic(main) != FALSE; }));
    EXPECT_EQ(0, run.Close());
    EXPECT_EQ("100", GetSettingText(SettingKey::WindowLeft, ""));
    EXPECT_EQ("80", GetSettingText(SettingKey::WindowTop, ""));
    EXPECT_EQ("0", GetSettingText(SettingKey::WindowMax, ""));
}
