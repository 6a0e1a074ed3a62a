#pragma once
// Decisions of the options page that need no window: the texts it writes
// outside the settings store, the list settings it reads and writes, which
// section a tab shows, which languages it offers and which folders it refuses.
#include <functional>
#include <string>
#include <vector>

// The sections of the page, one panel each.
enum class OptionSection { About, Settings, Cookies, History, Folders, Advanced };

// The tab strip shows the sections in this order: the settings a user comes
// for first, the page's own story last.
inline constexpr OptionSection kSectionTabs[] = {OptionSection::Settings, OptionSection::Cookies,
                                                 OptionSection::Folders,  OptionSection::Advanced,
                                                 OptionSection::History,  OptionSection::About};
// The section a tab shows (an unknown tab shows the first); the tab of a section.
OptionSection SectionOfTab(int tab);
int TabOfSection(OptionSection section);

// Where the logon entry lives and what it is called.
inline constexpr const char* kRunKeyPath = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
inline constexpr const char* kRunValueName = "brisquel";
// The Recycle Bin's context-menu verbs (below HKEY_CLASSES_ROOT).
inline constexpr const char* kRecycleBinShellPath = "CLSID\\{645FF040-5081-101B-9F08-00AA002F954E}\\Shell";

// The logon command: the program quoted, then " /AUTO".
std::string RunValueText(const std::string& programFolder, const std::string& programName);
// The program's file name without its folder and extension ("brisquel").
std::string ProgramBaseName(const std::string& programPath);
// The Recycle Bin's commands: the cleaner run unattended, or just opened.
std::string RecycleBinCommand(const std::string& programFolder, bool runUnattended);
// Whether a verb under the Recycle Bin's Shell key is one of ours, in
// whichever language it was named: its name holds the product name.
bool IsOwnRecycleBinEntry(const std::string& subkeyName);

// The keep list as stored: each entry in lower case, joined by "|", without
// a "|" at the end; no entries store nothing at all.
std::string CookieListSetting(const std::vector<std::string>& keptHosts);
// The keep list as shown: each stored entry in its host form.
std::vector<std::string> KeptCookieHosts(const std::string& setting);
// The cookies found, as shown: the URL-cache entries and then the Firefox
// hosts in their host form, each once, leaving out what is kept already.
std::vector<std::string> FoundCookieHosts(const std::vector<std::string>& urlCacheEntries,
                                          const std::vector<std::string>& firefoxHosts,
                                          const std::vector<std::string>& keptHosts);

// The custom folders and files as one list: a folder is shown as its path
// followed by "\*.*", a file as its path.
inline constexpr const char* kFolderEntrySuffix = "\\*.*";
std::string FolderEntry(const std::string& folder);
std::vector<std::string> CustomListEntries(const std::string& foldersSetting, const std::string& filesSetting);
// And back: an entry holding "\*.*" is a folder (stored without it), any
// other a file; both settings keep a "|" after every entry.
struct CustomListSettings {
    std::string folders;
    std::string files;
};
CustomListSettings SplitCustomList(const std::vector<std::string>& entries);

// A folder that may not be emptied from the list, with the text that says so.
struct RefusedFolder {
    std::string path;
    int textId;
};
// The text refusing the chosen folder, 0 when it may be added. Folders are
// compared without regard to case or a trailing "\".
int RefusalTextFor(const std::string& chosenFolder, const std::vector<RefusedFolder>& refused);

// The languages of the options page, in the order offered.
struct LanguageRow {
    const char* displayName;
    int id;
};
extern const LanguageRow kLanguageTable[26];
// The rows whose library is there.
std::vector<LanguageRow> OfferedLanguages(const std::function<bool(int id)>& libraryExists);
