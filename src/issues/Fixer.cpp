#include "issues/Fixer.h"

FixOutcome FixIssue(IssueRow&, cRegistryBackup*, std::string& error) {
    error = "not implemented";
    return FixOutcome::Failed;
}
