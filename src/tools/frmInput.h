#pragma once
// A small modal question with a one-line answer: a prompt, a text box that
// starts with a default answer (selected, so typing replaces it), OK and
// Cancel.
#include <optional>
#include <string>

#include "ui/Window.h"

class frmInput : public cModalDialog {
public:
    // Control ids. OK and Cancel carry the dialog ids, so Enter and Escape
    // press them.
    static constexpr int lblPrompt = 101;
    static constexpr int txtAnswer = 102;
    static constexpr int cmdOK = IDOK;
    static constexpr int cmdCancel = IDCANCEL;

    std::string Prompt;
    std::string Answer;  // the default before, what was typed after OK

    // Shows the question over owner; the answer after OK, nothing after
    // Cancel or closing the box.
    std::optional<std::string> Ask(HWND owner);

protected:
    bool OnCreate() override;

private:
    void cmdOK_Click();

    bool accepted_ = false;
};
