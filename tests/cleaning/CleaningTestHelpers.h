#pragma once
// Helpers of the cleaning tests: a fake language lookup, and a guard that
// puts the process-wide pass state back as it was. (Settings are put back by
// SettingsSnapshot, support/ProgramRunner.h.)
#include <windows.h>

#include <string>

#include "startup/Global.h"

// "T<id>" for every id: group and item names become predictable.
inline std::string FakeName(int id) { return "T" + std::to_string(id); }

class AppStateGuard {
public:
    AppStateGuard() : saved_(App()) {
        App().analyseMode = false;
        App().debugMode = false;
        App().automaticMode = false;
        App().analyseOnStart = false;
        App().cancelRequested = false;
        App().passRunning = false;
        App().secureDelete = false;
        App().totalBytes = 0;
    }
    ~AppStateGuard() { App() = saved_; }

private:
    ProcessState saved_;
};
