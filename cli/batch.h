// Rows that one statement inserts.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "layout.h"

namespace cli {

// Takes rows of a table and inserts them together. The layout must outlive it.
class Batch {
public:
    // The most rows that a batch of the table takes.
    static size_t most(const Layout &layout);

    // An empty one for so many rows, which are no more than that. Throws Failure.
    Batch(const Layout &layout, size_t rows);

    // Whether it has its rows, or so many bytes of values that more would only cost memory.
    bool full() const;
    size_t size() const { return size_; }

    // Takes a row of as many values as the table has columns, none of which is NULL where nothing is given. Throws
    // Failure with the column's name and the reason.
    void add(const std::vector<std::optional<std::string>> &values);

    // Inserts all rows, of which there are some, or none; how many the database counts, or nothing where it refuses
    // them. Throws Failure where they do not get that far.
    std::optional<size_t> insert(void *connection);

private:
    struct Free {
        void operator()(ORMEL_MULTI_OBJECT *container) const { ORMEL_Multi_object_UnInit(container); }
        void operator()(ORMEL_PARA_BATCH *columns) const { ORMEL_BatchInsert_Para_Free(columns); }
    };
    using Columns = std::unique_ptr<ORMEL_PARA_BATCH, Free>;

    Columns columns();

    const Layout &layout_;
    std::unique_ptr<ORMEL_MULTI_OBJECT, Free> container_;
    size_t rows_;
    size_t size_ = 0;
    size_t bytes_ = 0; // of the values
};

// Takes from the database's words on a refused batch of so many rows which of them it is, counted from 0, where they
// say so.
std::optional<size_t> takeRow(std::string &words, size_t count);

} // namespace cli
