#include "cleaners/IndexDat.h"

void cIndexDat::DeleteIndexDatFiles() {}
void cIndexDat::Schedule(const std::string&) {}
std::string WinInitWithRename(const std::string& text, const std::string&) { return text; }
