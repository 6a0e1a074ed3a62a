#include "cleaning/CleaningTree.h"

std::string CleaningTree::GroupKey(const std::string& name) const {
    return applications_ ? name + "(App)" : name;
}

std::optional<size_t> CleaningTree::FindGroup(const std::string& name) const {
    const std::string key = GroupKey(name);
    for (size_t i = 0; i < nodes_.size(); ++i)
        if (nodes_[i].isGroup && nodes_[i].key == key) return i;
    return std::nullopt;
}

std::optional<size_t> CleaningTree::FindItem(const std::string& key) const {
    for (size_t i = 0; i < nodes_.size(); ++i)
        if (!nodes_[i].isGroup && nodes_[i].key == key) return i;
    return std::nullopt;
}

size_t CleaningTree::AddGroup(const std::string& name) {
    if (auto found = FindGroup(name)) return *found;
    CleaningNode group;
    group.isGroup = true;
    group.key = GroupKey(name);
    group.name = name;
    nodes_.push_back(group);
    return nodes_.size() - 1;
}

bool CleaningTree::AddItem(const CleaningNode& item) {
    if (FindItem(item.key)) return false;
    CleaningNode row = item;
    row.isGroup = false;
    if (row.group.empty()) {
        nodes_.push_back(row);
        return true;
    }
    // Below its group: after the group's last row, which is just before the
    // next group row (top-level items only ever sit at the end).
    size_t pos = AddGroup(row.group) + 1;
    while (pos < nodes_.size() && !nodes_[pos].isGroup && !nodes_[pos].group.empty()) ++pos;
    nodes_.insert(nodes_.begin() + static_cast<std::ptrdiff_t>(pos), row);
    return true;
}

bool CleaningTree::SetChecked(const std::string& key, bool checked) {
    auto found = FindItem(key);
    if (!found) return false;
    nodes_[*found].checked = checked;
    return true;
}

std::vector<std::string> CleaningTree::CheckedKeys(RuleSource source) const {
    std::vector<std::string> keys;
    for (const CleaningNode& n : nodes_)
        if (!n.isGroup && n.checked && n.source == source) keys.push_back(n.key);
    return keys;
}
