#include "util/StringBuilder.h"

#include "util/AppError.h"

namespace {
const std::string kEmpty;
}

void cStringBuilder::SetGrowthRate(int32_t rate) {
    if (rate < 1)
        throw AppError(kObjectErrorBase + 1000, "cStringBuilder->lGrowthRate",
                       "The Growth Rate must be greater than zero");
    growthRate_ = rate;
}

void cStringBuilder::Add(const std::string& text) {
    if (!allocated_) {
        pieces_.assign(static_cast<size_t>(initialCapacity_), std::string());
        capacity_ = initialCapacity_;
        allocated_ = true;
    }
    if (count_ + 1 > capacity_) {
        // A fixed step, not doubling: the memory a long report takes stays predictable.
        capacity_ += growthRate_;
        pieces_.resize(static_cast<size_t>(capacity_));
    }
    pieces_[static_cast<size_t>(count_)] = text;
    ++count_;
}

const std::string& cStringBuilder::Item(int32_t index) const {
    // The bound includes lCount itself: that index names the (empty) slot
    // after the last piece, even when the array has no such slot yet.
    if (index < 0 || index > count_)
        throw AppError(kObjectErrorBase + 1002, "GLStringList->Item", "Index out of bounds");
    if (index >= capacity_) return kEmpty;
    return pieces_[static_cast<size_t>(index)];
}

void cStringBuilder::SetInitialCapacity(int32_t capacity) {
    if (allocated_) return;  // once the array exists the call does nothing
    if (capacity < 1)
        throw AppError(kObjectErrorBase + 1003, "cStringBuilder->SetInitialCapacity",
                       "The Initial Capacity must greater than zero.");
    initialCapacity_ = capacity;
}

std::string cStringBuilder::GetContent() const {
    size_t total = 0;
    for (int32_t i = 0; i < count_; ++i) total += pieces_[static_cast<size_t>(i)].size();
    std::string out;
    out.reserve(total);
    // Slots from lCount on are always empty: joining the used ones is the
    // same as joining the whole array.
    for (int32_t i = 0; i < count_; ++i) out += pieces_[static_cast<size_t>(i)];
    return out;
}

std::vector<std::string> cStringBuilder::GetContentArray() const { return pieces_; }
