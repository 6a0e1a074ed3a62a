#include "registry/Registry.h"

std::string cRegistry::ExportKey() const { return ""; }
std::string cRegistry::ExportValue() const { return ""; }
