#include "progress.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include <unistd.h>

namespace cli {
namespace {

constexpr uint64_t kSteps = 100;
constexpr uint64_t kRowsWithoutTotal = 1000; // between two drawings where there is no total
constexpr size_t kBarWidth = 40;
constexpr const char *kWipe = "\r\x1b[K";

} // namespace

Progress::Progress(uint64_t total) : total_(total), active_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    if (shown_ > 0)
        std::fputs(kWipe, stderr);
}

void Progress::show(uint64_t done, uint64_t rowCount) {
    if (!active_)
        return;
    const uint64_t step = total_ == 0 ? rowCount / kRowsWithoutTotal : std::min(done, total_) * kSteps / total_;
    if (step <= shown_)
        return;
    shown_ = step;
    std::string line = kWipe;
    if (total_ != 0) {
        const size_t filled = kBarWidth * step / kSteps;
        line +=
            "[" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + "] " + std::to_string(step) + " % ";
    }
    line += std::to_string(rowCount) + " rows";
    std::fputs(line.c_str(), stderr);
}

} // namespace cli
