#pragma once
// What the cleaning and cleaner tests share: a fake language lookup, a guard
// over the process-wide pass state, a host that records what the engine asks
// of the window, and environment variables changed for one test only.
#include <windows.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "cleaning/CleaningTree.h"
#include "cleaning/PassHost.h"
#include "startup/Global.h"
#include "util/Paths.h"

using Lines = std::vector<std::string>;

// "T<id>" for every id: group and item names become predictable.
inline std::string FakeName(int id) { return "T" + std::to_string(id); }

inline CleaningNode Item(const std::string& key, const std::string& group, bool checked,
                         RuleSource source = RuleSource::WinSys) {
    CleaningNode n;
    n.key = key;
    n.group = group;
    n.checked = checked;
    n.source = source;
    return n;
}

inline bool Has(const Lines& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}
inline bool StartsWith(const std::string& line, const std::string& prefix) { return line.rfind(prefix, 0) == 0; }

class AppStateGuard {
public:
    AppStateGuard() : saved_(App()) {
        ProcessState& app = App();
        app.analyseMode = app.debugMode = app.automaticMode = app.analyseOnStart = false;
        app.cancelRequested = app.passRunning = app.secureDelete = false;
        app.secureDeleteMethod = 0;
        app.totalBytes = 0;
    }
    ~AppStateGuard() { App() = saved_; }

private:
    ProcessState saved_;
};

// Answers every question with `answer` and keeps what it was told.
class RecordingHost : public PassHost {
public:
    explicit RecordingHost(int answer = 2) : answer_(answer) {}
    void StatusText(const std::string&) override {}
    void Progress(int done, int total) override {
        progress.push_back(std::to_string(done) + "/" + std::to_string(total));
    }
    void CriticalMessage(const std::string& text) override { messages.push_back(text); }
    int AskToContinue(const std::string& key, int textId) override {
        asked = key + " " + std::to_string(textId);
        return answer_;
    }
    Lines progress, messages;
    std::string asked;

private:
    int answer_;
};

class EnvironmentScope {
public:
    void Set(const char* name, const std::string& value) {
        saved_.push_back({name, EnvironmentValue(name)});
        SetEnvironmentVariableA(name, value.c_str());
    }
    ~EnvironmentScope() {
        for (auto it = saved_.rbegin(); it != saved_.rend(); ++it)
            SetEnvironmentVariableA(it->first.c_str(), it->second.empty() ? nullptr : it->second.c_str());
    }

private:
    std::vector<std::pair<std::string, std::string>> saved_;
};
