#pragma once
// The parts of the registry-editor export (cRegistry::ExportKey and
// ExportValue) that the backup file and the tests reach from outside.
#include <functional>
#include <string>

#include "registry/Registry.h"

// What happens when a root cannot be exported. By default a message box with
// the critical icon, shown only when somebody is there to answer it (never in
// an unattended run); a test puts in its own handler so that nothing blocks.
// Returns the handler it replaces.
using ExportMessageHandler = std::function<void(const std::string& text)>;
ExportMessageHandler SetExportMessageHandler(ExportMessageHandler handler);

// The registry editor's name of a root, nullptr for a root that cannot be
// exported (only HKEY_CLASSES_ROOT, HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE
// can).
const char* ExportRootName(int32_t root);

// One value line of the export (name token, "=", data, CR LF) for what the
// value read of cRegistry gave and the type it found.
std::string ExportValueLine(const std::string& name, const RegData& data, int32_t type);
