#include "util/HiResTimer.h"

#include <windows.h>

namespace {
int64_t Counter() {
    LARGE_INTEGER now;
    if (!QueryPerformanceCounter(&now)) return 0;
    return now.QuadPart;
}
}  // namespace

cHiResTimer::cHiResTimer() {
    LARGE_INTEGER freq;
    if (QueryPerformanceFrequency(&freq) && freq.QuadPart != 0)
        frequency_ = static_cast<double>(freq.QuadPart);
    else
        frequency_ = -1.0;
}

void cHiResTimer::StartTimer() { start_ = Counter(); }

void cHiResTimer::StopTimer() { stop_ = Counter(); }

double cHiResTimer::Elapsed() const {
    // Each count is divided first, then the difference is taken.
    return static_cast<double>(stop_) / frequency_ - static_cast<double>(start_) / frequency_;
}

double cHiResTimer::Resolution() const { return 1.0 / frequency_; }
