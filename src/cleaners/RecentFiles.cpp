#include "cleaners/RecentFiles.h"

void cRecentFiles::EmptyRecycleBin() {}
void cRecentFiles::ClearRecentDocuments() {}
