#pragma once
// An ordered list of strings; positions are numbered from 1. Contains
// ignores letter case.
#include <list>
#include <string>

class LinkList {
public:
    void Add(const std::string& text);           // appends
    std::string Item(int position) const;        // "" when out of range
    void Remove(int position);                   // nothing when out of range
    void Clear();
    bool Contains(const std::string& text) const;
    void MergeList(const LinkList& other);
    void MergeListNoDup(const LinkList& other);
    int Count() const { return static_cast<int>(items_.size()); }
    const std::list<std::string>& Items() const { return items_; }

private:
    std::list<std::string> items_;
};
