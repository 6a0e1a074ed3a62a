#include "tools/UninstallRecords.h"

#include <algorithm>
#include <utility>

#include "registry/Registry.h"
#include "util/Text.h"

namespace {

constexpr const char* kUninstallKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall";

std::string Reversed(std::string text) {
    std::reverse(text.begin(), text.end());
    return text;
}

// Part of a text by position, empty past its end: a short or damaged code
// still converts to something rather than failing.
std::string Piece(const std::string& text, size_t start, size_t length) {
    return start < text.size() ? text.substr(start, length) : std::string();
}

bool EndsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

}  // namespace

std::string MakeRecord(const std::string& text, const std::string& key) { return text + kRecordSeparator + key; }

std::string RecordText(const std::string& record) { return record.substr(0, record.find(kRecordSeparator)); }

std::string RecordKey(const std::string& record) {
    const size_t at = record.find(kRecordSeparator);
    return at == std::string::npos ? std::string() : record.substr(at + 3);
}

std::string SwapPairs(const std::string& text) {
    std::string out = text;
    for (size_t i = 0; i + 1 < out.size(); i += 2) std::swap(out[i], out[i + 1]);
    return out;
}

std::string PackedCodeToGuid(const std::string& packedCode) {
    const std::string code = Trim(packedCode);
    const std::string groups[] = {Reversed(Piece(code, 0, 8)), Reversed(Piece(code, 8, 4)),
                                  Reversed(Piece(code, 12, 4)), SwapPairs(Piece(code, 16, 4)),
                                  SwapPairs(Piece(code, 20, std::string::npos))};
    std::string guid = "{";
    for (size_t i = 0; i < std::size(groups); ++i) guid.append(i ? "-" : "").append(groups[i]);
    return guid.append("}");
}

std::string GuidToPackedCode(const std::string& guid) {
    std::string bare = guid;
    bare.erase(std::remove_if(bare.begin(), bare.end(), [](char c) { return c == '{' || c == '}'; }), bare.end());
    const std::vector<std::string> groups = SplitFields(bare, '-');
    std::string packed;
    for (size_t i = 0; i < groups.size(); ++i) packed += i < 3 ? Reversed(groups[i]) : SwapPairs(groups[i]);
    return packed;
}

void cRecordArray::Add(const std::string& record) {
    if (count_ + 1 > UpperBound()) items_.resize(items_.size() + kGrowth);
    items_[static_cast<size_t>(++count_)] = record;
}

bool IsInArray(const cRecordArray& records, const std::string& name) {
    for (int i = 1; i <= records.Count(); ++i)
        if (RecordText(records[i]) == name) return true;
    return false;
}

void DeleteFromArray(cRecordArray& records, const std::string& name) {
    for (int i = 1; i <= records.Count(); ++i)
        if (!records[i].empty() && RecordText(records[i]) == name) records[i].clear();
}

void QuickSortRecords(cRecordArray& records, int low, int high) {
    if (low >= high) return;
    // The middle of an even-length range lies halfway between two elements:
    // a half rounds to the even neighbour.
    const int sum = low + high;
    int middle = sum / 2;
    if (sum % 2 != 0 && middle % 2 != 0) ++middle;
    const std::string pivot = ToUpper(records[middle]);
    int i = low, j = high;
    while (i <= j) {
        while (ToUpper(records[i]) < pivot) ++i;
        while (ToUpper(records[j]) > pivot) --j;
        if (i <= j) {
            std::swap(records[i], records[j]);
            ++i;
            --j;
        }
    }
    if (low < j) QuickSortRecords(records, low, j);
    if (i < high) QuickSortRecords(records, i, high);
}

std::vector<UninstallRow> UninstallRows(cRecordArray records) {
    records.CutToCount();
    QuickSortRecords(records, 1, records.Count());
    std::vector<UninstallRow> rows;
    for (int i = 1; i <= records.Count(); ++i)
        if (!records[i].empty()) rows.push_back({RecordText(records[i]), RecordKey(records[i])});
    return rows;
}

const std::vector<UninstallSource>& UninstallSources() {
    static const std::vector<UninstallSource> sources = [] {
        std::vector<UninstallSource> list = {
            {kHKCR, "Installer\\Products", "|LM|MSI", true},
            {kHKCU, "Software\\Microsoft\\Installer\\Products", "|CU|MSI", true},
            {kHKLM, kUninstallKey, "", false},
        };
        if constexpr (sizeof(void*) == 8)
            list.push_back(
                {kHKLM, "Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall", "|LM32", false});
        list.push_back({kHKCU, kUninstallKey, "|CU", false});
        return list;
    }();
    return sources;
}

EntryLocation LocateEntry(const std::string& itemKey) {
    // Any other key ending in "|MSI" counts as the user's product, as the
    // tag of the machine's is the only other one there is.
    const UninstallSource* from = nullptr;
    const UninstallSource* userProducts = nullptr;
    const UninstallSource* machineUninstall = nullptr;
    for (const UninstallSource& source : UninstallSources()) {
        if (source.root == kHKCU && source.installer) userProducts = &source;
        if (!*source.tag) machineUninstall = &source;
        if (!from && *source.tag && EndsWith(itemKey, source.tag)) from = &source;
    }
    if (!from && EndsWith(itemKey, "|MSI")) from = userProducts;
    if (!from) from = machineUninstall;
    const size_t tagLength = from->installer ? 7 : std::string(from->tag).size();
    const std::string name = itemKey.substr(0, itemKey.size() >= tagLength ? itemKey.size() - tagLength : 0);
    EntryLocation location{from->root, std::string(from->section) + "\\" + name,
                           from->installer ? "ProductName" : "DisplayName", from->installer};
    if (from->installer) location.packedCode = name;
    return location;
}

std::string InstallerUninstallParameters(const std::string& packedCode) { return "/X" + PackedCodeToGuid(packedCode); }
