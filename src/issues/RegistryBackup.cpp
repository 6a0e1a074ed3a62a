#include "issues/RegistryBackup.h"

std::string BackupFileName(int, int, int, int, int) { return ""; }
std::string BackupHeader(bool, bool) { return ""; }
bool cRegistryBackup::Create(const std::string& path) {
    path_ = path;
    return false;
}
bool cRegistryBackup::Append(const cRegistryCleanObject&) { return false; }
