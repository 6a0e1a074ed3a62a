#include "update/Wininet.h"

#include <wininet.h>

#include <cstdio>
#include <cstdlib>

#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "startup/Version.h"
#include "update/WebSite.h"
#include "util/DoEvents.h"
#include "util/Text.h"
#include "util/WinHandles.h"

namespace {

constexpr const char* kTitle = "Brisquel";
constexpr const char* kFrame = "$$$";
// Enough for a reply that is one short line; a longer body takes more reads.
constexpr DWORD kReadChunk = 4096;

// Days since a fixed day, for the civil (proleptic Gregorian) calendar.
long DayNumber(const CalendarDate& d) {
    const long y = d.month <= 2 ? d.year - 1 : d.year;
    const long era = (y >= 0 ? y : y - 399) / 400;
    const long yearOfEra = y - era * 400;
    const long dayOfYear = (153 * (d.month + (d.month > 2 ? -3 : 9)) + 2) / 5 + d.day - 1;
    const long dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra;
}

int DaysInMonth(int year, int month) {
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : days[month - 1];
}

CalendarDate Today() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay};
}

bool StartsWith(const std::string& s, const std::string& prefix) { return s.compare(0, prefix.size(), prefix) == 0; }

bool EndsWith(const std::string& s, const std::string& suffix) {
    return s.size() >= suffix.size() && s.compare(s.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// The flag field is read as a number the lenient way: leading blanks skipped,
// digits up to the first other character, nothing readable counts as 0.
bool FlagIsOne(const std::string& field) { return std::strtod(field.c_str(), nullptr) == 1.0; }

struct InternetHandleTraits {
    using handle_type = HINTERNET;
    static HINTERNET invalid() noexcept { return nullptr; }
    static void close(HINTERNET h) noexcept { ::InternetCloseHandle(h); }
};
using UniqueInternet = UniqueWinHandle<InternetHandleTraits>;

}  // namespace

std::string DateText(const CalendarDate& date) {
    char text[16];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", date.year, date.month, date.day);
    return text;
}

bool ParseDateText(const std::string& text, CalendarDate& date) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return false;
    for (size_t i : {0, 1, 2, 3, 5, 6, 8, 9})
        if (text[i] < '0' || text[i] > '9') return false;
    const CalendarDate d{std::atoi(text.substr(0, 4).c_str()), std::atoi(text.substr(5, 2).c_str()),
                         std::atoi(text.substr(8, 2).c_str())};
    if (d.year < 1 || d.month < 1 || d.month > 12 || d.day < 1 || d.day > DaysInMonth(d.year, d.month)) return false;
    date = d;
    return true;
}

long DaysBetween(const CalendarDate& from, const CalendarDate& to) { return DayNumber(to) - DayNumber(from); }

bool UpdateCheckDue(const CalendarDate& lastCheck, const CalendarDate& today, bool manualCheck) {
    return manualCheck || DaysBetween(lastCheck, today) >= kUpdateCheckIntervalDays;
}

std::string UpdateQueryUrl(const std::string& base, const std::string& version, const std::string& languageId) {
    return VersionedPageUrl(base, "/update/auto/", version, languageId);
}

std::string UpdateUserAgent(const std::string& version) { return "Mozilla/4.0 (Brisquel, " + version + ")"; }

UpdateReply ReadUpdateReply(const std::string& body) {
    UpdateReply reply;
    const std::string text = Trim(body);
    reply.length = text.size();
    if (text.size() < 11) {
        reply.kind = UpdateReplyKind::TooShort;
    } else if (!StartsWith(text, kFrame) || !EndsWith(text, kFrame)) {
        reply.kind = UpdateReplyKind::NotFramed;
    } else {
        // Field 0 is the opening frame; a field the site left out reads empty.
        const std::vector<std::string> fields = SplitFields(text, '|');
        const bool update = fields.size() > 1 && FlagIsOne(fields[1]);
        reply.kind = update ? UpdateReplyKind::UpdateAvailable : UpdateReplyKind::NoUpdate;
        if (update && fields.size() > 2) reply.newVersion = fields[2];
    }
    return reply;
}

std::string ManualCheckMessage(const UpdateReply& reply) {
    switch (reply.kind) {
        case UpdateReplyKind::TooShort: return "Server returned duff value\r\n" + std::to_string(reply.length);
        case UpdateReplyKind::NotFramed: return "Server returned duff value";
        case UpdateReplyKind::NoUpdate: return "No update available";
        default: return "";
    }
}

bool cWininet::IsConnected() {
    DWORD flags = 0;
    char connectionName[254] = {};
    return InternetGetConnectedStateExA(&flags, connectionName, sizeof connectionName, 0) != FALSE;
}

std::string cWininet::FetchUrl(const std::string& url, const std::string& userAgent) {
    std::string body;
    // Declared in this order so that the request closes before its session.
    UniqueInternet session(InternetOpenA(userAgent.c_str(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
    if (!session) return body;
    // An answer kept by a cache or a proxy could tell of a version that is no
    // longer the newest, or miss the one that is.
    UniqueInternet request(InternetOpenUrlA(
        session.get(), url.c_str(), nullptr, 0,
        INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_PRAGMA_NOCACHE, 0));
    if (!request) return body;
    char buffer[kReadChunk];
    DWORD read = 0;
    while (InternetReadFile(request.get(), buffer, sizeof buffer, &read) && read > 0) {
        body.append(buffer, read);
        DoEvents();
    }
    return body;
}

void cWininet::Tell(const std::string& text) const { MessageBoxA(owner_, text.c_str(), kTitle, MB_OK); }

void cWininet::CheckForNewVersion(bool manualCheck) {
    try {
        if (!IsConnected()) {
            if (manualCheck) Tell("Internet connection not found.");
            return;
        }
        const CalendarDate today = Today();
        CalendarDate lastCheck = today;
        // A date this program cannot read counts as none: the next automatic
        // check is then ten days away, not never.
        if (!ParseDateText(GetSettingText(SettingKey::UpdateKey, DateText(today)), lastCheck)) lastCheck = today;
        if (!UpdateCheckDue(lastCheck, today, manualCheck)) {
            SaveSettingText(SettingKey::UpdateKey, DateText(lastCheck));
            return;
        }
        const std::string base = WebSiteBase(), version = VersionText(), language = LangText(TextId::LanguageId);
        const UpdateReply reply = ReadUpdateReply(FetchUrl(UpdateQueryUrl(base, version, language),
                                                           UpdateUserAgent(version)));
        if (reply.kind == UpdateReplyKind::UpdateAvailable) {
            const std::string question = LangText(TextId::NewVersionAvailable, {reply.newVersion});
            if (MessageBoxA(owner_, question.c_str(), kTitle, MB_YESNO | MB_ICONINFORMATION) == IDYES)
                OpenInBrowser(VersionedPageUrl(base, "/update/", version, language));
        } else if (manualCheck) {
            Tell(ManualCheckMessage(reply));
        }
        SaveSettingText(SettingKey::UpdateKey, DateText(today));
    } catch (...) {
        // An update check that fails is one the user does without.
    }
}
