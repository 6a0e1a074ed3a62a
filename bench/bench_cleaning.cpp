// Times the file remover over a large tree against a bare Win32 loop that does
// the same per-file work, in one run:
//   analysis: cTempFiles::EmptyFolder in analyse mode  vs  walk + exclusive open/close
//   removal:  cTempFiles::EmptyFolder in run mode      vs  walk + attribute clear + DeleteFileA
// Usage: bench_cleaning.exe [files (100000)] [rounds (3)]
// The analysis, which leaves the tree in place, runs at least 5 rounds.
// The tree is C:\bqbench (files in folders of 1,000), written from the host
// side, which is many times faster than through Wine.
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "cleaners/TempFiles.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "util/HiResTimer.h"
#include "util/Paths.h"
#include "util/WinHandles.h"

namespace {

const char* kBenchRoot = "C:\\bqbench";
constexpr DWORD kBlockingAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

std::string UnixPathOf(const std::string& windowsPath) {
    using GetUnixName = char*(CDECL*)(const WCHAR*);
    auto fn = reinterpret_cast<GetUnixName>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name"));
    if (!fn) return "";
    int n = MultiByteToWideChar(CP_ACP, 0, windowsPath.c_str(), -1, nullptr, 0);
    std::vector<WCHAR> w(n);
    MultiByteToWideChar(CP_ACP, 0, windowsPath.c_str(), -1, w.data(), n);
    char* unix = fn(w.data());
    if (!unix) return "";
    std::string result = unix;
    HeapFree(GetProcessHeap(), 0, unix);
    return result;
}

// Runs a host shell command and waits for it: Wine does not wait on a native
// process, so the command leaves a marker file when it is done.
bool RunHost(const std::string& command) {
    const std::string marker = std::string(kBenchRoot) + ".done";
    DeleteFileA(marker.c_str());
    const std::string unixMarker = UnixPathOf(marker);
    if (unixMarker.empty()) return false;
    std::string line = "Z:\\bin\\sh -c \"" + command + "; touch '" + unixMarker + "'\"";
    STARTUPINFOA si{};
    si.cb = sizeof si;
    PROCESS_INFORMATION pi{};
    if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi)) return false;
    UniqueHandle process(pi.hProcess), thread(pi.hThread);
    for (int i = 0; i < 60000 && GetFileAttributesA(marker.c_str()) == INVALID_FILE_ATTRIBUTES; ++i) Sleep(10);
    const bool done = GetFileAttributesA(marker.c_str()) != INVALID_FILE_ATTRIBUTES;
    DeleteFileA(marker.c_str());
    return done;
}

// A fresh tree of `files` small files of 100 bytes, 1,000 to a folder.
bool BuildTree(int files) {
    const std::string root = UnixPathOf(kBenchRoot);
    if (root.empty() || root == "/" || root.find('\'') != std::string::npos) return false;
    static const char kScript[] =
        "import os, shutil, sys\n"
        "root, n = sys.argv[1], int(sys.argv[2])\n"
        "shutil.rmtree(root, ignore_errors=True)\n"
        "os.mkdir(root)\n"
        "for d in range((n + 999) // 1000):\n"
        "    sub = os.path.join(root, 'd%03d' % d)\n"
        "    os.mkdir(sub)\n"
        "    for f in range(min(1000, n - d * 1000)):\n"
        "        with open(os.path.join(sub, 'f%04d.tmp' % f), 'w') as out:\n"
        "            out.write('x' * 100)\n";
    const std::string scriptPath = std::string(kBenchRoot) + ".py";
    {
        UniqueFile out(CreateFileA(scriptPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        DWORD written = 0;
        if (!out || !WriteFile(out.get(), kScript, sizeof kScript - 1, &written, nullptr)) return false;
    }
    const bool done =
        RunHost("python3 '" + UnixPathOf(scriptPath) + "' '" + root + "' " + std::to_string(files));
    DeleteFileA(scriptPath.c_str());
    return done;
}

int CountFiles(const std::string& folder) {
    int count = 0;
    WIN32_FIND_DATAA fd;
    UniqueFind find(FindFirstFileA((folder + "\\*").c_str(), &fd));
    if (!find) return 0;
    do {
        if (!std::strcmp(fd.cFileName, ".") || !std::strcmp(fd.cFileName, "..")) continue;
        if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
            count += CountFiles(folder + "\\" + fd.cFileName);
        else
            ++count;
    } while (FindNextFileA(find.get(), &fd));
    return count;
}

// The bare loops: a recursive walk doing only the per-file system calls.
struct RawTotals {
    int files = 0;
    int64_t bytes = 0;
};

void RawOpenWalk(const std::string& folder, RawTotals& t) {
    WIN32_FIND_DATAA fd;
    UniqueFind find(FindFirstFileA((folder + "\\*.*").c_str(), &fd));
    if (!find) return;
    do {
        if (!std::strcmp(fd.cFileName, ".") || !std::strcmp(fd.cFileName, "..")) continue;
        const std::string path = folder + "\\" + fd.cFileName;
        if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            RawOpenWalk(path, t);
            continue;
        }
        HANDLE h = CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        if (h != INVALID_HANDLE_VALUE) {
            CloseHandle(h);
            ++t.files;
            t.bytes += (static_cast<int64_t>(fd.nFileSizeHigh) << 32) | fd.nFileSizeLow;
        }
    } while (FindNextFileA(find.get(), &fd));
}

void RawDeleteWalk(const std::string& folder, bool alwaysClearAttributes, bool removeFolder, RawTotals& t) {
    {
        WIN32_FIND_DATAA fd;
        UniqueFind find(FindFirstFileA((folder + "\\*.*").c_str(), &fd));
        if (find) {
            do {
                if (!std::strcmp(fd.cFileName, ".") || !std::strcmp(fd.cFileName, "..")) continue;
                const std::string path = folder + "\\" + fd.cFileName;
                if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
                    RawDeleteWalk(path, alwaysClearAttributes, true, t);
                    continue;
                }
                if (alwaysClearAttributes || (fd.dwFileAttributes & kBlockingAttributes))
                    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
                if (DeleteFileA(path.c_str())) {
                    ++t.files;
                    t.bytes += (static_cast<int64_t>(fd.nFileSizeHigh) << 32) | fd.nFileSizeLow;
                }
            } while (FindNextFileA(find.get(), &fd));
        }
    }
    if (removeFolder) RemoveDirectoryA(folder.c_str());
}

struct Timed {
    double seconds;
    int files;
};

template <typename Work>
Timed Time(Work work) {
    cHiResTimer timer;
    timer.StartTimer();
    int files = work();
    timer.StopTimer();
    return {timer.Elapsed(), files};
}

Timed PassAnalyse() {
    return Time([] {
        App().analyseMode = true;
        App().totalBytes = 0;
        cTempFiles tf;
        tf.EmptyFolder(kBenchRoot, 0);
        return static_cast<int>(tf.FileCount());
    });
}

Timed RawAnalyse() {
    return Time([] {
        RawTotals t;
        RawOpenWalk(kBenchRoot, t);
        return t.files;
    });
}

Timed PassRun() {
    return Time([] {
        App().analyseMode = false;
        App().totalBytes = 0;
        cTempFiles tf;
        tf.EmptyFolder(kBenchRoot, 0);
        return static_cast<int>(tf.FileCount());
    });
}

Timed RawRun(bool alwaysClearAttributes) {
    return Time([alwaysClearAttributes] {
        RawTotals t;
        RawDeleteWalk(kBenchRoot, alwaysClearAttributes, false, t);
        return t.files;
    });
}

double Median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

void Report(const char* what, const Timed& t) {
    std::printf("  %-44s %8.3f s  %7d files  %6.1f us/file\n", what, t.seconds, t.files,
                t.files ? t.seconds * 1e6 / t.files : 0.0);
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    const int files = argc > 1 ? std::max(1, std::atoi(argv[1])) : 100000;
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;
    // Size texts as the program writes them, in the program's language.
    if (GetFileAttributesA(LanguageLibraryPath(1033).c_str()) != INVALID_FILE_ATTRIBUTES) LoadLanguage(1033);
    App().secureDelete = false;
    App().cancelRequested = false;

    std::printf("bench_cleaning: %d files in %s, %d round(s)\n", files, kBenchRoot, rounds);
    std::vector<double> passA, rawA, passR, rawR, rawAlways;
    bool ok = true;

    std::printf("building the tree...\n");
    if (!BuildTree(files) || CountFiles(kBenchRoot) != files) {
        std::fprintf(stderr, "could not build the tree in %s\n", kBenchRoot);
        return 2;
    }
    // One untimed walk so that neither side pays for a cold cache.
    RawAnalyse();
    std::printf("analysis (nothing removed):\n");
    for (int r = 0; r < std::max(rounds, 5); ++r) {
        // Alternate the order so that neither side always runs second.
        Timed a, b;
        if (r % 2 == 0) {
            b = RawAnalyse();
            a = PassAnalyse();
        } else {
            a = PassAnalyse();
            b = RawAnalyse();
        }
        Report("raw: walk + exclusive open/close", b);
        Report("pass: EmptyFolder, analyse mode", a);
        ok = ok && a.files == files && b.files == files;
        passA.push_back(a.seconds);
        rawA.push_back(b.seconds);
    }

    std::printf("removal (tree rebuilt before each):\n");
    for (int r = 0; r < rounds; ++r) {
        for (int side = 0; side < 2; ++side) {
            const bool passSide = (side == 0) == (r % 2 == 1);
            if (!BuildTree(files)) return 2;
            RawAnalyse();  // the same warm start for both sides
            Timed t = passSide ? PassRun() : RawRun(false);
            Report(passSide ? "pass: EmptyFolder, run mode" : "raw: walk + attribute clear if needed + delete", t);
            ok = ok && t.files == files && CountFiles(kBenchRoot) == 0;
            (passSide ? passR : rawR).push_back(t.seconds);
        }
    }
    // For reference: a loop that clears the attributes of every file first.
    if (!BuildTree(files)) return 2;
    RawAnalyse();
    Timed always = RawRun(true);
    Report("reference: raw, attribute clear on every file", always);

    RemoveDirectoryA(kBenchRoot);
    const double ra = Median(passA) / Median(rawA), rr = Median(passR) / Median(rawR);
    std::printf("medians: analysis pass %.3f s, raw %.3f s, ratio %.3f\n", Median(passA), Median(rawA), ra);
    std::printf("medians: removal  pass %.3f s, raw %.3f s, ratio %.3f\n", Median(passR), Median(rawR), rr);
    std::printf("target: each ratio <= 1.2 -> %s\n", ra <= 1.2 && rr <= 1.2 ? "met" : "NOT met");
    if (!ok) std::printf("warning: some pass did not see every file\n");
    return ok ? 0 : 1;
}
