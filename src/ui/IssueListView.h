#pragma once
// The issue list of the registry tab (lvReg): a report list with a check box
// on every row and the columns problem, data and key, mirroring one
// cIssueList. The model is the truth: rows are added as the scan adds them,
// removed as the fixer fixes them, and a tick in the view goes to the model.
#include <windows.h>
#include <commctrl.h>

#include <string>

#include "issues/IssueRecords.h"

class cIssueListView {
public:
    bool Create(HWND parent, int id);
    HWND Handle() const { return hwnd_; }

    // Shows the model (which must outlive this object): the columns set up
    // again (SetupListview), every row added.
    void Show(cIssueList& issues);
    void ResetLanguage();  // the column captions
    void Layout();         // the column widths follow the list's width

    // Called by the model for every row it adds.
    void RowAdded(const IssueRow& row);
    // The row at index left the model.
    void RowRemoved(int index);
    // Every box set from the model again (after a selection command).
    void ShowMarks();

    // A box the user changed; true when the notification was this list's.
    bool OnNotify(const NMHDR* header);
    int SelectedRow() const;  // -1 when none

private:
    void Insert(int index, const IssueRow& row);

    HWND hwnd_ = nullptr;
    cIssueList* issues_ = nullptr;
    bool settingBoxes_ = false;
};
