// A statement's text, written twice: once to learn its length, once into a block of that size.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "dao/owners.h"

namespace ormel {

// Takes the pieces of a text; without a block it only counts them.
class SqlWriter {
public:
    SqlWriter() = default;
    explicit SqlWriter(char *block) : block_(block) {}

    SqlWriter &operator<<(std::string_view piece) {
        if (block_ != nullptr)
            std::memcpy(block_ + length_, piece.data(), piece.size());
        length_ += piece.size();
        return *this;
    }
    // A name that a caller left NULL is empty.
    SqlWriter &operator<<(const char *piece) { return *this << std::string_view(piece != nullptr ? piece : ""); }
    template <class Number>
    requires std::is_integral_v<Number> SqlWriter &operator<<(Number number) {
        char digits[20];
        const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        return *this << std::string_view(digits, static_cast<size_t>(end - digits));
    }
    size_t length() const { return length_; }

private:
    char *block_ = nullptr;
    size_t length_ = 0;
};

// The text that write(SqlWriter &) makes, in one block of at least budget bytes; empty when it cannot be allocated.
template <class Write> SqlText makeSql(size_t budget, Write write) {
    SqlWriter measure;
    write(measure);
    const size_t need = measure.length() + 1;
    SqlText text(static_cast<char *>(std::malloc(need > budget ? need : budget)));
    if (text != nullptr) {
        SqlWriter writer(text.get());
        write(writer);
        text.get()[writer.length()] = '\0';
    }
    return text;
}

// The condition clause over slots first to first + count - 1; the placeholder of slot i is i + 1.
void writeConditions(SqlWriter &sql, const ORMEL_PARA &para, int32_t first, int32_t count);

// An insert of one row into the named columns, placeholders in their order.
void writeInsert(SqlWriter &sql, const char *table, const char *const *names, int32_t count);

// Whether a list's counts are within their capacities; no statement is made from one whose are not.
bool countsFit(const ORMEL_PARA &para);

// The block that a statement over some slots, or over a list's, is given at least.
size_t sqlBudget(int32_t slots);
size_t sqlBudget(const ORMEL_PARA &para);

} // namespace ormel
