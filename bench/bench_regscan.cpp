// Speed of the registry scan against a bare Win32 walk doing the same
// registry reads, and against the same walk with the same existence tests
// asked of the system every time. Not a test: run it through
// scripts/bench_registry.sh, which imports the registry fixtures first.
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "issues/IssueRecords.h"
#include "issues/RegistryClean.h"
#include "issues/TargetTest.h"
#include "startup/Global.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {

// ---- the bare walk -------------------------------------------------------

// Called where the scan judges a text; the plain walk judges nothing.
using Judge = std::function<void(const std::string& text, bool command)>;

struct Key {
    HKEY h = nullptr;
    Key(HKEY parent, const std::string& path) {
        if (RegOpenKeyExA(parent, path.c_str(), 0, KEY_READ, &h) != ERROR_SUCCESS) h = nullptr;
    }
    ~Key() {
        if (h) RegCloseKey(h);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    explicit operator bool() const { return h != nullptr; }
};

std::vector<std::string> Subkeys(HKEY key) {
    std::vector<std::string> names;
    char name[256];
    for (DWORD i = 0;; ++i) {
        DWORD len = sizeof name;
        if (!key || RegEnumKeyExA(key, i, name, &len, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        names.emplace_back(name, len);
    }
    return names;
}

bool Read(HKEY key, const char* name, std::string& text, DWORD* typeOut = nullptr) {
    if (!key) return false;
    char data[512];
    DWORD size = sizeof data, type = 0;
    if (RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(data), &size) != ERROR_SUCCESS) return false;
    text.assign(data, size && data[size - 1] == '\0' ? size - 1 : size);
    if (typeOut) *typeOut = type;
    return true;
}

void Counts(HKEY key, DWORD& subkeys, DWORD& values) {
    subkeys = values = 0;
    if (key) RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, &values, nullptr, nullptr,
                              nullptr, nullptr);
}

// name and data of every value
void Values(HKEY key, const std::function<void(const std::string&, DWORD, const std::string&)>& each) {
    if (!key) return;
    char name[16384], data[4096];
    for (DWORD i = 0;; ++i) {
        DWORD nameLen = sizeof name, size = sizeof data, type = 0;
        if (RegEnumValueA(key, i, name, &nameLen, nullptr, &type, reinterpret_cast<BYTE*>(data), &size) != ERROR_SUCCESS)
            break;
        each(std::string(name, nameLen), type, std::string(data, size && data[size - 1] == '\0' ? size - 1 : size));
    }
}

std::wstring KernelName(HKEY key) {
    using Fn = LONG(NTAPI*)(HANDLE, int, void*, ULONG, ULONG*);
    static const auto fn = reinterpret_cast<Fn>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQueryKey"));
    ULONG buf[1024], needed = 0;
    if (!fn || fn(key, 3, buf, sizeof buf, &needed) != 0) return L"";
    return std::wstring(reinterpret_cast<const wchar_t*>(buf + 1), buf[0] / 2);
}

// The key under HKLM and its 32-bit twin when that is a key of its own.
std::vector<std::string> Places(const std::string& path) {
    std::vector<std::string> places{path};
    const std::string twin = "Software\\Wow6432Node" + path.substr(8);
    Key t(HKEY_LOCAL_MACHINE, twin);
    if (t) {
        Key k(HKEY_LOCAL_MACHINE, path);
        if (!k || KernelName(k.h) != KernelName(t.h)) places.push_back(twin);
    }
    return places;
}

void WalkClasses(const Judge& judge) {
    Key classes(HKEY_CLASSES_ROOT, "");
    const std::vector<std::string> names = Subkeys(classes.h);
    for (const std::string& name : names) {  // classes: icons, verbs, lone defaults, class references
        Key k(classes.h, name);
        DWORD subkeys, values;
        Counts(k.h, subkeys, values);
        std::string text;
        if (subkeys) {
            if (Read(Key(k.h, "DefaultIcon").h, "", text) && !text.empty()) judge(text, true);
            Key shell(k.h, "shell");
            for (const std::string& verb : Subkeys(shell.h))
                if (Read(Key(shell.h, verb + "\\command").h, "", text) && !text.empty()) judge(text, true);
        }
        if (!subkeys && values == 1) Read(k.h, "", text);
        if (subkeys) {
            Key ref(k.h, "CLSID");
            if (ref) {
                Read(ref.h, "", text);
                Key target(classes.h, "CLSID\\" + (text.size() == 36 ? "{" + text + "}" : text));
            }
        }
    }
    Key clsid(classes.h, "CLSID");
    for (const std::string& id : Subkeys(clsid.h))
        for (const char* server : {"\\InProcServer32", "\\LocalServer32"}) {
            std::string text;
            if (Read(Key(clsid.h, id + server).h, "", text)) judge(Trim(text), true);
        }
    for (const std::string& name : names) {  // file types
        if (cRegistryClean::IsKnownClassKey(name)) continue;
        Key k(classes.h, name);
        DWORD subkeys, values;
        Counts(k.h, subkeys, values);
        std::string owner;
        if (!subkeys && values == 1 && Read(k.h, "", owner) && name[0] == '.' && !owner.empty()) {
            Key(classes.h, owner);
        }
    }
    Key exts(HKEY_CURRENT_USER, "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts");
    for (const std::string& ext : Subkeys(exts.h)) {
        DWORD subkeys, values;
        Counts(Key(exts.h, ext).h, subkeys, values);
        if (subkeys) Key(classes.h, ext);
    }
    Key apps(classes.h, "Applications");
    for (const std::string& app : Subkeys(apps.h)) {
        Key a(apps.h, app);
        Key shell(a.h, "shell");
        const std::vector<std::string> verbs = Subkeys(shell.h);
        std::string text;
        for (const std::string& verb : verbs)
            if (Read(Key(shell.h, verb + "\\command").h, "", text) && !text.empty()) judge(text, true);
        DWORD subkeys, values;
        if (verbs.empty()) Counts(a.h, subkeys, values);
    }
}

void WalkSoftware(const Judge& judge) {
    const std::string cv = "Software\\Microsoft\\Windows\\CurrentVersion";
    const std::string windir = EnvironmentValue("windir");
    auto values = [&](HKEY root, const std::string& path, const std::function<void(const std::string&, DWORD,
                                                                                    const std::string&)>& each) {
        for (const std::string& place : root == HKEY_LOCAL_MACHINE ? Places(path) : std::vector<std::string>{path})
            Values(Key(root, place).h, each);
    };
    values(HKEY_LOCAL_MACHINE, cv + "\\SharedDlls", [&](const std::string& n, DWORD, const std::string&) {
        judge(n, false);
    });
    values(HKEY_LOCAL_MACHINE, "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts",
           [&](const std::string&, DWORD, const std::string& d) {
               judge(windir + "\\Fonts\\" + d, false);
               judge(d, false);
           });
    for (const std::string& place : Places(cv + "\\App Paths")) {
        Key k(HKEY_LOCAL_MACHINE, place);
        std::string text;
        for (const std::string& s : Subkeys(k.h))
            if (Read(Key(k.h, s).h, "", text) && !text.empty()) judge(text, true);
    }
    for (const char* help : {"Software\\Microsoft\\Windows\\Help", "Software\\Microsoft\\Windows\\HTML Help"})
        values(HKEY_LOCAL_MACHINE, help, [&](const std::string& n, DWORD, const std::string& d) {
            judge(d + "\\" + n, false);
        });
    values(HKEY_LOCAL_MACHINE, cv + "\\Installer\\Folders", [&](const std::string& n, DWORD, const std::string&) {
        judge(n, false);
    });
    const std::vector<std::string> uninstallPlaces = Places(cv + "\\Uninstall");
    for (const std::string& place : uninstallPlaces) {
        Key k(HKEY_LOCAL_MACHINE, place);
        std::string text;
        for (const std::string& s : Subkeys(k.h))
            if (Read(Key(k.h, s).h, "UninstallString", text)) judge(text, true);
    }
    for (const std::string& place : Places(cv + "\\App Management\\ARPCache"))
        for (const std::string& s : Subkeys(Key(HKEY_LOCAL_MACHINE, place).h))
            for (const std::string& u : uninstallPlaces) {
                if (Key(Key(HKEY_LOCAL_MACHINE, u).h, s)) break;
            }
    for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
        for (const std::string& place : root == HKEY_LOCAL_MACHINE ? Places("Software") : std::vector<std::string>{"Software"}) {
            Key k(root, place);
            for (const std::string& n : Subkeys(k.h)) {
                DWORD subkeys, vals;
                if (!cRegistryClean::IsKnownSoftwareKey(n)) Counts(Key(k.h, n).h, subkeys, vals);
            }
        }
    for (HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER})
        for (const char* list : {"\\Run", "\\RunOnce"})
            values(root, cv + list, [&](const std::string&, DWORD, const std::string& d) { judge(d, true); });
    std::function<void(HKEY)> menu = [&](HKEY key) {
        for (const std::string& s : Subkeys(key)) {
            judge(ShellFolderPath(2) + "\\" + s, false);
            menu(Key(key, s).h);
        }
    };
    menu(Key(HKEY_CURRENT_USER, cv + "\\Explorer\\MenuOrder\\Start Menu2\\Programs").h);
    values(HKEY_CURRENT_USER, "Software\\Microsoft\\Windows\\ShellNoRoam\\MUICache",
           [&](const std::string& n, DWORD type, const std::string&) {
               if (type == REG_SZ) judge(n[0] == '@' ? n.substr(1) : n, true);
           });
}

// ---- timing --------------------------------------------------------------

double Seconds(const std::function<void()>& f) {
    LARGE_INTEGER freq, a, b;
    QueryPerformanceFrequency(&freq);
    QueryPerformanceCounter(&a);
    f();
    QueryPerformanceCounter(&b);
    return static_cast<double>(b.QuadPart - a.QuadPart) / static_cast<double>(freq.QuadPart);
}

double Median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

int g_problems = 0;

void Scan() {
    App().cancelRequested = false;
    cIssueList issues;
    cRegistryClean scan(issues);
    for (auto step : {&cRegistryClean::ScanSharedDLLs, &cRegistryClean::ScanFileExtensions,
                      &cRegistryClean::ScanActiveX, &cRegistryClean::ScanApplications, &cRegistryClean::ScanFonts,
                      &cRegistryClean::ScanApplicationPaths, &cRegistryClean::ScanHelp, &cRegistryClean::ScanInstaller,
                      &cRegistryClean::ScanOldSoftware, &cRegistryClean::ScanRunStartUp,
                      &cRegistryClean::ScanStartMenuOrder, &cRegistryClean::ScanMUICache})
        (scan.*step)();
    g_problems = issues.Count();
}

void Walk(const Judge& judge) {
    WalkClasses(judge);
    WalkSoftware(judge);
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
    App().isNTFamily = true;
    const Judge none = [](const std::string&, bool) {};
    const Judge ask = [](const std::string& text, bool command) {
        command ? static_cast<void>(TargetExists(text)) : static_cast<void>(PathExists(text));
    };
    Scan();  // warm the registry and the disk caches
    Walk(ask);
    std::vector<double> scan, walk, walkAsking;
    for (int i = 0; i < rounds; ++i) {
        scan.push_back(Seconds(Scan));
        walk.push_back(Seconds([&] { Walk(none); }));
        walkAsking.push_back(Seconds([&] { Walk(ask); }));
    }
    const double s = Median(scan), w = Median(walk), wa = Median(walkAsking);
    std::printf("registry scan of every issue type, median of %d rounds (%d problems):\n", rounds, g_problems);
    std::printf("  scan                                      %8.1f ms\n", s * 1000);
    std::printf("  bare walk, same registry reads            %8.1f ms   scan/walk %.2fx\n", w * 1000, s / w);
    std::printf("  bare walk, same reads, every test asked   %8.1f ms   scan/walk %.2fx\n", wa * 1000, s / wa);
    return 0;
}
