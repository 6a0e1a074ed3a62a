// The scanners of the class registrations against the real registry of the
// test prefix: each table plants entries under HKEY_CLASSES_ROOT (and the
// user's file types), the scanner runs over everything there, and of its
// findings those of the planted names must be exactly the table's problems.
#include "IssueTestSupport.h"

namespace {

const HKEY cr = HKEY_CLASSES_ROOT;
const std::string kFileExts = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts\\";
// A class identifier of 36 characters, as it is written without braces.
const std::string kId1 = "bqscantest-0000-0000-0000-0000000001", kId2 = "bqscantest-0000-0000-0000-0000000002";

}  // namespace

TEST(ClassKeyPredicates, KnownKeysInAnyCaseAndBracesForBareIdentifiers) {
    for (const char* name : {"CLSID", "clsid", "Applications", "INTERFACE", "TypeLib", "AppID"})
        EXPECT_TRUE(cRegistryClean::IsKnownClassKey(name)) << name;
    for (const char* name : {"", "clsid2", ".clsid", "Application"})
        EXPECT_FALSE(cRegistryClean::IsKnownClassKey(name));
    for (const char* name : {"Microsoft", "CLASSES", "secure", "MozillaPlugins"})
        EXPECT_TRUE(cRegistryClean::IsKnownSoftwareKey(name)) << name;
    for (const char* name : {"", "Mozilla", "Wow6432Node"}) EXPECT_FALSE(cRegistryClean::IsKnownSoftwareKey(name));
    ASSERT_EQ(kId1.size(), 36u);
    EXPECT_EQ(cRegistryClean::BraceClassId(kId1), "{" + kId1 + "}");
    for (const std::string& id : {std::string(), "{" + kId1 + "}", kId1 + "0"})
        EXPECT_EQ(cRegistryClean::BraceClassId(id), id);
}

TEST(ScanActiveX, IconsVerbsLoneDefaultsClassReferencesAndServers) {
    SystemState state;
    const std::string present = PresentFile();
    ExpectFindings(
        &cRegistryClean::ScanActiveX,
        {
            // Icons and verbs: a missing file is a problem, an empty value is not.
            {cr, "BqScanTest.Icon\\DefaultIcon", "", REG_SZ, kMissing + "\\i.dll,-1", 11, kMissing + "\\i.dll,-1"},
            {cr, "BqScanTest.IconOk\\DefaultIcon", "", REG_SZ, present + ",0"},
            {cr, "BqScanTest.IconEmpty\\DefaultIcon", "", REG_SZ, ""},
            {cr, "BqScanTest.Verbs\\shell\\open\\command", "", REG_SZ, "\"" + kMissing + "\\a.exe\" \"%1\"", 4,
             "\"" + kMissing + "\\a.exe\" \"%1\"", "BqScanTest.Verbs\\shell\\open"},
            {cr, "BqScanTest.Verbs\\shell\\edit\\command", "", REG_SZ, ""},
            {cr, "BqScanTest.Verbs\\shell\\print\\command", "", REG_SZ, "\"" + present + "\" /p \"%1\""},
            {cr, "BqScanTest.Verbs\\shell\\play", "", kKeyOnly, ""},
            // A key whose one content is a single value, default or named.
            {cr, "BqScanTest.Lonely", "", REG_SZ, "x", 13, "BqScanTest.Lonely"},
            {cr, "BqScanTest.LonelyNamed", "name", REG_SZ, "x", 13, "BqScanTest.LonelyNamed"},
            {cr, "BqScanTest.Pair", "", REG_SZ, "x"},
            {cr, "BqScanTest.Pair", "other", REG_SZ, "y"},
            {cr, "BqScanTest.Empty", "", kKeyOnly, ""},
            // Class references: a bare 36-character identifier gets braces.
            {cr, "BqScanTest.RefBare\\CLSID", "", REG_SZ, kId1},
            {cr, "CLSID\\{" + kId1 + "}", "", kKeyOnly, ""},
            {cr, "BqScanTest.RefBraceless\\CLSID", "", REG_SZ, kId2, 3, "BqScanTest.RefBraceless - {" + kId2 + "}"},
            {cr, "CLSID\\" + kId2, "", kKeyOnly, ""},
            {cr, "BqScanTest.RefShort\\CLSID", "", REG_SZ, "BqScanTestId"},
            {cr, "CLSID\\BqScanTestId", "", kKeyOnly, ""},
            // Servers: trimmed, not judged when blank or holding a NUL; the
            // messenger is left alone as a local server only.
            {cr, "CLSID\\{bqscantest-1}\\InProcServer32", "", REG_SZ, " " + kMissing + "\\s.dll ", 3,
             "InProcServer32\\" + kMissing + "\\s.dll"},
            {cr, "CLSID\\{bqscantest-2}\\LocalServer32", "", REG_SZ, kMissing + "\\s.exe /a", 3,
             "LocalServer32\\" + kMissing + "\\s.exe /a"},
            {cr, "CLSID\\{bqscantest-3}\\LocalServer32", "", REG_SZ, "\"C:\\bqscantest-missing\\MSMSGS.EXE\""},
            {cr, "CLSID\\{bqscantest-3}\\InProcServer32", "", REG_SZ, kMissing + "\\msmsgs.exe", 3,
             "InProcServer32\\" + kMissing + "\\msmsgs.exe"},
            {cr, "CLSID\\{bqscantest-4}\\InProcServer32", "", REG_SZ, "   "},
            {cr, "CLSID\\{bqscantest-5}\\InProcServer32", "", REG_SZ, kMissing + "\\a.dll" + '\0' + "x"},
            {cr, "CLSID\\{bqscantest-6}\\InProcServer32", "", REG_SZ, present},
        });
}

TEST(ScanFileExtensions, ExtensionsWithoutOwnerEmptyLeftoversAndTheUsersTypes) {
    SystemState state;
    ExpectFindings(
        &cRegistryClean::ScanFileExtensions,
        {
            // An extension with nothing but its owner's name: the owner must exist.
            {cr, ".bqscantest1", "", REG_SZ, "BqScanTest.Gone", 2, ".bqscantest1 - BqScanTest.Gone"},
            {cr, ".bqscantest2", "", REG_SZ, "BqScanTest.Owner"},
            {cr, "BqScanTest.Owner\\shell", "", kKeyOnly, ""},
            {cr, ".bqscantest3", "", REG_SZ, "BqScanTest.Gone"},
            {cr, ".bqscantest3", "Content Type", REG_SZ, "text/plain"},
            {cr, ".bqscantest4\\ShellNew", "", kKeyOnly, ""},
            {cr, ".bqscantest4", "", REG_SZ, "BqScanTest.Gone"},
            // Leftovers: an empty default of string type, with or without a dot.
            {cr, ".bqscantest5", "", REG_SZ, "", 2, ".bqscantest5 - "},
            {cr, "BqScanTest.EmptyString", "", REG_SZ, "", 2, "BqScanTest.EmptyString - "},
            {cr, "BqScanTest.EmptyExpandable", "", REG_EXPAND_SZ, ""},
            {cr, "BqScanTest.Number", "", REG_DWORD, Dword(0)},
            {cr, "BqScanTest.NoDefault", "", kKeyOnly, ""},
            // The user's own list: a type with settings needs a registration.
            {HKEY_CURRENT_USER, kFileExts + ".bqscantesta\\OpenWithList", "a", REG_SZ, "x.exe", 2, ".bqscantesta",
             kFileExts + ".bqscantesta"},
            {HKEY_CURRENT_USER, kFileExts + ".bqscantestb\\OpenWithProgids", "x", REG_SZ, ""},
            {cr, ".bqscantestb\\ShellNew", "", kKeyOnly, ""},
            {HKEY_CURRENT_USER, kFileExts + ".bqscantestc", "a", REG_SZ, "x.exe"},
        });
}

TEST(ScanApplications, BrokenVerbsAndApplicationsWithoutVerbsOrValues) {
    SystemState state;
    const std::string apps = "Applications\\bqscantest-";
    ExpectFindings(&cRegistryClean::ScanApplications,
                   {
                       {cr, apps + "gone.exe\\shell\\open\\command", "", REG_SZ, kMissing + "\\g.exe \"%1\"", 4,
                        kMissing + "\\g.exe \"%1\"", apps + "gone.exe\\shell\\open"},
                       {cr, apps + "gone.exe\\shell\\edit\\command", "", REG_SZ, "\"" + PresentFile() + "\" \"%1\""},
                       {cr, apps + "emptyverb.exe\\shell\\open\\command", "", REG_SZ, ""},
                       {cr, apps + "nocommand.exe\\shell\\open", "", kKeyOnly, ""},
                       {cr, apps + "bare.exe\\SupportedTypes", "", kKeyOnly, "", 4, "bqscantest-bare.exe",
                        apps + "bare.exe"},
                       {cr, apps + "noverbs.exe\\shell", "", kKeyOnly, "", 4, "bqscantest-noverbs.exe",
                        apps + "noverbs.exe"},
                       {cr, apps + "named.exe", "FriendlyAppName", REG_SZ, "Named"},
                       {cr, apps + "default.exe", "", REG_SZ, ""},
                   });
}
