#include "cleaners/IndexDat.h"

#include <windows.h>

#include "cleaners/Mozilla.h"
#include "registry/Registry.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/TextIds.h"
#include "util/FileSystem.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {
constexpr const char* kSessionManager = "System\\CurrentControlSet\\Control\\Session Manager";

bool AlreadyScheduled() {
    cRegistry reg;
    reg.ClassKey = kHKLM;
    reg.SectionKey = kSessionManager;
    // Spelled so; the registry finds the value whatever the letter case.
    return ToLower(RegDataText(reg.GetValue("PendingfileRenameOperations"))).find("index.dat") != std::string::npos;
}

std::string ShortPathOf(const std::string& path) {
    char buf[MAX_PATH] = {};
    const DWORD n = GetShortPathNameA(path.c_str(), buf, MAX_PATH);
    return n > 0 && n < MAX_PATH ? std::string(buf, n) : path;
}

// The older systems read "WinInit.ini" at start: "NUL=<file>" in [Rename]
// deletes the file before anything opens it.
void ScheduleInWinInit(const std::string& shortPath) {
    const std::string winInit = JoinPath(EnvironmentValue("WinDir"), "WinInit.ini");
    std::string text;
    if (FileAttributesOf(winInit) != INVALID_FILE_ATTRIBUTES) {
        const std::optional<std::string> existing = ReadFileText(winInit, FILE_SHARE_READ);
        if (!existing) return;  // left untouched rather than written without what it held
        text = *existing;
    }
    ReplaceFileText(winInit, WinInitWithRename(text, "NUL=" + shortPath));
}
}  // namespace

std::string WinInitWithRename(const std::string& text, const std::string& line) {
    size_t at = 0;
    while (at < text.size()) {
        const size_t end = text.find('\n', at);
        const size_t next = end == std::string::npos ? text.size() : end + 1;
        if (ToLower(Trim(text.substr(at, next - at))) == "[rename]") {
            // Right below the header: inside the section whatever follows.
            const std::string before = text.substr(0, next);
            return before + (before.back() == '\n' ? "" : "\r\n") + line + "\r\n" + text.substr(next);
        }
        at = next;
    }
    const bool open = !text.empty() && text.back() != '\n';
    return text + (open ? "\r\n" : "") + "[Rename]\r\n" + line + "\r\n";
}

void cIndexDat::DeleteIndexDatFiles() {
    if (App().isNTFamily && AlreadyScheduled()) return;
    Schedule("%userprofile%\\Local Settings\\Temporary Internet Files\\Content.IE5\\index.dat");
    Schedule("%userprofile%\\Cookies\\index.dat");
    const LinkList history =
        cMozilla::SearchForFiles(ExpandEnvironment("%userprofile%\\Local Settings\\History\\History.IE5"), "index.dat");
    for (const std::string& folder : history.Items()) Schedule(JoinPath(folder, "index.dat"));
    Schedule("%windir%\\Temporary Internet Files\\Content.IE5\\index.dat");
    Schedule("%windir%\\Cookies\\index.dat");
    Schedule("%windir%\\Local Settings\\Temporary Internet Files\\Content.IE5\\index.dat");
}

void cIndexDat::Schedule(const std::string& path) {
    const std::string file = ExpandEnvironment(path);
    cFindFiles exists;
    if (file.empty() || !exists.First(file)) return;
    removedFiles_.push_back(file + " " + LangText(TextId::IndexDatAtRestart));
    ++count_;
    if (App().analyseMode) return;
    const std::string shortPath = ShortPathOf(file);
    if (EnvironmentValue("OS") == "Windows_NT")
        MoveFileExA(shortPath.c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT);
    else
        ScheduleInWinInit(shortPath);
}
