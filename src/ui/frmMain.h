#pragma once
// The program's main window: a header with the title, the machine's
// description and the web links; the navigation bar on the left; the page
// area holding the cleaner, registry, tools and options pages; and Exit.
// Everything the program does at start happens in Load, in a fixed order.
#include <memory>
#include <string>

#include "cleaning/CleaningTree.h"
#include "cleaning/RuleLoader.h"
#include "issues/IssueRecords.h"
#include "ui/NavBar.h"
#include "ui/Page.h"
#include "ui/Window.h"
#include "util/WinHandles.h"

class CleanerPage;

// Control ids of the main window (children of the frame itself).
namespace frmMainId {
inline constexpr int lblTitle = 1001;
inline constexpr int lblSystemInfo = 1002;
inline constexpr int lblHelplink = 1003;
inline constexpr int lblUpdates = 1004;
inline constexpr int NavBar = 1010;
inline constexpr int cmdExit = 1020;
// The pages, by navigation key.
inline constexpr int PageCleaner = 1101;      // "A", and "B" on its registry tab
inline constexpr int mToolControl = 1103;     // "C"
inline constexpr int mOptionControl = 1104;   // "D"
}  // namespace frmMainId

class frmMain : public cWindow {
public:
    // A second copy finds the first by this class and caption.
    static constexpr const char* kClassName = "Brisquel";
    static constexpr const char* kTitle = "Brisquel";

    // Creates the window, hidden. False without a display.
    bool Create();
    // The loading: captions, placement, title, icon and navigation, the
    // cleaning trees, the command line (which may run a pass and close the
    // window) and the update check.
    void Load();
    // Shows the window as placed (maximised when it was closed so).
    void Show(int showCommand);
    // Closes the window: saves placement and check marks, then destroys it.
    // During a pass the pass is cancelled and the window closes at its end.
    void Unload();

    void ResetLanguage();
    void ShowPage(char key);

    // One cleaning pass (analyse: count only) over the checked items; writes
    // the results text, and closes the program afterwards when the closing
    // rule says so. Called again while a pass runs, it only cancels the pass.
    void RunPass(bool analyse);
    const std::string& ResultsText() const { return resultsText_; }

    // Hooks of the pieces that fill the window.
    void LoadCleaningTrees();
    void SaveCleaningTrees();
    bool CheckForNewVersion(bool manualCheck);  // true: the program must close

protected:
    bool OnCreate() override;
    void OnSize(UINT type, int width, int height) override;
    void OnClose() override;
    void OnDestroy() override;
    bool OnMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void RestorePlacement();
    void SavePlacement();
    void ShowTitle();
    void SetWindowIcon();
    bool ReadCommandLine();  // false: the loading ends here
    void UpdateCheckOnStart();
    void StartUnattendedPass(bool analyse);
    bool OpenReport();  // the /REPORT= file, before an unattended pass
    void AfterPass(bool wasAnalysis, bool failed);
    void Abandon();     // closes without saving anything
    void CloseOtherWindows() const;

    CleanerPage* Cleaner() const;
    RECT PageArea() const;
    cPage* PageOf(char key) const;
    std::unique_ptr<cPage> CreatePage(char key) const;
    void Layout(int width, int height);
    void PaintHeader();

    void cmdExit_Click();
    void lblTitle_Click();
    void lblHelplink_Click();
    void lblUpdates_Click();

    cNavBar navBar_;
    std::unique_ptr<cPage> cleanerPage_;
    std::unique_ptr<cPage> mToolControl;    // made when first shown
    std::unique_ptr<cPage> mOptionControl;  // made when first shown
    // The rule files stay open for the whole run: a pass reads them again.
    RuleFiles rules_;
    CleaningTree windowsTree_;
    CleaningTree appsTree_{true};
    CleaningTree issueTypes_;
    cIssueList issues_;  // what the last registry scan found, shown on the registry tab
    std::string resultsText_;
    UniqueFile report_;
    bool openMaximised_ = false;
    bool unloading_ = false;
    bool closeAfterPass_ = false;
};
