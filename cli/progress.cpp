#include "progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <unistd.h>

#include "text.h"

namespace cli {
namespace {

constexpr uint64_t kSteps = 100;
constexpr uint64_t kRowsWithoutTotal = 1000; // between two drawings where there is no total
constexpr size_t kBarWidth = 40;
constexpr const char *kWipe = "\r\x1b[K";
constexpr std::chrono::seconds kLongestPause{1}; // between two drawings, where there is something to draw

std::string bar(uint64_t step) {
    const size_t filled = kBarWidth * step / kSteps;
    return "[" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + "] " + std::to_string(step) + " % ";
}

// Two digits behind a colon.
std::string part(uint64_t value) {
    return (value < 10 ? ":0" : ":") + std::to_string(value);
}

} // namespace

std::string duration(uint64_t seconds) {
    const uint64_t minutes = seconds / 60;
    if (minutes < 60)
        return std::to_string(minutes) + part(seconds % 60);
    return std::to_string(minutes / 60) + part(minutes % 60) + part(seconds % 60);
}

Progress::Progress(uint64_t total, uint64_t start)
    : total_(total), start_(std::min(start, total)), active_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    if (isDrawn_)
        std::fputs(kWipe, stderr);
}

void Progress::show(uint64_t done, uint64_t rowCount) {
    if (!active_)
        return;
    const uint64_t at = std::min(done, total_);
    const uint64_t step = total_ == 0 ? rowCount / kRowsWithoutTotal : at * kSteps / total_;
    const Clock::time_point now = Clock::now();
    if (step <= step_ && now - drawn_ < kLongestPause)
        return;
    step_ = step;
    drawn_ = now;
    isDrawn_ = true;
    const double seconds = std::max(std::chrono::duration<double>(now - began_).count(), 1e-3);
    std::string line = kWipe + (total_ == 0 ? "" : bar(step)) + rows(rowCount) + ", " +
                       std::to_string(std::llround(static_cast<double>(rowCount) / seconds)) + " rows/s";
    if (at > start_) {
        const double left = seconds * static_cast<double>(total_ - at) / static_cast<double>(at - start_);
        line += ", " + duration(static_cast<uint64_t>(std::llround(left))) + " left";
    }
    std::fputs(line.c_str(), stderr);
}

} // namespace cli
