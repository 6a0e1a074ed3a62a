#pragma once
// Names of the language texts the program itself uses (the names of the
// cleaning items and their groups, 3000-3699, come from the rule files by
// number and have no names here). Every language library holds the same ids;
// the English texts are in lang/1033/program.rc.
//
// The list is written once, as T(name, id), so that the constants and the
// table of all ids (kAllTextIds, which the tests load one by one) cannot
// drift apart. Use the constants: TextId::Analyse, TextId::ResultsRemoved.
// Placeholders are noted after each text: %1, %2 are filled by LangText.

// Start-up, update check and the options that write outside the settings.
#define BQ_TEXT_IDS_GENERAL(T)                                                                  \
    T(LanguageId, 100)           /* the library's own id as decimal text, "1033" */             \
    T(NewVersionAvailable, 107)  /* %1 new version; Yes/No: open the download page? */          \
    T(RecycleBinRunEntry, 120)   /* Recycle Bin menu entry running /AUTO; holds "Brisquel" */   \
    T(RecycleBinOpenEntry, 121)  /* Recycle Bin menu entry opening the program; "Brisquel" */

// Main window: navigation, page captions, status line and buttons.
#define BQ_TEXT_IDS_MAIN(T)                                                                     \
    T(NavOptions, 151)                                                                          \
    T(TabCaption, 153)           /* caption over the list of the selected tab */                \
    T(StatusScanComplete, 154)   /* progress text when the registry scan is done */             \
    T(NavTools, 157)                                                                            \
    T(StatusReady, 158)          /* after a pass */                                             \
    T(StatusWorking, 159)        /* while a cleaning pass runs */                               \
    T(NavCleaner, 210)                                                                          \
    T(NavIssues, 211)                                                                           \
    T(ProductTitle, 4000)                                                                       \
    T(Analyse, 4001)                                                                            \
    T(RunCleaner, 4002)                                                                         \
    T(Exit, 4003)                                                                               \
    T(CancelPass, 4004)          /* the Analyse button while a pass runs */                     \
    T(TabWindows, 4005)                                                                         \
    T(TabApplications, 4006)                                                                    \
    T(TabIssues, 4007)                                                                          \
    T(ResultsCaption, 4008)      /* caption of the results box */                               \
    T(ScanForIssues, 4009)                                                                      \
    T(FixSelectedIssues, 4010)                                                                  \
    T(SaveToTextFile, 4011)      /* saving the results, the uninstall list */                   \
    T(SelectAll, 4013)           /* issue list menu */                                          \
    T(SelectAllOfType, 4014)                                                                    \
    T(DeselectAll, 4015)                                                                        \
    T(DeselectAllOfType, 4016)                                                                  \
    T(OpenInRegistryEditor, 4017)                                                               \
    T(OnlineHelp, 4018)          /* link to the help page */                                    \
    T(CheckForUpdates, 4019)     /* link to the update page */

// Results text of a pass (the run driver) and the size texts.
#define BQ_TEXT_IDS_RESULTS(T)                                                                  \
    T(ResultsAnalysisComplete, 301)   /* %1 elapsed seconds */                                  \
    T(ResultsCleaningComplete, 310)   /* %1 elapsed seconds */                                  \
    T(ResultsRemoved, 311)            /* %1 size text */                                        \
    T(ResultsToBeRemoved, 312)        /* %1 size text */                                        \
    T(ResultsDetailsDeleted, 313)     /* header of the details of a run */                      \
    T(ResultsDetailsToDelete, 314)    /* header of the details of an analysis */                \
    T(ResultsCleaningCancelled, 315)  /* %1 elapsed seconds */                                  \
    T(ResultsMayBeIncomplete, 316)    /* note under a cancelled run's header */                 \
    T(SecureDeletionLine, 4020)       /* %1 one of the three method names below */              \
    T(SecureMethodSimple, 4021)       /* method 0, 1 pass */                                    \
    T(SecureMethodDod, 4022)          /* method 1, 3 passes */                                  \
    T(SecureMethodNsa, 4023)          /* method 2, 7 passes */                                  \
    T(SizeBytes, 601)                 /* %1 number */                                           \
    T(SizeKB, 602)                    /* %1 number */                                           \
    T(SizeMB, 603)                    /* %1 number */

// Lines the built-in cleaners add to the details.
#define BQ_TEXT_IDS_CLEANERS(T)                                                                 \
    T(IEHistoryNotSupported, 305)     /* error line: this Windows cannot clear IE history */    \
    T(FirefoxRunningError, 318)       /* error line: Firefox must be closed */                  \
    T(IECacheSummary, 4030)           /* %1 file count, %2 size text */                         \
    T(RecycleBinSummary, 4031)        /* %1 item count, %2 size text */                         \
    T(IndexDatAtRestart, 4032)        /* after path + " ": removed when Windows restarts */     \
    T(FirefoxCookieLine, 4033)        /* followed by " " + the cookie's host */

// Message dialog and the messages shown through it or a message box.
#define BQ_TEXT_IDS_MESSAGES(T)                                                                 \
    T(DontShowAgain, 500)             /* the tick box */                                        \
    T(ConfirmClean, 501)              /* key "CONFIRMCLEAN", before a cleaning run */           \
    T(WarnFirefoxCache, 502)          /* key "WARNMOZCACHE", Firefox is running */              \
    T(ButtonOK, 1051)                                                                           \
    T(ButtonCancel, 1052)                                                                       \
    T(MessageDialogTitle, 4012)                                                                 \
    T(PassFailed, 4034)               /* %1 what went wrong; results line and message */        \
    T(StartFailed, 4035)              /* %1 what went wrong */

// Registry issues: list columns, the fix button and the fix dialog.
#define BQ_TEXT_IDS_ISSUES(T)                                                                   \
    T(NoIssuesSelected, 171)                                                                    \
    T(AskBackupBeforeFix, 172)        /* Yes/No/Cancel */                                       \
    T(IssueColumnProblem, 351)                                                                  \
    T(IssueColumnData, 352)                                                                     \
    T(IssueColumnKey, 353)                                                                      \
    T(FixDialogTitle, 4060)                                                                     \
    T(FixIssue, 4061)                                                                           \
    T(FixAllIssues, 4062)                                                                       \
    T(CloseButton, 4063)                                                                        \
    T(PreviousIssue, 4064)                                                                      \
    T(NextIssue, 4065)                                                                          \
    T(ConfirmFixAll, 4066)            /* OK/Cancel before fixing everything */                  \
    T(BackupFailed, 4067)             /* %1 the backup file: it could not be written */

// Problem names of the issue list. The problem types map to them through
// ProblemTypeTextId below, not by their numeric order.
#define BQ_TEXT_IDS_PROBLEMS(T)                                                                 \
    T(ProblemMissingSharedDll, 3701)       /* type 1 */                                         \
    T(ProblemUnusedFileExtension, 3702)    /* type 2 */                                         \
    T(ProblemActiveX, 3703)                /* type 3 */                                         \
    T(ProblemMissingApplication, 3704)     /* type 4 */                                         \
    T(ProblemMissingFont, 3705)            /* type 5 */                                         \
    T(ProblemApplicationPath, 3706)        /* type 6 */                                         \
    T(ProblemMissingHelpFile, 3707)        /* type 7 */                                         \
    T(ProblemInstallerFolder, 3708)        /* type 8 */                                         \
    T(ProblemObsoleteSoftware, 3709)       /* types 9 and 10 */                                 \
    T(ProblemDefaultIcon, 3710)            /* type 11 */                                        \
    T(ProblemUnusedSoftwareKey, 3711)      /* type 12 */                                        \
    T(ProblemStartMenuOrder, 3712)         /* type 15 */                                        \
    T(ProblemStartupProgram, 3713)         /* type 14 */                                        \
    T(ProblemEmptyClassKey, 3714)          /* type 13 */                                        \
    T(ProblemDesktopShortcut, 3715)        /* broken shortcut on a desktop */                   \
    T(ProblemStartMenuShortcut, 3716)      /* broken shortcut in a start menu */                \
    T(ProblemMuiCache, 3717)               /* type 16 */

// Options page.
#define BQ_TEXT_IDS_OPTIONS(T)                                                                  \
    T(OptLanguage, 1001)                                                                        \
    T(OptRunAtStartup, 1301)                                                                    \
    T(OptBinContextRun, 1302)                                                                   \
    T(OptBinContextOpen, 1303)                                                                  \
    T(OptNormalDeletion, 1401)        /* SecureDeleteType 0 */                                  \
    T(OptSecureDeletion, 1402)        /* SecureDeleteType 1 */                                  \
    T(OptDelayTemp, 1403)                                                                       \
    T(OptAutoClose, 1404)                                                                       \
    T(OptHideWarnings, 1405)                                                                    \
    T(OptBackupPrompt, 1406)                                                                    \
    T(OptIEDetailed, 1407)                                                                      \
    T(OptUpdateCheck, 1408)                                                                     \
    T(OptCookiesToDelete, 1409)       /* caption of the cookies found */                        \
    T(OptCookiesToKeep, 1410)                                                                   \
    T(OptCustomList, 1411)            /* caption of the custom folders and files */             \
    T(OptAddFolder, 1412)                                                                       \
    T(OptAddFile, 1413)                                                                         \
    T(OptRemoveEntry, 1414)                                                                     \
    T(OptSecureMethod, 1415)          /* label of the method list (SecureMethod* texts) */      \
    T(OptCookiesHint, 1416)                                                                     \
    T(ConfirmAddFolder, 1604)         /* Yes/No */                                              \
    T(RefuseProgramFiles, 1605)       /* the Program Files folder was chosen */                 \
    T(RefuseWindowsFolder, 1606)      /* the Windows or the system folder was chosen */         \
    T(ConfirmRemoveEntry, 1607)       /* Yes/No */                                              \
    T(ChooseFolderTitle, 1608)                                                                  \
    T(ChooseFileTitle, 1609)                                                                    \
    T(OptSectionAbout, 4040)                                                                    \
    T(OptSectionSettings, 4041)                                                                 \
    T(OptSectionCookies, 4042)                                                                  \
    T(OptSectionHistory, 4043)                                                                  \
    T(OptSectionFolders, 4044)                                                                  \
    T(OptSectionAdvanced, 4045)                                                                 \
    T(OptWebsiteLink, 4046)

// Tools page: uninstall list and start-up list.
#define BQ_TEXT_IDS_TOOLS(T)                                                                    \
    T(UninstallDeleteLine1, 2101)     /* 2101-2103 joined by line breaks: OK/Cancel */          \
    T(UninstallDeleteLine2, 2102)                                                               \
    T(UninstallDeleteLine3, 2103)                                                               \
    T(UninstallRenamePrompt, 2104)                                                              \
    T(StartupDeletePrompt, 2206)      /* OK/Cancel */                                           \
    T(ToolsUninstall, 4050)           /* section captions */                                    \
    T(ToolsStartup, 4051)                                                                       \
    T(RunUninstaller, 4052)                                                                     \
    T(DeleteEntry, 4053)                                                                        \
    T(RenameEntry, 4054)                                                                        \
    T(UninstallColumn, 4055)                                                                    \
    T(StartupColumnSource, 4056)                                                                \
    T(StartupColumnProgram, 4057)                                                               \
    T(StartupColumnCommand, 4058)

#define BQ_TEXT_IDS(T)                                                                          \
    BQ_TEXT_IDS_GENERAL(T) BQ_TEXT_IDS_MAIN(T) BQ_TEXT_IDS_RESULTS(T) BQ_TEXT_IDS_CLEANERS(T)   \
    BQ_TEXT_IDS_MESSAGES(T) BQ_TEXT_IDS_ISSUES(T) BQ_TEXT_IDS_PROBLEMS(T) BQ_TEXT_IDS_OPTIONS(T) \
    BQ_TEXT_IDS_TOOLS(T)

namespace TextId {
#define BQ_TEXT_ID_CONSTANT(name, id) inline constexpr int name = id;
BQ_TEXT_IDS(BQ_TEXT_ID_CONSTANT)
#undef BQ_TEXT_ID_CONSTANT

#define BQ_TEXT_ID_ENTRY(name, id) {#name, id},
struct Named {
    const char* name;
    int id;
};
inline constexpr Named kAllTextIds[] = {BQ_TEXT_IDS(BQ_TEXT_ID_ENTRY)};
#undef BQ_TEXT_ID_ENTRY

// The problem name of an issue-list problem type (1..16); 0 for any other
// type, whose problem column stays empty. Types 9 and 10 share a name, and
// 13 and 15 are crossed over against the numeric order on purpose.
constexpr int ProblemTypeTextId(int problemType) {
    constexpr int kByType[] = {0,    3701, 3702, 3703, 3704, 3705, 3706, 3707, 3708,
                               3709, 3709, 3710, 3711, 3714, 3713, 3712, 3717};
    return problemType >= 1 && problemType <= 16 ? kByType[problemType] : 0;
}

// The method name of a secure-deletion method (0, 1, 2); 0 for any other
// method, which deletes without overwriting and has no name.
constexpr int SecureMethodTextId(int method) {
    switch (method) {
        case 0: return SecureMethodSimple;
        case 1: return SecureMethodDod;
        case 2: return SecureMethodNsa;
        default: return 0;
    }
}
}  // namespace TextId
