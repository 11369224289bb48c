#include "log/log_file.h"

#include <spdlog/formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <fcntl.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace ormel::platform {
namespace {

// Opening a file that cannot be opened takes the sink some 50 ms, which not every line shall cost.
constexpr std::chrono::seconds kPauseAfterTrouble{1};

// Lines arrive as they are to stand in the file.
class Verbatim final : public spdlog::formatter {
public:
    void format(const spdlog::details::log_msg &line, spdlog::memory_buf_t &dest) override {
        dest.append(line.payload.begin(), line.payload.end());
    }
    std::unique_ptr<spdlog::formatter> clone() const override { return std::make_unique<Verbatim>(); }
};

// Opening a FIFO would wait for its reader.
void refuseSpecialFile(const std::string &path) {
    const auto kind = std::filesystem::status(path).type();
    using std::filesystem::file_type;
    if (kind != file_type::regular && kind != file_type::character && kind != file_type::not_found)
        throw std::runtime_error("\"" + path + "\" is not a file");
}

spdlog::file_event_handlers closedOnExec() {
    spdlog::file_event_handlers handlers;
    handlers.after_open = [](const spdlog::filename_t &, std::FILE *stream) {
        fcntl(fileno(stream), F_SETFD, FD_CLOEXEC);
    };
    return handlers;
}

} // namespace

struct LogFile::Sink {
    Sink(const std::string &path, Rotation rotation)
        : file(path, rotation.bytes, rotation.files - 1, false, closedOnExec()) {
        file.set_formatter(std::make_unique<Verbatim>());
    }
    spdlog::sinks::rotating_file_sink_st file;
};

LogFile::LogFile(std::string path, Rotation rotation) : path_(std::move(path)), rotation_(rotation) {}

LogFile::~LogFile() = default;

bool LogFile::open() {
    if (!sink_ && !openSink())
        return false;
    ++users_;
    return true;
}

bool LogFile::append(std::string_view line) {
    if (!sink_ && (std::chrono::steady_clock::now() < retryAt_ || !openSink()))
        return false;
    users_ = std::max(users_, 1);
    pending_ = true;
    return attempt([&] {
        spdlog::details::log_msg message;
        message.payload = spdlog::string_view_t(line.data(), line.size());
        sink_->file.log(message);
    });
}

bool LogFile::flush() {
    if (!std::exchange(pending_, false))
        return false;
    if (sink_ && attempt([&] { sink_->file.flush(); }))
        troubled_ = false;
    return true;
}

bool LogFile::close() {
    if (users_ == 0)
        return false;
    if (--users_ == 0) {
        flush();
        release();
    }
    return true;
}

void LogFile::leaveToParent() {
    release();
}

bool LogFile::openSink() {
    return attempt([&] {
        std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
        if (!claim_)
            claim_ = Claim::take(path_);
        refuseSpecialFile(claim_.path());
        sink_ = std::make_unique<Sink>(claim_.path(), rotation_);
    });
}

void LogFile::release() {
    sink_.reset();
    claim_ = Claim();
}

template <typename Action> bool LogFile::attempt(Action action) {
    try {
        action();
        return true;
    } catch (const std::exception &error) {
        if (!std::exchange(troubled_, true))
            std::fprintf(stderr,
                         "liblog: %s; lines are lost until this is mended (log.path in \"../conf/log.conf\" "
                         "names the directory)\n",
                         error.what());
        sink_.reset();
        retryAt_ = std::chrono::steady_clock::now() + kPauseAfterTrouble;
        return false;
    }
}

} // namespace ormel::platform
