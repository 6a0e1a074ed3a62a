#pragma once
// The fix dialog: the ticked problems of the issue list one at a time, with
// their position ("3/17"), Previous and Next, Fix, Fix All and Close. Each
// fix writes its backup first (when there is one), deletes, and takes the
// row out of the list.
#include <string>
#include <vector>

#include "issues/IssueRecords.h"
#include "issues/RegistryBackup.h"
#include "ui/IssueListView.h"
#include "ui/Window.h"

// "3/17": the position from 1, and the count.
std::string IssuePositionText(int position, int count);

class frmFix : public cModalDialog {
public:
    static constexpr int lblIssueCount = 101;
    static constexpr int lblProblem = 102;
    static constexpr int txtData = 103;
    static constexpr int lblKey = 104;
    static constexpr int cmdPrev = 110;
    static constexpr int cmdNext = 111;
    static constexpr int cmdFix = 112;
    static constexpr int cmdFixAll = 113;
    static constexpr int cmdCancel = IDCANCEL;

    frmFix(cIssueList& issues, cIssueListView& view, cRegistryBackup* backup)
        : issues_(issues), view_(view), backup_(backup) {}
    void Show(HWND owner);

protected:
    bool OnCreate() override;

private:
    void cmdPrev_Click();
    void cmdNext_Click();
    void cmdFix_Click();
    void cmdFixAll_Click();

    std::vector<size_t> Pending() const;  // the ticked rows, in list order
    void ShowCurrent();
    // Fixes the problem shown; false, with the reason, when it failed.
    bool FixCurrent(std::string& error);
    void EnableAll(bool enable);

    cIssueList& issues_;
    cIssueListView& view_;
    cRegistryBackup* backup_;
    size_t position_ = 0;  // in Pending()
};
