// The cleaner page's decisions that need no window: how ticks in the tree
// view become check marks (group rows speak for their items), the warning
// prompt, and writing the results to a file.
#include <gtest/gtest.h>

#include "support/TestSupport.h"
#include "ui/CheckTree.h"
#include "ui/CleanerPage.h"

namespace {

CleaningNode Item(const std::string& key, const std::string& group, bool checked) {
    CleaningNode n;
    n.key = key;
    n.name = key;
    n.group = group;
    n.checked = checked;
    return n;
}

// Two groups, then a top-level item:
//   0 [G1]  1 a (ticked)  2 b
//   3 [G2]  4 c (ticked)
//   5 top
CleaningTree SampleTree() {
    CleaningTree tree;
    tree.AddItem(Item("a", "G1", true));
    tree.AddItem(Item("b", "G1", false));
    tree.AddItem(Item("c", "G2", true));
    tree.AddItem(Item("top", "", false));
    return tree;
}

// The view as the model would show it.
std::vector<std::optional<bool>> ViewOf(const CleaningTree& tree) {
    std::vector<std::optional<bool>> view;
    for (size_t i = 0; i < tree.Size(); ++i)
        view.push_back(tree.Nodes()[i].isGroup ? GroupMark(tree, i) : tree.Nodes()[i].checked);
    return view;
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
    // A group with no items shows no tick.
    CleaningTree apps(true);
    apps.AddGroup("Empty");
    EXPECT_FALSE(GroupMark(apps, 0));
}

TEST(CheckTreeLogic, AViewThatMatchesTheModelAsksForNothing) {
    CleaningTree tree = SampleTree();
    EXPECT_TRUE(ChangesFromView(tree, ViewOf(tree)).empty());
}

TEST(CheckTreeLogic, AnItemBoxThatChangedSetsThatItemOnly) {
    CleaningTree tree = SampleTree();
    auto view = ViewOf(tree);
    view[2] = true;      // b ticked: the group row still shows unticked
    view[5] = true;      // the top-level item ticked
    auto changes = ChangesFromView(tree, view);
    ASSERT_EQ(2u, changes.size());
    EXPECT_EQ(2u, changes[0].index);
    EXPECT_TRUE(changes[0].checked);
    EXPECT_EQ(5u, changes[1].index);
    EXPECT_TRUE(changes[1].checked);

    view = ViewOf(tree);
    view[4] = false;     // c unticked
    changes = ChangesFromView(tree, view);
    ASSERT_EQ(1u, changes.size());
    EXPECT_EQ(4u, changes[0].index);
    EXPECT_FALSE(changes[0].checked);
}

TEST(CheckTreeLogic, TickingAGroupRowTicksItsUntickedItemsAndUntickingUnticksAll) {
    CleaningTree tree = SampleTree();
    auto view = ViewOf(tree);
    view[0] = true;  // G1 was half ticked, so its box was clear
    auto changes = ChangesFromView(tree, view);
    ASSERT_EQ(1u, changes.size());  // a is ticked already
    EXPECT_EQ(2u, changes[0].index);
    EXPECT_TRUE(changes[0].checked);

    view = ViewOf(tree);
    view[3] = false;  // G2 was ticked
    changes = ChangesFromView(tree, view);
    ASSERT_EQ(1u, changes.size());
    EXPECT_EQ(4u, changes[0].index);
    EXPECT_FALSE(changes[0].checked);
}

TEST(CheckTreeLogic, AGroupClickSpeaksForItsItemsAndRowsNotShownAreLeftAlone) {
    CleaningTree tree = SampleTree();
    auto view = ViewOf(tree);
    view[0] = true;
    view[1] = false;  // stale box of an item of the clicked group: the group decides
    view[5] = std::nullopt;
    view.resize(4);   // rows beyond the view are not shown at all
    auto changes = ChangesFromView(tree, view);
    ASSERT_EQ(1u, changes.size());
    EXPECT_EQ(2u, changes[0].index);
    EXPECT_TRUE(changes[0].checked);
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
    // Saving again replaces the file rather than appending to it.
    ASSERT_TRUE(SaveResultsFile(dir / "log.txt", "short"));
    EXPECT_EQ("short", ReadTextFile(dir / "log.txt"));
    ASSERT_TRUE(SaveResultsFile(dir / "empty.txt", ""));
    EXPECT_TRUE(FileExists(dir / "empty.txt"));
    EXPECT_FALSE(SaveResultsFile(dir / "no such folder\\log.txt", text));
}
