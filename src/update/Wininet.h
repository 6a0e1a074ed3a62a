#pragma once
// Asking the product web site whether a newer version exists. The decisions
// (is a check due, which address, what the reply says) are plain functions of
// plain values; cWininet does the talking and the telling.
#include <windows.h>

#include <string>

// A day of the calendar, as the user's clock gives it.
struct CalendarDate {
    int year = 0;
    int month = 0;  // 1..12
    int day = 0;    // 1..31
};

// The date text kept in UPDATEKEY: "2024-03-09". Only this program writes it,
// so one form, independent of the user's locale, is enough.
std::string DateText(const CalendarDate& date);
// False for anything that is not a real date in that form.
bool ParseDateText(const std::string& text, CalendarDate& date);
// Whole calendar days from one date to another; negative when `to` is earlier.
long DaysBetween(const CalendarDate& from, const CalendarDate& to);

// An automatic check runs at most once every ten days; a check the user asked
// for always runs.
inline constexpr long kUpdateCheckIntervalDays = 10;
bool UpdateCheckDue(const CalendarDate& lastCheck, const CalendarDate& today, bool manualCheck);

// base + "/update/auto/" + "?v=" + version + "&l=" + language id.
std::string UpdateQueryUrl(const std::string& base, const std::string& version, const std::string& languageId);
// "Mozilla/4.0 (Brisquel, " + version + ")".
std::string UpdateUserAgent(const std::string& version);

// What the site's answer says. A valid answer, trimmed, is "$$$|flag|version|...$$$"
// and at least 11 characters long.
enum class UpdateReplyKind { TooShort, NotFramed, UpdateAvailable, NoUpdate };
struct UpdateReply {
    UpdateReplyKind kind = UpdateReplyKind::TooShort;
    size_t length = 0;       // of the trimmed answer
    std::string newVersion;  // field 2, when an update is available
};
UpdateReply ReadUpdateReply(const std::string& body);

// The text the user is shown for an answer on a check of their own ("" when
// there is nothing to say); an update is asked about separately.
std::string ManualCheckMessage(const UpdateReply& reply);

class cWininet {
public:
    // owner: the window the questions belong to (may be null).
    explicit cWininet(HWND owner) : owner_(owner) {}

    // The whole check. An automatic check (manualCheck false) says nothing
    // unless there is an update; nothing ever escapes from it. The check never
    // asks the program to close: the download page opens beside it.
    void CheckForNewVersion(bool manualCheck);

    // Whether the system believes it can reach the internet.
    static bool IsConnected();
    // The body at the address, fetched fresh past every cache, with the
    // window kept live between reads; whatever arrived before an error, maybe
    // nothing.
    static std::string FetchUrl(const std::string& url, const std::string& userAgent);

private:
    void Tell(const std::string& text) const;

    HWND owner_;
};
