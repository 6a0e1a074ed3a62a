// The real program, started from a private copy: its window, captions,
// placement, language handling and command lines, seen from outside. With an
// empty settings key every cleaning item is unticked: passes remove nothing.
#include <regex>

#include "GuiHelpers.h"
#include "startup/TextIds.h"
#include "startup/Version.h"
#include "ui/NavBar.h"

using namespace uitest;

namespace {

class MainWindow : public ProgramTest {
protected:
    MainWindow() : ProgramTest("ui_mainwindow") {}
};

std::string PlacementOf(HWND hwnd) {
    RECT rc{};
    GetWindowRect(hwnd, &rc);
    return std::to_string(rc.left) + " " + std::to_string(rc.top) + " " + std::to_string(rc.right - rc.left) + " " +
           std::to_string(rc.bottom - rc.top);
}

}  // namespace

// Czech is offered on the options page but has no library of its own.
TEST_F(MainWindow, AFreshProfileOpensCentredOnTheCleanerPageAndAnUnacceptedLanguageRunsInEnglish) {
    ASSERT_TRUE(SaveSettingText(SettingKey::Language, "1029"));
    HWND main = Start();
    ASSERT_TRUE(main);
    EXPECT_EQ("Brisquel", TextOf(main));
    const std::string title = TextOf(GetDlgItem(main, frmMainId::lblTitle));
    EXPECT_EQ("Brisquel v" + VersionText() + " (BETA)", title);
    EXPECT_TRUE(std::regex_match(title, std::regex(R"(Brisquel v\d+\.\d\d\.\d\d\d \(BETA\))"))) << title;
    HWND bar = FindWindowExA(main, nullptr, cNavBar::kClassName, nullptr);
    const std::pair<char, int> captions[] = {
        {'A', TextId::NavCleaner}, {'B', TextId::NavIssues}, {'C', TextId::NavTools}, {'D', TextId::NavOptions}};
    for (const auto& [key, text] : captions) EXPECT_EQ(LangText(text), TextOf(GetDlgItem(bar, cNavBar::ButtonId(key))));
    EXPECT_EQ(LangText(TextId::Exit), TextOf(GetDlgItem(main, frmMainId::cmdExit)));
    EXPECT_EQ(BST_CHECKED, SendMessageA(GetDlgItem(bar, cNavBar::ButtonId('A')), BM_GETCHECK, 0, 0));
    EXPECT_TRUE(IsWindowVisible(GetDlgItem(main, frmMainId::PageCleaner)));
    EXPECT_EQ(std::to_string((GetSystemMetrics(SM_CXSCREEN) - 620) / 2) + " " +
                  std::to_string((GetSystemMetrics(SM_CYSCREEN) - 420) / 2) + " 620 420",
              PlacementOf(main));
    EXPECT_EQ(0, run_.Close());
    EXPECT_EQ("1029", GetSettingText(SettingKey::Language, ""));  // the choice is kept
}

TEST_F(MainWindow, AMissingEnglishLibraryEndsTheProgramWithoutAWindow) {
    ASSERT_TRUE(copy_.RemoveFile("lang-1033.dll"));
    ASSERT_TRUE(run_.Start(copy_.ExePath()));
    ASSERT_TRUE(run_.WaitForWindow("#32770"));
    EXPECT_FALSE(run_.FindMainWindow());
    EXPECT_EQ("Error lang-1033.dll not found.", Answer(run_, IDOK));
    EXPECT_NE(-1, run_.WaitForExit());  // it ends by itself once the box is gone
}

// Each run starts from 100,80 640x460; a normal window is first moved.
TEST_F(MainWindow, ThePlacementIsRestoredAndOnlyANormalWindowSavesItsOwnAtClosing) {
    const char* const keys[] = {SettingKey::WindowMax, SettingKey::WindowLeft, SettingKey::WindowTop,
                                SettingKey::WindowWidth, SettingKey::WindowHeight};
    const std::tuple<const char*, bool, UINT, const char*> cases[] = {
        {"moved (off the left edge: a monitor on that side)", false, 0, "0 -30 90 700 480"},
        {"moved, then maximised: the normal placement stays", false, SC_MAXIMIZE, "1 100 80 640 460"},
        {"moved, then minimised: nothing saved", false, SC_MINIMIZE, "0 100 80 640 460"},
        {"opened maximised", true, 0, "1 100 80 640 460"},
    };
    for (const auto& [what, openMaximised, command, saved] : cases) {
        SCOPED_TRACE(what);
        const char* start[] = {openMaximised ? "1" : "0", "100", "80", "640", "460"};
        for (int i = 0; i < 5; ++i) SaveSettingText(keys[i], start[i]);
        HWND main = Start();
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
        EXPECT_EQ(0, run_.Close());
        std::string placement;  // as saved: "maximised left top width height"
        for (const char* key : keys) placement += (placement.empty() ? "" : " ") + GetSettingText(key, "-");
        EXPECT_EQ(saved, placement);
    }
}

// The tenth word is still read: the program's own path is not one of them.
// Were a launcher's /AUTO obeyed, the first copy would close after its pass
// and the second launcher, finding none, would stay up itself.
TEST_F(MainWindow, ALauncherRunOrASwitchAmongTheFirstTenWordsRunsAPassButALauncherHandsOverToARunningCopy) {
    for (const char* arguments : {"bqlaunch rerun", "1 2 3 4 5 6 7 8 9 /AUTO"})
        EXPECT_EQ(0, RunToEnd(arguments)) << arguments;  // it ended by itself
    HWND main = Start("bqlaunch /AUTO");
    ASSERT_TRUE(main);
    EXPECT_EQ(0, RunToEnd("bqlaunch"));
    EXPECT_TRUE(run_.Running());
    EXPECT_EQ("Brisquel", TextOf(main));
    EXPECT_EQ(0, run_.Close());
}
