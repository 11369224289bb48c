// Rows read ahead of their consumer, packed one after another.
//
// Engines append values, the front takes rows off at the other end. Header-only, because both sides of the border
// between the front and an engine's shared object use it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <memory>
#include <vector>

namespace ormel::client {

// A value of the current row. The bytes stay until the next row is taken.
struct Cell {
    const uint8_t *data = nullptr; // never NULL unless the value is
    uint64_t size = 0;
    bool null = true;
};

class RowBuffer {
public:
    // Appending: a value for each column, then endRow.
    void appendNull() { appendHeader(kNull); }
    void appendInt32(int32_t value) { appendPlain(value); }
    void appendInt64(int64_t value) { appendPlain(value); }
    void appendDouble(double value) { appendPlain(value); }

    // Text without a terminator, or bytes.
    void appendBytes(const void *data, size_t size) {
        if (size < kLarge) {
            appendHeader(static_cast<uint32_t>(size));
            append(data, size);
            return;
        }
        // A block of exactly its size, given back when its row has passed.
        auto block = std::make_unique_for_overwrite<uint8_t[]>(size);
        std::memcpy(block.get(), data, size);
        large_.push_back({std::move(block), size});
        ++rowLarge_;
        appendHeader(kIsLarge);
    }

    void endRow() {
        if (blocks_.empty() || blocks_.back().capacity() - blocks_.back().size() < row_.size()) {
            blocks_.emplace_back();
            blocks_.back().reserve(row_.size() > kBlock ? row_.size() : kBlock);
        }
        if (current_.capacity() < rowLarge_)
            current_.reserve(rowLarge_); // for the time when the row is taken
        blocks_.back().insert(blocks_.back().end(), row_.begin(), row_.end());
        row_.clear();
        rowLarge_ = 0;
        ++rows_;
    }

    // Forgets a row that could not be finished.
    void dropRow() {
        row_.clear();
        for (; rowLarge_ > 0; --rowLarge_)
            large_.pop_back();
    }

    size_t rows() const { return rows_; }

    // Takes the next row's values and gives back the memory of the one before; false when there is none. Needs no
    // memory.
    bool take(std::vector<Cell> &cells) noexcept {
        current_.clear();
        if (rows_ == 0)
            return false;
        while (position_ == blocks_.front().size()) { // one that got no room is empty
            blocks_.pop_front();
            position_ = 0;
        }
        for (Cell &cell : cells)
            cell = takeCell();
        --rows_;
        return true;
    }

    void clear() noexcept {
        row_.clear();
        rowLarge_ = 0;
        blocks_.clear();
        position_ = 0;
        rows_ = 0;
        large_.clear();
        current_.clear();
    }

private:
    static constexpr uint32_t kNull = 0xFFFFFFFF;
    static constexpr uint32_t kIsLarge = 0xFFFFFFFE;
    static constexpr size_t kLarge = 16 * 1024;
    static constexpr size_t kBlock = 256 * 1024;

    struct LargeValue {
        std::unique_ptr<uint8_t[]> data;
        size_t size;
    };

    void append(const void *data, size_t size) {
        const auto *bytes = static_cast<const uint8_t *>(data);
        row_.insert(row_.end(), bytes, bytes + size);
    }
    void appendHeader(uint32_t header) { append(&header, sizeof header); }
    template <class T> void appendPlain(T value) {
        appendHeader(sizeof value);
        append(&value, sizeof value);
    }

    Cell takeCell() {
        const uint8_t *at = blocks_.front().data() + position_;
        uint32_t header = 0;
        std::memcpy(&header, at, sizeof header);
        position_ += sizeof header;
        if (header == kNull)
            return {};
        if (header == kIsLarge) {
            current_.push_back(std::move(large_.front()));
            large_.pop_front();
            return {current_.back().data.get(), current_.back().size, false};
        }
        position_ += header;
        return {at + sizeof header, header, false};
    }

    std::vector<uint8_t> row_;                // the row that is being appended
    size_t rowLarge_ = 0;                     // large values of it
    std::deque<std::vector<uint8_t>> blocks_; // whole rows
    size_t position_ = 0;                     // in the first block
    size_t rows_ = 0;
    std::deque<LargeValue> large_;    // of rows not taken yet, in order
    std::vector<LargeValue> current_; // of the row taken last
};

} // namespace ormel::client
