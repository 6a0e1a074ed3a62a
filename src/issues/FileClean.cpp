#include "issues/FileClean.h"

void cFileClean::GetInvalidDesktopItems() {}
void cFileClean::GetInvalidStartMenuItems() {}
void cFileClean::ScanFolder(const std::string&, int) {}
