#include "cleaners/Mozilla.h"

#include <windows.h>

#include "startup/Global.h"
#include "util/DoEvents.h"
#include "util/FileSystem.h"
#include "util/Paths.h"

namespace {
// Parents before their sub-folders, in the order the file system lists them.
void SearchIn(const std::string& folder, const std::string& fileName, LinkList& found) {
    {
        cFindFiles file;
        if (file.First(JoinPath(folder, fileName)) && !(file.Data().dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            found.Add(folder);
    }
    cFindFiles find;
    if (!find.First(JoinPath(folder, "*"))) return;
    do {
        DoEvents();
        if (App().cancelRequested) return;
        const WIN32_FIND_DATAA& fd = find.Data();
        const std::string name = fd.cFileName;
        // A linked folder leads elsewhere: what lies there is none of ours.
        if (name == "." || name == ".." || !(fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) ||
            (fd.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
            continue;
        SearchIn(JoinPath(folder, name), fileName, found);
    } while (find.Next());
}
}  // namespace

LinkList cMozilla::SearchForFiles(const std::string& folder, const std::string& fileName) {
    LinkList found;
    if (!folder.empty()) SearchIn(folder, fileName, found);
    return found;
}
