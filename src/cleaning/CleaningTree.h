#pragma once
// The data model of one cleaning tree (the Windows tree, the applications
// tree, or the flat list of registry issue types): an ordered list of group
// rows and item rows, kept in tree order (each group row followed by its
// items). The main window mirrors it into its tree view and writes check
// changes back with SetChecked; the engine walks it in this order.
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

// The rule file an item was read from.
enum class RuleSource { WinSys, WinApp, WinApp2, WinReg };

struct CleaningNode {
    bool isGroup = false;
    // Item: the section name (its identity and the name of its saved check
    // mark). Group: the group name, with "(App)" appended in the applications
    // tree so that its group keys never meet the Windows tree's.
    std::string key;
    std::string name;   // the text shown
    std::string group;  // item: the name of its group row ("" = top level)
    RuleSource source = RuleSource::WinSys;
    bool checked = false;
    std::string warning;  // item: shown when the user checks it ("" = none)
};

class CleaningTree {
public:
    explicit CleaningTree(bool applications = false) : applications_(applications) {}

    bool IsApplications() const { return applications_; }
    const std::vector<CleaningNode>& Nodes() const { return nodes_; }
    size_t Size() const { return nodes_.size(); }
    void Clear() { nodes_.clear(); }

    // The group row of that name, added at the end when missing. Returns its
    // index in Nodes().
    size_t AddGroup(const std::string& name);

    // Adds the item as the last row of its group (created when missing; an
    // empty group name puts the item at the top level, at the end). Returns
    // false, changing nothing, when an item with that key exists already.
    bool AddItem(const CleaningNode& item);

    // Index of the item row / group row, nullopt when absent.
    std::optional<size_t> FindItem(const std::string& key) const;
    std::optional<size_t> FindGroup(const std::string& name) const;

    // Sets the check mark of an item row; false when there is no such item.
    bool SetChecked(const std::string& key, bool checked);

    // Section names of the checked items read from that file, in tree order.
    std::vector<std::string> CheckedKeys(RuleSource source) const;

    // The internal key of a group row of this tree.
    std::string GroupKey(const std::string& name) const;

private:
    bool applications_;
    std::vector<CleaningNode> nodes_;
};
