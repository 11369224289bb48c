// Request objects, made from the words of the command line.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "condition.h"
#include "layout.h"

namespace cli {

// Appends a value's bytes to an object of the library, NULL where there is none; the setter's code.
uint32_t appendValue(ORMEL_OBJECT &object, const char *column, std::optional<std::string_view> value);

// A request object for a table; what it holds is freed at the end. The layout must outlive it. At most 32 values and
// 32 columns go in.
class Object {
public:
    explicit Object(const Layout &layout);
    ~Object();
    Object(const Object &) = delete;
    Object &operator=(const Object &) = delete;

    ORMEL_OBJECT *get() { return &object_; }

    // Values to be written, one for a column. Throws UsageError.
    void assign(const std::vector<Assignment> &assignments);

    // Bytes as they stand, for a column of text or bytes. Throws UsageError.
    void assignBytes(const std::string &column, std::string_view bytes);

    // Conditions that rows must meet. Throws UsageError.
    void require(const std::vector<Condition> &conditions);

    // Columns to be selected, by their positions.
    void select(const std::vector<size_t> &positions);

    // At most so many rows, after so many others.
    void page(uint32_t limit, uint32_t offset);

private:
    const char *name(size_t position) const;
    void check(uint32_t code) const;
    void append(size_t position, std::optional<std::string_view> value);

    const Layout &layout_;
    ORMEL_OBJECT object_{};
};

} // namespace cli
