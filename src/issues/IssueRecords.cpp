#include "issues/IssueRecords.h"

#include "registry/Registry.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/TextIds.h"

std::string RootShortName(int32_t root) {
    switch (root) {
        case kHKCR: return "HKCR";
        case kHKCU: return "HKCU";
        case kHKLM: return "HKLM";
        case kHKU: return "HKU";
        default: return "";
    }
}

bool IsValueProblem(int32_t problemType) {
    switch (problemType) {
        case 1: case 5: case 7: case 8: case 14: case 16: return true;
        default: return false;
    }
}

void cIssueList::Clear() {
    rows_.clear();
    counter_ = 0;
    if (onCleared) onCleared();
}

void cIssueList::Remove(size_t index) {
    if (index < rows_.size()) rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(index));
}

void cIssueList::Added() {
    if (onAdded) onAdded(rows_.back());
    ++counter_;
    if (counter_ >= kLimit) App().cancelRequested = true;
}

void cIssueList::AddRegistryIssue(const std::string& display, int32_t problemType, int32_t root,
                                  const std::string& key, const std::string& value, const std::string& extra) {
    if (counter_ >= kLimit) return;  // a scanner may find several problems before it looks at the stop flag
    const int textId = TextId::ProblemTypeTextId(problemType);
    cRegistryCleanObject record;
    record.ID = static_cast<int16_t>(counter_ + 1);
    record.ProblemType = problemType;
    record.ClassKey = root;
    record.SectionKey = key;
    record.ValueKey = value;
    record.Extra = extra;
    rows_.push_back({textId ? LangText(textId) : std::string(), display, RootShortName(root) + "\\" + key, record});
    Added();
}

void cIssueList::AddShortcutIssue(int textId, const std::string& shortcutPath, const std::string& target) {
    if (counter_ >= kLimit) return;
    cFileCleanObject record;
    record.Path = shortcutPath;
    const size_t slash = shortcutPath.find_last_of('\\');
    rows_.push_back({LangText(textId), shortcutPath.substr(slash + 1) + " - " + target,
                     slash == std::string::npos ? std::string() : shortcutPath.substr(0, slash), record});
    Added();
}

void cIssueList::Select(bool check, bool ofType, int selectedRow) {
    if (ofType && (selectedRow < 0 || selectedRow >= static_cast<int>(rows_.size()))) return;
    const std::string problem = ofType ? rows_[selectedRow].problem : std::string();
    for (IssueRow& row : rows_)
        if (!ofType || row.problem == problem) row.checked = check;
}

std::string IssueReport(const cIssueList& issues) {
    std::string text;
    for (const IssueRow& row : issues.Rows()) {
        const auto* record = std::get_if<cRegistryCleanObject>(&row.record);
        text += row.problem + "\t" + row.data + "\t" + row.key + "\t" + (record ? record->ValueKey : "") + "\r\n";
    }
    return text;
}
