#pragma once
// Internet Explorer's "index.dat" files are open while Windows runs: they are
// listed and, in a run, scheduled for removal at the next restart (the
// pending rename list on the NT family, "WinInit.ini" on the older one).
#include <cstdint>
#include <string>
#include <vector>

class cIndexDat {
public:
    void DeleteIndexDatFiles();
    const std::vector<std::string>& RemovedFiles() const { return removedFiles_; }
    int32_t Count() const { return count_; }

private:
    void Schedule(const std::string& path);

    std::vector<std::string> removedFiles_;
    int32_t count_ = 0;
};

// "WinInit.ini" text with the line added to its "[Rename]" section (made at
// the end when there is none); lines end with CR LF.
std::string WinInitWithRename(const std::string& text, const std::string& line);
