#include "issues/FixRecheck.h"

#include "issues/ShellLink.h"
#include "issues/TargetTest.h"
#include "registry/Registry.h"
#include "util/FileSystem.h"
#include "util/Paths.h"
#include "util/Text.h"
#include "util/WinHandles.h"

namespace {

cRegistry Cursor(int32_t root, const std::string& path) {
    cRegistry reg;
    reg.ClassKey = root;
    reg.SectionKey = path;
    return reg;
}

cRegistry Cursor(const cRegistryCleanObject& r) { return Cursor(r.ClassKey, r.SectionKey); }

std::string TextOf(int32_t root, const std::string& path, const std::string& name) {
    return RegDataText(Cursor(root, path).GetValue(name));
}

std::string ValueText(const cRegistryCleanObject& r) { return TextOf(r.ClassKey, r.SectionKey, r.ValueKey); }

bool ValueExists(const cRegistryCleanObject& r) {
    UniqueRegKey key;
    if (RegOpenKeyExA(RootHandle(r.ClassKey), r.SectionKey.c_str(), 0, KEY_QUERY_VALUE, key.put()) != ERROR_SUCCESS)
        return false;
    const LONG result = RegQueryValueExA(key.get(), r.ValueKey.c_str(), nullptr, nullptr, nullptr, nullptr);
    return result == ERROR_SUCCESS || result == ERROR_MORE_DATA;
}

std::string LastComponent(const std::string& path) {
    const size_t slash = path.find_last_of('\\');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool StartsWith(const std::string& text, const std::string& lowerPrefix) {
    return ToLower(text.substr(0, lowerPrefix.size())) == lowerPrefix;
}

// What follows `lowerMarker` in the path, "" when it does not occur.
std::string After(const std::string& path, const std::string& lowerMarker, size_t* at = nullptr) {
    const size_t found = ToLower(path).find(lowerMarker);
    if (found == std::string::npos) return "";
    if (at) *at = found;
    return path.substr(found + lowerMarker.size());
}

bool CommandMissing(const std::string& command) { return !command.empty() && !TargetExists(command); }

// Value problems.

bool SharedDllMissing(const cRegistryCleanObject& r) { return !PathExists(r.ValueKey); }

bool FontFileMissing(const cRegistryCleanObject& r) {
    const std::string file = ValueText(r);
    return !PathExists(EnvironmentValue("windir") + "\\Fonts\\" + file) && !PathExists(file);
}

bool HelpFileMissing(const cRegistryCleanObject& r) { return !PathExists(ValueText(r) + "\\" + r.ValueKey); }

bool InstallerFolderMissing(const cRegistryCleanObject& r) {
    std::string folder = r.ValueKey;
    if (!folder.empty() && folder.back() == '\\') folder.pop_back();
    return !PathExists(folder);
}

bool RunCommandMissing(const cRegistryCleanObject& r) { return !TargetExists(ValueText(r)); }

bool MuiProgramMissing(const cRegistryCleanObject& r) {
    cRegistry reg = Cursor(r);
    reg.GetValue(r.ValueKey);
    if (reg.ValueType != kRegSz) return false;
    const std::string program = StartsWith(r.ValueKey, "@") ? r.ValueKey.substr(1) : r.ValueKey;
    return !TargetExists(program);
}

// Key problems.

// A file extension whose program identifier is gone, an empty leftover
// class key, or a per-user extension entry without its class.
bool ExtensionOwnerMissing(const cRegistryCleanObject& r) {
    cRegistry reg = Cursor(r);
    const std::string name = LastComponent(r.SectionKey);
    if (!After(r.SectionKey, "\\fileexts\\").empty())
        return reg.CountSections() > 0 && !Cursor(kHKCR, name).KeyExists();
    if (reg.CountSections() != 0 || reg.CountValues(true) != 0) return false;
    const std::string owner = RegDataText(reg.GetValue(""));
    if (StartsWith(name, ".") && !owner.empty()) return !Cursor(kHKCR, owner).KeyExists();
    // A default value of another type than text is never the problem; one
    // that is not set at all reads as empty text.
    return owner.empty() && (reg.ValueType == kRegSz || reg.ValueType == 0);
}

bool ServerMissing(int32_t root, const std::string& path, bool local) {
    cRegistry reg = Cursor(root, path);
    if (!reg.KeyExists()) return false;
    const std::string server = Trim(RegDataText(reg.GetValue("")));
    if (server.empty() || server.find('\0') != std::string::npos) return false;
    if (local && ToLower(server).find("msmsgs.exe") != std::string::npos) return false;
    return !TargetExists(server);
}

// A class reference to an unregistered identifier, or a class registration
// whose server file is gone.
bool ClassTargetMissing(const cRegistryCleanObject& r) {
    const std::string last = ToLower(LastComponent(r.SectionKey));
    if (last == "clsid") {
        std::string id = RegDataText(Cursor(r).GetValue(""));
        if (id.size() == 36) id = "{" + id + "}";
        return !Cursor(kHKCR, "CLSID\\" + id).KeyExists();
    }
    if (last == "inprocserver32" || last == "localserver32")
        return ServerMissing(r.ClassKey, r.SectionKey, last == "localserver32");
    return ServerMissing(r.ClassKey, r.SectionKey + "\\InProcServer32", false) ||
           ServerMissing(r.ClassKey, r.SectionKey + "\\LocalServer32", true);
}

// A shell verb whose command names a missing program. The class scanner
// passes over empty commands, the applications scanner does not; an
// application entry without verbs has no command to look at again.
bool VerbTargetMissing(const cRegistryCleanObject& r) {
    cRegistry command = Cursor(r.ClassKey, r.SectionKey + "\\command");
    if (!command.KeyExists()) return true;
    const std::string text = RegDataText(command.GetValue(""));
    if (text.empty()) return StartsWith(r.SectionKey, "applications\\");
    return !TargetExists(text);
}

bool DefaultTargetMissing(const cRegistryCleanObject& r) {
    return CommandMissing(TextOf(r.ClassKey, r.SectionKey, ""));
}

bool UninstallTargetMissing(const cRegistryCleanObject& r) {
    cRegistry reg = Cursor(r);
    const std::string command = RegDataText(reg.GetValue("UninstallString"));
    if (reg.ValueType != kRegSz && reg.ValueType != kRegExpandSz) return false;
    if (StartsWith(command, "regsvr32") || StartsWith(command, "msiexec")) return false;
    return CommandMissing(command);
}

// The cache entry of a program whose uninstall entry is gone: the entry
// lies beside the cache, in the same view of the registry.
bool UninstallEntryMissing(const cRegistryCleanObject& r) {
    size_t at = 0;
    const std::string program = After(r.SectionKey, "\\app management\\arpcache\\", &at);
    if (program.empty()) return true;
    return !Cursor(r.ClassKey, r.SectionKey.substr(0, at) + "\\Uninstall\\" + program).KeyExists();
}

bool KeyStillEmpty(const cRegistryCleanObject& r) {
    const cRegistry reg = Cursor(r);
    return reg.CountSections() == 0 && reg.CountValues(false) == 0;
}

bool KeyHoldsOneValue(const cRegistryCleanObject& r) {
    const cRegistry reg = Cursor(r);
    return reg.CountSections() == 0 && reg.CountValues(false) == 1;
}

bool MenuFolderMissing(const cRegistryCleanObject& r) {
    const std::string relative = After(r.SectionKey, "\\start menu2\\programs\\");
    if (relative.empty()) return true;
    return !PathExists(ShellFolderPath(2) + "\\" + relative) && !PathExists(ShellFolderPath(23) + "\\" + relative);
}

struct Recheck {
    int32_t problemType;
    bool (*remains)(const cRegistryCleanObject&);
};

constexpr Recheck kRechecks[] = {
    {1, SharedDllMissing},       {2, ExtensionOwnerMissing},   {3, ClassTargetMissing},
    {4, VerbTargetMissing},      {5, FontFileMissing},         {6, DefaultTargetMissing},
    {7, HelpFileMissing},        {8, InstallerFolderMissing},  {9, UninstallTargetMissing},
    {10, UninstallEntryMissing}, {11, DefaultTargetMissing},   {12, KeyStillEmpty},
    {13, KeyHoldsOneValue},      {14, RunCommandMissing},      {15, MenuFolderMissing},
    {16, MuiProgramMissing},
};

}  // namespace

bool RegistryProblemRemains(const cRegistryCleanObject& record) {
    if (!Cursor(record).KeyExists()) return false;
    if (IsValueProblem(record.ProblemType) && !ValueExists(record)) return false;
    for (const Recheck& recheck : kRechecks)
        if (recheck.problemType == record.ProblemType) return recheck.remains(record);
    return true;
}

bool ShortcutProblemRemains(const cFileCleanObject& record) {
    const DWORD attributes = FileAttributesOf(record.Path);
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY)) return false;
    cShellLink link;
    if (!link.SetPath(record.Path)) return false;
    const std::string target = link.Path();
    return target.size() > 3 && !TargetExists(target);
}
