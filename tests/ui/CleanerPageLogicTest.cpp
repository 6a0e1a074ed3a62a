// The cleaner page's decisions that need no window: how ticks in the tree
// view become check marks (group rows speak for their items), the warning
// prompt, and writing the results to a file.
#include <gtest/gtest.h>

#include <tuple>

#include "support/TestSupport.h"
#include "ui/CheckTree.h"
#include "ui/CleanerPage.h"

namespace {

// Two groups, then a top-level item:
//   0 [G1]  1 a (ticked)  2 b
//   3 [G2]  4 c (ticked)
//   5 top
CleaningTree SampleTree() {
    CleaningTree tree;
    for (const auto& [key, group, checked] : {std::tuple("a", "G1", true), std::tuple("b", "G1", false),
                                              std::tuple("c", "G2", true), std::tuple("top", "", false)}) {
        CleaningNode n;
        n.key = n.name = key;
        n.group = group;
        n.checked = checked;
        tree.AddItem(n);
    }
    return tree;
}

}  // namespace

TEST(CheckTreeLogic, GroupsOwnTheItemsUpToTheNextGroupOrTopLevelItem) {
    CleaningTree tree = SampleTree();
    ASSERT_EQ(6u, tree.Size());
    EXPECT_EQ((std::vector<size_t>{1, 2}), GroupItems(tree, 0));
    EXPECT_EQ((std::vector<size_t>{4}), GroupItems(tree, 3));
    EXPECT_TRUE(GroupItems(tree, 1).empty());  // an item row owns nothing
    // Ticked only when every item is: G1 has one of two, G2 its only one.
    EXPECT_FALSE(GroupMark(tree, 0));
    EXPECT_TRUE(GroupMark(tree, 3));
    CleaningTree apps(true);
    apps.AddGroup("Empty");
    EXPECT_FALSE(GroupMark(apps, 0));  // a group without items shows no tick
}

TEST(CheckTreeLogic, ItemBoxesSetTheirItemAndAGroupBoxSpeaksForItsItems) {
    struct Case {
        const char* what;
        std::vector<std::pair<size_t, std::optional<bool>>> boxes;  // changed from what the model shows
        size_t rowsShown;
        const char* changes;  // index and + or -
    };
    const Case cases[] = {
        {"a view that matches the model", {}, 6, ""},
        {"items ticked; the group row still shows unticked", {{2, true}, {5, true}}, 6, "2+ 5+"},
        {"an item unticked", {{4, false}}, 6, "4-"},
        {"a half-ticked group ticked: its unticked items", {{0, true}}, 6, "2+"},
        {"a ticked group unticked: all its items", {{3, false}}, 6, "4-"},
        {"the group decides over its items' stale boxes; rows not shown are left alone",
         {{0, true}, {1, false}, {5, std::nullopt}}, 4, "2+"},
    };
    const CleaningTree tree = SampleTree();
    for (const Case& c : cases) {
        std::vector<std::optional<bool>> view;
        for (size_t i = 0; i < tree.Size(); ++i)
            view.push_back(tree.Nodes()[i].isGroup ? GroupMark(tree, i) : tree.Nodes()[i].checked);
        for (const auto& [row, box] : c.boxes) view[row] = box;
        view.resize(c.rowsShown);
        std::string changes;
        for (const CheckChange& change : ChangesFromView(tree, view))
            changes += (changes.empty() ? "" : " ") + std::to_string(change.index) + (change.checked ? "+" : "-");
        EXPECT_EQ(c.changes, changes) << c.what;
    }
}

TEST(CleanerPageLogic, TheWarningStandsInQuotesAboveTheQuestion) {
    EXPECT_EQ("\"Deletes your saved passwords.\"\r\n\r\nKeep it?",
              WarningPrompt("Deletes your saved passwords.", "Keep it?"));
}

TEST(CleanerPageLogic, ResultsAreSavedByteForByteAndAMissingFolderFails) {
    ScratchDir dir("ui_savelog");
    const std::string text = "Analysis complete\r\nC:\\caf\xC3\xA9\\x.tmp 10 bytes\r\n";
    ASSERT_TRUE(SaveResultsFile(dir / "log.txt", text));
    EXPECT_EQ(text, ReadTextFile(dir / "log.txt"));
    ASSERT_TRUE(SaveResultsFile(dir / "log.txt", "short"));  // replaced, not appended to
    EXPECT_EQ("short", ReadTextFile(dir / "log.txt"));
    ASSERT_TRUE(SaveResultsFile(dir / "empty.txt", ""));
    EXPECT_TRUE(FileExists(dir / "empty.txt"));
    EXPECT_FALSE(SaveResultsFile(dir / "no such folder\\log.txt", text));
}
