// How far the memory that the process holds grows.
#pragma once

#include <cstddef>
#include <fstream>
#include <malloc.h>
#include <string>

namespace bench {

// From its construction on. What earlier work left in the heap is given back first, so that it hides nothing; where the
// system does not let a process forget its old peak, that counts.
class MemoryGrowth {
public:
    MemoryGrowth() {
        malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << "5";
        before_ = status("VmRSS:");
    }
    double peakMiB() const { return static_cast<double>(status("VmHWM:") - before_) / 1024; }

private:
    // A line of the process's status, in KiB.
    static long status(const std::string &name) {
        std::ifstream file("/proc/self/status");
        long value = 0;
        for (std::string word; file >> word;)
            if (word == name)
                file >> value;
        return value;
    }

    long before_;
};

} // namespace bench
