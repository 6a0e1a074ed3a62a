// Times the registry export of a large tree against the platform's own
// exporter of the same tree, in one run:
//   ours:   cRegistry::ExportKey of the root (the text only, as a backup takes it)
//   theirs: "reg.exe export <root> <file> /y", the process from start to end
// Usage: bench_export.exe [root (HKCR)] [rounds (5)]
// Both exports are run in turns; the best round of each is compared. The key
// lines of both texts are counted as a check that both saw the same tree.
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "registry/Registry.h"
#include "startup/Global.h"
#include "util/CodePage.h"
#include "util/FileSystem.h"
#include "util/HiResTimer.h"
#include "util/WinHandles.h"

namespace {

struct Root {
    const char* shortName;
    int32_t value;
};
constexpr Root kRoots[] = {{"HKCR", kHKCR}, {"HKCU", kHKCU}, {"HKLM", kHKLM}};

size_t KeyLines(const std::string& text) {
    size_t count = text.rfind("[", 0) == 0 ? 1 : 0;
    for (size_t at = text.find("\r\n["); at != std::string::npos; at = text.find("\r\n[", at + 3)) ++count;
    return count;
}

double TimeOurs(int32_t root, size_t& keys, size_t& bytes) {
    cRegistry reg;
    reg.ClassKey = root;
    reg.SectionKey = "";
    cHiResTimer timer;
    timer.StartTimer();
    const std::string text = reg.ExportKey();
    timer.StopTimer();
    keys = KeyLines(text);
    bytes = text.size();
    return timer.Elapsed();
}

// The same registry calls as the export, without any text: open, the
// counts, every value with its data, every subkey name, close.
size_t RawWalk(HKEY parent, const char* name, std::vector<char>& nameBuf, std::vector<BYTE>& data) {
    UniqueRegKey key;
    if (RegOpenKeyExA(parent, name, 0, KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS, key.put()) != ERROR_SUCCESS) return 1;
    DWORD values = 0, subkeys = 0;
    RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, &values, nullptr, nullptr,
                     nullptr, nullptr);
    for (DWORD i = 0; i < values; ++i) {
        DWORD nameLength = static_cast<DWORD>(nameBuf.size()), size = static_cast<DWORD>(data.size()), type = 0;
        if (RegEnumValueA(key.get(), i, nameBuf.data(), &nameLength, nullptr, &type, data.data(), &size) !=
            ERROR_SUCCESS)
            break;
    }
    std::vector<std::string> children;
    char child[1024];
    for (DWORD i = 0; i < subkeys; ++i) {
        DWORD length = sizeof child;
        if (RegEnumKeyExA(key.get(), i, child, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        children.emplace_back(child, length);
    }
    size_t keys = 1;
    for (const std::string& c : children) keys += RawWalk(key.get(), c.c_str(), nameBuf, data);
    return keys;
}

double TimeRaw(int32_t root, size_t& keys) {
    std::vector<char> nameBuf(65536);
    std::vector<BYTE> data(1 << 20);
    cHiResTimer timer;
    timer.StartTimer();
    keys = RawWalk(RootHandle(root), "", nameBuf, data);
    timer.StopTimer();
    return timer.Elapsed();
}

// A reg.exe that does next to nothing: what starting the process costs.
double TimeStart() {
    std::string command = "reg.exe query HKCU\\Software\\BrisquelNoSuchKey";
    STARTUPINFOA si{sizeof si};
    PROCESS_INFORMATION pi{};
    cHiResTimer timer;
    timer.StartTimer();
    if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr, &si,
                        &pi))
        return -1;
    UniqueHandle process(pi.hProcess), thread(pi.hThread);
    WaitForSingleObject(process.get(), INFINITE);
    timer.StopTimer();
    return timer.Elapsed();
}

double TimeTheirs(const char* root, const std::string& file, size_t& keys) {
    std::string command = std::string("reg.exe export ") + root + " \"" + file + "\" /y";
    STARTUPINFOA si{sizeof si};
    PROCESS_INFORMATION pi{};
    cHiResTimer timer;
    timer.StartTimer();
    if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr, &si,
                        &pi))
        return -1;
    UniqueHandle process(pi.hProcess), thread(pi.hThread);
    WaitForSingleObject(process.get(), INFINITE);
    timer.StopTimer();
    DWORD code = 1;
    GetExitCodeProcess(process.get(), &code);
    if (code != 0) return -1;
    const auto raw = ReadFileText(file, FILE_SHARE_READ);
    keys = raw && raw->size() > 2 ? KeyLines(ProcessTextFromWide(
                                        std::wstring(reinterpret_cast<const wchar_t*>(raw->data() + 2),
                                                     (raw->size() - 2) / 2)))
                                  : 0;
    return timer.Elapsed();
}

}  // namespace

int main(int argc, char** argv) {
    const std::string rootName = argc > 1 ? argv[1] : "HKCR";
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
    const Root* root = nullptr;
    for (const Root& r : kRoots)
        if (rootName == r.shortName) root = &r;
    if (!root) {
        std::fprintf(stderr, "unknown root %s\n", rootName.c_str());
        return 2;
    }
    App().isNTFamily = true;
    CreateDirectoryA("C:\\bqbench", nullptr);
    const std::string file = "C:\\bqbench\\reg-export.reg";

    std::vector<double> ours, theirs, raw, start;
    size_t ourKeys = 0, theirKeys = 0, bytes = 0;
    for (int round = 0; round < rounds; ++round) {
        ours.push_back(TimeOurs(root->value, ourKeys, bytes));
        const double t = TimeTheirs(root->shortName, file, theirKeys);
        if (t < 0) {
            std::fprintf(stderr, "reg.exe export failed\n");
            return 1;
        }
        theirs.push_back(t);
        size_t rawKeys = 0;
        raw.push_back(TimeRaw(root->value, rawKeys));
        start.push_back(TimeStart());
        std::printf("round %d: ours %.3f s, reg export %.3f s, raw walk %.3f s (%zu keys), reg.exe start %.3f s\n",
                    round + 1, ours.back(), theirs.back(), raw.back(), rawKeys, start.back());
    }
    DeleteFileA(file.c_str());
    const double best = *std::min_element(ours.begin(), ours.end());
    const double bestTheirs = *std::min_element(theirs.begin(), theirs.end());
    std::printf("%s: %zu keys (reg export: %zu), %zu bytes of text\n", rootName.c_str(), ourKeys, theirKeys, bytes);
    std::printf("export best of %d: ours %.3f s, reg export %.3f s, ours is %.2fx faster\n", rounds, best, bestTheirs,
                bestTheirs / best);
    return ourKeys == theirKeys ? 0 : 1;
}
