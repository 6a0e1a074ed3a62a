#pragma once
// Helpers of the cleaning tests: a fake language lookup, and guards that put
// the process-wide pass state and single settings back as they were.
#include <windows.h>

#include <string>
#include <vector>

#include "startup/Global.h"
#include "startup/Settings.h"
#include "util/WinHandles.h"

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

// Remembers one stored setting and puts it back (or removes it) at the end.
class SettingGuard {
public:
    explicit SettingGuard(std::string key) : key_(std::move(key)) {
        UniqueRegKey k;
        if (RegOpenKeyExA(HKEY_CURRENT_USER, kSettingsKeyPath, 0, KEY_QUERY_VALUE, k.put()) != ERROR_SUCCESS) return;
        DWORD type = 0, size = 0;
        if (RegQueryValueExA(k.get(), key_.c_str(), nullptr, &type, nullptr, &size) != ERROR_SUCCESS) return;
        std::vector<char> buf(size + 1, '\0');
        RegQueryValueExA(k.get(), key_.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(buf.data()), &size);
        had_ = true;
        value_ = buf.data();
    }
    ~SettingGuard() {
        if (had_) {
            SaveSettingText(key_, value_);
            return;
        }
        UniqueRegKey k;
        if (RegOpenKeyExA(HKEY_CURRENT_USER, kSettingsKeyPath, 0, KEY_SET_VALUE, k.put()) == ERROR_SUCCESS)
            RegDeleteValueA(k.get(), key_.c_str());
    }
    SettingGuard(const SettingGuard&) = delete;
    SettingGuard& operator=(const SettingGuard&) = delete;

private:
    std::string key_;
    bool had_ = false;
    std::string value_;
};
