// The platform's log service, which keeps what it is told in memory.
#ifndef UNIT_LOG_DOUBLE_H
#define UNIT_LOG_DOUBLE_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "ormeldb/log.h"
#include "ormeldb/platform/liblog.h"

namespace unit {

// A line as it was handed over, and its parts.
struct Line {
    void *handle;
    std::string raw;
    uint32_t length; // as it was stated
    int32_t stated;  // level, as it was stated
    int level;
    std::string time;
    std::string module;
    int source;
    std::string function;
    std::string message;
};

class LogDouble {
public:
    // No lines, threshold TRACE, an instance that can be made.
    void Reset();

    // Lines from a level on as "ERROR dbConnect: qdc_connect failed".
    std::vector<std::string> Lines(int from = KPL_LOG_DEBUG) const;
    // The same of the functions whose names begin so.
    std::vector<std::string> LinesOf(const std::string &function, int from = KPL_LOG_DEBUG) const;
    std::vector<Line> Raw() const;
    void Forget();
    // Whether any line, its time and names included, holds the text.
    bool Says(const std::string &text) const;

    std::atomic<int32_t> threshold{KPL_LOG_TRACE};
    std::atomic<int> thresholdReads{0};
    std::vector<int32_t> thresholdSets;
    std::function<void(const Line &)> hook; // called with every line

    // The n-th call of the service from now on fails, or all from the n-th on: no instance, a line that is lost, no
    // configured level, a threshold above every level.
    void Fail(int n = 1, bool lasting = false);
    void FailNothing();
    bool Failed() const { return failed_; }
    bool reads = true; // false: lines are neither looked at nor kept

    const char *debugValue = nullptr; // the value "OPB_VEMLO_DEBUG"
    void *instance = nullptr;         // what making an instance gives
    std::vector<LIB_LOG_INSTANCE_CFG> made;
    std::vector<std::string> madeFiles;
    std::vector<void *> deleted;
    size_t linesWhenDeleted = 0;

    void Take(void *handle, const char *line, uint32_t length, int32_t level);
    // Counts a call of the service; false when it is one that fails.
    bool Called();

private:
    std::atomic<int> left_{0}; // calls up to the one that fails; 0 and below: there is none
    std::atomic<bool> lasting_{false};
    std::atomic<bool> failed_{false};
    mutable std::mutex mutex_;
    std::vector<Line> lines_;
};

LogDouble &Log();

// Sets the threshold for as long as it lives.
class Threshold {
public:
    explicit Threshold(int32_t level) : old_(Log().threshold) { Log().threshold = level; }
    ~Threshold() { Log().threshold = old_; }
    Threshold(const Threshold &) = delete;
    Threshold &operator=(const Threshold &) = delete;

private:
    int32_t old_;
};

// Puts the password where libdecrypt would.
void SetPassword(const std::string &password);

} // namespace unit

#endif
