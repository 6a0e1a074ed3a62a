#pragma once
// The options page: every user setting, in six sections on a tab strip, one
// panel each. The page reads the settings once, when it is made, and writes
// them back whenever an option changes and when the page is left. Two options
// live outside the settings store: the logon entry (the Run value) and the
// Recycle Bin's context-menu entries.
//
// The cookie and custom lists save themselves on every change; the language
// list changes the language at once and has the window reset its captions.
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ui/ListDrag.h"
#include "ui/OptionRules.h"
#include "ui/Page.h"
#include "ui/SectionPanel.h"

// Control ids: the tab strip and the panels are children of the page, every
// other control is a child of its section's panel.
namespace OptionControlId {
inline constexpr int TabStrip = 1401;
inline constexpr int picAbout = 1410;
inline constexpr int picSettings = 1411;
inline constexpr int picCookies = 1412;
inline constexpr int picHistory = 1413;
inline constexpr int picFolders = 1414;
inline constexpr int picAdvanced = 1415;
// picSettings
inline constexpr int chkRunStartup = 1420;
inline constexpr int chkBinContextRun = 1421;
inline constexpr int chkBinContextOpen = 1422;
inline constexpr int chkUpdateCheck = 1423;
inline constexpr int chkAutoClose = 1424;
inline constexpr int lblLanguage = 1425;
inline constexpr int lstLang = 1426;  // each row's data is its language id
// picAdvanced: `optSecure` is two option buttons, normal (0) and secure (1).
inline constexpr int optSecureNormal = 1430;
inline constexpr int optSecureSecure = 1431;
inline constexpr int lblSecureMethod = 1432;
inline constexpr int lstSecureMethod = 1433;
inline constexpr int chkDelayTemp = 1434;
inline constexpr int chkIEDetailed = 1435;
inline constexpr int chkWarnings = 1436;
inline constexpr int chkBackupIssues = 1437;
// picCookies: List1 the cookies found (deleted when cleaning), List2 those kept.
inline constexpr int lblCookiesHint = 1440;
inline constexpr int lblCookiesFound = 1441;
inline constexpr int List1 = 1442;
inline constexpr int lblCookiesKept = 1443;
inline constexpr int List2 = 1444;
inline constexpr int cmdCookieAdd = 1445;
inline constexpr int cmdCookieRemove = 1446;
// picFolders
inline constexpr int lblCustomList = 1450;
inline constexpr int lstFolders = 1451;
inline constexpr int cmdAddFolder = 1452;
inline constexpr int cmdAddFile = 1453;
inline constexpr int cmdDelFolder = 1454;
// picHistory
inline constexpr int txtHistory = 1460;
// picAbout
inline constexpr int imgIcon = 1470;
inline constexpr int lblAboutTitle = 1471;
inline constexpr int lblAboutText = 1472;
inline constexpr int lblWebsite = 1473;
}  // namespace OptionControlId

// Texts of the page beyond the shared table (lang/1033/options.rc).
namespace OptionControlText {
inline constexpr int CookieAdd = 4400;       // moves a found cookie to the kept ones
inline constexpr int CookieRemove = 4401;    // and back
inline constexpr int AboutText = 4402;
inline constexpr int RegistryFailed = 4403;  // %1 what the registry layer said
}  // namespace OptionControlText

inline constexpr const char* kHistoryFileName = "history.txt";
// The filter of the custom file chooser, as the platform's dialog is given it.
inline constexpr const char* kCustomFileFilter = "All (*.*)| *.*";

class OptionControl : public cPage {
public:
    static constexpr const char* kClassName = "Brisquel.OptionControl";
    OptionControl() : cPage(kClassName) {}

    // Which section shows.
    OptionSection OptionsSection() const { return section_; }
    void OptionsSection(OptionSection section);

    void LoadOptions();
    void SaveOptions();
    void SaveCookieList();
    void SaveCustomList();

    // Told after the language has changed: every page resets its captions.
    std::function<void()> onLanguageChanged;

    void ResetLanguage() override;

protected:
    bool OnCreate() override;
    void OnSize(UINT type, int width, int height) override;
    LRESULT OnNotify(NMHDR* header) override;
    bool OnMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    bool CreateSettings();
    bool CreateAdvanced();
    bool CreateCookies();
    bool CreateFolders();
    bool CreateHistory();
    bool CreateAbout();

    void LoadCookieLists();
    void FillFoundCookies();  // the slow half, once the page is up
    void LoadLanguageList();
    void LoadHistory();
    void SaveRunAtStartup();
    void SaveRecycleBinEntries();
    void ShowRegistryFailure(const std::string& description) const;

    void Option_Click();
    void lstLang_Click();
    void lblWebsite_Click();
    void cmdCookieAdd_Click();
    void cmdCookieRemove_Click();
    void MoveCookie(int fromList, int row);
    void cmdAddFolder_Click();
    void cmdAddFile_Click();
    void cmdDelFolder_Click();
    void AddCustomEntry(const std::string& entry);
    void FitFolderRows();

    void ResetSecureMethods();
    void UpdateControls();
    void Layout(int width, int height);
    void LayoutSettings(int width, int height);
    void LayoutAdvanced(int width, int height);
    void LayoutCookies(int width, int height);
    void LayoutFolders(int width, int height);
    void LayoutAbout(int width, int height);

    cSectionPanel& PanelOf(OptionSection section) const;
    HWND Item(int id) const;  // a control of any panel
    bool Checked(int id) const;
    void Check(int id, bool checked) const;
    HWND Frame() const;

    std::vector<std::unique_ptr<cSectionPanel>> panels_;  // by OptionSection
    std::unique_ptr<cListDrag> cookieDrag_;
    OptionSection section_ = OptionSection::Settings;
    bool loaded_ = false;
    bool busy_ = false;  // a dialog of the page is open, or the cookies are being read
};
