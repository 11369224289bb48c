// A progress bar on standard error, where that is a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace cli {

// Seconds as people read them: 0:07, 12:30, 1:02:03.
std::string duration(uint64_t seconds);

class Progress {
public:
    // total: what done counts up to, beginning at start; 0 where nobody knows.
    Progress(uint64_t total, uint64_t start);
    // Wipes the bar, so that messages begin on a clean line.
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    // Shows how far the work is, how fast and how long it still takes; cheap enough to be called often.
    void show(uint64_t done, uint64_t rowCount);

private:
    using Clock = std::chrono::steady_clock;

    uint64_t total_;
    uint64_t start_;
    Clock::time_point began_ = Clock::now();
    Clock::time_point drawn_ = began_;
    uint64_t step_ = 0; // the last one that was drawn
    bool active_;
    bool isDrawn_ = false;
};

} // namespace cli
