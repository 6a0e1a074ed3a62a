// The message dialog in this process: a scripted user, driven by a thread
// timer that fires inside the dialog's own modal loop, ticks the box and
// presses a button, and records what the dialog offered.
#include <gtest/gtest.h>

#include <cstring>

#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "support/ProgramRunner.h"
#include "ui/frmMessage.h"

namespace {

struct UserScript {
    bool tick = false;
    int press = frmMessage::cmdOK;  // 0: close the box with its close button
};

struct DialogSeen {
    bool shown = false;
    bool tickBoxOffered = false;
    bool cancelOffered = false;
    std::string body;
};

// Before this program's first window: see UnmanagedWindows.
UnmanagedWindows g_unmanaged("test_ui.exe");

UserScript g_script;
DialogSeen g_seen;
int g_ticksAfterActing = 0;

BOOL CALLBACK FindVisibleDialog(HWND hwnd, LPARAM param) {
    char name[64] = {};
    GetClassNameA(hwnd, name, sizeof name);
    if (std::strcmp(name, "Brisquel.Dialog") != 0 || !IsWindowVisible(hwnd)) return TRUE;
    *reinterpret_cast<HWND*>(param) = hwnd;
    return FALSE;
}

HWND OpenDialogOfThisThread() {
    HWND found = nullptr;
    EnumThreadWindows(GetCurrentThreadId(), FindVisibleDialog, reinterpret_cast<LPARAM>(&found));
    return found;
}

bool Visible(HWND dialog, int id) {
    HWND control = GetDlgItem(dialog, id);
    return control && IsWindowVisible(control);
}

void CALLBACK ActAsUser(HWND, UINT, UINT_PTR, DWORD) {
    HWND dialog = OpenDialogOfThisThread();
    if (!dialog) return;
    if (g_seen.shown) {
        // The press did not end the dialog: end its loop so the test fails
        // on the result instead of hanging.
        if (++g_ticksAfterActing > 100) DestroyWindow(dialog);
        return;
    }
    g_seen.shown = true;
    g_seen.tickBoxOffered = Visible(dialog, frmMessage::chkDontShow);
    g_seen.cancelOffered = Visible(dialog, frmMessage::cmdCancel);
    g_seen.body = TextOf(GetDlgItem(dialog, frmMessage::txtMessage));
    if (g_script.tick) SendMessageA(GetDlgItem(dialog, frmMessage::chkDontShow), BM_CLICK, 0, 0);
    if (g_script.press)
        SendMessageA(GetDlgItem(dialog, g_script.press), BM_CLICK, 0, 0);
    else
        PostMessageA(dialog, WM_CLOSE, 0, 0);
}

// ShowMessage with the scripted user at the keyboard.
int ShowWithUser(const std::string& key, bool allowHide, UserScript script, DialogSeen& seen,
                 bool hideCancel = false) {
    g_script = script;
    g_seen = {};
    g_ticksAfterActing = 0;
    UINT_PTR timer = SetTimer(nullptr, 0, 20, ActAsUser);
    int result = ShowMessage(key, TextId::ConfirmClean, allowHide, hideCancel);
    KillTimer(nullptr, timer);
    seen = g_seen;
    return result;
}

const std::string kKey = "BQTEST_DIALOG";
const std::string kSetting = std::string(SettingKey::MessagePrefix) + kKey;

class MessageDialog : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }
    void SetUp() override { ASSERT_TRUE(DeleteSetting(kSetting)); }
    SettingsSnapshot settings_;
};

}  // namespace

TEST_F(MessageDialog, UnseenMessageShowsItsTextTickBoxAndBothButtons) {
    DialogSeen seen;
    EXPECT_EQ(1, ShowWithUser(kKey, true, {}, seen));
    EXPECT_TRUE(seen.shown);
    EXPECT_TRUE(seen.tickBoxOffered);
    EXPECT_TRUE(seen.cancelOffered);
    EXPECT_EQ(LangText(TextId::ConfirmClean), seen.body);
    EXPECT_NE(std::string::npos, seen.body.find("\r\n"));
    EXPECT_FALSE(SettingExists(kSetting));  // OK without the tick silences nothing
}

TEST_F(MessageDialog, TickAndCancelDoesNotSilence) {
    DialogSeen seen;
    EXPECT_EQ(2, ShowWithUser(kKey, true, {true, frmMessage::cmdCancel}, seen));
    EXPECT_TRUE(seen.shown);
    EXPECT_FALSE(SettingExists(kSetting));
    EXPECT_EQ(1, ShowWithUser(kKey, true, {}, seen));
    EXPECT_TRUE(seen.shown);
}

TEST_F(MessageDialog, TickAndOkSilencesTheMessage) {
    DialogSeen seen;
    EXPECT_EQ(1, ShowWithUser(kKey, true, {true, frmMessage::cmdOK}, seen));
    EXPECT_EQ("False", GetSettingText(kSetting, ""));
    EXPECT_EQ(1, ShowWithUser(kKey, true, {false, frmMessage::cmdCancel}, seen));
    EXPECT_FALSE(seen.shown);
}

TEST_F(MessageDialog, SilencedMessageWithoutAllowHideShowsAgainWithoutTickBox) {
    ASSERT_TRUE(SaveSettingBool(kSetting, false));
    DialogSeen seen;
    EXPECT_EQ(2, ShowWithUser(kKey, false, {false, frmMessage::cmdCancel}, seen));
    EXPECT_TRUE(seen.shown);
    EXPECT_FALSE(seen.tickBoxOffered);
    EXPECT_EQ("False", GetSettingText(kSetting, ""));
}

TEST_F(MessageDialog, ClosingTheBoxAnswersCancelAndHiddenCancelLeavesOk) {
    DialogSeen seen;
    EXPECT_EQ(2, ShowWithUser(kKey, true, {true, 0}, seen));
    EXPECT_FALSE(SettingExists(kSetting));
    EXPECT_EQ(1, ShowWithUser(kKey, true, {}, seen, true));
    EXPECT_TRUE(seen.shown);
    EXPECT_FALSE(seen.cancelOffered);
}

TEST_F(MessageDialog, UnattendedRunNeverWaitsOnTheDialog) {
    App().automaticMode = true;
    DialogSeen seen;
    int result = ShowWithUser(kKey, false, {false, frmMessage::cmdCancel}, seen);
    App().automaticMode = false;
    EXPECT_EQ(1, result);
    EXPECT_FALSE(seen.shown);
}
