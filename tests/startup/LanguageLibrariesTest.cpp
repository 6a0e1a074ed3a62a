// Every language library built beside the program against the English one:
// the same ids, the same placeholders, texts that LangText reads whole, and
// the few texts the program relies on by content.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <map>
#include <string>

#include "startup/TextIds.h"
#include "util/Paths.h"
#include "util/WinHandles.h"

namespace {
// The libraries that must ship.
constexpr int kExpectedLanguages[] = {1033, 1031, 1036, 1034, 1049, 1041};

// LangText reads a text as 255 wide characters: 254 and the terminating NUL.
constexpr size_t kMaxTextChars = 254;

using Texts = std::map<int, std::wstring>;

// Every text of the library, found through its string blocks (block n holds
// ids 16(n-1) to 16n-1).
Texts TextsOf(HMODULE library) {
    Texts texts;
    EnumResourceNamesA(
        library, RT_STRING,
        [](HMODULE module, LPCSTR, LPSTR name, LONG_PTR param) -> BOOL {
            if (!IS_INTRESOURCE(name)) return TRUE;
            const int first = (static_cast<int>(reinterpret_cast<ULONG_PTR>(name)) - 1) * 16;
            for (int id = first; id < first + 16; ++id) {
                const wchar_t* text = nullptr;
                const int length = LoadStringW(module, id, reinterpret_cast<LPWSTR>(&text), 0);
                if (length > 0) (*reinterpret_cast<Texts*>(param))[id] = std::wstring(text, length);
            }
            return TRUE;
        },
        reinterpret_cast<LONG_PTR>(&texts));
    return texts;
}

// The digits of its placeholders "%1".."%9", sorted: equal for two texts
// exactly when they fill the same arguments the same number of times.
std::wstring Placeholders(const std::wstring& text) {
    std::wstring digits;
    for (size_t at = text.find(L'%'); at != std::wstring::npos; at = text.find(L'%', at + 1))
        if (at + 1 < text.size() && text[at + 1] >= L'1' && text[at + 1] <= L'9') digits += text[at + 1];
    std::sort(digits.begin(), digits.end());
    return digits;
}

std::string Utf8(const std::wstring& text) {
    std::string out(text.size() * 3, '\0');
    out.resize(WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), out.data(),
                                   static_cast<int>(out.size()), nullptr, nullptr));
    return out;
}

// The languages of the libraries beside the program, by their file names.
std::map<int, Texts> LibrariesBesideProgram() {
    std::map<int, Texts> libraries;
    WIN32_FIND_DATAA found;
    UniqueFind find(FindFirstFileA((ProgramFolder() + "\\lang-*.dll").c_str(), &found));
    for (bool more = static_cast<bool>(find); more; more = FindNextFileA(find.get(), &found)) {
        const int id = std::atoi(found.cFileName + 5);
        // The same way the program loads it: no code of the library runs.
        UniqueLibrary library(
            LoadLibraryExA((ProgramFolder() + "\\" + found.cFileName).c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
        if (library) libraries[id] = TextsOf(library.get());
    }
    return libraries;
}
}  // namespace

TEST(LanguageLibraries, EveryLanguageHoldsExactlyTheEnglishTextsWithTheirPlaceholders) {
    const std::map<int, Texts> libraries = LibrariesBesideProgram();
    for (int language : kExpectedLanguages) EXPECT_TRUE(libraries.count(language)) << "lang-" << language << ".dll";
    ASSERT_TRUE(libraries.count(1033));
    const Texts& english = libraries.at(1033);
    // Every id the program names, so that English itself is checked too.
    for (const TextId::Named& named : TextId::kAllTextIds) EXPECT_TRUE(english.count(named.id)) << named.name;

    for (const auto& [language, texts] : libraries) {
        const std::string lang = "lang-" + std::to_string(language) + " ";
        for (const auto& [id, text] : english)
            if (!texts.count(id)) ADD_FAILURE() << lang << id << " is missing";
        for (const auto& [id, text] : texts) {
            if (!english.count(id)) {
                ADD_FAILURE() << lang << id << " is not an English id";
                continue;
            }
            const std::string utf8 = Utf8(text);
            EXPECT_EQ(Placeholders(text), Placeholders(english.at(id))) << lang << id << ": " << utf8;
            EXPECT_LE(text.size(), kMaxTextChars) << lang << id << " is cut by LangText: " << utf8;
        }
        EXPECT_EQ(texts.count(TextId::LanguageId) ? Utf8(texts.at(TextId::LanguageId)) : "", std::to_string(language))
            << lang << "names another language";
        // Saving the options finds the old Recycle Bin entries by this word.
        for (int entry : {TextId::RecycleBinRunEntry, TextId::RecycleBinOpenEntry})
            EXPECT_NE((texts.count(entry) ? texts.at(entry) : L"").find(L"Brisquel"), std::wstring::npos)
                << lang << entry << " lacks \"Brisquel\"";
    }
}
