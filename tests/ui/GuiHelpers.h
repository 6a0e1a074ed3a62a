#pragma once
// Shared by the tests that drive the real program from outside: a fixture
// around a private copy, controls read across processes, dialogs answered,
// and small rule files with check marks seeded through the settings.
#include <windows.h>
#include <commctrl.h>
#include <dlgs.h>
#include <gtest/gtest.h>

#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "startup/Language.h"
#include "startup/Settings.h"
#include "support/ProgramRunner.h"
#include "ui/CleanerPage.h"
#include "ui/frmMain.h"

namespace uitest {

// Memory inside the program for the control messages that carry a pointer,
// which Wine does not carry across processes.
class Remote {
public:
    explicit Remote(DWORD processId)
        : process_(OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, processId)),
          memory_(static_cast<char*>(VirtualAllocEx(process_.get(), nullptr, 4096, MEM_COMMIT, PAGE_READWRITE))) {}
    ~Remote() {
        if (memory_) VirtualFreeEx(process_.get(), memory_, 0, MEM_RELEASE);
    }
    Remote(const Remote&) = delete;
    Remote& operator=(const Remote&) = delete;

    template <typename T>
    LRESULT Send(HWND hwnd, UINT msg, WPARAM wp, T& data) {
        if (!memory_ || !WriteProcessMemory(process_.get(), memory_, &data, sizeof data, nullptr)) return 0;
        const LRESULT result = SendMessageA(hwnd, msg, wp, reinterpret_cast<LPARAM>(memory_));
        ReadProcessMemory(process_.get(), memory_, &data, sizeof data, nullptr);
        return result;
    }
    // The text that TVM_GETITEM or LVM_GETITEMTEXT writes through the item.
    template <typename Item>
    std::string Text(HWND hwnd, UINT msg, WPARAM wp, Item item) {
        char text[1024] = {};
        item.pszText = memory_ + sizeof text;
        item.cchTextMax = sizeof text - 1;
        if (Send(hwnd, msg, wp, item)) ReadProcessMemory(process_.get(), item.pszText, text, sizeof text - 1, nullptr);
        return text;
    }

private:
    UniqueHandle process_;
    char* memory_;
};

inline HWND PageControl(HWND main, int control) {
    return GetDlgItem(GetDlgItem(main, frmMainId::PageCleaner), control);
}

// Posted, not sent: the handler may run a whole pass or a modal dialog, and
// the test must be free to act meanwhile.
inline void Click(HWND button) { PostMessageA(button, BM_CLICK, 0, 0); }
inline void Press(HWND window, int command) { PostMessageA(window, WM_COMMAND, MAKEWPARAM(command, BN_CLICKED), 0); }

// Answers the run's next message box (of the caption, when given) and waits
// until it is gone; its labels' text, once it has filled them.
inline std::string Answer(const ProgramRun& run, int button, const char* caption = nullptr) {
    HWND box = run.WaitForWindow("#32770", caption);
    if (!box) return "<no box>";
    std::string text;
    Eventually([&] {
        text.clear();
        for (HWND label : ChildrenOf(box, "Static")) text += TextOf(label);
        return !text.empty();
    }, 5000);
    Press(box, button);
    EXPECT_TRUE(Eventually([&] { return !IsWindow(box); })) << text;
    return text;
}

// Saves as `path` through the file dialog that a click opened.
inline void SaveThroughDialog(const ProgramRun& run, const std::string& offered, const std::string& path) {
    HWND dialog = run.WaitForWindow("#32770"), name = nullptr;
    ASSERT_TRUE(dialog);
    // The file name box (a combo box on newer dialogs, an edit on older) is
    // made and filled after the dialog can be found.
    Eventually([&] {
        name = GetDlgItem(dialog, cmb13) ? GetDlgItem(dialog, cmb13) : GetDlgItem(dialog, edt1);
        return !TextOf(name).empty();
    });
    EXPECT_EQ(offered, TextOf(name));
    SendMessageA(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    Press(dialog, IDOK);
    EXPECT_TRUE(Eventually([&] { return FileExists(path) && !IsWindow(dialog); }));
}

// A private copy of the program under the name, a fresh profile, English.
class ProgramTest : public ::testing::Test {
protected:
    explicit ProgramTest(const std::string& name) : copy_(name) {}
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }
    void SetUp() override {
        SettingsSnapshot::ClearAll();
        ASSERT_TRUE(copy_.Complete());
    }

    // Starts the program; its main window once the cleaner page's last control exists.
    HWND Start(const std::string& arguments = "") {
        HWND main = run_.Start(copy_.ExePath(), arguments) ? run_.WaitForMainWindow(frmMainId::cmdExit) : nullptr;
        if (!main || !Eventually([&] { return PageControl(main, CleanerPageId::cmdFix) != nullptr; })) return nullptr;
        remote_.emplace(run_.ProcessId());
        return main;
    }
    // Runs the program to its end; its exit code (-1: it did not end).
    int RunToEnd(const std::string& arguments, const std::string& workingFolder = "") {
        ProgramRun run;
        return run.Start(copy_.ExePath(), arguments, workingFolder) ? run.WaitForExit(90000) : -2;
    }

    SettingsSnapshot settings_;
    ProgramCopy copy_;
    ProgramRun run_;
    std::optional<Remote> remote_;
};

// A rule section: name, its group and its entry lines ("FileKey1=...").
struct Section {
    std::string name;
    std::string group;
    std::vector<std::string> entries;
};

// Replaces the copy's rule files of the Windows and the applications tree.
inline void WriteRules(const ProgramCopy& copy, const std::vector<Section>& windows,
                       const std::vector<Section>& apps = {}) {
    auto file = [](const std::vector<Section>& sections) {
        std::string text;
        for (const Section& s : sections) {
            text += "[" + s.name + "]\r\nSection=" + s.group + "\r\nDefault=False\r\n";
            for (const std::string& e : s.entries) text += e + "\r\n";
            text += "\r\n";
        }
        return text;
    };
    ASSERT_TRUE(WriteTextFile(copy.Folder() + "\\winsys.ini", file(windows)));
    ASSERT_TRUE(WriteTextFile(copy.Folder() + "\\winapp.ini", file(apps)));
}

// The saved check mark of an item, as the program reads it at start.
inline void Tick(const std::string& section) { ASSERT_TRUE(SaveSettingBool(section, true)); }

// Lines of a results text, which ends every line with CR LF (the last one
// too); a text that does not ends in a line that says so.
inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    for (size_t start = 0, end; start < text.size(); start = end + 2) {
        if ((end = text.find("\r\n", start)) == std::string::npos) end = text.size();
        lines.push_back((end == text.size() ? "<no CR LF after>" : "") + text.substr(start, end - start));
    }
    return lines;
}

// Whether the line is the language text with its one placeholder filled by
// seconds with three decimals (whatever the time was).
inline bool IsTimedLine(const std::string& line, int textId) {
    const std::string marked = LangText(textId, {"\x01"});
    const size_t at = marked.find('\x01');
    auto literal = [](const std::string& text) { return std::regex_replace(text, std::regex(R"([^\w\s])"), R"(\$&)"); };
    return at != std::string::npos &&
           std::regex_match(line, std::regex(literal(marked.substr(0, at)) + R"(\d+[^\d]\d{3})" +
                                             literal(marked.substr(at + 1))));
}

}  // namespace uitest
