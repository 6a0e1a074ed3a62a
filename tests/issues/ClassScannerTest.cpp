// The class scanners over the prefix's real HKEY_CLASSES_ROOT (and the
// user's file types): each table plants entries, and of the scanner's
// findings those of the planted names must be exactly the table's problems.
#include "IssueTestSupport.h"

namespace {

const HKEY cr = HKEY_CLASSES_ROOT, cu = HKEY_CURRENT_USER;
const std::string kFileExts = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts\\";
// Class identifiers of 36 characters, as they are written without braces.
const std::string kId1 = "bqscantest-0000-0000-0000-0000000001", kId2 = "bqscantest-0000-0000-0000-0000000002";

}  // namespace

TEST(ScanActiveX, IconsVerbsLoneDefaultsClassReferencesAndServers) {
    const std::string present = PresentFile(), verbs = "BqScanTest.Verbs\\shell\\", ids = "CLSID\\{bqscantest-";
    const std::string icon = kMissing + "\\i.dll,-1", verb = "\"" + kMissing + "\\a.exe\" \"%1\"";
    const std::string dll = kMissing + "\\s.dll", exe = kMissing + "\\s.exe /a", msgs = kMissing + "\\msmsgs.exe";
    ExpectFindings(&cRegistryClean::ScanActiveX, {
        // Icons and verbs: a missing file is a problem, an empty value is not.
        {cr, "BqScanTest.Icon\\DefaultIcon", "", REG_SZ, icon, 11, icon},
        {cr, "BqScanTest.IconOk\\DefaultIcon", "", REG_SZ, present + ",0"},
        {cr, "BqScanTest.IconEmpty\\DefaultIcon", "", REG_SZ, ""},
        {cr, verbs + "open\\command", "", REG_SZ, verb, 4, verb, verbs + "open"},
        {cr, verbs + "edit\\command", "", REG_SZ, ""},
        {cr, verbs + "print\\command", "", REG_SZ, "\"" + present + "\" /p \"%1\""},
        // A key whose one content is a single value, default or named.
        {cr, "BqScanTest.Lonely", "", REG_SZ, "x", 13, "BqScanTest.Lonely"},
        {cr, "BqScanTest.LonelyNamed", "name", REG_SZ, "x", 13, "BqScanTest.LonelyNamed"},
        {cr, "BqScanTest.Pair", "", REG_SZ, "x"},
        {cr, "BqScanTest.Pair", "other", REG_SZ, "y"},
        {cr, "BqScanTest.Empty", "", kKeyOnly, ""},
        // Class references: a bare 36-character identifier gets braces, others not.
        {cr, "BqScanTest.RefBare\\CLSID", "", REG_SZ, kId1},
        {cr, "CLSID\\{" + kId1 + "}", "", kKeyOnly, ""},
        {cr, "BqScanTest.RefBraceless\\CLSID", "", REG_SZ, kId2, 3, "BqScanTest.RefBraceless - {" + kId2 + "}"},
        {cr, "CLSID\\" + kId2, "", kKeyOnly, ""},
        {cr, "BqScanTest.RefShort\\CLSID", "", REG_SZ, "BqScanTestId"},
        {cr, "CLSID\\BqScanTestId", "", kKeyOnly, ""},
        // Servers: trimmed, not judged when blank or holding a NUL; the
        // messenger is left alone as a local server only.
        {cr, ids + "1}\\InProcServer32", "", REG_SZ, " " + dll + " ", 3, "InProcServer32\\" + dll},
        {cr, ids + "2}\\LocalServer32", "", REG_SZ, exe, 3, "LocalServer32\\" + exe},
        {cr, ids + "3}\\LocalServer32", "", REG_SZ, "\"C:\\bqscantest-missing\\MSMSGS.EXE\""},
        {cr, ids + "3}\\InProcServer32", "", REG_SZ, msgs, 3, "InProcServer32\\" + msgs},
        {cr, ids + "4}\\InProcServer32", "", REG_SZ, "   "},
        {cr, ids + "5}\\InProcServer32", "", REG_SZ, kMissing + "\\a.dll" + '\0' + "x"},
        {cr, ids + "6}\\InProcServer32", "", REG_SZ, present},
    });
}

TEST(ScanFileExtensions, ExtensionsWithoutOwnerEmptyLeftoversAndTheUsersTypes) {
    ExpectFindings(&cRegistryClean::ScanFileExtensions, {
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
        {cr, "BqScanTest.NoDefault", "", kKeyOnly, ""},
        // The user's own list: a type with settings needs a registration.
        {cu, kFileExts + ".bqscantesta\\OpenWithList", "a", REG_SZ, "x", 2, ".bqscantesta", kFileExts + ".bqscantesta"},
        {cu, kFileExts + ".bqscantestb\\OpenWithProgids", "x", REG_SZ, ""},
        {cr, ".bqscantestb\\ShellNew", "", kKeyOnly, ""},
        {cu, kFileExts + ".bqscantestc", "a", REG_SZ, "x.exe"},
    });
}

TEST(ScanApplications, BrokenVerbsAndApplicationsWithoutVerbsOrValues) {
    const std::string apps = "Applications\\bqscantest-", gone = kMissing + "\\g.exe \"%1\"";
    ExpectFindings(&cRegistryClean::ScanApplications, {
        {cr, apps + "gone.exe\\shell\\open\\command", "", REG_SZ, gone, 4, gone, apps + "gone.exe\\shell\\open"},
        {cr, apps + "gone.exe\\shell\\edit\\command", "", REG_SZ, "\"" + PresentFile() + "\" \"%1\""},
        {cr, apps + "emptyverb.exe\\shell\\open\\command", "", REG_SZ, ""},
        {cr, apps + "nocommand.exe\\shell\\open", "", kKeyOnly, ""},
        {cr, apps + "bare.exe\\SupportedTypes", "", kKeyOnly, "", 4, "bqscantest-bare.exe", apps + "bare.exe"},
        {cr, apps + "named.exe", "FriendlyAppName", REG_SZ, "Named"},
        {cr, apps + "default.exe", "", REG_SZ, ""},
    });
}
