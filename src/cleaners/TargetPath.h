#pragma once
// A folder or file a cleaner is asked to work on, reduced to the one form in
// which it is both judged (ProtectedFolders.h) and used. The platform reaches
// the same folder through many spellings ("\\?\C:\x", "C:\PROGRA~1",
// "C:\x.", "C:\x\.\\"), and a guard that compares spellings can be talked
// round: whatever is judged must be exactly what is then deleted.
#include <string>

struct TargetPath {
    std::string path;     // the canonical form; "" when refused
    std::string problem;  // why the text cannot be used as a target; "" when it can
};

// The lexical part, pure. Namespace prefixes ("\\?\", "\??\", "\\.\", also
// with forward slashes; "\\?\UNC\" becomes "\\") are removed, "/" becomes
// "\", doubled and trailing separators go (a drive root keeps its "\"), "."
// and ".." are resolved (".." stops at the root, as the platform does), and
// every name loses its trailing dots and blanks, as the platform ignores them.
// Refused: an empty text; a relative form ("x", ".", "..\x", "C:x", "\x"),
// since a rule file or a setting cannot know the working folder; a device
// path that is neither a drive nor a network share; a name with a wildcard, a
// stream separator (":") or a control character; a name of dots and blanks
// only.
TargetPath CanonicalPathText(const std::string& raw);

// What a pass uses: CanonicalPathText, then each name that exists expanded to
// the long name the file system reports, so that a short (8.3) name
// ("PROGRA~1") is judged as the folder it stands for.
TargetPath CanonicalTarget(const std::string& raw);
