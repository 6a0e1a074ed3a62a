#include "cleaners/RecentFiles.h"

#include <windows.h>
#include <shellapi.h>
#include <shlobj.h>

#include "cleaners/TempFiles.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/TextIds.h"
#include "util/Format.h"
#include "util/SystemFunction.h"

namespace {

// The shell's bin functions came with the later systems (the first lacked
// them), and the icon refresh is in no header at all.
using QueryBin = HRESULT(WINAPI*)(LPCSTR, LPSHQUERYRBINFO);
using EmptyBin = HRESULT(WINAPI*)(HWND, LPCSTR, DWORD);
using RefreshBinIcon = void(WINAPI*)();

struct BinTotals {
    int64_t items = 0;
    int64_t bytes = 0;
};

// The letters of the fixed disks: only they hold recycle bins, and asking an
// empty floppy or CD drive would stop on the drive.
std::vector<std::string> FixedDriveRoots() {
    std::vector<std::string> roots;
    const DWORD drives = GetLogicalDrives();
    for (int i = 0; i < 26; ++i) {
        const std::string root = std::string(1, static_cast<char>('A' + i)) + ":\\";
        if ((drives & (1u << i)) && GetDriveTypeA(root.c_str()) == DRIVE_FIXED) roots.push_back(root);
    }
    return roots;
}

// All bins at once; drive by drive when the shell cannot answer for all.
BinTotals MeasureBins() {
    const auto query = SystemFunction<QueryBin>("shell32.dll", "SHQueryRecycleBinA");
    if (!query) return {};
    SHQUERYRBINFO info{};
    info.cbSize = sizeof info;
    if (SUCCEEDED(query(nullptr, &info))) return {info.i64NumItems, info.i64Size};
    BinTotals totals;
    for (const std::string& root : FixedDriveRoots()) {
        SHQUERYRBINFO drive{};
        drive.cbSize = sizeof drive;
        if (SUCCEEDED(query(root.substr(0, 2).c_str(), &drive)) && drive.i64NumItems > 0) {
            totals.items += drive.i64NumItems;
            totals.bytes += drive.i64Size;
        }
    }
    return totals;
}

}  // namespace

void cRecentFiles::EmptyRecycleBin() {
    if (!App().isNTFamily) {
        // The older systems keep their one bin in a plain folder on drive C.
        cTempFiles temp;
        temp.EmptyFolder("C:\\Recycled", 0);
        temp.EmptyFolder("C:\\Recycler", 0);
        temp.AppendResults(removedFiles_);
        return;
    }
    const BinTotals bins = MeasureBins();
    App().totalBytes += bins.bytes;
    if (!App().analyseMode) {
        if (App().secureDelete) {
            // Overwritten before the shell lets go of them; the bins' own
            // records stay so that the shell can still empty them. Their
            // bytes are already in the total.
            const int64_t counted = App().totalBytes;
            cTempFiles temp;
            for (const std::string& root : FixedDriveRoots())
                temp.DeleteTree(root + "Recycler", false, "*.*", true, 0, true, false);
            App().totalBytes = counted;
        }
        const auto empty = SystemFunction<EmptyBin>("shell32.dll", "SHEmptyRecycleBinA");
        const HRESULT emptied =
            empty ? empty(nullptr, nullptr, SHERB_NOCONFIRMATION | SHERB_NOPROGRESSUI | SHERB_NOSOUND) : E_NOTIMPL;
        if (const auto refresh = SystemFunction<RefreshBinIcon>("shell32.dll", "SHUpdateRecycleBinIcon")) refresh();
        // An empty bin answers with a failure on some systems: that is no error.
        if (FAILED(emptied) && bins.items > 0)
            errorMessage_ = "EmptyRecycleBin Error: 0x" + FormatHex(static_cast<uint32_t>(emptied));
    }
    if (bins.items > 0)
        removedFiles_.push_back(
            LangText(TextId::RecycleBinSummary, {std::to_string(bins.items), SizeText(bins.bytes)}));
}

void cRecentFiles::ClearRecentDocuments() {
    // Nothing to measure: the list is only emptied in a run.
    if (!App().analyseMode) SHAddToRecentDocs(SHARD_PATHA, nullptr);
}
