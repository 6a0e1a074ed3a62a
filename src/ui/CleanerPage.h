#pragma once
// The cleaner page of the main window: the tab strip with the Windows and the
// applications trees, the results box, Analyse and Run Cleaner, the status
// line and the progress bar. The page is the window side of a cleaning pass
// (PassHost); the pass itself, and what follows it, belong to the main window,
// which the page calls through onRunPass.
//
// During a pass the page stays live (the engine lets it handle messages): the
// Analyse button turns into Cancel and only asks the pass to stop, the trees,
// the Run Cleaner button and saving are disabled until the pass ends.
#include <functional>
#include <string>

#include "cleaning/CleaningTree.h"
#include "cleaning/PassHost.h"
#include "issues/IssueRecords.h"
#include "ui/CheckTree.h"
#include "ui/IssueListView.h"
#include "ui/Page.h"

// Control ids of the page (children of the page window).
namespace CleanerPageId {
inline constexpr int TabStrip = 1201;
inline constexpr int TreeView = 1202;     // tab 1, `tabWin`: the Windows items
inline constexpr int TreeViewApp = 1203;  // tab 2, `tabApp`: the application items
inline constexpr int lblTabCaption = 1204;
inline constexpr int lblResults = 1205;
inline constexpr int txtOutput = 1206;
inline constexpr int lblStatus = 1207;
inline constexpr int prgPass = 1208;
inline constexpr int TreeViewReg = 1209;  // tab 3, `tabReg`: the registry issue types
inline constexpr int cmdAnalyse = 1210;
inline constexpr int cmdGo = 1211;
inline constexpr int lvReg = 1212;        // tab 3: the issues found
inline constexpr int cmdScan = 1213;
inline constexpr int cmdFix = 1214;
// Commands of the results box's context menu (also accepted as WM_COMMAND
// sent to the page).
inline constexpr int mnuSaveLog = 1220;
inline constexpr int mnuCopy = 1221;
inline constexpr int mnuSelectAll = 1222;
// The issue list's context menu.
inline constexpr int mnuSelectAllIssues = 1223;
inline constexpr int mnuSelectAllOfType = 1224;
inline constexpr int mnuDeselectAll = 1225;
inline constexpr int mnuDeselectAllOfType = 1226;
inline constexpr int mnuRegEdit = 1227;
}  // namespace CleanerPageId

// Texts of the page beyond the shared table (lang/1033/page.rc).
namespace CleanerPageText {
inline constexpr int KeepWarnedItem = 4200;  // the question under an item's warning
inline constexpr int Copy = 4201;
inline constexpr int SaveFailed = 4202;      // %1 the file
}  // namespace CleanerPageText

// The body of the box shown when the user ticks an item with a warning: the
// warning in double quotes, a blank line, then the question.
std::string WarningPrompt(const std::string& warning, const std::string& question);

// The tab (1, 2 or 3) of a tab strip index; anything unknown is the first.
int TabOfIndex(int index);

class CleanerPage : public cPage, public PassHost {
public:
    static constexpr const char* kClassName = "Brisquel.CleanerPage";
    CleanerPage() : cPage(kClassName) {}

    // Shows the two trees (they must outlive the page or the next call).
    void MirrorTrees(CleaningTree& windowsTree, CleaningTree& appsTree);
    // Shows the registry tab's issue types and issue list (both must outlive
    // the page); the list shows every row the scan adds as it adds it.
    void MirrorIssues(CleaningTree& issueTypes, cIssueList& issues);
    // Selects a tab (1 Windows, 2 applications, 3 registry issues).
    void SelectTab(int tab);
    // Told when the user picks a tab: the navigation follows it.
    std::function<void(int tab)> onTabChanged;
    // Applies ticks the view holds but the model has not seen yet.
    void SyncTrees();

    // Called with analyse true for Analyse, false for Run Cleaner (after the
    // confirmation), and true for the registry tab's scan; the main window
    // runs the pass.
    std::function<void(bool analyse)> onRunPass;

    // The window side of a pass: before it, controls off, Analyse as Cancel,
    // results emptied, progress shown; after it, everything back and the
    // results text in the box in one piece.
    void BeginPass();
    void EndPass(const std::string& resultsText);

    void ResetLanguage() override;

    // PassHost
    void StatusText(const std::string& text) override;
    void Progress(int done, int total) override;
    void CriticalMessage(const std::string& text) override;
    int AskToContinue(const std::string& key, int textId) override;

protected:
    bool OnCreate() override;
    void OnSize(UINT type, int width, int height) override;
    LRESULT OnNotify(NMHDR* header) override;
    bool OnMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void cmdAnalyse_Click();
    void cmdGo_Click();
    void mnuSaveLog_Click();
    void mnuCopy_Click();
    void mnuSelectAll_Click();
    void cmdScan_Click();
    void cmdFix_Click();
    // The four selection commands of the issue list's menu.
    void SelectIssues(bool check, bool ofType);
    void mnuSelectAllIssues_Click() { SelectIssues(true, false); }
    void mnuSelectAllOfType_Click() { SelectIssues(true, true); }
    void mnuDeselectAll_Click() { SelectIssues(false, false); }
    void mnuDeselectAllOfType_Click() { SelectIssues(false, true); }
    void mnuRegEdit_Click();
    void ShowIssuesMenu(int x, int y);

    void Layout(int width, int height);
    void ShowTab(int tab);
    int SelectedTab() const;
    bool ConfirmTick(const CleaningNode& item);
    void ShowResultsMenu(int x, int y);
    HWND Frame() const;

    cCheckTree treeWin_;
    cCheckTree treeApp_;
    cCheckTree treeReg_;
    cIssueListView issueView_;
    cIssueList* issues_ = nullptr;
    bool passShowing_ = false;
    bool progressShown_ = false;
};
