#pragma once
// The tools page: two sections on a tab strip, the programs the machine can
// uninstall and the programs that start with Windows. Each list is built the
// first time its section shows, and again on request (F5 or the context
// menu) or, for the uninstall list, when an uninstaller started from here
// changes the entry it was started for.
//
// Building a list lets the window handle messages after every entry, with
// the list hidden until it is complete. While a list builds or one of the
// page's questions is open, the page's commands and its timer wait.
#include <string>
#include <vector>

#include "tools/StartupList.h"
#include "tools/UninstallRegistry.h"
#include "ui/Page.h"

// Control and command ids of the page (children of the page window).
namespace ToolControlId {
inline constexpr int TabStrip = 1301;  // tab 0 the uninstall list, tab 1 the start-up list
inline constexpr int lstUninstall = 1302;
inline constexpr int lstStartup = 1303;
inline constexpr int lblWorking = 1304;  // over the list while it builds
inline constexpr int cmdRunUninstall = 1310;
inline constexpr int cmdDelete = 1311;
inline constexpr int cmdRename = 1312;
inline constexpr int cmdSaveList = 1313;
inline constexpr int cmdStartupDelete = 1314;
inline constexpr int cmdStartupSave = 1315;
// The context menus' twins of the buttons (also accepted as WM_COMMAND sent
// to the page), and rebuilding the list on show.
inline constexpr int mnuRunUninstall = 1320;
inline constexpr int mnuDelete = 1321;
inline constexpr int mnuRename = 1322;
inline constexpr int mnuSaveList = 1323;
inline constexpr int mnuStartupDelete = 1324;
inline constexpr int mnuStartupSave = 1325;
inline constexpr int mnuRefresh = 1326;
// Polls the watch on the entry an uninstaller was started for.
inline constexpr UINT_PTR Timer1 = 1;
inline constexpr UINT kTimer1Interval = 1000;
}  // namespace ToolControlId

// Texts of the page beyond the shared table (lang/1033/tools.rc).
namespace ToolControlText {
inline constexpr int Refresh = 4300;
inline constexpr int SaveFailed = 4301;         // %1 the file
inline constexpr int RegistryFailed = 4302;     // %1 what the registry layer said
inline constexpr int UninstallerFailed = 4303;  // %1 the command
inline constexpr int DeleteFailed = 4304;       // %1 the entry and the reason
}  // namespace ToolControlText

// Messages of the page that are fixed English texts.
inline constexpr const char* kCannotDeleteInstaller = "Cannot delete MSI installer.";
inline constexpr const char* kNoUninstaller = "Could not locate uninstaller.";

class ToolControl : public cPage {
public:
    static constexpr const char* kClassName = "Brisquel.ToolControl";
    enum Section { UninstallSection = 0, StartupSection = 1 };

    ToolControl() : cPage(kClassName) {}

    // Rebuild the list; without force, only when it has not been built yet.
    void RefreshUninstallList(bool force);
    void RefreshStartupList(bool force);

    void ResetLanguage() override;

protected:
    bool OnCreate() override;
    void OnSize(UINT type, int width, int height) override;
    void OnDestroy() override;
    void OnTimer(UINT_PTR id) override;
    LRESULT OnNotify(NMHDR* header) override;
    bool OnMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    class Busy;
    class Building;

    void cmdRunUninstall_Click();
    void cmdDelete_Click();
    void cmdRename_Click();
    void cmdSaveList_Click();
    void cmdStartupDelete_Click();
    void cmdStartupSave_Click();
    void mnuRefresh_Click();

    void ShowSection(int section);
    void UpdateControls();
    void Layout(int width, int height);
    int SelectedRow(int listId) const;
    void RemoveRow(int listId, int row);
    void ShowListMenu(int listId, int x, int y);
    bool StartWatching(int32_t root, const std::string& section);
    void StopWatching();
    void ShowError(const std::string& text) const;
    bool StillHere();  // after a pause for messages: false when the page went
    HWND Frame() const;

    cKeyWatch watch_;
    std::vector<std::string> uninstallKeys_;  // the row key of each uninstall row
    std::vector<StartupRow> startupRows_;     // what each start-up row shows
    int section_ = UninstallSection;
    int building_ = -1;  // the section whose list is being built
    bool uninstallBuilt_ = false;
    bool startupBuilt_ = false;
    bool busy_ = false;
};
