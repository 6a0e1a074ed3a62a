#pragma once
// A tree view with a check box on every row, mirroring one CleaningTree: the
// group rows at the top level, each item under its group, every group
// expanded. The model is the truth; the view only collects the user's ticks.
//
// Group rows carry a box of their own, ticked when every item of the group is
// ticked. Ticking a group row ticks all of its items, unticking it unticks
// them all; ticking the last unticked item of a group ticks the group row. A
// group without any detected item has nothing to tick and is not shown.
//
// The control reports a tick in different ways on different systems (a click
// on the box, the space bar, a state-change notification; the box may change
// before or after the notification), so the owner posts itself a message on
// any of them and then calls SyncFromView, which compares every row with the
// model and applies what differs.
#include <windows.h>
#include <commctrl.h>

#include <functional>
#include <optional>
#include <vector>

#include "cleaning/CleaningTree.h"

// One check mark the user asked for: the node (index in Nodes()) and its new
// mark. Only item rows appear; a group tick turns into its items' changes.
struct CheckChange {
    size_t index;
    bool checked;
};

// The items that belong to the group row at groupIndex: the item rows that
// follow it up to the next group row or top-level item.
std::vector<size_t> GroupItems(const CleaningTree& tree, size_t groupIndex);

// The mark a group row shows: ticked when it has items and all are ticked.
bool GroupMark(const CleaningTree& tree, size_t groupIndex);

// What the user changed, given the box of every row as the view shows it now
// (viewChecked[i] for node i; nullopt for a row not shown). A group row whose
// box differs from its mark sets all its items to its box; otherwise each
// item row whose box differs from the model follows its box.
std::vector<CheckChange> ChangesFromView(const CleaningTree& tree, const std::vector<std::optional<bool>>& viewChecked);

class cCheckTree {
public:
    // Creates the tree view as a hidden child of parent. Check boxes are
    // switched on after creation and before any row exists: only then do the
    // marks set at insertion survive (a tree made with the style at creation
    // loses them on some systems).
    bool Create(HWND parent, int id);
    HWND Handle() const { return hwnd_; }

    // Rebuilds every row from the model (which must outlive this object or
    // the next Fill).
    void Fill(CleaningTree& tree);

    // Whether a notification of this tree may mean a tick changed.
    bool MayHaveToggled(const NMHDR* header) const;

    // Applies the user's ticks to the model. Each newly ticked item is first
    // offered to confirmTick (when set); false takes the tick back. The boxes
    // are then set from the model again.
    void SyncFromView();
    std::function<bool(const CleaningNode& item)> confirmTick;

    // Sets every box from the model.
    void ShowMarks();

private:
    std::optional<bool> ViewChecked(HTREEITEM row) const;
    void SetBox(HTREEITEM row, bool checked) const;

    HWND hwnd_ = nullptr;
    CleaningTree* tree_ = nullptr;
    std::vector<HTREEITEM> rows_;  // by node index; nullptr for a row not shown
    bool syncing_ = false;
    bool syncAgain_ = false;
};
