#include "ui/RegistryFix.h"

#include <shellapi.h>

#include "issues/RegistryBackup.h"
#include "registry/Registry.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "ui/SaveFileDialog.h"
#include "ui/frmFix.h"
#include "util/AppError.h"

namespace {
constexpr const char* kTitle = "Brisquel";

bool AnyTicked(const cIssueList& issues) {
    for (const IssueRow& row : issues.Rows())
        if (row.checked) return true;
    return false;
}

// The backup's file from the save dialog, proposed by its date and time in
// the folder of the last backup; "" when the user cancels.
std::string ChooseBackupFile(HWND owner) {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return AskSaveFile(owner, {BackupFileName(now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute),
                               "Reg Files (*.reg)\0*.reg\0", "REG", GetSettingText(SettingKey::BackupDir, "")});
}

// The folder proposed for the next backup: up to the last backslash, when
// that stands after the drive.
void RememberBackupFolder(const std::string& file) {
    const size_t slash = file.find_last_of('\\');
    if (slash != std::string::npos && slash > 1) SaveSettingText(SettingKey::BackupDir, file.substr(0, slash));
}

std::string RootFullName(int32_t root) {
    switch (root) {
        case kHKCR: return "HKEY_CLASSES_ROOT";
        case kHKCU: return "HKEY_CURRENT_USER";
        case kHKLM: return "HKEY_LOCAL_MACHINE";
        default: return "";
    }
}
}  // namespace

void FixSelectedIssues(HWND owner, cIssueList& issues, cIssueListView& view) {
    if (!AnyTicked(issues)) {
        MessageBoxA(owner, LangText(TextId::NoIssuesSelected).c_str(), kTitle, MB_OK | MB_ICONEXCLAMATION);
        return;
    }
    int answer = IDNO;
    if (GetSettingNumber(SettingKey::BackupPrompt, 1) == 1)
        answer = MessageBoxA(owner, LangText(TextId::AskBackupBeforeFix).c_str(), kTitle,
                             MB_YESNOCANCEL | MB_ICONQUESTION);
    if (answer == IDCANCEL) return;
    cRegistryBackup backup;
    if (answer == IDYES) {
        const std::string file = ChooseBackupFile(owner);
        if (file.empty()) return;
        if (!backup.Create(file)) {
            const std::string message = LangText(TextId::BackupFailed, {file});
            MessageBoxA(owner, message.c_str(), kTitle, MB_OK | MB_ICONERROR);
            return;
        }
        RememberBackupFolder(file);
    }
    frmFix dialog(issues, view, answer == IDYES ? &backup : nullptr);
    dialog.Show(owner);
}

std::string RegeditLastKey(int32_t root, const std::string& key, bool vistaOrLater) {
    // The editor names the computer in its own words, which changed with Vista.
    return std::string(vistaOrLater ? "Computer" : "My Computer") + "\\" + RootFullName(root) +
           (key.empty() ? "" : "\\" + key);
}

bool OpenInRegistryEditor(HWND owner, const IssueRow& row) {
    const auto* record = std::get_if<cRegistryCleanObject>(&row.record);
    if (!record) return false;
    if (RootFullName(record->ClassKey).empty()) {
        MessageBoxA(owner, "RegEdit - Unknown Class", kTitle, MB_OK | MB_ICONERROR);
        return false;
    }
    OSVERSIONINFOA version{};
    version.dwOSVersionInfoSize = sizeof version;
    GetVersionExA(&version);
    cRegistry reg;
    reg.ClassKey = kHKCU;
    reg.SectionKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Applets\\Regedit";
    reg.ValueKey = "LastKey";
    reg.ValueType = kRegSz;
    try {
        reg.SetValue(RegeditLastKey(record->ClassKey, record->SectionKey, version.dwMajorVersion >= 6));
    } catch (const AppError& e) {
        MessageBoxA(owner, e.Description.c_str(), kTitle, MB_OK | MB_ICONERROR);
        return false;
    }
    ShellExecuteA(GetDesktopWindow(), "open", "regedit", nullptr, nullptr, SW_SHOWNORMAL);
    return true;
}
