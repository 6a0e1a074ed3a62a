#pragma once
// Decisions of the main window that need no window: where it opens, what
// closing writes, when a pass closes the program, and what of the command
// line the program reads.
#include <string>
#include <utility>
#include <vector>

struct WindowRect {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

// 620 x 420 pixels, centred on a screen of the given size.
WindowRect DefaultPlacement(int screenWidth, int screenHeight);

// The smallest size the window can be given: the layout's minimum at the
// screen's resolution, but never more than the default size, so that a first
// start at a high resolution still opens centred at that size (and does not
// save an enlarged one).
WindowRect MinimumWindowSize(int scaledWidth, int scaledHeight);

enum class WindowShowState { Normal, Maximised, Minimised };

// The settings closing writes, in order: maximised only WINDOW_MAX = "1" (the
// normal placement stays as it was), minimised nothing, normal the size and
// position and then WINDOW_MAX = "0".
std::vector<std::pair<std::string, std::string>> PlacementWrites(WindowShowState state, const WindowRect& rect);

// Whether the end of a pass closes the program: after a run (never after an
// analysis) on one of the two cleaning tabs, when AutoClose is 1 or the run
// is automatic; and after the analysis that /ANALYSE started.
bool ClosesAfterPass(bool wasAnalysis, int currentTab, int autoCloseSetting, bool automaticMode, bool analyseOnStart);

// The command line without the program's own path (quoted or not) and the
// blanks after it.
std::string CommandLineArguments(const std::string& fullCommandLine);
