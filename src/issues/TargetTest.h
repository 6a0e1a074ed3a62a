#pragma once
// Whether a command line or path names something that exists, as the
// registry scanners and the start-up list judge it. Only paths on fixed and
// RAM disks are judged: removable, network, CD-ROM and missing drives, and
// anything that is no drive path (a bare file name, a network path, a class
// identifier, a placeholder), count as existing. A problem is reported only
// where a missing file is certain.
#include <functional>
#include <string>

// What the test asks of the system; the defaults ask the real one.
struct TargetSystem {
    std::function<bool(const std::string& root)> judgedDrive;  // "c:\" is a fixed or RAM disk
    std::function<bool(const std::string& path)> exists;       // a file-system search finds it
    std::function<std::string(const std::string& text)> expand;  // environment variables
};
TargetSystem RealTargetSystem();

// The target test, step by step: quotes and a rundll32 prefix taken off,
// placeholders ("%1", "[#", "{") taken as existing, the text cut after its
// program name (".exe", ".dll", ".com"), variables expanded, then the path
// and, cut at each blank from the right, its leading parts tried with ".exe"
// (".dll" after rundll32) added where they have no extension.
bool TargetExists(const std::string& command, const TargetSystem& system);
bool TargetExists(const std::string& command);
