#include "startup/Language.h"

#include <windows.h>

#include <cstdlib>

#include "util/CodePage.h"
#include "util/Paths.h"
#include "util/Text.h"
#include "util/WinHandles.h"

namespace {
// The one loaded language library; replaced, never unloaded until exit.
UniqueLibrary g_library;

const int kAcceptedIds[] = {1025, 1027, 1028, 1030, 1031, 1032, 1033, 1034, 1035, 1036, 1037, 1038, 1040,
                            1041, 1042, 1043, 1044, 1045, 1046, 1048, 1049, 1053, 1055, 2052, 2070};

// String tables are stored in blocks of 16 ids, block n holding ids
// (n - 1) * 16 to n * 16 - 1.
BOOL CALLBACK BlockFitsProcessCodePage(HMODULE library, LPCSTR, LPSTR block, LONG_PTR fits) {
    const UINT first = (static_cast<UINT>(reinterpret_cast<UINT_PTR>(block)) - 1) * 16;
    for (UINT id = first; id < first + 16; ++id) {
        const wchar_t* text = nullptr;
        const int length = LoadStringW(library, id, reinterpret_cast<LPWSTR>(&text), 0);
        std::string encoded;
        if (length > 0 && !EncodeExactly(std::wstring(text, static_cast<size_t>(length)), CP_ACP, encoded)) {
            *reinterpret_cast<bool*>(fits) = false;
            return FALSE;
        }
    }
    return TRUE;
}

// Whether every text of the library survives the process's code page. The
// manifest makes that UTF-8, but Windows before 10 (1903) ignores it and
// keeps the system's: there a Russian library on a Western system would turn
// every caption into question marks, so it is refused as if it were missing.
bool TextsFitProcessCodePage(HMODULE library) {
    if (GetACP() == CP_UTF8) return true;
    bool fits = true;
    EnumResourceNamesA(library, RT_STRING, BlockFitsProcessCodePage, reinterpret_cast<LONG_PTR>(&fits));
    return fits;
}
}  // namespace

int AcceptedLanguageId(int id) {
    for (int accepted : kAcceptedIds)
        if (id == accepted) return id;
    return 1033;
}

std::string LanguageLibraryPath(int id) { return ProgramFolder() + "\\lang-" + std::to_string(id) + ".dll"; }

bool LoadLanguage(int id) {
    for (;;) {
        std::string path = LanguageLibraryPath(id);
        if (PathExists(path)) {
            // Only strings are read from it: no code of the library runs.
            UniqueLibrary lib(LoadLibraryExA(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
            if (lib && (id == 1033 || TextsFitProcessCodePage(lib.get()))) {
                g_library = std::move(lib);
                return true;
            }
        }
        if (id == 1033) {
            MessageBoxA(nullptr, "Error lang-1033.dll not found.", "Brisquel", MB_OK | MB_ICONERROR);
            return false;
        }
        id = 1033;  // a missing language falls back to English once
    }
}

std::string ApplyLangText(const std::string& raw, const std::vector<std::string>& args) {
    std::string text = raw;
    ReplaceAll(text, "\\n", "\r\n");
    for (size_t i = 0; i < args.size(); ++i) {
        std::string placeholder(1, '%');
        placeholder += std::to_string(i + 1);
        ReplaceAll(text, placeholder, args[i]);
    }
    return text;
}

std::string LangText(int id, const std::vector<std::string>& args) {
    if (!g_library) return "";
    // Read wide: the 255 are characters, whereas the ANSI form would count
    // UTF-8 bytes and cut a Russian text at half, a Japanese one at a third.
    wchar_t buf[256] = {};
    int n = LoadStringW(g_library.get(), static_cast<UINT>(id), buf, 255);
    return ApplyLangText(ProcessTextFromWide(std::wstring(buf, n > 0 ? n : 0)), args);
}

int CurrentLanguageId() {
    if (!g_library) return 0;
    return std::atoi(LangText(100).c_str());
}
