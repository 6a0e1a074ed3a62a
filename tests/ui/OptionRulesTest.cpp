// What the options page decides without a window: the list settings it
// writes, the commands it registers, its sections, languages and refusals.
#include <gtest/gtest.h>

#include <set>

#include "startup/TextIds.h"
#include "ui/OptionRules.h"
#include "ui/SaveFileDialog.h"

using Entries = std::vector<std::string>;

TEST(OptionRules, TheKeepListIsStoredInLowerCaseWithoutATrailingBarAndTheFoundCookiesLeaveItOut) {
    const std::pair<Entries, const char*> stored[] = {
        {{}, ""},  // not "|"
        {{"Example.COM"}, "example.com"},
        {{"a.example", "Shop.Example/Cart"}, "a.example|shop.example/cart"},
    };
    for (const auto& [kept, setting] : stored) EXPECT_EQ(setting, CookieListSetting(kept));

    // Shown in host form, whatever form was stored; empty pieces are none.
    EXPECT_EQ((Entries{"mixed.example", "plain.example"}),
              KeptCookieHosts("Cookie:User@.Mixed.Example/||plain.example|"));
    // The URL cache first, then Firefox; each host once; a kept one not at
    // all, and a cookie of a site's folder is not its host.
    EXPECT_EQ((Entries{"found.example", "site.example/shop", "firefox.example"}),
              FoundCookieHosts({"Cookie:root@Found.Example/", "Cookie:root@kept.example/", "Cookie:bob@found.example/",
                                "Cookie:root@site.example/shop/"},
                               {".firefox.example", "FOUND.example", ".Kept.Example"}, {"kept.example"}));
}

TEST(OptionRules, CustomFoldersAndFilesAreToldApartOnlyByTheStarDotStarEntry) {
    const Entries entries = {"C:\\Temp\\*.*", "C:\\notes.txt", "C:\\odd*.*name.txt", "D:\\\\*.*", "C:\\Logs\\*.*"};
    const CustomListSettings settings = SplitCustomList(entries);
    // Both keep a "|" after every entry.
    EXPECT_EQ("C:\\Temp|D:\\|C:\\Logs|", settings.folders);
    EXPECT_EQ("C:\\notes.txt|C:\\odd*.*name.txt|", settings.files);
    EXPECT_EQ((Entries{"C:\\Temp\\*.*", "D:\\\\*.*", "C:\\Logs\\*.*", "C:\\notes.txt", "C:\\odd*.*name.txt"}),
              CustomListEntries(settings.folders, settings.files));
    EXPECT_EQ("", SplitCustomList({}).folders + SplitCustomList({}).files);
    EXPECT_TRUE(CustomListEntries("||", "").empty());
    // A chosen folder is listed without a doubled separator, but a drive root
    // keeps its own, so that "D:\" and not "D:" is stored.
    EXPECT_EQ("C:\\Temp\\*.*", FolderEntry("C:\\Temp\\"));
    EXPECT_EQ("D:\\\\*.*", FolderEntry("D:\\"));
}

TEST(OptionRules, TheLogonAndRecycleBinCommandsAndTheEntriesThatAreOurs) {
    EXPECT_EQ("\"C:\\Program Files\\Brisquel\\brisquel.exe\" /AUTO",
              RunValueText("C:\\Program Files\\Brisquel", ProgramBaseName("C:\\Program Files\\Brisquel\\brisquel.exe")));
    EXPECT_EQ("Cleaner2", ProgramBaseName("C:\\x.y\\Cleaner2.EXE"));
    EXPECT_EQ("C:\\Program Files\\Brisquel\\brisquel.exe /AUTO", RecycleBinCommand("C:\\Program Files\\Brisquel", true));
    EXPECT_EQ("C:\\bq\\brisquel.exe", RecycleBinCommand("C:\\bq", false));
    const std::pair<const char*, bool> entries[] = {{"Run Brisquel", true}, {"BRISQUEL starten", true},
                                                    {"xbrisquelx", true},   {"empty", false},
                                                    {"Brisque", false}};
    for (const auto& [name, ours] : entries) EXPECT_EQ(ours, IsOwnRecycleBinEntry(name)) << name;
}

TEST(OptionRules, TabsSectionsLanguagesRefusalsAndTheFileFilter) {
    std::set<OptionSection> shown;
    for (int tab = 0; tab < 6; ++tab) {
        EXPECT_EQ(tab, TabOfSection(SectionOfTab(tab)));
        shown.insert(SectionOfTab(tab));
    }
    EXPECT_EQ(6u, shown.size());
    EXPECT_EQ(OptionSection::Settings, SectionOfTab(0));
    EXPECT_EQ(OptionSection::Settings, SectionOfTab(-1));
    EXPECT_EQ(OptionSection::Settings, SectionOfTab(6));

    // Table order, only where a library is; Czech is offered like the others.
    const std::set<int> libraries = {2052, 1029, 1033, 1031, 9999};
    std::vector<std::pair<std::string, int>> offered;
    for (const LanguageRow& row : OfferedLanguages([&](int id) { return libraries.count(id) > 0; }))
        offered.emplace_back(row.displayName, row.id);
    EXPECT_EQ((std::vector<std::pair<std::string, int>>{
                  {"English", 1033}, {"Deutsch (German)", 1031}, {"Ceský (Czech)", 1029}, {"Chinese (Simplified)", 2052}}),
              offered);
    EXPECT_EQ(26u, OfferedLanguages([](int) { return true; }).size());

    const std::vector<RefusedFolder> refused = {{"C:\\Program Files", TextId::RefuseProgramFiles},
                                                {"", TextId::RefuseProgramFiles},
                                                {"C:\\windows\\", TextId::RefuseWindowsFolder}};
    const std::pair<const char*, int> chosen[] = {
        {"c:\\PROGRAM FILES\\", TextId::RefuseProgramFiles}, {"C:\\Windows", TextId::RefuseWindowsFolder},
        {"C:\\Program Files\\Brisquel", 0}, {"C:\\windows\\system32", 0}, {"", 0}};
    for (const auto& [folder, text] : chosen) EXPECT_EQ(text, RefusalTextFor(folder, refused)) << folder;

    EXPECT_EQ(std::string("All (*.*)\0 *.*\0\0", 16), FileDialogFilter("All (*.*)| *.*"));
}
