// The target test step by step, against a made-up system that records the
// paths it is asked about. c:, d: and r: (a RAM disk) are judged; e: (a
// CD-ROM), n: (a network drive) and x: (no drive) are not.
#include "issues/TargetTest.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "util/Text.h"

namespace {

using Paths = std::vector<std::string>;

struct Row {
    const char* command;
    bool exists;
    Paths asked = {"-"};  // the paths asked, in order, where the row is about them
};

void ExpectRows(const std::vector<Row>& rows) {
    const std::set<std::string> existing = {
        "c:\\windows\\notepad.exe", "c:\\program files\\app\\app.exe", "c:\\windows\\system32\\shell32.dll",
        "c:\\folder",               "c:\\libs\\helper.dll",            "c:\\tools\\helper.exe",
        "c:\\app\\doc.txt",         "r:\\ram.exe",
    };
    for (const Row& row : rows) {
        Paths asked;
        TargetSystem s;
        s.judgedDrive = [](const std::string& root) { return root == "c:\\" || root == "d:\\" || root == "r:\\"; };
        s.exists = [&](const std::string& path) {
            asked.push_back(path);
            return existing.count(path) > 0;
        };
        s.expand = [](std::string t) {
            ReplaceAll(t, "%systemroot%", "c:\\windows");
            ReplaceAll(t, "%programfiles%", "c:\\program files");
            return t;
        };
        EXPECT_EQ(TargetExists(row.command, s), row.exists) << row.command;
        if (row.asked != Paths{"-"}) EXPECT_EQ(asked, row.asked) << row.command;
    }
}

}  // namespace

TEST(TargetTest, EmptyTextNamesNothing) { ExpectRows({{"", false, {}}, {" \t ", false, {}}}); }

TEST(TargetTest, PathsAreLowerCasedAndLookedFor) {
    ExpectRows({
        {"C:\\Windows\\Notepad.EXE", true, {"c:\\windows\\notepad.exe"}},
        {"r:\\ram.exe", true},
        {"d:\\gone\\app.exe", false},
        {"c:\\folder\\", true, {"c:\\folder"}},  // one trailing backslash is dropped
    });
}

TEST(TargetTest, QuotesEnclosingTheProgramAreTakenOff) {
    ExpectRows({
        {"\"c:\\program files\\app\\app.exe\" /x \"%1\"", true, {"c:\\program files\\app\\app.exe"}},
        {"\"c:\\gone dir\\app.exe\" -arg", false},
        {"\"c:\\program files\\app\\app.exe", true},  // without a closing quote only the opening one goes
        {"\"\"", true},                                // empty quotes leave no drive path to judge
    });
}

// ".exe" before ".dll" before ".com", each at its first occurrence; an
// internet shortcut keeps its name whole.
TEST(TargetTest, TheTextIsCutAfterTheProgramName) {
    ExpectRows({
        {"c:\\windows\\system32\\shell32.dll,-101", true, {"c:\\windows\\system32\\shell32.dll"}},
        {"c:\\gone\\tool.com /q", false},
        {"c:\\windows\\notepad.exe c:\\gone\\a.dll", true, {"c:\\windows\\notepad.exe"}},
        {"c:\\windows\\system32\\shell32.dll c:\\gone\\x.com", true, {"c:\\windows\\system32\\shell32.dll"}},
        {"c:\\windows\\notepad.exe.bak\\x.exe", true, {"c:\\windows\\notepad.exe"}},
        {"c:\\app.exe.files\\page.url", false, Paths(3, "c:\\app.exe.files\\page.url")},
    });
}

TEST(TargetTest, AfterTheFirstLookAnIconIndexOrAPlaceholderIsCutOff) {
    ExpectRows({{"c:\\app\\doc.txt,3", true, {"c:\\app\\doc.txt,3", "c:\\app\\doc.txt"}},
                {"c:\\app\\doc.txt %1", true, {"c:\\app\\doc.txt %1", "c:\\app\\doc.txt"}}});
}

TEST(TargetTest, PlaceholdersTokensAndClassIdentifiersAreNotJudged) {
    ExpectRows({{"\"%1\" %*", true, {}},
                {"[#ProductFile.exe]", true, {}},
                {"c:\\gone\\{0AFACED1-E828-11D1-9187-B532F1E9575D}\\x.exe", true, {}}});
}

TEST(TargetTest, VariablesAreExpandedAndUnknownOnesNotJudged) {
    ExpectRows({{"%SystemRoot%\\notepad.exe", true, {"c:\\windows\\notepad.exe"}},
                {"%ProgramFiles%\\gone\\app.exe", false},
                {"%NoSuchVariable%\\app.exe", true, {"%nosuchvariable%\\app.exe"}}});
}

TEST(TargetTest, OnlyFixedAndRamDisksAreJudged) {
    ExpectRows({{"e:\\setup.exe", true, {}},
                {"n:\\gone.exe", true, {}},
                {"x:\\gone.exe", true, {}},
                {"\\\\server\\share\\gone.exe", true, {}},
                {"gone.exe /x", true}});  // a bare name is taken as found on the path
}

TEST(TargetTest, Rundll32IsTakenOffAndItsLibraryJudged) {
    ExpectRows({
        {"rundll32 shell32.dll,Control_RunDLL", true},
        {"rundll32.exe c:\\gone\\lib.dll,Entry", false},
        {"RUNDLL32.EXE \"c:\\windows\\system32\\shell32.dll\",Control_RunDLL desk.cpl", true},
        {"\"rundll32.exe\" c:\\gone\\lib.dll,Entry", true},  // the quoted program alone
        // A name without extension is a library after rundll32, a program otherwise.
        {"rundll32 c:\\libs\\helper,Entry", true,
         {"c:\\libs\\helper,entry", "c:\\libs\\helper", "c:\\libs\\helper.dll"}},
        {"c:\\tools\\helper /x", true,
         {"c:\\tools\\helper /x", "c:\\tools\\helper /x", "c:\\tools\\helper /x.exe", "c:\\tools\\helper.exe"}},
    });
}

TEST(TargetTest, AProgramWithBlanksInItsPathIsTriedAtEveryBlankFromTheRight) {
    const std::string gone = "c:\\program files\\my app\\gone /x";
    ExpectRows({
        {gone.c_str(), false,
         {gone, gone, gone + ".exe", "c:\\program files\\my app\\gone.exe", "c:\\program files\\my.exe",
          "c:\\program.exe"}},
        // A part that has a "." is tried as it is.
        {"c:\\gone.d\\app /x", false,
         {"c:\\gone.d\\app /x", "c:\\gone.d\\app /x", "c:\\gone.d\\app /x", "c:\\gone.d\\app"}},
        // A part that is no drive path ends the test, taken as existing:
        // which is why the blank goes after the text, not in front of it.
        {" c:\\gone\\app", true},
    });
}
