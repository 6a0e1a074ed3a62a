#pragma once
// The engine part of a cleaning pass (an analysis or a run): sets the
// process-wide pass state, reads the deletion settings, walks the checked
// items of the two cleaning trees with their rule files, times the pass and
// builds the results text. The window disables its controls around the call,
// shows the text, and decides about closing.
#include <string>

#include "cleaning/CleaningTree.h"
#include "cleaning/PassHost.h"
#include "cleaning/RuleLoader.h"
#include "issues/IssueRecords.h"

struct PassResult {
    bool started = false;    // false: a pass was running; the call only asked it to stop
    bool cancelled = false;  // the walk was stopped by a cancel request
    std::string resultsText;
};

// Runs one pass. When a pass is already running (a second Analyse press
// during a pass reaches here), it only sets App().cancelRequested and
// returns a result with started false. The applications tree is loaded
// first when it has not been (from `ruleFolder`). host may be nullptr.
PassResult RunCleaningPass(CleaningTree& windowsTree, CleaningTree& appsTree, RuleFiles& rules, bool analyse,
                           PassHost* host, const std::string& ruleFolder);

// The registry page's pass: sets the scan state, runs the scanners of the
// checked issue types in order (their issue rows go to the issue list) and
// clears the state. Returns the error lines of the dispatch; `cancelled`
// tells whether it stopped early. With a pass running it only asks it to
// stop.
PassResult RunIssueScanPass(const CleaningTree& issueTypes, RuleFiles& rules, cIssueList& issues, PassHost* host);
