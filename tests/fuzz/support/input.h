// The bytes of one input, taken piece by piece. Behind the last one there are zeros, so that every input means
// something. An input means the same to every compiler only where no call has two pieces among its arguments.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace fuzz {

class Input {
public:
    Input(const uint8_t *data, size_t size) : at_(data), left_(size) {}

    bool empty() const { return left_ == 0; }

    template <class T> T take() {
        T value{};
        copy(&value, sizeof value);
        return value;
    }
    uint8_t byte() { return take<uint8_t>(); }
    // A number from 0 to most.
    uint32_t upTo(uint32_t most) { return (most > UINT8_MAX ? take<uint32_t>() : byte()) % (most + 1); }
    // True for few inputs.
    bool rarely() { return byte() >= 0xF8; }
    template <class T, size_t n> const T &oneOf(const T (&choices)[n]) { return choices[byte() % n]; }

    void copy(void *to, size_t size) {
        const size_t count = std::min(size, left_);
        std::memset(to, 0, size);
        if (count > 0)
            std::memcpy(to, at_, count);
        at_ += count;
        left_ -= count;
    }
    std::string bytes(size_t size) {
        std::string taken(size, '\0');
        copy(taken.data(), size);
        return taken;
    }
    // A text of at most so many bytes, without a NUL.
    std::string text(uint32_t most) {
        const std::string taken = bytes(upTo(most));
        return taken.substr(0, taken.find('\0'));
    }
    std::string rest() { return bytes(left_); }

private:
    const uint8_t *at_;
    size_t left_;
};

} // namespace fuzz
