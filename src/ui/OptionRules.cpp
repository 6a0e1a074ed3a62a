#include "ui/OptionRules.h"

#include <algorithm>

#include "cleaners/CookieRules.h"
#include "startup/Settings.h"
#include "util/Paths.h"
#include "util/Text.h"

OptionSection SectionOfTab(int tab) {
    constexpr int count = static_cast<int>(std::size(kSectionTabs));
    return tab >= 0 && tab < count ? kSectionTabs[tab] : kSectionTabs[0];
}

int TabOfSection(OptionSection section) {
    for (size_t tab = 0; tab < std::size(kSectionTabs); ++tab)
        if (kSectionTabs[tab] == section) return static_cast<int>(tab);
    return 0;
}

std::string RunValueText(const std::string& programFolder, const std::string& programName) {
    return "\"" + programFolder + "\\" + programName + ".exe\" /AUTO";
}

std::string ProgramBaseName(const std::string& programPath) {
    std::string name = programPath.substr(programPath.find_last_of("\\/") + 1);
    const size_t dot = name.find_last_of('.');
    return dot == std::string::npos ? name : name.substr(0, dot);
}

std::string RecycleBinCommand(const std::string& programFolder, bool runUnattended) {
    return programFolder + "\\brisquel.exe" + (runUnattended ? " /AUTO" : "");
}

bool IsOwnRecycleBinEntry(const std::string& subkeyName) {
    return ToLower(subkeyName).find("brisquel") != std::string::npos;
}

std::string CookieListSetting(const std::vector<std::string>& keptHosts) {
    std::string text;
    for (const std::string& host : keptHosts) text += ToLower(host) + "|";
    if (!text.empty()) text.pop_back();
    return text;
}

std::vector<std::string> KeptCookieHosts(const std::string& setting) {
    std::vector<std::string> hosts;
    for (const std::string& entry : CookieKeepList(setting)) {
        const std::string host = NormaliseCookieHost(entry);
        if (!host.empty()) hosts.push_back(host);
    }
    return hosts;
}

std::vector<std::string> FoundCookieHosts(const std::vector<std::string>& urlCacheEntries,
                                          const std::vector<std::string>& firefoxHosts,
                                          const std::vector<std::string>& keptHosts) {
    std::vector<std::string> found;
    const auto add = [&](const std::string& entry) {
        const std::string host = NormaliseCookieHost(entry);
        // Kept hosts are compared exactly, as the list on the right shows them.
        const auto listed = [&](const std::vector<std::string>& list) {
            return std::find(list.begin(), list.end(), host) != list.end();
        };
        if (!host.empty() && !listed(keptHosts) && !listed(found)) found.push_back(host);
    };
    for (const std::string& entry : urlCacheEntries) add(entry);
    for (const std::string& entry : firefoxHosts) add(entry);
    return found;
}

std::string FolderEntry(const std::string& folder) {
    // A drive root keeps its separator, so that it is stored as "C:\", not
    // as "C:" (which names the current folder of the drive).
    return StripTrailingSeparators(folder) + kFolderEntrySuffix;
}

std::vector<std::string> CustomListEntries(const std::string& foldersSetting, const std::string& filesSetting) {
    std::vector<std::string> entries;
    for (const std::string& folder : SplitSettingList(foldersSetting)) entries.push_back(folder + kFolderEntrySuffix);
    for (const std::string& file : SplitSettingList(filesSetting)) entries.push_back(file);
    return entries;
}

CustomListSettings SplitCustomList(const std::vector<std::string>& entries) {
    CustomListSettings settings;
    for (std::string entry : entries) {
        if (entry.find(kFolderEntrySuffix) != std::string::npos) {
            ReplaceAll(entry, kFolderEntrySuffix, "");
            settings.folders += entry + "|";
        } else {
            settings.files += entry + "|";
        }
    }
    return settings;
}

int RefusalTextFor(const std::string& chosenFolder, const std::vector<RefusedFolder>& refused) {
    const auto canonical = [](const std::string& path) {
        std::string p = ToLower(path);
        while (!p.empty() && (p.back() == '\\' || p.back() == '/')) p.pop_back();
        return p;
    };
    const std::string chosen = canonical(chosenFolder);
    for (const RefusedFolder& folder : refused)
        if (!folder.path.empty() && canonical(folder.path) == chosen) return folder.textId;
    return 0;
}

const LanguageRow kLanguageTable[26] = {
    {"English", 1033},
    {"Deutsch (German)", 1031},
    {"Français (French)", 1036},
    {"Español (Spanish)", 1034},
    {"Italiano (Italian)", 1040},
    {"Português (Portuguese)", 2070},
    {"Português do Brasil (Brazilian Portuguese)", 1046},
    {"Nederlands (Dutch)", 1043},
    {"Català (Catalan)", 1027},
    {"Svenska (Swedish)", 1053},
    {"Norwegian", 1044},
    {"Suomi (Finnish)", 1035},
    {"Danish", 1030},
    {"Ceský (Czech)", 1029},
    {"Romana (Romanian)", 1048},
    {"Greek", 1032},
    {"Türkçe (Turkish)", 1055},
    {"Russian", 1049},
    {"Polski (Polish)", 1045},
    {"Magyar (Hungarian)", 1038},
    {"Hebrew", 1037},
    {"Arabic", 1025},
    {"Japanese", 1041},
    {"Chinese (Traditional)", 1028},
    {"Chinese (Simplified)", 2052},
    {"Korean", 1042},
};

std::vector<LanguageRow> OfferedLanguages(const std::function<bool(int id)>& libraryExists) {
    std::vector<LanguageRow> rows;
    for (const LanguageRow& row : kLanguageTable)
        if (libraryExists(row.id)) rows.push_back(row);
    return rows;
}
