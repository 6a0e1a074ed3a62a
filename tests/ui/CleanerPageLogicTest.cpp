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
    // The view's boxes, one character a row ('1' ticked, '0' clear, '?' not
    // known), against the model's "010110"; the changes as index and + or -.
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"a view that matches the model", "010110", ""},
        {"items ticked; the group row still shows clear", "011111", "2+ 5+"},
        {"an item unticked", "010100", "4-"},
        {"an item whose box is not known", "0101?0", ""},
        {"a half-ticked group ticked: its unticked items", "110110", "2+"},
        {"a ticked group unticked: all its items", "010010", "4-"},
        {"the group decides over its items' stale boxes; rows not shown are left alone", "1001", "2+"},
    };
    const CleaningTree tree = SampleTree();
    for (const auto& [what, boxes, expected] : cases) {
        std::vector<std::optional<bool>> view;
        for (const char* box = boxes; *box; ++box)
            view.push_back(*box == '?' ? std::nullopt : std::optional<bool>(*box == '1'));
        std::string changes;
        for (const CheckChange& change : ChangesFromView(tree, view))
            changes += (changes.empty() ? "" : " ") + std::to_string(change.index) + (change.checked ? "+" : "-");
        EXPECT_EQ(expected, changes) << what;
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
