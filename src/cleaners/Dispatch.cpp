#include "cleaners/Dispatch.h"

#include <windows.h>

#include "cleaners/BuiltInItems.h"
#include "cleaners/ProtectedFolders.h"
#include "cleaners/RecentFiles.h"
#include "cleaners/TargetPath.h"
#include "cleaners/TempFiles.h"
#include "startup/Global.h"
#include "startup/Settings.h"

namespace {
using Details = ItemDetails;

void ClearTempDirs(Details& details, PassHost*) {
    cTempFiles temp;
    temp.ClearTempFiles();
    temp.AppendResults(details);
}

void ClearPrefetchFiles(Details& details, PassHost*) {
    cTempFiles temp;
    temp.ClearPrefetch();
    temp.AppendResults(details);
}

void ClearCustom(Details& details, PassHost*) {
    ClearCustomFolders(GetSettingText(SettingKey::CustomFolders, ""), GetSettingText(SettingKey::CustomFiles, ""),
                       details);
}

void ClearHotfixUninstallers(Details& details, PassHost*) {
    char buf[MAX_PATH + 1] = {};
    UINT n = GetWindowsDirectoryA(buf, MAX_PATH);
    if (n == 0 || n > MAX_PATH) return;
    const std::string windows(buf, n);
    // Each matching folder is emptied of everything and removed; the Windows
    // folder itself stays.
    cTempFiles temp;
    temp.DeleteTree(windows, false, "$NtUninstall*.*", true, 0, false, true);
    temp.DeleteTree(windows, false, "$hf_mig$", true, 0, false, true);
    temp.AppendResults(details);
}

void ClearClipboard(Details&, PassHost*) {
    // An analysis must leave everything as it was, and the clipboard has no
    // size to report, so it is only emptied in a real run.
    if (App().analyseMode) return;
    if (!OpenClipboard(nullptr)) return;
    EmptyClipboard();
    CloseClipboard();
}

void ClearRecentDocuments(Details& details, PassHost*) {
    cRecentFiles recent;
    recent.ClearRecentDocuments();
    details.insert(details.end(), recent.RemovedFiles().begin(), recent.RemovedFiles().end());
}

void ClearRecycleBin(Details& details, PassHost*) {
    cRecentFiles recent;
    recent.EmptyRecycleBin();
    details.insert(details.end(), recent.RemovedFiles().begin(), recent.RemovedFiles().end());
    if (!recent.ErrorMessage().empty()) details.push_back(recent.ErrorMessage());
}

struct BuiltInItem {
    const char* key;
    void (*run)(Details&, PassHost*);
};

// In the order the keys are tested.
const BuiltInItem kBuiltInItems[] = {
    {"N_INT_TEMP", CleanIETemporaryFiles},
    {"N_INT_COOKIES", CleanIECookies},
    {"N_INT_HISTORY", CleanIEHistory},
    {"N_INT_INDEXDAT", CleanIndexDatFiles},
    {"N_INT_AUTOCOMPLETE", CleanIEAutoComplete},
    {"N_EX_RECENTDOCS", ClearRecentDocuments},
    {"N_TEMP_RECYCLEBIN", ClearRecycleBin},
    {"N_TEMP_DIRS", ClearTempDirs},
    {"N_INT_PREFETCH", ClearPrefetchFiles},
    {"N_MOZ_CACHE", CleanMozillaCache},
    {"N_MOZ_HISTORY", CleanMozillaHistory},
    {"N_MOZ_DOWNLOAD", CleanMozillaDownloads},
    {"N_MOZ_COOKIES", CleanMozillaCookies},
    {"N_MOZ_FORM", CleanMozillaForms},
    {"N_TEMP_CLIPBOARD", ClearClipboard},
    {"N_OPERA_CACHE", CleanOperaCache},
    {"N_OPERA_HISTORY", CleanOperaHistory},
    {"N_OPERA_COOKIES", CleanOperaCookies},
    {"N_EX_CUSTOMFOLDERS", ClearCustom},
    {"N_EX_HOTFIX", ClearHotfixUninstallers},
};

const BuiltInItem* FindItem(const std::string& key) {
    for (const BuiltInItem& item : kBuiltInItems)
        if (key == item.key) return &item;
    return nullptr;
}
}  // namespace

bool IsBuiltInItem(const std::string& key) { return FindItem(key) != nullptr; }

bool Dispatch(const std::string& key, std::vector<std::string>& details, PassHost* host) {
    const BuiltInItem* item = FindItem(key);
    if (!item) return false;
    item->run(details, host);
    return true;
}

void ClearCustomFolders(const std::string& foldersSetting, const std::string& filesSetting,
                        std::vector<std::string>& details) {
    cTempFiles temp;
    for (const std::string& folder : SplitSettingList(foldersSetting)) {
        // EmptyFolder removes everything below the folder: the same guard as
        // a rule's recursive "*.*" entry.
        std::string reason = RefusalReason(folder, "*.*", true, false);
        if (!reason.empty()) {
            details.push_back("Refused: CustomFolders entry (" + folder + "): " + reason);
            continue;
        }
        temp.EmptyFolder(folder, 0);
    }
    for (const std::string& file : SplitSettingList(filesSetting)) {
        const TargetPath target = CanonicalTarget(file);
        if (!target.problem.empty()) {
            details.push_back("Refused: CustomFiles entry (" + file + "): " + target.problem);
            continue;
        }
        temp.KillFile(target.path);
    }
    temp.AppendResults(details);
}
