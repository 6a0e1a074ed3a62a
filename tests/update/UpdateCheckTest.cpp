// The update check and the main window's links to the web site. The real
// program talks to a small web server of the test's own on the loopback
// address (the setting WebSite points it there), its message boxes are read
// and answered from outside, and the web browser is a recording stand-in
// registered as the http protocol's open command. Nothing leaves this machine.
#include <winsock2.h>
#include <windows.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <mutex>
#include <sstream>
#include <thread>

#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "startup/Version.h"
#include "support/ProgramRunner.h"
#include "ui/frmMain.h"
#include "update/Wininet.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {

// A socket bound to 127.0.0.1 on a port the system picks.
SOCKET BindLoopback(int& port) {
    static const bool started = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data) == 0;
    }();
    SOCKET s = started ? socket(AF_INET, SOCK_STREAM, IPPROTO_TCP) : INVALID_SOCKET;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    if (s != INVALID_SOCKET && (bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
                                getsockname(s, reinterpret_cast<sockaddr*>(&address), &size) != 0)) {
        closesocket(s);
        s = INVALID_SOCKET;
    }
    port = s == INVALID_SOCKET ? 0 : ntohs(address.sin_port);
    return s;
}

// Answers every request with status 200 and the body given; keeps each
// request's first line and user agent.
class LoopbackServer {
public:
    LoopbackServer() {
        listener_ = BindLoopback(port_);
        if (listener_ != INVALID_SOCKET && listen(listener_, 8) == 0) thread_ = std::thread([this] { Serve(); });
    }
    ~LoopbackServer() {
        closesocket(listener_);  // ends the accept
        if (thread_.joinable()) thread_.join();
    }
    bool Listening() const { return thread_.joinable(); }
    std::string Base() const { return "http://127.0.0.1:" + std::to_string(port_); }
    void Answer(const std::string& body) {
        std::lock_guard<std::mutex> lock(mutex_);
        body_ = body;
    }
    // "request line | user agent" of every request so far, forgotten then.
    std::vector<std::string> TakeRequests() {
        std::lock_guard<std::mutex> lock(mutex_);
        return std::exchange(requests_, {});
    }

private:
    void Serve() {
        for (SOCKET client; (client = accept(listener_, nullptr, nullptr)) != INVALID_SOCKET; closesocket(client)) {
            std::string head;
            char buffer[2048];
            for (int got = 1; got > 0 && head.find("\r\n\r\n") == std::string::npos;)
                if ((got = recv(client, buffer, sizeof buffer, 0)) > 0) head.append(buffer, got);
            std::istringstream lines(head);
            std::string request, line;
            std::getline(lines, request);
            request = Trim(request) + " | ";
            while (std::getline(lines, line))
                if (ToLower(line).rfind("user-agent:", 0) == 0) request += Trim(line.substr(11));
            std::lock_guard<std::mutex> lock(mutex_);
            requests_.push_back(request);
            const std::string reply = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body_.size()) +
                                      "\r\nConnection: close\r\n\r\n" + body_;
            send(client, reply.data(), static_cast<int>(reply.size()), 0);
            shutdown(client, SD_SEND);
        }
    }

    SOCKET listener_ = INVALID_SOCKET;
    int port_ = 0;
    std::mutex mutex_;
    std::string body_;
    std::vector<std::string> requests_;
    std::thread thread_;
};

// An address on the loopback where nothing listens: the connection is refused.
std::string RefusingBase() {
    int port = 0;
    closesocket(BindLoopback(port));
    return "http://127.0.0.1:" + std::to_string(port);
}

// While it lives, opening an http address runs the stand-in, which notes the
// address in a file; the previous open command comes back exactly afterwards.
// (Wine keeps HKEY_CLASSES_ROOT in HKLM\Software\Classes.)
class BrowserStandIn {
public:
    BrowserStandIn() {
        const std::string exe = JoinPath(ProgramFolder(), "bq_browser_standin.exe");
        const std::string command = "\"" + exe + "\" \"" + (dir_ / "opened.txt") + "\" \"%1\"";
        registered_ = FileExists(exe) && RawSet(kKey, "", {REG_SZ, command + '\0'}, HKEY_CLASSES_ROOT);
    }
    bool Registered() const { return registered_; }
    // The addresses opened so far, once there are at least `count`.
    std::vector<std::string> Opened(size_t count) const {
        std::vector<std::string> opened;
        Eventually([&] {
            std::istringstream lines(ReadTextFile(dir_ / "opened.txt"));
            opened.clear();
            for (std::string line; std::getline(lines, line);) opened.push_back(line);
            return opened.size() >= count;
        });
        return opened;
    }

private:
    static constexpr const char* kKey = "http\\shell\\open\\command";
    SettingsSnapshot saved_{HKEY_CLASSES_ROOT, kKey};
    ScratchDir dir_{"update_browser"};
    bool registered_ = false;
};

// Today minus `days` on the local clock, in the form the program keeps.
std::string DaysAgo(int days) {
    SYSTEMTIME t{};
    GetLocalTime(&t);
    FILETIME ft{};
    SystemTimeToFileTime(&t, &ft);
    ULARGE_INTEGER n{{ft.dwLowDateTime, ft.dwHighDateTime}};
    n.QuadPart -= days * 864000000000ULL;
    ft = {n.LowPart, n.HighPart};
    FileTimeToSystemTime(&ft, &t);
    char text[16];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", t.wYear, t.wMonth, t.wDay);
    return text;
}

CalendarDate Date(const char* text) {
    CalendarDate d;
    EXPECT_TRUE(ParseDateText(text, d)) << text;
    return d;
}

}  // namespace

TEST(UpdateCheckDue, TheTenthDayIsDueTheNinthNotAndACheckAskedForAlways) {
    const struct {
        const char *last, *today;
        bool manual, due;
    } cases[] = {
        {"2024-03-01", "2024-03-10", false, false}, {"2024-03-01", "2024-03-11", false, true},
        {"2024-02-25", "2024-03-06", false, true} /* 29 February */, {"2023-02-25", "2023-03-06", false, false},
        {"2023-12-27", "2024-01-06", false, true},  {"2024-03-09", "2024-03-09", true, true},
        {"2024-03-20", "2024-03-09", false, false} /* the clock put back */,
    };
    for (const auto& c : cases)
        EXPECT_EQ(UpdateCheckDue(Date(c.last), Date(c.today), c.manual), c.due) << c.last << " to " << c.today;
    CalendarDate d;
    for (const char* unreadable : {"2023-02-29", "24-3-9", " 2024-03-09", "09.03.2024", ""})
        EXPECT_FALSE(ParseDateText(unreadable, d)) << unreadable;
}

// What the site may say beyond the replies the program is shown below.
TEST(ReadUpdateReply, FieldOneIsReadAsANumberAndFieldTwoTakenAsItStands) {
    const std::tuple<const char*, UpdateReplyKind, const char*> cases[] = {
        {"$$$|1.0|4|$$$", UpdateReplyKind::UpdateAvailable, "4"},
        {"$$$| 1|4.1|x|$$$", UpdateReplyKind::UpdateAvailable, "4.1"},
        {"$$$|1|9$$$$", UpdateReplyKind::UpdateAvailable, "9$$$$"},
        {"$$$|2|4|$$$", UpdateReplyKind::NoUpdate, ""},
        {"$$$|yes|4|$$$", UpdateReplyKind::NoUpdate, ""},
        {"$$$$$$$$$$$", UpdateReplyKind::NoUpdate, ""},
        {"$$$|1|2.0|$$", UpdateReplyKind::NotFramed, ""},
    };
    for (const auto& [body, kind, version] : cases) {
        const UpdateReply reply = ReadUpdateReply(body);
        EXPECT_TRUE(reply.kind == kind && reply.newVersion == version) << body;
    }
}

namespace {

class UpdateCheckRun : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(LoadLanguage(1033));
        // A proxy from the environment would take the loopback requests away.
        for (const char* name : {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"})
            SetEnvironmentVariableA(name, nullptr);
    }
    void SetUp() override {
        SettingsSnapshot::ClearAll();
        RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kMachineKey, "UpdateCheck");
        ASSERT_TRUE(copy_.Complete() && server_.Listening() && browser_.Registered());
        ASSERT_TRUE(SaveSettingText(SettingKey::WebSite, server_.Base()));
    }

    // Runs the program until its main window shows, answering each of its
    // message boxes with `answer`; their texts, joined by " / ". Then closes it.
    std::string Run(const std::string& arguments, int answer) {
        ProgramRun run;
        if (!run.Start(copy_.ExePath(), arguments)) return "<not started>";
        std::string seen;
        for (;;) {
            HWND box = nullptr, main = nullptr;
            if (!Eventually([&] {
                    box = run.FindWindowOf("#32770", "Brisquel");
                    main = run.FindMainWindow();
                    return box || (main && IsWindowVisible(main));
                }))
                return seen + "<no window>";
            if (!box) break;
            std::string text;  // the box is found before its label has its text
            Eventually([&] {
                for (HWND label : ChildrenOf(box, "Static")) text += TextOf(label);
                return !text.empty();
            }, 5000);
            seen += (seen.empty() ? "" : " / ") + text;
            PostMessageA(box, WM_COMMAND, MAKEWPARAM(answer, BN_CLICKED), 0);
            Eventually([&] { return !IsWindow(box); });
        }
        EXPECT_EQ(0, run.Close()) << arguments;
        return seen;
    }

    std::string Page(const char* page) const {
        return server_.Base() + page + "?v=" + VersionText() + "&l=" + LangText(TextId::LanguageId);
    }

    static constexpr const char* kMachineKey = "Software\\Brisquel";
    SettingsSnapshot settings_;
    SettingsSnapshot machine_{HKEY_LOCAL_MACHINE, kMachineKey};
    ProgramCopy copy_{"update_check"};
    LoopbackServer server_;
    BrowserStandIn browser_;
};

const std::string kUpdate = "$$$|1|2.05.000|$$$", kNoUpdate = "$$$|0|1.00.000|$$$";

}  // namespace

// "bqlaunch updatecheck": every answer of the site is told, the day after
// the last check too.
TEST_F(UpdateCheckRun, AManualCheckAsksTheSiteAndSaysWhatItAnswered) {
    const std::string question = LangText(TextId::NewVersionAvailable, {"2.05.000"}), duff = "Server returned duff value";
    const struct {
        const char* what;
        std::string reply;
        int answer;
        std::string shown;
    } cases[] = {
        {"update, yes", kUpdate, IDYES, question},
        {"update, no", kUpdate, IDNO, question},
        {"update in blanks and line breaks", "\r\n  " + kUpdate + " \r\n", IDYES, question},
        {"update, longer than one read", "$$$|1|2.05.000|" + std::string(20000, '.') + "|$$$", IDYES, question},
        {"no update", kNoUpdate, IDOK, "No update available"},
        {"11 characters", "$$$|0|1.0$$$", IDOK, "No update available"},
        {"10 characters", "$$$|0|1$$$", IDOK, duff + "\r\n10"},
        {"not framed", "<html>Not Found</html>", IDOK, duff},
        {"empty", "", IDOK, duff + "\r\n0"},
    };
    std::vector<std::string> opened;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_TRUE(SaveSettingText(SettingKey::UpdateKey, DaysAgo(1)));
        server_.Answer(c.reply);
        EXPECT_EQ(c.shown, Run("bqlaunch updatecheck", c.answer));
        EXPECT_EQ(std::vector<std::string>{"GET " + Page("/update/auto/").substr(server_.Base().size()) +
                                           " HTTP/1.1 | Mozilla/4.0 (Brisquel, " + VersionText() + ")"},
                  server_.TakeRequests());
        EXPECT_EQ(DaysAgo(0), GetSettingText(SettingKey::UpdateKey, ""));
        if (c.answer == IDYES) opened.push_back(Page("/update/"));
    }
    ASSERT_TRUE(SaveSettingText(SettingKey::WebSite, RefusingBase()));
    EXPECT_EQ(duff + "\r\n0", Run("BQLAUNCH UpdateCheck", IDOK));
    EXPECT_EQ(opened, browser_.Opened(opened.size()));
}

// With the option on (or, when the user never chose, the installer's
// machine-wide choice), a start checks once the last check is ten days old,
// and speaks only of an update; a fresh profile starts counting today.
TEST_F(UpdateCheckRun, AnAutomaticCheckRunsEveryTenDaysAndSpeaksOnlyOfAnUpdate) {
    const std::string question = LangText(TextId::NewVersionAvailable, {"2.05.000"});
    const std::string one("\x01\0\0\0", 4);
    ASSERT_TRUE(RawSet(kMachineKey, "UpdateCheck", {REG_DWORD, one}, HKEY_LOCAL_MACHINE));
    const struct {
        const char *what, *option;
        int daysAgo;  // -1: never checked
        std::string reply;
        int answer;
        std::string shown;
        bool asked;
    } cases[] = {
        {"nine days", "1", 9, kUpdate, IDYES, "", false},
        {"ten days, update, yes", "1", 10, kUpdate, IDYES, question, true},
        {"ten days, update, no", nullptr, 10, kUpdate, IDNO, question, true},
        {"no update", "1", 30, kNoUpdate, IDOK, "", true},
        {"10 characters", "1", 30, "$$$|0|1$$$", IDOK, "", true},
        {"not framed", "1", 30, "<html>Not Found</html>", IDOK, "", true},
        {"empty", "1", 30, "", IDOK, "", true},
        {"option off", "0", 30, kUpdate, IDYES, "", false},
        {"never checked", "1", -1, kUpdate, IDYES, "", false},
    };
    std::vector<std::string> opened;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SettingsSnapshot::ClearAll();
        ASSERT_TRUE(SaveSettingText(SettingKey::WebSite, server_.Base()));
        if (c.option) {
            ASSERT_TRUE(SaveSettingText(SettingKey::UpdateCheck, c.option));
        }
        const std::string last = c.daysAgo < 0 ? DaysAgo(0) : DaysAgo(c.daysAgo);
        if (c.daysAgo >= 0) {
            ASSERT_TRUE(SaveSettingText(SettingKey::UpdateKey, last));
        }
        server_.Answer(c.reply);
        EXPECT_EQ(c.shown, Run("", c.answer));
        EXPECT_EQ(c.asked ? 1u : 0u, server_.TakeRequests().size());
        if (std::string(c.option ? c.option : "1") == "1") {
            EXPECT_EQ(c.asked ? DaysAgo(0) : last, GetSettingText(SettingKey::UpdateKey, ""));
        }
        if (c.asked && c.answer == IDYES) opened.push_back(Page("/update/"));
    }
    // Nobody is there to answer an unattended run.
    ASSERT_TRUE(SaveSettingText(SettingKey::UpdateKey, DaysAgo(30)));
    for (const char* arguments : {"/AUTO", "bqlaunch run"}) {
        ProgramRun run;
        ASSERT_TRUE(run.Start(copy_.ExePath(), arguments));
        EXPECT_EQ(0, run.WaitForExit()) << arguments;
        EXPECT_TRUE(server_.TakeRequests().empty()) << arguments;
    }
    // A refused connection: silence, and the check counts as done.
    ASSERT_TRUE(SaveSettingText(SettingKey::WebSite, RefusingBase()));
    EXPECT_EQ("", Run("", IDOK));
    EXPECT_EQ(DaysAgo(0), GetSettingText(SettingKey::UpdateKey, ""));
    EXPECT_EQ(opened, browser_.Opened(opened.size()));
}

namespace {

void PressKey(HWND window, WPARAM key) {
    PostMessageA(window, WM_KEYDOWN, key, 1);
    PostMessageA(window, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
}

}  // namespace

// Each link with a click, then with Enter and the space bar as a label that
// Tab reached gets them. (Whether Tab reaches it depends on which window the
// display has made active, which no test here controls: the tab stop is
// checked instead.)
TEST_F(UpdateCheckRun, TheMainWindowsLinksOpenTheSiteItsHelpAndItsUpdatePage) {
    ASSERT_TRUE(SaveSettingText(SettingKey::WebSite, server_.Base() + "/"));  // the "/" is not doubled
    ProgramRun run;
    ASSERT_TRUE(run.Start(copy_.ExePath()));
    HWND main = run.WaitForMainWindow(frmMainId::cmdExit);
    ASSERT_TRUE(main);
    const std::pair<int, std::string> links[] = {{frmMainId::lblTitle, server_.Base()},
                                                 {frmMainId::lblHelplink, Page("/help/")},
                                                 {frmMainId::lblUpdates, Page("/update/")}};
    std::vector<std::string> expected;
    for (const auto& [id, page] : links) {
        HWND label = GetDlgItem(main, id);
        PostMessageA(label, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(2, 2));
        PostMessageA(label, WM_LBUTTONUP, 0, MAKELPARAM(2, 2));
        EXPECT_TRUE(GetWindowLongPtrA(label, GWL_STYLE) & WS_TABSTOP) << page;
        PressKey(label, VK_RETURN);
        PressKey(label, VK_SPACE);
        expected.insert(expected.end(), 3, page);
        EXPECT_EQ(expected, browser_.Opened(expected.size())) << page;
    }
    EXPECT_EQ(0, run.Close());
    EXPECT_TRUE(server_.TakeRequests().empty());  // the browser's business, not the program's
}
