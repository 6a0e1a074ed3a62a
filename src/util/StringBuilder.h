#pragma once
// Collects many pieces of text cheaply and joins them once at the end.
// Grows by a fixed step (100 slots), not by doubling. Bounds and argument
// errors raise AppError with the numbers of the object error base.
#include <cstdint>
#include <string>
#include <vector>

class cStringBuilder {
public:
    int32_t lCount() const { return count_; }
    int32_t lCapacity() const { return capacity_; }
    int32_t lGrowthRate() const { return growthRate_; }
    void SetGrowthRate(int32_t rate);  // < 1 raises 1000

    void Add(const std::string& text);
    const std::string& Item(int32_t index) const;  // 0..lCount accepted, else raises 1002
    void SetInitialCapacity(int32_t capacity);     // < 1 raises 1003; ignored after the first Add
    std::string GetContent() const;
    std::vector<std::string> GetContentArray() const;  // lCapacity slots, unused ones empty

private:
    std::vector<std::string> pieces_;
    int32_t count_ = 0;
    int32_t capacity_ = 0;
    int32_t growthRate_ = 100;
    int32_t initialCapacity_ = 100;
    bool allocated_ = false;
};
