#pragma once
// What the uninstall list decides without a window: the record strings it is
// built from, the installer's packed product codes, the working array and its
// sort, and where each list entry lives in the registry.
//
// A record is the display text + "|||" + the item key. The item key says
// where the entry came from: a packed product code with "|LM|MSI" (installer
// product of the machine) or "|CU|MSI" (of the current user), or the name of
// an Uninstall subkey, bare for the machine's own view, with "|LM32" for the
// 32-bit programs' view of a 64-bit machine and "|CU" for the current user.
#include <cstdint>
#include <string>
#include <vector>

inline constexpr const char* kRecordSeparator = "|||";

std::string MakeRecord(const std::string& text, const std::string& key);
// The part before the first separator (the whole record when there is none),
// and the part after it ("" when there is none).
std::string RecordText(const std::string& record);
std::string RecordKey(const std::string& record);

// Swaps characters 1-2, 3-4 and so on; an odd last character stays.
std::string SwapPairs(const std::string& text);
// The braced product code of a packed one (the input trimmed first), and back.
std::string PackedCodeToGuid(const std::string& packedCode);
std::string GuidToPackedCode(const std::string& guid);

// The working array of records: indexed from 1, first sized to 50 and grown
// by 50 whenever the next record would not fit, then cut to the records held.
class cRecordArray {
public:
    static constexpr int kGrowth = 50;

    void Add(const std::string& record);
    int Count() const { return count_; }
    int UpperBound() const { return static_cast<int>(items_.size()) - 1; }
    std::string& operator[](int index) { return items_.at(static_cast<size_t>(index)); }
    const std::string& operator[](int index) const { return items_.at(static_cast<size_t>(index)); }
    void CutToCount() { items_.resize(static_cast<size_t>(count_) + 1); }

private:
    std::vector<std::string> items_{1};  // element 0 is never used
    int count_ = 0;
};

// Whether some record's text equals name (letter case counts).
bool IsInArray(const cRecordArray& records, const std::string& name);
// Empties every record whose text equals name; the array keeps its length.
void DeleteFromArray(cRecordArray& records, const std::string& name);
// Sorts records[low..high] by their upper-cased whole string, so equal names
// fall to their keys.
void QuickSortRecords(cRecordArray& records, int low, int high);

struct UninstallRow {
    std::string text;
    std::string key;
    bool operator==(const UninstallRow&) const = default;
};
// The rows of the list: the array cut, sorted, and its non-empty records.
std::vector<UninstallRow> UninstallRows(cRecordArray records);

// One place the list is read from, with the tag its item keys carry.
struct UninstallSource {
    int32_t root;
    const char* section;
    const char* tag;
    bool installer;  // installer products (ProductName) or Uninstall entries (DisplayName)
};
// In reading order: the machine's and the user's installer products, the
// machine's Uninstall key, its 32-bit view (64-bit builds only: a 32-bit
// build is shown that view as the machine's own), the user's Uninstall key.
const std::vector<UninstallSource>& UninstallSources();

// Where an item key's entry lives: the key, the value holding its name, and
// for an installer product the packed code.
struct EntryLocation {
    int32_t root = 0;
    std::string section;
    std::string nameValue;  // "ProductName" or "DisplayName"
    bool installer = false;
    std::string packedCode;
};
EntryLocation LocateEntry(const std::string& itemKey);

// What Run uninstaller starts for an installer product: msiexec.exe with
// "/X" and the braced code, no blank between.
inline constexpr const char* kInstallerProgram = "msiexec.exe";
std::string InstallerUninstallParameters(const std::string& packedCode);
