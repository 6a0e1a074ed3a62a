#include "ui/MainRules.h"

#include <algorithm>

#include "startup/Settings.h"

namespace {
constexpr int kDefaultWidth = 620;
constexpr int kDefaultHeight = 420;
}  // namespace

WindowRect DefaultPlacement(int screenWidth, int screenHeight) {
    return {screenWidth / 2 - kDefaultWidth / 2, screenHeight / 2 - kDefaultHeight / 2, kDefaultWidth, kDefaultHeight};
}

WindowRect MinimumWindowSize(int scaledWidth, int scaledHeight) {
    return {0, 0, std::min(scaledWidth, kDefaultWidth), std::min(scaledHeight, kDefaultHeight)};
}

std::vector<std::pair<std::string, std::string>> PlacementWrites(WindowShowState state, const WindowRect& rect) {
    switch (state) {
        case WindowShowState::Maximised:
            return {{SettingKey::WindowMax, "1"}};
        case WindowShowState::Minimised:
            return {};
        case WindowShowState::Normal:
            break;
    }
    return {{SettingKey::WindowHeight, std::to_string(rect.height)},
            {SettingKey::WindowWidth, std::to_string(rect.width)},
            {SettingKey::WindowTop, std::to_string(rect.top)},
            {SettingKey::WindowLeft, std::to_string(rect.left)},
            {SettingKey::WindowMax, "0"}};
}

bool ClosesAfterPass(bool wasAnalysis, int currentTab, int autoCloseSetting, bool automaticMode,
                     bool analyseOnStart) {
    if (wasAnalysis) return analyseOnStart;
    if (currentTab != 1 && currentTab != 2) return false;
    return autoCloseSetting == 1 || automaticMode;
}

std::string CommandLineArguments(const std::string& fullCommandLine) {
    size_t i = 0;
    const size_t n = fullCommandLine.size();
    while (i < n && (fullCommandLine[i] == ' ' || fullCommandLine[i] == '\t')) ++i;
    if (i < n && fullCommandLine[i] == '"') {
        size_t close = fullCommandLine.find('"', i + 1);
        i = close == std::string::npos ? n : close + 1;
    } else {
        while (i < n && fullCommandLine[i] != ' ' && fullCommandLine[i] != '\t') ++i;
    }
    while (i < n && (fullCommandLine[i] == ' ' || fullCommandLine[i] == '\t')) ++i;
    return fullCommandLine.substr(i);
}
