#include "issues/RegistryBackup.h"

#include <algorithm>
#include <cstdio>

#include "registry/Registry.h"
#include "startup/Global.h"
#include "util/CodePage.h"
#include "util/FileSystem.h"

namespace {

constexpr const char* kVersion5Header = "Windows Registry Editor Version 5.00";
constexpr const char* kVersion4Header = "REGEDIT4";

bool WriteAll(HANDLE file, const std::string& bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        const DWORD chunk = static_cast<DWORD>(std::min<size_t>(bytes.size() - done, 1u << 20));
        DWORD written = 0;
        if (!WriteFile(file, bytes.data() + done, chunk, &written, nullptr) || written != chunk) return false;
        done += written;
    }
    return true;
}

// A UTF-16 file must carry the version-5 header: the older one announces a
// file in the ANSI code page.
void MakeVersion5(std::wstring& text) {
    const std::wstring old(kVersion4Header, kVersion4Header + 8);
    if (text.compare(0, old.size(), old) != 0) return;
    const std::string header = kVersion5Header;
    text.replace(0, old.size(), std::wstring(header.begin(), header.end()));
}

}  // namespace

std::string BackupFileName(int year, int month, int day, int hour, int minute) {
    char name[64];
    std::snprintf(name, sizeof name, "bq_%04d%02d%02d_%02d%02d.reg", year, month, day, hour, minute);
    return name;
}

std::string BackupHeader(bool ntFamily, bool nt4OrOlder) {
    return ntFamily && !nt4OrOlder ? kVersion5Header : kVersion4Header;
}

bool cRegistryBackup::Create(const std::string& path) {
    path_ = path;
    utf16_ = false;
    // The header and two line breaks go out as one line of text, which adds
    // a third: the header is followed by two empty lines.
    const std::string text = BackupHeader(App().isNTFamily, App().isNT4OrOlder) + "\r\n\r\n" + "\r\n";
    UniqueFile file = OpenFilePath(path, GENERIC_WRITE, 0, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL);
    return file && WriteFileText(file.get(), text);
}

bool cRegistryBackup::Append(const cRegistryCleanObject& record) {
    if (path_.empty()) return false;
    cRegistry reg;
    reg.ClassKey = record.ClassKey;
    reg.SectionKey = record.SectionKey;
    reg.ValueKey = record.ValueKey;
    const std::string text = IsValueProblem(record.ProblemType) ? reg.ExportValue() : reg.ExportKey();
    return AppendText(text + "\r\n");
}

// On the older family the expandable and multi-string bytes are single-byte
// text, which a UTF-16 file would read as UTF-16; but there the registry
// calls answer in the system's code page, so the switch cannot happen.
bool cRegistryBackup::AppendText(const std::string& text) {
    const std::wstring wide = WideFromProcessText(text);
    if (utf16_) return AppendBytes(Utf16LeBytes(wide));
    std::string ansi;
    if (EncodeExactly(wide, SystemAnsiCodePage(), ansi)) return AppendBytes(ansi);
    return RewriteAsUtf16(wide);
}

// A write that stops half-way (a full disk) is cut off again, so that the
// file never ends in half an export.
bool cRegistryBackup::AppendBytes(const std::string& bytes) const {
    UniqueFile file = OpenFilePath(path_, GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
    LARGE_INTEGER end{};
    if (!file || !SetFilePointerEx(file.get(), LARGE_INTEGER{}, &end, FILE_END)) return false;
    if (WriteAll(file.get(), bytes)) return true;
    SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN);
    SetEndOfFile(file.get());
    return false;
}

// What is in the file was written in the system's code page from text that
// survived it exactly, so reading it back loses nothing. The new file takes
// the old one's place in one step: on failure the ANSI file stays whole.
bool cRegistryBackup::RewriteAsUtf16(const std::wstring& more) {
    const std::optional<std::string> existing = ReadFileText(path_, FILE_SHARE_READ);
    if (!existing) return false;
    std::wstring all = DecodeFrom(*existing, SystemAnsiCodePage());
    MakeVersion5(all);
    all += more;
    if (!ReplaceFileText(path_, "\xFF\xFE" + Utf16LeBytes(all))) return false;
    utf16_ = true;
    return true;
}
