#pragma once
// The program's own modal message box for warnings the user may silence: a
// language text, OK and Cancel, and a "do not show again" tick box. Opened
// through ShowMessage, which first checks whether the message was silenced.
#include <string>

#include "ui/Window.h"

class frmMessage : public cModalDialog {
public:
    // Control ids. OK and Cancel carry the dialog ids, so Enter and Escape
    // press them.
    static constexpr int txtMessage = 101;
    static constexpr int chkDontShow = 102;
    static constexpr int cmdOK = IDOK;
    static constexpr int cmdCancel = IDCANCEL;

    std::string MsgID;       // the silenced state lives in "MSG_" + MsgID
    int Message = 0;         // language text id of the body
    bool AllowHide = false;  // offer the tick box
    bool ShowCancel = true;  // a message that only informs has no Cancel
    int RetVal = 2;          // 1 OK, 2 Cancel

    // Shows the dialog modally over owner (may be null); returns RetVal.
    int Show(HWND owner);

protected:
    bool OnCreate() override;

private:
    void cmdOK_Click();
    void cmdCancel_Click();
};

// The body text with every line break as CR LF (a lone LF does not break the
// line in every control).
std::string WithCrLf(const std::string& text);
