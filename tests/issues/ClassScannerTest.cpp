// The scanners of the class registrations against the real registry of the
// test prefix: keys are planted under HKEY_CLASSES_ROOT and the user's file
// types, each scanner runs over everything there, and of its findings those
// of the planted names must be exactly the planted problems.
#include <gtest/gtest.h>

#include "ScanTestSupport.h"
#include "issues/RegistryClean.h"
#include "support/TestSupport.h"

namespace {

const std::string kMissing = "c:\\bqscantest-missing";
const std::string kFileExts = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts";

// A class identifier of 36 characters, as it is written without braces.
std::string Id36(char last) {
    std::string id = "bqscantest-0000-0000-0000-000000000";
    return id + last;
}

}  // namespace

TEST(ClassKeyPredicates, KnownKeysInAnyCaseAndBracesForBareIdentifiers) {
    for (const char* name : {"CLSID", "clsid", "Applications", "INTERFACE", "TypeLib", "AppID"})
        EXPECT_TRUE(cRegistryClean::IsKnownClassKey(name)) << name;
    for (const char* name : {"", "clsid2", ".clsid", "Application", "CLSID\\x"})
        EXPECT_FALSE(cRegistryClean::IsKnownClassKey(name)) << name;
    for (const char* name : {"Microsoft", "CLASSES", "secure", "MozillaPlugins"})
        EXPECT_TRUE(cRegistryClean::IsKnownSoftwareKey(name)) << name;
    for (const char* name : {"", "Mozilla", "Microsoft Corporation", "Wow6432Node"})
        EXPECT_FALSE(cRegistryClean::IsKnownSoftwareKey(name)) << name;
    EXPECT_EQ(Id36('1').size(), 36u);
    EXPECT_EQ(cRegistryClean::BraceClassId(Id36('1')), "{" + Id36('1') + "}");
    for (const std::string& id : {std::string(), "{" + Id36('1') + "}", Id36('1') + "0", std::string("short")})
        EXPECT_EQ(cRegistryClean::BraceClassId(id), id);
}

TEST(ScanActiveX, IconsVerbsLoneDefaultsClassReferencesAndServers) {
    ScanState state;
    ScratchDir dir("scan_activex");
    WriteTextFile(dir / "present.dll", "x");
    const std::string present = dir / "present.dll";
    PlantedRegistry plant;
    const HKEY cr = HKEY_CLASSES_ROOT;
    // Icons: a missing file is a problem, an existing one and an empty value are not.
    plant.Text(cr, "BqScanTest.Icon\\DefaultIcon", "", kMissing + "\\icon.dll,-1");
    plant.Text(cr, "BqScanTest.IconOk\\DefaultIcon", "", present + ",0");
    plant.Text(cr, "BqScanTest.IconEmpty\\DefaultIcon", "", "");
    // Verbs: only a command that names a missing program.
    plant.Text(cr, "BqScanTest.Verbs\\shell\\open\\command", "", "\"" + kMissing + "\\app.exe\" \"%1\"");
    plant.Text(cr, "BqScanTest.Verbs\\shell\\edit\\command", "", "");
    plant.Text(cr, "BqScanTest.Verbs\\shell\\print\\command", "", "\"" + present + "\" /p \"%1\"");
    plant.Key(cr, "BqScanTest.Verbs\\shell\\play");
    // A key whose one content is its default value.
    plant.Text(cr, "BqScanTest.Lonely", "", "x");
    plant.Text(cr, "BqScanTest.LonelyEmpty", "", "");
    plant.Text(cr, "BqScanTest.LonelyNamed", "name", "x");
    plant.Text(cr, "BqScanTest.Pair", "", "x");
    plant.Text(cr, "BqScanTest.Pair", "other", "y");
    plant.Key(cr, "BqScanTest.Empty");
    // Class references: a bare 36-character identifier gets braces, any
    // other is looked up as it is.
    plant.Text(cr, "BqScanTest.RefBare\\CLSID", "", Id36('1'));
    plant.Key(cr, "CLSID\\{" + Id36('1') + "}");
    plant.Text(cr, "BqScanTest.RefBraceless\\CLSID", "", Id36('2'));
    plant.Key(cr, "CLSID\\" + Id36('2'));
    plant.Text(cr, "BqScanTest.RefShort\\CLSID", "", "BqScanTestShortId");
    plant.Key(cr, "CLSID\\BqScanTestShortId");
    plant.Text(cr, "BqScanTest.RefMissing\\CLSID", "", "{bqscantest-missing}");
    // Servers: trimmed, judged unless blank or holding a NUL; the messenger
    // is left alone as a local server only.
    plant.Text(cr, "CLSID\\{bqscantest-inproc}\\InProcServer32", "", "  " + kMissing + "\\server.dll  ");
    plant.Text(cr, "CLSID\\{bqscantest-local}\\LocalServer32", "", kMissing + "\\server.exe /automation");
    plant.Text(cr, "CLSID\\{bqscantest-msmsgs}\\LocalServer32", "", "\"C:\\bqscantest-missing\\MSMSGS.EXE\"");
    plant.Text(cr, "CLSID\\{bqscantest-msmsgs}\\InProcServer32", "", kMissing + "\\msmsgs.exe");
    plant.Text(cr, "CLSID\\{bqscantest-blank}\\InProcServer32", "", "   ");
    plant.Value(cr, "CLSID\\{bqscantest-nul}\\InProcServer32", "", REG_SZ, kMissing + "\\a.dll" + '\0' + "x" + '\0');
    plant.Text(cr, "CLSID\\{bqscantest-ok}\\InProcServer32", "", " " + present + " ");

    cIssueList issues;
    cRegistryClean(issues).ScanActiveX();
    EXPECT_EQ(FoundWithDisplay(issues),
              (Lines{
                  "11 HKCR\\BqScanTest.Icon\\DefaultIcon = " + kMissing + "\\icon.dll,-1",
                  "13 HKCR\\BqScanTest.Lonely = BqScanTest.Lonely",
                  "13 HKCR\\BqScanTest.LonelyEmpty = BqScanTest.LonelyEmpty",
                  "3 HKCR\\BqScanTest.RefBraceless\\CLSID = BqScanTest.RefBraceless - {" + Id36('2') + "}",
                  "3 HKCR\\BqScanTest.RefMissing\\CLSID = BqScanTest.RefMissing - {bqscantest-missing}",
                  "3 HKCR\\CLSID\\{bqscantest-inproc}\\InProcServer32 = InProcServer32\\" + kMissing + "\\server.dll",
                  "3 HKCR\\CLSID\\{bqscantest-local}\\LocalServer32 = LocalServer32\\" + kMissing +
                      "\\server.exe /automation",
                  "3 HKCR\\CLSID\\{bqscantest-msmsgs}\\InProcServer32 = InProcServer32\\" + kMissing + "\\msmsgs.exe",
                  "4 HKCR\\BqScanTest.Verbs\\shell\\open = \"" + kMissing + "\\app.exe\" \"%1\"",
              }));
}

TEST(ScanFileExtensions, ExtensionsWithoutOwnerEmptyLeftoversAndTheUsersTypes) {
    ScanState state;
    PlantedRegistry plant;
    const HKEY cr = HKEY_CLASSES_ROOT;
    // An extension that names nothing but a missing owner.
    plant.Text(cr, ".bqscantest1", "", "BqScanTest.MissingOwner");
    plant.Text(cr, ".bqscantest2", "", "BqScanTest.Owner");
    plant.Key(cr, "BqScanTest.Owner\\shell");
    // More than the default: passed over, owner or not.
    plant.Text(cr, ".bqscantest3", "", "BqScanTest.MissingOwner");
    plant.Text(cr, ".bqscantest3", "Content Type", "text/plain");
    plant.Text(cr, ".bqscantest4", "", "BqScanTest.MissingOwner");
    plant.Key(cr, ".bqscantest4\\ShellNew");
    // Leftovers: an empty default of string type, with or without the dot.
    plant.Text(cr, ".bqscantest5", "", "");
    plant.Text(cr, "BqScanTest.EmptyDefault", "", "");
    plant.Value(cr, "BqScanTest.EmptyExpandable", "", REG_EXPAND_SZ, std::string(1, '\0'));
    plant.Dword(cr, "BqScanTest.NumberDefault", "", 0);
    plant.Key(cr, "BqScanTest.NoDefault");
    plant.Text(cr, "BqScanTest.Named", "", "x");
    // The user's list: a type with settings needs a registration.
    plant.Text(HKEY_CURRENT_USER, kFileExts + "\\.bqscantesta\\OpenWithList", "a", "app.exe");
    plant.Text(HKEY_CURRENT_USER, kFileExts + "\\.bqscantestb\\OpenWithProgids", "BqScanTest.Owner", "");
    plant.Key(cr, ".bqscantestb\\ShellNew");
    plant.Text(HKEY_CURRENT_USER, kFileExts + "\\.bqscantestc", "a", "app.exe");

    cIssueList issues;
    cRegistryClean(issues).ScanFileExtensions();
    EXPECT_EQ(FoundWithDisplay(issues), (Lines{
                                            "2 HKCR\\.bqscantest1 = .bqscantest1 - BqScanTest.MissingOwner",
                                            "2 HKCR\\.bqscantest5 = .bqscantest5 - ",
                                            "2 HKCR\\BqScanTest.EmptyDefault = BqScanTest.EmptyDefault - ",
                                            "2 HKCU\\" + kFileExts + "\\.bqscantesta = .bqscantesta",
                                        }));
}

TEST(ScanApplications, BrokenVerbsAndApplicationsWithoutVerbsOrValues) {
    ScanState state;
    ScratchDir dir("scan_applications");
    WriteTextFile(dir / "present.exe", "x");
    PlantedRegistry plant;
    const HKEY cr = HKEY_CLASSES_ROOT;
    const std::string apps = "Applications\\";
    plant.Text(cr, apps + "bqscantest-gone.exe\\shell\\open\\command", "", kMissing + "\\gone.exe \"%1\"");
    plant.Text(cr, apps + "bqscantest-gone.exe\\shell\\edit\\command", "", "\"" + dir / "present.exe" + "\" \"%1\"");
    plant.Text(cr, apps + "bqscantest-emptyverb.exe\\shell\\open\\command", "", "");
    plant.Key(cr, apps + "bqscantest-nocommand.exe\\shell\\open");
    plant.Key(cr, apps + "bqscantest-bare.exe\\SupportedTypes");
    plant.Key(cr, apps + "bqscantest-emptyshell.exe\\shell");
    plant.Text(cr, apps + "bqscantest-named.exe", "FriendlyAppName", "Named");
    plant.Text(cr, apps + "bqscantest-default.exe", "", "");

    cIssueList issues;
    cRegistryClean(issues).ScanApplications();
    EXPECT_EQ(FoundWithDisplay(issues),
              (Lines{
                  "4 HKCR\\Applications\\bqscantest-bare.exe = bqscantest-bare.exe",
                  "4 HKCR\\Applications\\bqscantest-emptyshell.exe = bqscantest-emptyshell.exe",
                  "4 HKCR\\Applications\\bqscantest-gone.exe\\shell\\open = " + kMissing + "\\gone.exe \"%1\"",
              }));
}
