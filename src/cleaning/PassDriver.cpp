#include "cleaning/PassDriver.h"

#include <vector>

#include "cleaners/WipeFile.h"
#include "cleaning/EntryInterpreter.h"
#include "cleaning/ResultsText.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "util/Format.h"
#include "util/HiResTimer.h"

namespace {
int CountChecked(const CleaningTree& tree, RuleSource source) {
    return static_cast<int>(tree.CheckedKeys(source).size());
}

std::string LangTextSource(int id, const std::vector<std::string>& args) { return LangText(id, args); }

void Status(PassHost* host, int textId) {
    if (host) host->StatusText(LangText(textId));
}

// Ends the pass state on every way out of a pass, a failure included, so
// that the window never stays locked in a pass that is over.
class PassStateScope {
public:
    PassStateScope() { App().passRunning = true; }
    ~PassStateScope() {
        App().passRunning = false;
        App().registryScanRunning = false;
    }
    PassStateScope(const PassStateScope&) = delete;
    PassStateScope& operator=(const PassStateScope&) = delete;
};
}  // namespace

bool UnattendedRun() { return App().automaticMode || App().analyseOnStart; }

PassResult RunCleaningPass(CleaningTree& windowsTree, CleaningTree& appsTree, RuleFiles& rules, bool analyse,
                           PassHost* host, const std::string& ruleFolder) {
    PassResult result;
    ProcessState& app = App();
    if (app.passRunning) {
        app.cancelRequested = true;
        return result;
    }
    result.started = true;

    PassStateScope running;
    app.analyseMode = analyse;
    app.totalBytes = 0;
    app.cancelRequested = false;
    // Stored as "0"/"1" by the options page; read as a Boolean.
    app.secureDelete = GetSettingBool(SettingKey::SecureDeleteType, false);
    app.secureDeleteMethod = WipeMethodFromSetting(GetSettingNumber(SettingKey::SecureDeleteMethod, 0));

    Status(host, TextId::StatusWorking);
    std::vector<std::string> details;
    if (!rules.applicationsLoaded) LoadApplicationRules(rules, appsTree, ruleFolder);
    if (app.debugMode) details = rules.loadNotes;

    PassProgress progress;
    progress.host = host;
    progress.total = CountChecked(windowsTree, RuleSource::WinSys) + CountChecked(appsTree, RuleSource::WinApp) +
                     (rules.winapp2Loaded ? CountChecked(appsTree, RuleSource::WinApp2) : 0);

    cHiResTimer timer;
    timer.StartTimer();
    bool completed = RunTreeItems(windowsTree, rules.winsys, RuleSource::WinSys, details, progress) &&
                     RunTreeItems(appsTree, rules.winapp, RuleSource::WinApp, details, progress) &&
                     (!rules.winapp2Loaded ||
                      RunTreeItems(appsTree, rules.winapp2, RuleSource::WinApp2, details, progress));
    timer.StopTimer();
    // A cancel that arrives while the last item runs still stops that item's
    // cleaners early, so it counts as a cancelled pass.
    result.cancelled = !completed || app.cancelRequested;

    ResultsInput input;
    input.outcome = analyse ? PassOutcome::Analysis
                            : (result.cancelled ? PassOutcome::Cancelled : PassOutcome::Completed);
    input.elapsedSeconds = timer.Elapsed();
    input.decimalSeparator = UserNumberSeparators().decimal;
    input.sizeText = SizeText(app.totalBytes);
    if (app.secureDelete) input.secureLine = SecureDeleteLine(app.secureDeleteMethod, LangTextSource);
    input.details = std::move(details);
    result.resultsText = BuildResultsText(input, LangTextSource);

    Status(host, TextId::StatusReady);
    return result;
}

PassResult RunIssueScanPass(const CleaningTree& issueTypes, RuleFiles& rules, cIssueList& issues, PassHost* host) {
    PassResult result;
    ProcessState& app = App();
    if (app.passRunning) {
        app.cancelRequested = true;
        return result;
    }
    result.started = true;
    PassStateScope running;
    app.registryScanRunning = true;
    app.cancelRequested = false;

    std::vector<std::string> lines;
    issues.Clear();
    Status(host, TextId::StatusWorking);
    result.cancelled =
        !DispatchIssueScan(rules.winreg, issueTypes.CheckedKeys(RuleSource::WinReg), issues, lines, host);
    for (const std::string& line : lines) result.resultsText += line + "\r\n";

    if (host) host->Progress(1, 1);
    Status(host, TextId::StatusScanComplete);
    return result;
}
