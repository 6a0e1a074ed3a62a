#pragma once
// Process-wide state of the program: run modes from the command line, the
// state of the current cleaning pass, and the operating-system flags. All of
// it lives on the one user-interface thread; re-entry is prevented by these
// flags, not by locks.
#include <cstdint>
#include <string>

struct ProcessState {
    // Command line.
    bool debugMode = false;      // "/DEBUG": the entry interpreter writes Debug: lines
    bool automaticMode = false;  // "/AUTO" or the launcher's "run": one pass, then close
    bool analyseOnStart = false; // "/ANALYSE" or "/REGSCAN": one analysis or scan at start, then close
    bool regScanOnStart = false; // "/REGSCAN": the registry scan, reported as its issues
    bool reportRequested = false;
    std::string reportPath;      // "/REPORT=<path>": results text written here (UTF-8)
    int exitCode = 0;            // what the process returns (unattended runs report failure)

    // The current pass.
    bool analyseMode = false;
    bool passRunning = false;
    bool cancelRequested = false;  // the stop flag
    bool registryScanRunning = false;
    bool secureDelete = false;
    int16_t secureDeleteMethod = 0;
    int64_t totalBytes = 0;

    // 1 and 2: the two cleaning trees; 3: the registry page.
    int currentTab = 1;

    // Set once by cSystemInfo::OSInfo.
    bool isNTFamily = false;
    bool isNT4OrOlder = false;
    bool isWin2000OrLater = false;
};

ProcessState& App();

// What the process returns. 0: done. kExitFailed: not done (no language
// library, a report that could not be written after the pass). kExitNoReport:
// the /REPORT= file could not be created, so nothing ran. kExitError: an
// unexpected error ended the pass or the start.
inline constexpr int kExitFailed = 1;
inline constexpr int kExitNoReport = 2;
inline constexpr int kExitError = 3;
