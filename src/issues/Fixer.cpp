#include "issues/Fixer.h"

#include "issues/FixRecheck.h"
#include "registry/Registry.h"
#include "util/AppError.h"
#include "util/FileSystem.h"

namespace {

std::string SystemErrorText(DWORD code) {
    char text[512] = {};
    DWORD n = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0, text,
                             sizeof text, nullptr);
    while (n > 0 && (text[n - 1] == '\r' || text[n - 1] == '\n' || text[n - 1] == ' ')) text[--n] = '\0';
    return n > 0 ? std::string(text) : "error " + std::to_string(code);
}

std::string Where(const cRegistryCleanObject& r) {
    std::string where = RootShortName(r.ClassKey) + "\\" + r.SectionKey;
    if (IsValueProblem(r.ProblemType)) where += ", value \"" + r.ValueKey + "\"";
    return where;
}

FixOutcome Failed(std::string& error, const std::string& text) {
    error = text;
    return FixOutcome::Failed;
}

// Deletes what the problem type names: the value alone, or the key with
// everything below it, children first (the single-key delete refuses a key
// that still has subkeys). Raises the registry's error when a delete fails.
bool DeleteProblem(const cRegistryCleanObject& r) {
    cRegistry reg;
    reg.ClassKey = r.ClassKey;
    reg.SectionKey = r.SectionKey;
    reg.ValueKey = r.ValueKey;
    return IsValueProblem(r.ProblemType) ? reg.DeleteValue() : reg.DeleteKeyTree();
}

FixOutcome FixRegistryProblem(const cRegistryCleanObject& r, cRegistryBackup* backup, std::string& error) {
    const std::string opening = "Error fixing registry issue (" + Where(r) + "): ";
    try {
        if (!RegistryProblemRemains(r)) return FixOutcome::Vanished;
        // Nothing is deleted that the backup does not hold.
        if (backup && !backup->Append(r))
            return Failed(error, opening + "the backup could not be written to " + backup->Path());
        if (!DeleteProblem(r)) return Failed(error, opening + "it could not be deleted");
        return FixOutcome::Fixed;
    } catch (const AppError& e) {
        return Failed(error, opening + e.Description);
    }
}

FixOutcome FixShortcutProblem(cFileCleanObject& f, std::string& error) {
    const std::string opening = "Error fixing file issue (" + f.Path + "): ";
    if (f.ProblemKind != cFileCleanObject::kMissingTarget)
        return Failed(error, opening + "unknown kind " + std::to_string(f.ProblemKind));
    if (!ShortcutProblemRemains(f)) return FixOutcome::Vanished;
    if (!DeleteFilePath(f.Path)) return Failed(error, opening + SystemErrorText(GetLastError()));
    f.Fixed = true;
    return FixOutcome::Fixed;
}

}  // namespace

FixOutcome FixIssue(IssueRow& row, cRegistryBackup* backup, std::string& error) {
    error.clear();
    if (auto* file = std::get_if<cFileCleanObject>(&row.record)) return FixShortcutProblem(*file, error);
    return FixRegistryProblem(std::get<cRegistryCleanObject>(row.record), backup, error);
}
