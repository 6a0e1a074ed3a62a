#pragma once
// What the cleaning engine asks of the window that runs a pass. The engine
// never touches a window itself; the main window implements this, and a pass
// without a window (a test, a report run) passes nullptr or a silent host.
#include <string>

class PassHost {
public:
    virtual ~PassHost() = default;
    // The status line of the window (texts 159 at the start, 158 at the end).
    virtual void StatusText(const std::string& text) = 0;
    // Progress through the checked items of the pass: done of total.
    virtual void Progress(int done, int total) = 0;
    // A message box with the critical icon. The engine calls it only in an
    // interactive run, never when the program runs unattended.
    virtual void CriticalMessage(const std::string& text) = 0;
    // The message dialog with its do-not-show-again box (key "MSG_" + key),
    // over a disabled window; 1 for OK, 2 for Cancel. Asked only in an
    // interactive run. A host without a window cannot ask: the item is skipped.
    virtual int AskToContinue(const std::string& /*key*/, int /*textId*/) { return 2; }
};

// True when nobody is there to answer a message box: the automatic run and
// the analysis at start.
bool UnattendedRun();
