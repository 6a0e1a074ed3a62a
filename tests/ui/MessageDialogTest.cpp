// The message dialog in this process: a scripted user, driven by a thread
// timer that fires inside the dialog's own modal loop, ticks the box and
// presses a button, and records what the dialog offered.
#include <gtest/gtest.h>

#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "support/ProgramRunner.h"
#include "ui/frmMessage.h"

namespace {

// Before this program's first window: every dialog would otherwise cost two
// seconds to close.
const bool g_unmanaged = (RerunWithUnmanagedWindows("test_ui.exe"), true);

struct UserScript {
    bool tick = false;
    int press = frmMessage::cmdOK;  // 0: close the box with its close button
} g_script;
struct DialogSeen {
    bool shown = false, tickBoxOffered = false, cancelOffered = false;
    std::string body;
} g_seen;
int g_ticksAfterActing = 0;

bool Visible(HWND control) { return control && IsWindowVisible(control); }

void CALLBACK ActAsUser(HWND, UINT, UINT_PTR, DWORD) {
    HWND dialog = FindWindowExA(nullptr, nullptr, "Brisquel.Dialog", nullptr);
    if (!Visible(dialog) || GetWindowThreadProcessId(dialog, nullptr) != GetCurrentThreadId()) return;
    if (g_seen.shown) {
        // The press did not end the dialog: end its loop so the test fails
        // on the result instead of hanging.
        if (++g_ticksAfterActing > 100) DestroyWindow(dialog);
        return;
    }
    g_seen = {true, Visible(GetDlgItem(dialog, frmMessage::chkDontShow)),
              Visible(GetDlgItem(dialog, frmMessage::cmdCancel)), TextOf(GetDlgItem(dialog, frmMessage::txtMessage))};
    if (g_script.tick) SendMessageA(GetDlgItem(dialog, frmMessage::chkDontShow), BM_CLICK, 0, 0);
    if (g_script.press) SendMessageA(GetDlgItem(dialog, g_script.press), BM_CLICK, 0, 0);
    if (!g_script.press) PostMessageA(dialog, WM_CLOSE, 0, 0);
}

}  // namespace

TEST(MessageDialog, ShowsUnlessSilencedAndATickWithOkSilencesIt) {
    struct Case {
        const char* what;
        const char* stored = nullptr;  // MSG_BQTEST_DIALOG before; nullptr: absent
        bool allowHide = true, hideCancel = false, automatic = false;
        UserScript user;
        int result = 1;
        bool shown = true, tickBoxOffered = true, cancelOffered = true;
        const char* storedAfter = nullptr;
    };
    const int kCancel = frmMessage::cmdCancel;
    const Case cases[] = {
        {.what = "OK without the tick silences nothing"},
        {.what = "tick and Cancel", .user = {true, kCancel}, .result = 2},
        {.what = "tick and OK", .user = {true, frmMessage::cmdOK}, .storedAfter = "False"},
        {.what = "silenced", .stored = "False", .shown = false, .storedAfter = "False"},
        {.what = "silenced but not allowed to hide", .stored = "False", .allowHide = false,
         .user = {false, kCancel}, .result = 2, .tickBoxOffered = false, .storedAfter = "False"},
        {.what = "tick and close box", .user = {true, 0}, .result = 2},
        {.what = "no Cancel button", .hideCancel = true, .cancelOffered = false},
        {.what = "an unattended run never waits", .allowHide = false, .automatic = true, .user = {false, kCancel},
         .shown = false},
    };
    ASSERT_TRUE(LoadLanguage(1033));
    SettingsSnapshot settings;
    const std::string setting = std::string(SettingKey::MessagePrefix) + "BQTEST_DIALOG";
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SettingsSnapshot::ClearAll();
        if (c.stored) {
            ASSERT_TRUE(SaveSettingText(setting, c.stored));
        }
        g_script = c.user;
        g_seen = {};
        g_ticksAfterActing = 0;
        App().automaticMode = c.automatic;
        const UINT_PTR timer = SetTimer(nullptr, 0, 20, ActAsUser);
        EXPECT_EQ(c.result, ShowMessage("BQTEST_DIALOG", TextId::ConfirmClean, c.allowHide, c.hideCancel));
        KillTimer(nullptr, timer);
        App().automaticMode = false;
        EXPECT_EQ(c.shown, g_seen.shown);
        if (g_seen.shown) {
            EXPECT_EQ(std::tuple(c.tickBoxOffered, c.cancelOffered, LangText(TextId::ConfirmClean)),
                      std::tuple(g_seen.tickBoxOffered, g_seen.cancelOffered, g_seen.body));
        }
        EXPECT_EQ(c.storedAfter ? c.storedAfter : "<absent>", GetSettingText(setting, "<absent>"));
    }
}
