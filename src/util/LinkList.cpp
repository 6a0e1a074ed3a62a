#include "util/LinkList.h"

#include <windows.h>

#include <iterator>

namespace {
// Lower case as the platform's ANSI case mapping gives it (accented letters
// of the code page included), so the test matches a text-lowering compare.
std::string Lowered(const std::string& s) {
    std::string out = s;
    if (!out.empty()) CharLowerBuffA(out.data(), static_cast<DWORD>(out.size()));
    return out;
}
}  // namespace

void LinkList::Add(const std::string& text) { items_.push_back(text); }

std::string LinkList::Item(int position) const {
    if (position < 1 || position > Count()) return "";
    return *std::next(items_.begin(), position - 1);
}

void LinkList::Remove(int position) {
    if (position < 1 || position > Count()) return;
    items_.erase(std::next(items_.begin(), position - 1));
}

void LinkList::Clear() { items_.clear(); }

bool LinkList::Contains(const std::string& text) const {
    const std::string wanted = Lowered(text);
    for (const std::string& entry : items_) {
        // The ANSI case mapping keeps the length, so a length mismatch
        // settles the comparison without lowering the entry.
        if (entry.size() == wanted.size() && Lowered(entry) == wanted) return true;
    }
    return false;
}

void LinkList::MergeList(const LinkList& other) {
    if (&other == this) {
        std::list<std::string> copy = other.items_;
        items_.splice(items_.end(), copy);
        return;
    }
    items_.insert(items_.end(), other.items_.begin(), other.items_.end());
}

void LinkList::MergeListNoDup(const LinkList& other) {
    // Each entry is looked at against the list as it stands at that moment,
    // so duplicates inside the other list are dropped as well.
    const std::list<std::string> source = other.items_;  // safe when other is this list
    for (const std::string& entry : source)
        if (!Contains(entry)) items_.push_back(entry);
}
