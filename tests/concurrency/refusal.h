// The database's word on one call.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace concurrency {

// What calls answer when the database refuses them in favour of others.
inline constexpr uint32_t kSelectCodes[] = {255};        // the table cannot be described, or the statement fails
inline constexpr uint32_t kWriteCodes[] = {125, 211};    // the two of writes by objects
inline constexpr uint32_t kPlainCodes[] = {125, 211, 1}; // these write and commit
inline constexpr uint32_t kCommitCodes[] = {1};

// A thread's last error, of which the library tells until there is another one: here, of one call only.
class LastError {
public:
    LastError();
    ~LastError();
    LastError(const LastError &) = delete;
    LastError &operator=(const LastError &) = delete;

    // Before a call.
    void forget();

    // After it: whether others were in the way of it.
    static bool isRefusal();
    // Whether the database said nothing at all.
    static bool isNone();
    static std::string text();

private:
    void *silent_ = nullptr; // a connection that has met no error
};

} // namespace concurrency
