#include "batch.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include <ormeldb/platform/liblog.h>

#include "home.h"
#include "object.h"
#include "value.h"

namespace cli {
namespace {

constexpr size_t kMostBytes = size_t{16} << 20; // of a batch's values, but for the last row's

// Bytes that a row takes in the array of its column.
size_t widthOf(const Layout &layout, size_t position) {
    const auto declared = static_cast<size_t>(layout.columns()[position].len);
    const bool isPointer = isLargeObject(layout.type(position));
    return isPointer ? sizeof(void *) : std::max(declared, sizeof(uint64_t));
}

// At the level INFO, the one of a new home, the library logs a line for every value of a batch.
class QuietLog {
public:
    QuietLog() : level_(FrameDebugLevelGet()) {
        if (level_ == KPL_LOG_INFO)
            FrameDebugLevelSet(KPL_LOG_INFO + 1);
    }
    ~QuietLog() { FrameDebugLevelSet(level_); }
    QuietLog(const QuietLog &) = delete;
    QuietLog &operator=(const QuietLog &) = delete;

private:
    int32_t level_;
};

} // namespace

// The library counts the bytes of the container, and of every column's array, in 32 bits with a sign.
size_t Batch::most(const Layout &layout) {
    constexpr size_t kMost = std::numeric_limits<int32_t>::max();
    size_t result = (kMost - sizeof(ORMEL_MULTI_OBJECT)) / sizeof(ORMEL_OBJECT);
    for (size_t i = 0; i < layout.columns().size(); ++i)
        result = std::min(result, kMost / widthOf(layout, i));
    return result;
}

Batch::Batch(const Layout &layout, size_t rows)
    : layout_(layout), container_(ORMEL_Multi_object_Init(layout.table().c_str(), static_cast<int32_t>(rows))),
      rows_(rows) {
    if (container_ == nullptr)
        throw Failure("there is no memory for a batch of " + std::to_string(rows) + " rows; make --batch smaller");
    container_->uiRecNum = 0; // counts what is filled
}

bool Batch::full() const {
    return size_ == rows_ || bytes_ >= kMostBytes;
}

void Batch::add(const std::vector<std::optional<std::string>> &values) {
    ORMEL_OBJECT &object = container_->astObject[size_];
    container_->uiRecNum = static_cast<uint32_t>(++size_);
    for (size_t i = 0; i < values.size(); ++i) {
        const char *column = layout_.columns()[i].attname;
        try {
            std::optional<std::string> value;
            if (values[i])
                value = layout_.encode(i, *values[i]);
            if (appendValue(object, column, value) != ORMEL_OK)
                throw ValueError("the library does not take the value; the reason stands in " + logFile());
            bytes_ += value ? value->size() : 0;
        } catch (const ValueError &error) {
            throw Failure(std::string(column) + ": " + error.what());
        }
    }
}

// What the library's one call for a whole batch does, step by step: that call does not tell its caller when memory is
// wanting, and rows that are not inserted must not be taken for inserted ones.
Batch::Columns Batch::columns() {
    for (size_t row = 0; row < size_; ++row)
        if (ORMEL_ObjectCheck(&container_->astObject[row], layout_.descriptor()) != ORMEL_OK)
            throw Failure("the library does not take the rows; the reason stands in " + logFile());
    const QuietLog quiet;
    Columns columns(ORMEL_BatchInsert_Para_Malloc(container_->astObject[0].iItemNum, container_.get()));
    if (columns == nullptr)
        throw Failure("there is no memory for a batch of " + std::to_string(size_) + " rows; make --batch smaller");
    if (ORMEL_SetBatchParaByObject(columns.get(), container_.get(), layout_.descriptor()) != ORMEL_OK)
        throw Failure("the library does not take the rows; the reason stands in " + logFile());
    return columns;
}

std::optional<size_t> Batch::insert(void *connection) {
    const Columns filled = columns();
    const Result result(dbPatchInsertRec(connection, layout_.table().c_str(), filled.get()));
    if (result == nullptr)
        return std::nullopt;
    return result->uiRowCount;
}

// They begin with "row K: ", or with "row K, column NAME (:n): " where a value is refused, behind the SQLSTATE if any.
std::optional<size_t> takeRow(std::string &words, size_t count) {
    constexpr std::string_view kRow = "row ";
    constexpr size_t kState = 7; // characters of an SQLSTATE with its colon and blank
    size_t row = 0;
    const size_t start = words.compare(0, kRow.size(), kRow) == 0 || words.size() < kState ? 0 : kState;
    const char *begin = words.data() + std::min(start + kRow.size(), words.size());
    const char *end = words.data() + words.size();
    const auto [behind, error] = std::from_chars(begin, end, row);
    if (words.compare(start, kRow.size(), kRow) != 0 || error != std::errc() || row >= count || end - behind < 2 ||
        (*behind != ':' && *behind != ',') || behind[1] != ' ')
        return count == 1 ? std::optional<size_t>(0) : std::nullopt;
    words.erase(start, static_cast<size_t>(behind + 2 - words.data()) - start);
    return row;
}

} // namespace cli
