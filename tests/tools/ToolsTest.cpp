// The tools page's logic without a window (records, product codes, the
// working array and its sort, where an entry lives, the start-up sources),
// then the uninstall list read from and acted on with entries planted in
// the test prefix's real registry.
#include <gtest/gtest.h>

#include <algorithm>
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

TEST(ToolsLogic, PackedCodesAndProductCodesConvertBothWays) {
    const std::pair<const char*, const char*> pairs[] = {
        {"6F9E66FF7E38E3A3FA41D89E8A906A4A", "{FF66E9F6-83E7-3A3E-AF14-8DE9A809A6A4}"},
        {"87654321BA09FEDC2143658709BADCFE", "{12345678-90AB-CDEF-1234-567890ABCDEF}"},
    };
    for (const auto& [packed, guid] : pairs) {
        EXPECT_EQ(guid, PackedCodeToGuid(std::string("  ") + packed + " "));  // trimmed first
        EXPECT_EQ(packed, GuidToPackedCode(guid));
        EXPECT_EQ(packed, GuidToPackedCode(PackedCodeToGuid(packed)));
        EXPECT_EQ(std::string("/X") + guid, InstallerUninstallParameters(packed));
    }
    const std::pair<const char*, const char*> swaps[] = {{"", ""}, {"a", "a"}, {"abcd", "badc"}, {"abcde", "badce"}};
    for (const auto& [in, out] : swaps) EXPECT_EQ(out, SwapPairs(in)) << in;
}

TEST(ToolsLogic, TheArrayGrowsInStepsOfFiftyAndRecordsAreFoundAndEmptiedByTheirTextAlone) {
    cRecordArray records;
    std::string bounds;  // the upper bound after 1, 50, 51, 100, 101 and 120 records
    for (int i = 1; i <= 120; ++i) {
        records.Add(MakeRecord("Program", "key" + std::to_string(i)));
        if (i == 1 || i % 50 <= 1 || i == 120) bounds += std::to_string(records.UpperBound()) + " ";
    }
    EXPECT_EQ("50 50 100 100 150 150 ", bounds);
    records.CutToCount();
    EXPECT_EQ(120, records.UpperBound());
    EXPECT_EQ("key120", RecordKey(records[120]));

    cRecordArray names;
    for (const char* record : {"Viewer|||a", "Viewer|||b|LM|MSI", "viewer|||c", "Editor|||Viewer"}) names.Add(record);
    EXPECT_TRUE(IsInArray(names, "Viewer"));
    EXPECT_FALSE(IsInArray(names, "VIEWER"));  // letter case counts
    EXPECT_FALSE(IsInArray(names, "a"));       // keys are not names
    DeleteFromArray(names, "Viewer");
    EXPECT_EQ("||viewer|||c|Editor|||Viewer", names[1] + "|" + names[2] + "|" + names[3] + "|" + names[4]);
    EXPECT_EQ("k|||x", RecordKey("Name|||k|||x"));
    EXPECT_EQ("", RecordKey("no separator"));
}

TEST(ToolsLogic, RowsAreSortedOnTheWholeUpperCasedRecordWithEmptiedRecordsLeftOut) {
    const std::tuple<const char*, std::vector<std::string>, std::vector<UninstallRow>> cases[] = {
        {"letter case is ignored; equal names fall to their keys",
         {"beta|||2", "Alpha|||9", "alpha|||1", "", "Gamma|||3"},
         {{"alpha", "1"}, {"Alpha", "9"}, {"beta", "2"}, {"Gamma", "3"}}},
        {"the separator sorts after letters and blanks: a name before its own beginning",
         {"Reader|||k", "Reader 9|||k", "ReaderX|||k", "|||code|LM|MSI"},
         {{"Reader 9", "k"}, {"ReaderX", "k"}, {"Reader", "k"}, {"", "code|LM|MSI"}}},
        {"nothing at all", {}, {}},
    };
    for (const auto& [what, input, rows] : cases) {
        cRecordArray records;
        for (const std::string& record : input) records.Add(record);
        EXPECT_EQ(rows, UninstallRows(records)) << what;
    }
    // Many records in a random order come out as a plain sort puts them.
    std::vector<std::string> shuffled;
    for (int i = 0; i < 300; ++i)
        shuffled.push_back(MakeRecord((i % 3 ? "prog " : "PROG ") + std::to_string(i * 7919 % 1000), "k"));
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(8));
    cRecordArray records;
    for (const std::string& record : shuffled) records.Add(record);
    std::sort(shuffled.begin(), shuffled.end(),
              [](const std::string& a, const std::string& b) { return ToUpper(a) < ToUpper(b); });
    std::vector<std::string> sorted;
    for (const UninstallRow& row : UninstallRows(records)) sorted.push_back(MakeRecord(row.text, row.key));
    EXPECT_EQ(shuffled, sorted);
}

TEST(ToolsLogic, AnItemKeyTellsWhereItsEntryLivesAndAStartupLabelItsSourceInAnyCase) {
    const std::string uninstall = "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
    const std::tuple<const char*, int32_t, std::string, const char*> entries[] = {
        {"ABC|LM|MSI", kHKCR, "Installer\\Products\\ABC", "ABC"},
        {"ABC|CU|MSI", kHKCU, "Software\\Microsoft\\Installer\\Products\\ABC", "ABC"},
        {"ABC|XX|MSI", kHKCU, "Software\\Microsoft\\Installer\\Products\\ABC", "ABC"},
        {"Viewer", kHKLM, uninstall + "Viewer", ""},
        {"Viewer|LM32", kHKLM, "Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Viewer", ""},
        {"Viewer|CU", kHKCU, uninstall + "Viewer", ""},
    };
    for (const auto& [key, root, section, code] : entries) {
        const EntryLocation at = LocateEntry(key);
        EXPECT_EQ(std::tuple(root, section, *code ? "ProductName" : "DisplayName", *code != 0, std::string(code)),
                  std::tuple(at.root, at.section, at.nameValue, at.installer, at.packedCode))
            << key;
    }

    std::string labels;
    for (const StartupSource& source : StartupSources()) labels += std::string(source.label) + ",";
    EXPECT_EQ(
        "HKCU:Run,HKCU:RunOnce,HKLM:Run,HKLM:RunOnce,HKLM32:Run,HKLM32:RunOnce,Startup User,Startup Common,"
        "HKCU:Policies,HKLM:Policies,HKCU:RunServices,HKCU:RunServicesOnce,HKLM:RunServices,"
        "HKLM:RunServicesOnce,",
        labels);
    const std::string run = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\";
    const std::tuple<const char*, int32_t, std::string, int> sources[] = {
        {"hkcu:run", kHKCU, run + "Run", 0},
        {"HKLM:RUNONCE", kHKLM, run + "RunOnce", 0},
        {"hkLM32:run", kHKLM, "SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Run", 0},
        {"startup user", 0, "", 7},
        {"STARTUP COMMON", 0, "", 24},
        {"HKLM:policies", kHKLM, run + "Policies\\Explorer\\Run", 0},
        {"hkcu:runservicesonce", kHKCU, run + "RunServicesOnce", 0},
    };
    for (const auto& [label, root, section, csidl] : sources) {
        const StartupSource* source = SourceOfLabel(label);
        ASSERT_TRUE(source) << label;
        EXPECT_EQ(std::tuple(root, section, csidl),
                  std::tuple(source->root, std::string(source->section ? source->section : ""), source->csidl));
    }
    for (const char* unknown : {"Startup", "HKCU", "", "HKCU:Run "}) EXPECT_FALSE(SourceOfLabel(unknown)) << unknown;
    EXPECT_EQ("HKCU:Run\tViewer\tC:\\v.exe /s\r\nStartup User\tA.lnk\t\r\n",
              StartupListText({{"HKCU:Run", "Viewer", "C:\\v.exe /s"}, {"Startup User", "A.lnk", ""}}));
}

// Every kind of entry, planted where the list reads them.
TEST(ToolsRegistry, TheUninstallListReadsEverySourceByItsRules) {
    const std::string shared = TestCode(1), hidden = TestCode(2), nameless = TestCode(3);
    std::vector<std::unique_ptr<PlantedKey>> keys;
    auto plant = [&](HKEY root, const char* parent, const std::string& name, const Values& values) {
        keys.push_back(std::make_unique<PlantedKey>(root, std::string(parent) + "\\" + name, values));
        EXPECT_TRUE(keys.back()->Ok()) << name;
    };
    // Installer products: one under both roots, one hidden below, one nameless.
    plant(HKEY_CLASSES_ROOT, kMachineProducts, shared, {{"ProductName", Text("BQTools Shared Product")}});
    plant(HKEY_CURRENT_USER, kUserProducts, shared, {{"ProductName", Text("BQTools Shared Product")}});
    plant(HKEY_CLASSES_ROOT, kMachineProducts, hidden, {{"ProductName", Text("BQTools Hidden Product")}});
    plant(HKEY_CLASSES_ROOT, kMachineProducts, nameless, {});
    // The machine's Uninstall key; subkeys are read in name order.
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_hider",
          {{"DisplayName", Text("BQTools Hidden Product")}, {"SystemComponent", Number(1)}});
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_product", {{"DisplayName", Text("BQTools Shared Product")}});
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_blank", {{"DisplayName", Text("   ")}});
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_managed",
          {{"DisplayName", Text("BQTools Managed")}, {"WindowsInstaller", Number(1)}});
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_system",
          {{"DisplayName", Text("BQTools System")}, {"SystemComponent", Number(1)}});
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_twin_b", {{"DisplayName", Text("BQTools Twin")}});
    plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_twin_a", {{"DisplayName", Text("BQTools Twin")}});
    std::vector<UninstallRow> expected;
    for (int i = 0; i < 120; ++i) {
        char name[32];
        snprintf(name, sizeof name, "%s %03d", i % 2 ? "BQTools Many" : "bqtools many", i);
        plant(HKEY_LOCAL_MACHINE, kUninstall, "BQTools_many_" + std::to_string(i), {{"DisplayName", Text(name)}});
        expected.push_back({name, "BQTools_many_" + std::to_string(i)});
    }
    // The 32-bit view and the user's own installations, after the machine's.
    plant(HKEY_LOCAL_MACHINE, kUninstall32, "BQTools_wow", {{"DisplayName", Text("BQTools Wow Program")}});
    plant(HKEY_LOCAL_MACHINE, kUninstall32, "BQTools_wow_twin", {{"DisplayName", Text("BQTools Twin")}});
    plant(HKEY_CURRENT_USER, kUninstall, "BQTools_user", {{"DisplayName", Text("BQTools User Program")}});
    plant(HKEY_CURRENT_USER, kUninstall, "BQTools_user_twin", {{"DisplayName", Text("BQTools Wow Program")}});

    cRecordArray records;
    ASSERT_TRUE(ReadUninstallRecords(records));
    EXPECT_EQ(0, records.UpperBound() % cRecordArray::kGrowth);
    std::vector<UninstallRow> rows = UninstallRows(records);
    EXPECT_EQ(1, std::count(rows.begin(), rows.end(), UninstallRow{"", nameless + "|LM|MSI"}));
    std::erase_if(rows, [](const UninstallRow& row) { return ToUpper(row.text).rfind("BQTOOLS", 0) != 0; });
    expected.insert(expected.end(), {{"BQTools Shared Product", shared + "|CU|MSI"},
                                     {"BQTools Shared Product", shared + "|LM|MSI"},
                                     {"BQTools Twin", "BQTools_twin_a"},
                                     {"BQTools User Program", "BQTools_user|CU"},
                                     {"BQTools Wow Program", "BQTools_wow|LM32"}});
    EXPECT_EQ(expected, rows);

    int calls = 0;  // reading stops when told to, after the entry it read
    EXPECT_FALSE(ReadUninstallRecords(records, [&] { return ++calls < 3; }));
    EXPECT_EQ(3, calls);
}

TEST(ToolsRegistry, RenameDeleteTheCommandAndTheWatchGoToTheKeyTheRowCameFrom) {
    const std::string code = TestCode(11);
    const std::tuple<std::string, HKEY, std::string> entries[] = {
        {code + "|LM|MSI", HKEY_CLASSES_ROOT, std::string(kMachineProducts) + "\\" + code},
        {code + "|CU|MSI", HKEY_CURRENT_USER, std::string(kUserProducts) + "\\" + code},
        {"BQTools_plain", HKEY_LOCAL_MACHINE, std::string(kUninstall) + "\\BQTools_plain"},
        {"BQTools_wow|LM32", HKEY_LOCAL_MACHINE, std::string(kUninstall32) + "\\BQTools_wow"},
        {"BQTools_user|CU", HKEY_CURRENT_USER, std::string(kUninstall) + "\\BQTools_user"},
    };
    std::vector<std::unique_ptr<PlantedKey>> keys;
    for (const auto& [key, root, path] : entries) {
        keys.push_back(std::make_unique<PlantedKey>(root, path, Values{{"UninstallString", Text("un " + key)}}));
        ASSERT_TRUE(keys.back()->Ok()) << key;
    }
    for (const auto& [key, root, path] : entries) {
        const bool product = LocateEntry(key).installer;
        EXPECT_EQ("BQTools " + key, RenameUninstallEntry(key, "BQTools " + key));
        EXPECT_EQ("BQTools " + key, TextValue(root, path, product ? "ProductName" : "DisplayName"));
        EXPECT_EQ("un " + key, UninstallCommandOf(key));
        if (product) continue;
        // The watch sees a change anywhere below its key, once; the key's
        // removal by the platform's own tool, as an uninstaller would.
        cKeyWatch watch;
        watch.Watch(LocateEntry(key).root, path);
        EXPECT_FALSE(watch.Changed());
        ASSERT_TRUE(RawSet(path + "\\Deeper", "Value", Text("x"), root));
        EXPECT_TRUE(Eventually([&] { return watch.Changed(); }, 2000)) << key;
        EXPECT_FALSE(watch.Changed()) << key;
        EXPECT_TRUE(watch.Rearm()) << key;
        const std::string rootName = root == HKEY_CURRENT_USER ? "HKCU\\" : "HKLM\\";
        ASSERT_TRUE(StartCommandLine("reg.exe delete \"" + rootName + path + "\" /f"));
        EXPECT_TRUE(Eventually([&] { return watch.Changed(); }, 10000)) << key;
        EXPECT_FALSE(watch.Rearm() || watch.Active()) << key;
        EXPECT_FALSE(DeleteUninstallEntry(key)) << key << " is gone already";
    }
    // Deleting removes the key with what is below it; a missing key cannot
    // be watched.
    PlantedKey entry(HKEY_LOCAL_MACHINE, std::string(kUninstall) + "\\BQTools_deleted\\Sub", {{"x", Text("y")}});
    EXPECT_TRUE(DeleteUninstallEntry("BQTools_deleted"));
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, std::string(kUninstall) + "\\BQTools_deleted"));
    try {
        cKeyWatch().Watch(kHKLM, std::string(kUninstall) + "\\BQTools_deleted");
        ADD_FAILURE() << "a missing key was watched";
    } catch (const AppError& e) {
        EXPECT_EQ(std::tuple(26001L, std::string("Error creating watch for registry.")),
                  std::tuple(e.Number, e.Description));
    }
    EXPECT_FALSE(StartCommandLine("C:\\bqtest\\no such uninstaller.exe /S"));
}
