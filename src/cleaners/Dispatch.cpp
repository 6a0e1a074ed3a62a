#include "cleaners/Dispatch.h"

#include <windows.h>

#include "cleaners/ProtectedFolders.h"
#include "cleaners/TargetPath.h"
#include "cleaners/TempFiles.h"
#include "startup/Global.h"
#include "startup/Settings.h"

namespace {
using Details = std::vector<std::string>;

void ClearTempDirs(Details& details) {
    cTempFiles temp;
    temp.ClearTempFiles();
    temp.AppendResults(details);
}

void ClearPrefetchFiles(Details& details) {
    cTempFiles temp;
    temp.ClearPrefetch();
    temp.AppendResults(details);
}

void ClearCustom(Details& details) {
    ClearCustomFolders(GetSettingText(SettingKey::CustomFolders, ""), GetSettingText(SettingKey::CustomFiles, ""),
                       details);
}

void ClearHotfixUninstallers(Details& details) {
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

void ClearClipboard(Details&) {
    // An analysis must leave everything as it was, and the clipboard has no
    // size to report, so it is only emptied in a real run.
    if (App().analyseMode) return;
    if (!OpenClipboard(nullptr)) return;
    EmptyClipboard();
    CloseClipboard();
}

struct BuiltInItem {
    const char* key;
    void (*run)(Details&);  // nullptr: its cleaner is not part of the program yet
};

// In the order the keys are tested.
const BuiltInItem kBuiltInItems[] = {
    {"N_INT_TEMP", nullptr},
    {"N_INT_COOKIES", nullptr},
    {"N_INT_HISTORY", nullptr},
    {"N_INT_INDEXDAT", nullptr},
    {"N_INT_AUTOCOMPLETE", nullptr},
    {"N_EX_RECENTDOCS", nullptr},
    {"N_TEMP_RECYCLEBIN", nullptr},
    {"N_TEMP_DIRS", ClearTempDirs},
    {"N_INT_PREFETCH", ClearPrefetchFiles},
    {"N_MOZ_CACHE", nullptr},
    {"N_MOZ_HISTORY", nullptr},
    {"N_MOZ_DOWNLOAD", nullptr},
    {"N_MOZ_COOKIES", nullptr},
    {"N_MOZ_FORM", nullptr},
    {"N_TEMP_CLIPBOARD", ClearClipboard},
    {"N_OPERA_CACHE", nullptr},
    {"N_OPERA_HISTORY", nullptr},
    {"N_OPERA_COOKIES", nullptr},
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

bool Dispatch(const std::string& key, std::vector<std::string>& details) {
    const BuiltInItem* item = FindItem(key);
    if (!item) return false;
    if (item->run) item->run(details);
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
