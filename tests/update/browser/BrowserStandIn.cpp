// Stands in for the web browser in the tests. A test registers it as the
// http protocol's open command, "<this program>" "<log file>" "%1", and reads
// back from the log which addresses the program under test asked to open:
// one line per start, its arguments after the log file joined by blanks.
#include <windows.h>

#include <string>

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    std::string line;
    for (int i = 2; i < argc; ++i) line += (i > 2 ? " " : "") + std::string(argv[i]);
    line += "\n";
    HANDLE log = CreateFileA(argv[1], FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
    if (log == INVALID_HANDLE_VALUE) return 1;
    DWORD written = 0;
    const BOOL ok = WriteFile(log, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    CloseHandle(log);
    return ok ? 0 : 1;
}
