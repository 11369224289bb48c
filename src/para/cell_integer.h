// Integers in the cells of a result.
#pragma once

#include <cstdint>
#include <cstring>

namespace ormel {

// The bytes of a cell's integer, such that a reader of 8 bytes stays inside them: the conversion reads 8 wherever the
// length is none that it knows, 3 among them.
class CellInteger {
public:
    CellInteger(const void *value, uint32_t length) : bytes_(value) {
        if (value == nullptr || length >= sizeof wide_)
            return;
        std::memcpy(wide_, value, length);
        bytes_ = wide_;
    }
    CellInteger(const CellInteger &) = delete;
    CellInteger &operator=(const CellInteger &) = delete;
    const void *bytes() const { return bytes_; }

private:
    uint8_t wide_[8] = {};
    const void *bytes_;
};

} // namespace ormel
