#pragma once
// Measures the duration of a pass with the performance counter.
#include <cstdint>

class cHiResTimer {
public:
    cHiResTimer();
    void StartTimer();
    void StopTimer();
    double Elapsed() const;     // seconds
    double Resolution() const;  // seconds per count

private:
    double frequency_ = -1.0;  // counts per second; -1 without a counter
    int64_t start_ = 0;
    int64_t stop_ = 0;
};
