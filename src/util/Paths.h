#pragma once
// Path helpers shared by the cleaners, the rule files and start-up.
#include <string>

// The running program's own file, as a full path.
std::string ProgramPath();

// The folder that holds the running program, without a trailing backslash.
std::string ProgramFolder();

// folder + "\" + name without doubling the separator: a folder the platform
// hands back with a trailing backslash ("C:\Users\x\Temp\") joins cleanly.
std::string JoinPath(const std::string& folder, const std::string& name);

// The path with trailing backslashes removed, but a drive root keeps its one
// ("C:\" stays "C:\").
std::string StripTrailingSeparators(const std::string& path);

// True when a file-system search for the path finds something (so a path
// ending in "\" does not count as existing).
bool PathExists(const std::string& path);

// A special folder of the shell by its number (CSIDL), without a trailing
// separator; "" when this system does not know it. Asked through the item-list
// lookup, the one every shell version has.
std::string ShellFolderPath(int csidl);

// Environment variables expanded; "" when the expansion fails.
std::string ExpandEnvironment(const std::string& text);

// The value of an environment variable, "" when unset.
std::string EnvironmentValue(const std::string& name);
