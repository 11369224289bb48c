// Results as a server may send them, without a server.
#pragma once

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

#include "postgres/error.h"
#include "postgres/handles.h"
#include "postgres/types.h"

namespace ormel::client::postgres {

using Text = std::optional<std::string>; // of a value; nothing for NULL

enum Format { asText, inBinary };

struct Field {
    Oid oid;
    Format format;
    Text value;
    int modifier = -1;
};

// A result of one row.
OwnedResult resultOf(const std::vector<Field> &fields);

// The columns C0, C1 ... of these fields.
std::vector<Column> columnsOf(const std::vector<Field> &fields);

// The next row, each value written out; empty where there is none.
std::vector<Text> nextRow(RowBuffer &rows, const std::vector<Column> &columns);

// What the work throws; fails the test if it throws nothing.
template <class Work> Error caught(Work work) {
    try {
        work();
    } catch (const Error &error) {
        return error;
    }
    ADD_FAILURE() << "no error";
    return {};
}

} // namespace ormel::client::postgres
