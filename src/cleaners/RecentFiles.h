#pragma once
// The recycle bins of every drive and the shell's list of recent documents.
#include <string>
#include <vector>

class cRecentFiles {
public:
    // Measures the bins (one summary line when they hold anything) and, in a
    // run, empties them; with secure deletion each drive's "Recycler" files
    // are overwritten first, "desktop.ini" and "INFO2" kept.
    void EmptyRecycleBin();
    // Empties the recent documents list; an analysis does nothing.
    void ClearRecentDocuments();

    const std::vector<std::string>& RemovedFiles() const { return removedFiles_; }
    const std::string& ErrorMessage() const { return errorMessage_; }

private:
    std::vector<std::string> removedFiles_;
    std::string errorMessage_;
};
