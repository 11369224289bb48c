// A progress bar on standard error, where that is a terminal.
#pragma once

#include <cstdint>

namespace cli {

class Progress {
public:
    // total: what done counts up to; 0 where nobody knows.
    explicit Progress(uint64_t total);
    // Wipes the bar, so that messages begin on a clean line.
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    // Shows how far the work is; cheap enough to be called for every row.
    void show(uint64_t done, uint64_t rowCount);

private:
    uint64_t total_;
    uint64_t shown_ = 0; // the last step that was drawn
    bool active_;
};

} // namespace cli
