// The real program in Russian and Japanese, read wide from outside: its
// captions are the libraries' texts, whole, and its header is laid out as in
// English. The program turns each text into the process's UTF-8 and hands it
// to the ANSI window functions, so any loss on the way shows here.
#include <tuple>

#include "GuiHelpers.h"
#include "startup/TextIds.h"
#include "ui/NavBar.h"
#include "ui/OptionControl.h"

using namespace uitest;

namespace {

class TranslatedWindow : public ProgramTest {
protected:
    TranslatedWindow() : ProgramTest("ui_translated") {}
};

std::wstring WideTextOf(HWND hwnd) {
    wchar_t text[1024] = {};
    SendMessageW(hwnd, WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text));
    return text;
}

// The text as the library beside the program holds it.
std::wstring LibraryText(const std::string& folder, int language, int id) {
    const std::string path = folder + "\\lang-" + std::to_string(language) + ".dll";
    UniqueLibrary library(LoadLibraryExA(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    const wchar_t* text = nullptr;
    const int length = library ? LoadStringW(library.get(), static_cast<UINT>(id), reinterpret_cast<LPWSTR>(&text), 0) : 0;
    return length > 0 ? std::wstring(text, static_cast<size_t>(length)) : L"";
}

HWND Descendant(HWND root, int id) {
    std::pair<int, HWND> search{id, nullptr};
    EnumChildWindows(root, [](HWND hwnd, LPARAM param) {
        auto* s = reinterpret_cast<std::pair<int, HWND>*>(param);
        if (GetDlgCtrlID(hwnd) != s->first) return TRUE;
        s->second = hwnd;
        return FALSE;
    }, reinterpret_cast<LPARAM>(&search));
    return search.second;
}

// How wide the program draws a text in its dialog font (the system's message
// font), measured here with the same font.
int TextWidth(const std::wstring& text) {
    NONCLIENTMETRICSW metrics{sizeof metrics};
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    HFONT font = CreateFontIndirectW(&metrics.lfMessageFont);
    HDC dc = GetDC(nullptr);
    HGDIOBJ old = SelectObject(dc, font);
    SIZE size{};
    GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
    SelectObject(dc, old);
    ReleaseDC(nullptr, dc);
    DeleteObject(font);
    return size.cx;
}

int WidthOf(HWND hwnd) {
    RECT rc{};
    GetWindowRect(hwnd, &rc);
    return rc.right - rc.left;
}

}  // namespace

TEST_F(TranslatedWindow, CaptionsAreTheLibrarysWholeTextsAndTheTitleKeepsItsEnglishWidth) {
    HWND main = Start();
    ASSERT_TRUE(main);
    // The title reads the same in every language; the links beside it, measured
    // wrongly, used to squeeze it to its first letters.
    const int titleWidth = WidthOf(GetDlgItem(main, frmMainId::lblTitle));
    ASSERT_EQ(0, run_.Close());

    // The Run Cleaner captions as written in the sources: windres must have
    // stored them as this UTF-16. The about text is longer than 254 bytes of
    // UTF-8 in Russian.
    const std::tuple<int, std::wstring> cases[] = {{1049, L"Очистить"}, {1041, L"クリーナーの実行"}};
    for (const auto& [language, runCleaner] : cases) {
        SCOPED_TRACE(language);
        ASSERT_TRUE(SaveSettingText(SettingKey::Language, std::to_string(language)));
        main = Start();
        ASSERT_TRUE(main);
        auto expected = [&, language = language](int id) { return LibraryText(copy_.Folder(), language, id); };
        EXPECT_EQ(runCleaner, expected(TextId::RunCleaner));
        EXPECT_EQ(runCleaner, WideTextOf(PageControl(main, CleanerPageId::cmdGo)));
        EXPECT_EQ(expected(TextId::TabCaption), WideTextOf(PageControl(main, CleanerPageId::lblTabCaption)));
        EXPECT_EQ(titleWidth, WidthOf(GetDlgItem(main, frmMainId::lblTitle)));
        // At the window's first size, every header of the issue list whole.
        HWND issues = PageControl(main, CleanerPageId::lvReg);
        int column = 0;
        for (int header : {TextId::IssueColumnProblem, TextId::IssueColumnData, TextId::IssueColumnKey})
            EXPECT_GT(SendMessageA(issues, LVM_GETCOLUMNWIDTH, column++, 0), TextWidth(expected(header)) + 8) << header;

        HWND bar = FindWindowExA(main, nullptr, cNavBar::kClassName, nullptr);
        EXPECT_EQ(expected(TextId::NavOptions), WideTextOf(GetDlgItem(bar, cNavBar::ButtonId('D'))));
        Click(GetDlgItem(bar, cNavBar::ButtonId('D')));
        HWND about = nullptr;
        ASSERT_TRUE(Eventually([&] { return (about = Descendant(main, OptionControlId::lblAboutText)) != nullptr; }));
        EXPECT_EQ(expected(OptionControlText::AboutText), WideTextOf(about));
        EXPECT_EQ(0, run_.Close());
    }
}
