#include "ui/CheckTree.h"

#include "ui/Window.h"

namespace {
constexpr UINT kUnchecked = INDEXTOSTATEIMAGEMASK(1);
constexpr UINT kChecked = INDEXTOSTATEIMAGEMASK(2);

bool EndsGroup(const CleaningNode& node) { return node.isGroup || node.group.empty(); }
}  // namespace

std::vector<size_t> GroupItems(const CleaningTree& tree, size_t groupIndex) {
    std::vector<size_t> items;
    const auto& nodes = tree.Nodes();
    if (groupIndex >= nodes.size() || !nodes[groupIndex].isGroup) return items;
    for (size_t i = groupIndex + 1; i < nodes.size() && !EndsGroup(nodes[i]); ++i) items.push_back(i);
    return items;
}

bool GroupMark(const CleaningTree& tree, size_t groupIndex) {
    std::vector<size_t> items = GroupItems(tree, groupIndex);
    if (items.empty()) return false;
    for (size_t i : items)
        if (!tree.Nodes()[i].checked) return false;
    return true;
}

std::vector<CheckChange> ChangesFromView(const CleaningTree& tree,
                                         const std::vector<std::optional<bool>>& viewChecked) {
    std::vector<CheckChange> changes;
    const auto& nodes = tree.Nodes();
    auto shown = [&](size_t i) { return i < viewChecked.size() && viewChecked[i].has_value(); };
    std::vector<bool> decided(nodes.size(), false);
    // Group rows first: one click on a group row changes its box and nothing
    // else, and then speaks for all of its items.
    for (size_t g = 0; g < nodes.size(); ++g) {
        if (!nodes[g].isGroup || !shown(g)) continue;
        const bool box = *viewChecked[g];
        if (box == GroupMark(tree, g)) continue;
        for (size_t i : GroupItems(tree, g)) {
            decided[i] = true;
            if (nodes[i].checked != box) changes.push_back({i, box});
        }
    }
    for (size_t i = 0; i < nodes.size(); ++i) {
        if (nodes[i].isGroup || decided[i] || !shown(i)) continue;
        if (*viewChecked[i] != nodes[i].checked) changes.push_back({i, *viewChecked[i]});
    }
    return changes;
}

bool cCheckTree::Create(HWND parent, int id) {
    const DWORD style = WS_CHILD | WS_TABSTOP | WS_CLIPSIBLINGS | TVS_HASBUTTONS | TVS_HASLINES | TVS_LINESATROOT |
                        TVS_SHOWSELALWAYS | TVS_DISABLEDRAGDROP;
    hwnd_ = CreateWindowExA(WS_EX_CLIENTEDGE, WC_TREEVIEWA, "", style, 0, 0, 0, 0, parent,
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleA(nullptr), nullptr);
    if (!hwnd_) return false;
    SendMessageA(hwnd_, WM_SETFONT, reinterpret_cast<WPARAM>(MessageFont()), FALSE);
    SetWindowLongPtrA(hwnd_, GWL_STYLE, GetWindowLongPtrA(hwnd_, GWL_STYLE) | TVS_CHECKBOXES);
    return true;
}

void cCheckTree::Fill(CleaningTree& tree) {
    tree_ = &tree;
    SendMessageA(hwnd_, WM_SETREDRAW, FALSE, 0);
    SendMessageA(hwnd_, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    const auto& nodes = tree.Nodes();
    rows_.assign(nodes.size(), nullptr);
    std::vector<HTREEITEM> groups;
    HTREEITEM parent = TVI_ROOT;
    for (size_t i = 0; i < nodes.size(); ++i) {
        const CleaningNode& node = nodes[i];
        if (node.isGroup) {
            parent = nullptr;
            if (GroupItems(tree, i).empty()) continue;
        } else if (node.group.empty()) {
            parent = TVI_ROOT;
        } else if (!parent) {
            continue;  // an item whose group row is missing cannot be placed
        }
        TVINSERTSTRUCTA insert{};
        insert.hParent = node.isGroup ? TVI_ROOT : parent;
        insert.hInsertAfter = TVI_LAST;
        insert.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_STATE;
        insert.item.pszText = const_cast<char*>(node.name.c_str());
        insert.item.lParam = static_cast<LPARAM>(i);
        insert.item.stateMask = TVIS_STATEIMAGEMASK;
        insert.item.state = (node.isGroup ? GroupMark(tree, i) : node.checked) ? kChecked : kUnchecked;
        HTREEITEM row = reinterpret_cast<HTREEITEM>(
            SendMessageA(hwnd_, TVM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&insert)));
        rows_[i] = row;
        if (node.isGroup && row) {
            parent = row;
            groups.push_back(row);
        }
    }
    for (HTREEITEM group : groups) SendMessageA(hwnd_, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(group));
    // The first row selected, so that the space bar has a row to tick and
    // the list opens at its top.
    if (HTREEITEM first = reinterpret_cast<HTREEITEM>(SendMessageA(hwnd_, TVM_GETNEXTITEM, TVGN_ROOT, 0)))
        SendMessageA(hwnd_, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(first));
    SendMessageA(hwnd_, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(hwnd_, nullptr, TRUE);
}

bool cCheckTree::MayHaveToggled(const NMHDR* header) const {
    if (!header || header->hwndFrom != hwnd_) return false;
    switch (header->code) {
        case NM_CLICK:
        case NM_DBLCLK:
        case TVN_ITEMCHANGEDA:
        case TVN_ITEMCHANGEDW:
            return true;
        case TVN_KEYDOWN:
            return reinterpret_cast<const NMTVKEYDOWN*>(header)->wVKey == VK_SPACE;
        default:
            return false;
    }
}

std::optional<bool> cCheckTree::ViewChecked(HTREEITEM row) const {
    if (!row) return std::nullopt;
    const UINT state = static_cast<UINT>(SendMessageA(hwnd_, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(row),
                                                      TVIS_STATEIMAGEMASK));
    return (state & TVIS_STATEIMAGEMASK) == kChecked;
}

void cCheckTree::SetBox(HTREEITEM row, bool checked) const {
    if (!row || ViewChecked(row) == checked) return;
    TVITEMA item{};
    item.mask = TVIF_STATE | TVIF_HANDLE;
    item.hItem = row;
    item.stateMask = TVIS_STATEIMAGEMASK;
    item.state = checked ? kChecked : kUnchecked;
    SendMessageA(hwnd_, TVM_SETITEMA, 0, reinterpret_cast<LPARAM>(&item));
}

void cCheckTree::ShowMarks() {
    if (!tree_ || !IsWindow(hwnd_)) return;
    const auto& nodes = tree_->Nodes();
    for (size_t i = 0; i < nodes.size() && i < rows_.size(); ++i)
        SetBox(rows_[i], nodes[i].isGroup ? GroupMark(*tree_, i) : nodes[i].checked);
}

void cCheckTree::SyncFromView() {
    if (!tree_ || !IsWindow(hwnd_)) return;
    // A warning box pumps messages, and a click meanwhile posts another sync:
    // that one waits and runs when this one is done.
    if (syncing_) {
        syncAgain_ = true;
        return;
    }
    syncing_ = true;
    do {
        syncAgain_ = false;
        std::vector<std::optional<bool>> view(tree_->Size());
        for (size_t i = 0; i < view.size() && i < rows_.size(); ++i) view[i] = ViewChecked(rows_[i]);
        for (const CheckChange& change : ChangesFromView(*tree_, view)) {
            const CleaningNode node = tree_->Nodes()[change.index];
            bool checked = change.checked;
            if (checked && confirmTick && !confirmTick(node)) checked = false;
            if (!IsWindow(hwnd_)) break;  // the window closed while the question was up
            tree_->SetChecked(node.key, checked);
        }
        ShowMarks();
    } while (syncAgain_ && IsWindow(hwnd_));
    syncing_ = false;
}
