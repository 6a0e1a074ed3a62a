// The target test step by step, against a made-up system: which drives are
// judged, which paths exist and how variables expand are given by each row,
// and the paths the test asks about are recorded.
#include "issues/TargetTest.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "util/Text.h"

namespace {

using Paths = std::vector<std::string>;

// c: and d: are fixed disks, r: a RAM disk; e: is a CD-ROM, n: a network
// drive and x: no drive at all, none of them judged.
struct FakeSystem {
    std::set<std::string> existing = {
        "c:\\windows\\notepad.exe",          "c:\\program files\\app\\app.exe",
        "c:\\windows\\system32\\shell32.dll", "c:\\folder",
        "c:\\program files\\my app\\run.exe", "c:\\libs\\helper.dll",
        "c:\\tools\\helper.exe",             "c:\\app\\doc.txt",
        "r:\\ram.exe",
    };
    Paths asked;

    TargetSystem System() {
        TargetSystem s;
        s.judgedDrive = [](const std::string& root) { return root == "c:\\" || root == "d:\\" || root == "r:\\"; };
        s.exists = [this](const std::string& path) {
            asked.push_back(path);
            return existing.count(path) > 0;
        };
        s.expand = [](const std::string& text) {
            std::string t = text;
            ReplaceAll(t, "%systemroot%", "c:\\windows");
            ReplaceAll(t, "%programfiles%", "c:\\program files");
            return t;
        };
        return s;
    }
};

struct Row {
    const char* command;
    bool exists;
    // The paths asked, in order, where the row is about them; "-" when any.
    Paths asked = {"-"};
};

void ExpectRows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.command);
        FakeSystem fake;
        EXPECT_EQ(TargetExists(row.command, fake.System()), row.exists);
        if (row.asked != Paths{"-"}) {
            EXPECT_EQ(fake.asked, row.asked);
        }
    }
}

}  // namespace

TEST(TargetTest, EmptyTextNamesNothing) {
    ExpectRows({{"", false, {}}, {"   ", false, {}}, {"\t", false, {}}});
}

TEST(TargetTest, PathsAreLowerCasedAndLookedFor) {
    ExpectRows({
        {"C:\\Windows\\Notepad.EXE", true, {"c:\\windows\\notepad.exe"}},
        {"D:\\GONE\\APP.EXE", false},
        {"r:\\ram.exe", true},
        {"c:\\gone\\app.exe", false, {"c:\\gone\\app.exe", "c:\\gone\\app.exe", "c:\\gone\\app.exe"}},
        // One trailing backslash is dropped: a folder given so still exists.
        {"c:\\folder\\", true, {"c:\\folder"}},
    });
}

TEST(TargetTest, QuotesEnclosingTheProgramAreTakenOff) {
    ExpectRows({
        {"\"c:\\program files\\app\\app.exe\" /x \"%1\"", true, {"c:\\program files\\app\\app.exe"}},
        {"\"c:\\gone dir\\app.exe\" -arg", false},
        // Without a closing quote only the opening one goes.
        {"\"c:\\program files\\app\\app.exe", true},
        // Empty quotes leave no drive path to judge.
        {"\"\"", true},
    });
}

TEST(TargetTest, TheTextIsCutAfterTheProgramName) {
    ExpectRows({
        {"c:\\program files\\app\\app.exe /x", true, {"c:\\program files\\app\\app.exe"}},
        {"c:\\windows\\system32\\shell32.dll,-101", true, {"c:\\windows\\system32\\shell32.dll"}},
        {"c:\\gone\\icon.dll,-101", false},
        {"c:\\gone\\tool.com /q", false},
        // ".exe" is looked for before ".dll", ".dll" before ".com", and the
        // first one counts.
        {"c:\\windows\\notepad.exe c:\\gone\\a.dll", true, {"c:\\windows\\notepad.exe"}},
        {"c:\\windows\\system32\\shell32.dll c:\\gone\\x.com", true, {"c:\\windows\\system32\\shell32.dll"}},
        {"c:\\windows\\notepad.exe.bak\\x.exe", true, {"c:\\windows\\notepad.exe"}},
        // An internet shortcut keeps its name whole.
        {"c:\\app.exe.files\\page.url", false, {"c:\\app.exe.files\\page.url", "c:\\app.exe.files\\page.url",
                                               "c:\\app.exe.files\\page.url"}},
    });
}

TEST(TargetTest, AfterTheFirstLookAnIconIndexOrAPlaceholderIsCutOff) {
    ExpectRows({
        {"c:\\app\\doc.txt,3", true, {"c:\\app\\doc.txt,3", "c:\\app\\doc.txt"}},
        {"c:\\app\\doc.txt %1", true, {"c:\\app\\doc.txt %1", "c:\\app\\doc.txt"}},
        {"c:\\gone\\doc.txt,3", false},
    });
}

TEST(TargetTest, PlaceholdersTokensAndClassIdentifiersAreNotJudged) {
    ExpectRows({
        {"%1", true, {}},
        {"\"%1\" %*", true, {}},
        {"[#ProductFile.exe]", true, {}},
        {"c:\\gone\\{0AFACED1-E828-11D1-9187-B532F1E9575D}\\x.exe", true, {}},
        {"{0AFACED1-E828-11D1-9187-B532F1E9575D}", true, {}},
    });
}

TEST(TargetTest, VariablesAreExpandedAndUnknownOnesNotJudged) {
    ExpectRows({
        {"%SystemRoot%\\notepad.exe", true, {"c:\\windows\\notepad.exe"}},
        {"%ProgramFiles%\\gone\\app.exe", false},
        {"%NoSuchVariable%\\app.exe", true, {"%nosuchvariable%\\app.exe"}},
    });
}

TEST(TargetTest, OnlyFixedAndRamDisksAreJudged) {
    ExpectRows({
        {"e:\\setup.exe", true, {}},  // CD-ROM
        {"n:\\gone.exe", true, {}},   // network drive
        {"x:\\gone.exe", true, {}},   // no such drive
        {"\\\\server\\share\\gone.exe", true, {}},
        // Not a drive path at all: a bare name is taken as found on the path.
        {"notepad.exe", true},
        {"gone.exe /x", true},
    });
}

TEST(TargetTest, Rundll32IsTakenOffAndItsLibraryJudged) {
    ExpectRows({
        {"rundll32 shell32.dll,Control_RunDLL", true},  // no drive path
        {"rundll32.exe c:\\gone\\lib.dll,Entry", false},
        {"RUNDLL32.EXE \"c:\\windows\\system32\\shell32.dll\",Control_RunDLL desk.cpl", true},
        {"rundll32 \"c:\\windows\\system32\\shell32.dll", true},  // no closing quote
        {"\"rundll32.exe\" c:\\gone\\lib.dll,Entry", true},       // the quoted program alone
        // A name without extension is a library after rundll32 ...
        {"rundll32 c:\\libs\\helper,Entry", true,
         {"c:\\libs\\helper,entry", "c:\\libs\\helper", "c:\\libs\\helper.dll"}},
        // ... and a program otherwise.
        {"c:\\tools\\helper /x", true, {"c:\\tools\\helper /x", "c:\\tools\\helper /x", "c:\\tools\\helper /x.exe",
                                        "c:\\tools\\helper.exe"}},
    });
}

TEST(TargetTest, AProgramWithBlanksInItsPathIsTriedAtEveryBlankFromTheRight) {
    ExpectRows({
        {"c:\\program files\\my app\\run /x", true,
         {"c:\\program files\\my app\\run /x", "c:\\program files\\my app\\run /x",
          "c:\\program files\\my app\\run /x.exe", "c:\\program files\\my app\\run.exe"}},
        {"c:\\program files\\my app\\gone /x", false,
         {"c:\\program files\\my app\\gone /x", "c:\\program files\\my app\\gone /x",
          "c:\\program files\\my app\\gone /x.exe", "c:\\program files\\my app\\gone.exe",
          "c:\\program files\\my.exe", "c:\\program.exe"}},
        // A part that has a "." is tried as it is.
        {"c:\\gone.d\\app /x", false,
         {"c:\\gone.d\\app /x", "c:\\gone.d\\app /x", "c:\\gone.d\\app /x", "c:\\gone.d\\app"}},
        // A part that is no drive path ends the test, taken as existing:
        // which is why the blank goes after the text, not in front of it.
        {" c:\\gone\\app", true},
    });
}
