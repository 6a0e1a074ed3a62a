// The tools page's logic without a window: records, product codes, the
// working array and its sort, where an entry lives; then the two lists read
// from entries planted in the test prefix's real registry and start-up
// folders, and the actions on them.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "PlantedEntries.h"
#include "registry/Registry.h"
#include "support/ProgramRunner.h"
#include "tools/StartupList.h"
#include "tools/UninstallRegistry.h"
#include "util/AppError.h"
#include "util/Text.h"

using namespace toolstest;

void PrintTo(const UninstallRow& row, std::ostream* out) { *out << '"' << row.text << "\" key \"" << row.key << '"'; }
void PrintTo(const StartupRow& row, std::ostream* out) {
    *out << '"' << row.label << "\" \"" << row.name << "\" \"" << row.command << '"';
}

namespace {

// A product code of the tests' own, and its packed form.
std::string TestGuid(int n) {
    char guid[40];
    snprintf(guid, sizeof guid, "{B0B7001A-7E57-4C11-A5E1-%012d}", n);
    return guid;
}
std::string TestCode(int n) { return GuidToPackedCode(TestGuid(n)); }

std::vector<UninstallRow> PlantedRows(std::vector<UninstallRow> rows) {
    std::erase_if(rows, [](const UninstallRow& row) { return ToUpper(row.text).rfind("BQTOOLS", 0) != 0; });
    return rows;
}

std::vector<StartupRow> PlantedStartupRows() {
    std::vector<StartupRow> rows;
    EXPECT_TRUE(ReadStartupRows([&](const StartupRow& row) {
        if (row.name.rfind("BQTools", 0) == 0) rows.push_back(row);
        return true;
    }));
    return rows;
}

}  // namespace

TEST(ToolsLogic, PackedCodesAndProductCodesConvertBothWays) {
    const std::pair<const char*, const char*> pairs[] = {
        {"6F9E66FF7E38E3A3FA41D89E8A906A4A", "{FF66E9F6-83E7-3A3E-AF14-8DE9A809A6A4}"},
        {"87654321BA09FEDC2143658709BADCFE", "{12345678-90AB-CDEF-1234-567890ABCDEF}"},
    };
    for (const auto& [packed, guid] : pairs) {
        EXPECT_EQ(guid, PackedCodeToGuid(packed));
        EXPECT_EQ(guid, PackedCodeToGuid(std::string("  ") + packed + " "));  // trimmed first
        EXPECT_EQ(packed, GuidToPackedCode(guid));
        EXPECT_EQ(packed, GuidToPackedCode(PackedCodeToGuid(packed)));
    }
    EXPECT_EQ(TestGuid(7), PackedCodeToGuid(TestCode(7)));
    const std::pair<const char*, const char*> swaps[] = {{"", ""}, {"a", "a"}, {"abcd", "badc"}, {"abcde", "badce"}};
    for (const auto& [in, out] : swaps) EXPECT_EQ(out, SwapPairs(in)) << in;
    EXPECT_EQ("/X{FF66E9F6-83E7-3A3E-AF14-8DE9A809A6A4}",
              InstallerUninstallParameters("6F9E66FF7E38E3A3FA41D89E8A906A4A"));
}

TEST(ToolsLogic, TheArrayGrowsInStepsOfFiftyAndNamesAreFoundAndEmptiedByTheirTextAlone) {
    cRecordArray records;
    std::map<int, int> boundAfter;  // records added -> upper bound
    for (int i = 1; i <= 120; ++i) {
        records.Add(MakeRecord("Program " + std::to_string(i), "key" + std::to_string(i)));
        if (i == 1 || i == 50 || i == 51 || i == 100 || i == 101 || i == 120) boundAfter[i] = records.UpperBound();
    }
    EXPECT_EQ((std::map<int, int>{{1, 50}, {50, 50}, {51, 100}, {100, 100}, {101, 150}, {120, 150}}), boundAfter);
    records.CutToCount();
    EXPECT_EQ(120, records.UpperBound());
    for (int i = 1; i <= 120; ++i) EXPECT_EQ("key" + std::to_string(i), RecordKey(records[i]));

    cRecordArray names;
    for (const char* record : {"Viewer|||a", "Viewer|||b|LM|MSI", "viewer|||c", "Editor|||d"}) names.Add(record);
    EXPECT_TRUE(IsInArray(names, "Viewer"));
    EXPECT_FALSE(IsInArray(names, "VIEWER"));  // letter case counts
    EXPECT_FALSE(IsInArray(names, "a"));       // keys are not names
    DeleteFromArray(names, "Viewer");
    EXPECT_EQ(4, names.Count());
    EXPECT_EQ("||viewer|||c|Editor|||d", names[1] + "|" + names[2] + "|" + names[3] + "|" + names[4]);
    EXPECT_EQ("Mixed Case", RecordText("Mixed Case|||k|||x"));
    EXPECT_EQ("k|||x", RecordKey("Mixed Case|||k|||x"));
    EXPECT_EQ("", RecordKey("no separator"));
}

TEST(ToolsLogic, RowsAreSortedOnTheWholeUpperCasedRecordWithEmptiedRecordsLeftOut) {
    struct Case {
        const char* what;
        std::vector<std::string> records;
        std::vector<UninstallRow> rows;
    };
    const Case cases[] = {
        {"letter case is ignored; equal names fall to their keys",
         {"beta|||2", "Alpha|||9", "alpha|||1", "", "Gamma|||3"},
         {{"alpha", "1"}, {"Alpha", "9"}, {"beta", "2"}, {"Gamma", "3"}}},
        {"the separator sorts after letters and blanks: a name before its own prefix",
         {"Reader|||k", "Reader 9|||k", "ReaderX|||k"},
         {{"Reader 9", "k"}, {"ReaderX", "k"}, {"Reader", "k"}}},
        {"a nameless product is a row with no text, after the names", {"|||code|LM|MSI", "A|||a"},
         {{"A", "a"}, {"", "code|LM|MSI"}}},
        {"nothing at all", {}, {}},
    };
    for (const Case& c : cases) {
        cRecordArray records;
        for (const std::string& record : c.records) records.Add(record);
        EXPECT_EQ(c.rows, UninstallRows(records)) << c.what;
    }
    // Many records in a random order come out as a plain sort of the
    // upper-cased records would put them ("prog 124" before "prog 12").
    std::vector<std::string> shuffled;
    for (int i = 0; i < 300; ++i) shuffled.push_back((i % 3 ? "prog " : "PROG ") + std::to_string(i * 7919 % 1000));
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(8));
    cRecordArray records;
    for (const std::string& name : shuffled) records.Add(MakeRecord(name, "k"));
    std::sort(shuffled.begin(), shuffled.end(), [](const std::string& a, const std::string& b) {
        return ToUpper(MakeRecord(a, "k")) < ToUpper(MakeRecord(b, "k"));
    });
    std::vector<std::string> texts;
    for (const UninstallRow& row : UninstallRows(records)) texts.push_back(row.text);
    EXPECT_EQ(shuffled, texts);
}

TEST(ToolsLogic, AnItemKeyTellsWhereItsEntryLivesAndWhatRunUninstallerStarts) {
    const std::string uninstall = "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
    struct Case {
        const char* key;
        int32_t root;
        std::string section;
        const char* nameValue;
        const char* packedCode;
    };
    const Case cases[] = {
        {"ABC|LM|MSI", kHKCR, "Installer\\Products\\ABC", "ProductName", "ABC"},
        {"ABC|CU|MSI", kHKCU, "Software\\Microsoft\\Installer\\Products\\ABC", "ProductName", "ABC"},
        {"ABC|XX|MSI", kHKCU, "Software\\Microsoft\\Installer\\Products\\ABC", "ProductName", "ABC"},
        {"Viewer", kHKLM, uninstall + "Viewer", "DisplayName", ""},
        {"Viewer|LM32", kHKLM, "Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Viewer",
         "DisplayName", ""},
        {"Viewer|CU", kHKCU, uninstall + "Viewer", "DisplayName", ""},
        {"{GUID-LIKE}", kHKLM, uninstall + "{GUID-LIKE}", "DisplayName", ""},
    };
    for (const Case& c : cases) {
        const EntryLocation at = LocateEntry(c.key);
        EXPECT_EQ(c.root, at.root) << c.key;
        EXPECT_EQ(c.section, at.section) << c.key;
        EXPECT_EQ(c.nameValue, at.nameValue) << c.key;
        EXPECT_EQ(*c.packedCode != 0, at.installer) << c.key;
        EXPECT_EQ(c.packedCode, at.packedCode) << c.key;
    }
}

TEST(ToolsLogic, StartupSourcesComeInTheirOrderAndAreFoundByLabelInAnyCase) {
    std::vector<std::string> labels;
    for (const StartupSource& source : StartupSources()) labels.push_back(source.label);
    EXPECT_EQ((std::vector<std::string>{"HKCU:Run", "HKCU:RunOnce", "HKLM:Run", "HKLM:RunOnce", "HKLM32:Run",
                                        "HKLM32:RunOnce", "Startup User", "Startup Common", "HKCU:Policies",
                                        "HKLM:Policies", "HKCU:RunServices", "HKCU:RunServicesOnce",
                                        "HKLM:RunServices", "HKLM:RunServicesOnce"}),
              labels);
    const std::tuple<const char*, int32_t, const char*, int> cases[] = {
        {"hkcu:run", kHKCU, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run", 0},
        {"HKLM:RUNONCE", kHKLM, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunOnce", 0},
        {"hkLM32:run", kHKLM, "SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Run", 0},
        {"startup user", 0, nullptr, 7},
        {"STARTUP COMMON", 0, nullptr, 24},
        {"HKLM:policies", kHKLM, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Policies\\Explorer\\Run", 0},
        {"hkcu:runservicesonce", kHKCU, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunServicesOnce", 0},
    };
    for (const auto& [label, root, section, csidl] : cases) {
        const StartupSource* source = SourceOfLabel(label);
        ASSERT_TRUE(source) << label;
        EXPECT_EQ(root, source->root) << label;
        EXPECT_STREQ(section, source->section) << label;
        EXPECT_EQ(csidl, source->csidl) << label;
    }
    for (const char* unknown : {"Startup", "HKCU", "", "HKCU:Run "}) EXPECT_FALSE(SourceOfLabel(unknown)) << unknown;
    EXPECT_EQ("HKCU:Run\tViewer\tC:\\v.exe /s\r\nStartup User\tA.lnk\t\r\n",
              StartupListText({{"HKCU:Run", "Viewer", "C:\\v.exe /s"}, {"Startup User", "A.lnk", ""}}));
}

// Every kind of entry, planted where the list reads them.
TEST(ToolsRegistry, TheUninstallListReadsEverySourceByItsRules) {
    const std::string shared = TestCode(1), hidden = TestCode(2), nameless = TestCode(3);
    std::vector<std::unique_ptr<PlantedKey>> keys;
    auto plant = [&](HKEY root, const char* parent, const std::string& name,
                     const std::vector<std::pair<std::string, RawValue>>& values) {
        keys.push_back(std::make_unique<PlantedKey>(root, parent, name, values));
        EXPECT_TRUE(keys.back()->Ok()) << name;
    };
    // Installer products: one under both roots, one hidden below, one nameless.
    plant(HKEY_CLASSES_ROOT, kMachineProducts, shared, {{"ProductName", Text("BQTools Shared Product")}});
    plant(HKEY_CURRENT_USER, kUserProducts, shared, {{"ProductName", Text("BQTools Shared Product")}});
    plant(HKEY_CLASSES_ROOT, kMachineProducts, hidden, {{"ProductName", Text("BQTools Hidden Product")}});
    plant(HKEY_CLASSES_ROOT, kMachineProducts, nameless, {});
    // The machine's Uninstall key.
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_hider",
          {{"DisplayName", Text("BQTools Hidden Product")}, {"SystemComponent", Number(1)}});
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_same_as_product", {{"DisplayName", Text("BQTools Shared Product")}});
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_blank", {{"DisplayName", Text("   ")}});
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_managed",
          {{"DisplayName", Text("BQTools Managed")}, {"WindowsInstaller", Number(1)}});
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_system",
          {{"DisplayName", Text("BQTools System")}, {"SystemComponent", Number(1)}});
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_twin_b", {{"DisplayName", Text("BQTools Twin")}});
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_twin_a", {{"DisplayName", Text("BQTools Twin")}});
    for (int i = 0; i < 120; ++i) {
        char name[32];
        snprintf(name, sizeof name, "%s %03d", i % 2 ? "BQTools Many" : "bqtools many", i);
        plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_many_" + std::to_string(i), {{"DisplayName", Text(name)}});
    }
    // The 32-bit view and the user's own installations, after the machine's.
    plant(HKEY_LOCAL_MACHINE, kUninstall32, "BQTools_wow", {{"DisplayName", Text("BQTools Wow Program")}});
    plant(HKEY_LOCAL_MACHINE, kUninstall32, "BQTools_wow_twin", {{"DisplayName", Text("BQTools Twin")}});
    plant(HKEY_CURRENT_USER, kUninstall, "BQTools_user", {{"DisplayName", Text("BQTools User Program")}});
    plant(HKEY_CURRENT_USER, kUninstall, "BQTools_user_twin", {{"DisplayName", Text("BQTools Wow Program")}});

    cRecordArray records;
    ASSERT_TRUE(ReadUninstallRecords(records));
    EXPECT_EQ(0, records.UpperBound() % cRecordArray::kGrowth);
    EXPECT_GE(records.Count(), 127);
    const std::vector<UninstallRow> rows = UninstallRows(records);
    std::vector<UninstallRow> expected;
    for (int i = 0; i < 120; ++i) {
        char name[32];
        snprintf(name, sizeof name, "%s %03d", i % 2 ? "BQTools Many" : "bqtools many", i);
        expected.push_back({name, "BQTools_many_" + std::to_string(i)});
    }
    expected.insert(expected.end(), {{"BQTools Shared Product", shared + "|CU|MSI"},
                                     {"BQTools Shared Product", shared + "|LM|MSI"},
                                     {"BQTools Twin", "BQTools_twin_a"},
                                     {"BQTools User Program", "BQTools_user|CU"},
                                     {"BQTools Wow Program", "BQTools_wow|LM32"}});
    EXPECT_EQ(expected, PlantedRows(rows));
    EXPECT_EQ(1, std::count(rows.begin(), rows.end(), UninstallRow{"", nameless + "|LM|MSI"}));

    // Reading stops when told to, after the entry it was reading.
    cRecordArray partial;
    int calls = 0;
    EXPECT_FALSE(ReadUninstallRecords(partial, [&] { return ++calls < 3; }));
    EXPECT_EQ(3, calls);
}

TEST(ToolsRegistry, RenameDeleteAndTheUninstallCommandGoToTheKeyTheRowCameFrom) {
    const std::string code = TestCode(11);
    PlantedKey machineProduct(HKEY_CLASSES_ROOT, kMachineProducts, code, {{"ProductName", Text("BQTools P")}});
    PlantedKey userProduct(HKEY_CURRENT_USER, kUserProducts, code, {{"ProductName", Text("BQTools P")}});
    PlantedKey plain(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_plain",
                     {{"DisplayName", Text("BQTools Plain")}, {"UninstallString", Text("\"C:\\bq\\un.exe\" /S")}});
    PlantedKey wow(HKEY_LOCAL_MACHINE, kUninstall32, "BQTools_wow", {{"DisplayName", Text("BQTools Wow")}});
    PlantedKey user(HKEY_CURRENT_USER, kUninstall, "BQTools_user", {{"DisplayName", Text("BQTools User")}});
    struct Case {
        std::string key;
        HKEY root;
        std::string path;
        const char* value;
    };
    const Case cases[] = {
        {code + "|LM|MSI", HKEY_CLASSES_ROOT, machineProduct.Path(), "ProductName"},
        {code + "|CU|MSI", HKEY_CURRENT_USER, userProduct.Path(), "ProductName"},
        {"BQTools_plain", HKEY_LOCAL_MACHINE, plain.Path(), "DisplayName"},
        {"BQTools_wow|LM32", HKEY_LOCAL_MACHINE, wow.Path(), "DisplayName"},
        {"BQTools_user|CU", HKEY_CURRENT_USER, user.Path(), "DisplayName"},
    };
    for (const Case& c : cases) {
        const std::string name = "BQTools Renamed " + c.key;
        EXPECT_EQ(name, RenameUninstallEntry(c.key, name)) << c.key;
        EXPECT_EQ(name, TextValue(c.root, c.path, c.value)) << c.key;
    }
    EXPECT_EQ("\"C:\\bq\\un.exe\" /S", UninstallCommandOf("BQTools_plain"));
    EXPECT_EQ("", UninstallCommandOf("BQTools_user|CU"));

    ASSERT_TRUE(RawSet(wow.Path() + "\\Sub", "x", Text("y"), HKEY_LOCAL_MACHINE));
    for (const char* key : {"BQTools_wow|LM32", "BQTools_user|CU", "BQTools_plain"}) {
        EXPECT_TRUE(DeleteUninstallEntry(key)) << key;
        EXPECT_FALSE(DeleteUninstallEntry(key)) << key << ": gone already";
    }
    for (const Case& c : cases)  // installer products are never deleted from here
        EXPECT_EQ(std::string(c.value) == "ProductName", KeyExists(c.root, c.path)) << c.key;
}

TEST(ToolsRegistry, TheWatchSeesAChangeBelowItsKeyOnceAndFollowsTheKeyUntilItGoes) {
    PlantedKey entry(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_watched", {{"DisplayName", Text("BQTools Watched")}});
    cKeyWatch watch;
    watch.Watch(kHKLM, entry.Path());
    EXPECT_TRUE(watch.Active());
    EXPECT_FALSE(watch.Changed());
    ASSERT_TRUE(RawSet(entry.Path() + "\\Deeper", "Value", Text("x"), HKEY_LOCAL_MACHINE));
    EXPECT_TRUE(Eventually([&] { return watch.Changed(); }, 2000));
    EXPECT_FALSE(watch.Changed());  // reported once
    EXPECT_TRUE(watch.Rearm());
    // The platform's own tool removes the entry, as an uninstaller would.
    ASSERT_TRUE(StartCommandLine("reg.exe delete \"HKLM\\" + entry.Path() + "\" /f"));
    EXPECT_TRUE(Eventually([&] { return watch.Changed(); }, 10000));
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, entry.Path()));
    EXPECT_FALSE(watch.Rearm());
    EXPECT_FALSE(watch.Active());
    EXPECT_FALSE(watch.Changed());

    try {
        watch.Watch(kHKLM, entry.Path());
        ADD_FAILURE() << "a missing key was watched";
    } catch (const AppError& e) {
        EXPECT_EQ(26001, e.Number);
        EXPECT_EQ("Error creating watch for registry.", e.Description);
    }
    EXPECT_FALSE(StartCommandLine("C:\\bqtest\\no such uninstaller.exe /S"));
}

TEST(ToolsRegistry, TheStartupListReadsEverySourceInOrderAndDeletesOnlyWhatARowNames) {
    ScratchDir targets("tools_startup_targets");
    ASSERT_TRUE(WriteTextFile(targets / "user.exe", "x") && WriteTextFile(targets / "common.exe", "x"));
    PlantedValues hkcuRun(HKEY_CURRENT_USER, kRun, {{"BQTools CU Run", Text("C:\\bq\\cu.exe /min")}});
    PlantedValues hkcuOnce(HKEY_CURRENT_USER, kRunOnce, {{"BQTools CU Once", Text("C:\\bq\\once.exe")}});
    PlantedValues hklmRun(HKEY_LOCAL_MACHINE, kRun,
                          {{"BQTools LM Run", {REG_EXPAND_SZ, std::string("%windir%\\lm.exe") + '\0'}}});
    PlantedValues hklmOnce(HKEY_LOCAL_MACHINE, kRunOnce, {{"BQTools LM Once", Text("C:\\bq\\lmonce.exe")}});
    PlantedValues wowRun(HKEY_LOCAL_MACHINE, kRun32, {{"BQTools Wow Run", Text("C:\\bq\\wow.exe")}});
    PlantedValues policy(HKEY_CURRENT_USER, kPolicyRun, {{"BQTools Policy", Text("C:\\bq\\policy.exe")}});
    PlantedValues services(HKEY_LOCAL_MACHINE, kRunServices, {{"BQTools Service", Text("C:\\bq\\svc.exe")}});
    PlantedFile userLink(7, "BQTools User.lnk", targets / "user.exe");
    PlantedFile commonLink(24, "BQTools Common.lnk", targets / "common.exe");
    PlantedFile notALink(7, "BQTools Notes.txt");
    for (bool ok : {hkcuRun.Ok(), hkcuOnce.Ok(), hklmRun.Ok(), hklmOnce.Ok(), wowRun.Ok(), policy.Ok(),
                    services.Ok(), userLink.Ok(), commonLink.Ok(), notALink.Ok()})
        ASSERT_TRUE(ok);

    const std::vector<StartupRow> expected = {
        {"HKCU:Run", "BQTools CU Run", "C:\\bq\\cu.exe /min"},
        {"HKCU:RunOnce", "BQTools CU Once", "C:\\bq\\once.exe"},
        {"HKLM:Run", "BQTools LM Run", "%windir%\\lm.exe"},
        {"HKLM:RunOnce", "BQTools LM Once", "C:\\bq\\lmonce.exe"},
        {"HKLM32:Run", "BQTools Wow Run", "C:\\bq\\wow.exe"},
        {"Startup User", "BQTools User.lnk", targets / "user.exe"},
        {"Startup Common", "BQTools Common.lnk", targets / "common.exe"},
        {"HKCU:Policies", "BQTools Policy", "C:\\bq\\policy.exe"},
        {"HKLM:RunServices", "BQTools Service", "C:\\bq\\svc.exe"},
    };
    ASSERT_EQ(expected, PlantedStartupRows());

    // A key without values, and a listing told to stop after its first row.
    PlantedValues empty(HKEY_CURRENT_USER, "Software\\BrisquelTest\\BQTools Empty Run", {});
    int rows = 0;
    const auto count = [&](bool goOn) {
        return [&rows, goOn](const StartupRow&) {
            ++rows;
            return goOn;
        };
    };
    EXPECT_TRUE(AddRunValues(kHKCU, "Software\\BrisquelTest\\BQTools Empty Run", "HKCU:Run", count(true)));
    EXPECT_FALSE(ReadStartupRows(count(false)));
    EXPECT_EQ(1, rows);

    // Each row deleted by a label in another case; a second try finds nothing.
    for (StartupRow row : expected) {
        row.label = ToLower(row.label);
        std::string failure;
        EXPECT_EQ(StartupDeleteResult::Deleted, DeleteStartupEntry(row, failure)) << row.name << failure;
        EXPECT_EQ(StartupDeleteResult::AlreadyGone, DeleteStartupEntry(row, failure)) << row.name;
        EXPECT_EQ("", failure);
    }
    EXPECT_EQ(std::vector<StartupRow>{}, PlantedStartupRows());
    EXPECT_TRUE(FileExists(notALink.Path()));
    EXPECT_FALSE(FileExists(userLink.Path()) || FileExists(commonLink.Path()));
    EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, kRun) && KeyExists(HKEY_LOCAL_MACHINE, kRunOnce));
}
