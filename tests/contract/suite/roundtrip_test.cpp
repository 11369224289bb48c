// Tables and values of chance come back exactly, through every way in. ORMEL_SEED=n repeats a run.
#include <array>
#include <cmath>
#include <cstring>
#include <random>

#include "seed.h"
#include "support/contract_test.h"

namespace {

using namespace contract;

using Random = std::mt19937_64;

uint64_t below(Random &random, uint64_t bound) {
    return std::uniform_int_distribution<uint64_t>(0, bound - 1)(random);
}

// A value as it is bound, and as it must come back.
struct Sample {
    std::string bytes;
    std::string expected;
};

template <class T> Sample number(T value, const std::string &text) {
    return {std::string(reinterpret_cast<const char *>(&value), sizeof value), text};
}

Sample integer(Random &random, size_t) {
    const auto value = static_cast<int32_t>(random() >> below(random, 64));
    return number(value, std::to_string(value));
}

Sample bigint(Random &random, size_t) {
    const auto value = static_cast<int64_t>(random() >> below(random, 64)) * (below(random, 2) == 0 ? 1 : -1);
    return number(value, std::to_string(value));
}

Sample boolean(Random &random, size_t) {
    const auto value = static_cast<int32_t>(below(random, 2));
    return number(value, std::to_string(value));
}

Sample real(Random &random, size_t) {
    double value = 0;
    do {
        const uint64_t bits = random();
        std::memcpy(&value, &bits, sizeof value);
    } while (std::isnan(value));
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.17g", value);
    return number(value, text.data());
}

// Characters of one to four bytes, none of them NUL; no blank at the end, which may be taken for padding.
Sample text(Random &random, size_t characters) {
    static const char *const wide[] = {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x90\xAB", "'", "\"", "\\", ":1"};
    std::string bytes;
    for (uint64_t left = below(random, characters + 1); left > 0; --left) {
        if (below(random, 4) == 0 && left > 1) {
            bytes += wide[below(random, std::size(wide))];
            left -= bytes.back() == '1' ? 1 : 0;
        } else {
            bytes += static_cast<char>(33 + below(random, 94));
        }
    }
    return {bytes, bytes};
}

Sample numeric(Random &random, size_t) {
    std::string digits = below(random, 2) == 0 ? "" : "-";
    digits += std::to_string(1 + below(random, 9999999));
    if (below(random, 2) == 0)
        digits += "." + std::to_string(below(random, 1000)) + std::to_string(1 + below(random, 9));
    return {digits, digits};
}

Sample bytes(Random &random, size_t length) {
    std::string bytes(below(random, length + 1), '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(below(random, 3) == 0 ? 0 : random());
    return {bytes, bytes};
}

struct ColumnKind {
    std::string words;
    uint32_t type;
    size_t width; // of an array's element, large objects excepted
    size_t length;
    Sample (*make)(Random &, size_t);
};

using Column = std::pair<ColumnKind, std::vector<std::optional<Sample>>>;

class RoundTripTest : public ContractTest {
protected:
    std::vector<ColumnKind> kinds() const {
        std::vector<ColumnKind> all = {{"integer", kInteger, 4, 0, integer},
                                       {"bigint", kBigint, 8, 0, bigint},
                                       {"boolean", kBoolean, 4, 0, boolean},
                                       {engine().realType(), kReal, 8, 0, real},
                                       {"char(12)", kChar, 49, 12, text},
                                       {"varchar(40)", kVarchar, 161, 40, text},
                                       {"numeric", kText, 20, 0, numeric},
                                       {"text", kClob, 16, 5000, text},
                                       {engine().blobType(), kBlob, 16, 5000, bytes}};
        if (engine().lacks(Feature::fixedBytes) == nullptr) {
            all.push_back({"binary(30)", kBinary, 30, 30, bytes});
            all.push_back({"varbinary(300)", kVarbinary, 300, 300, bytes});
        }
        return all;
    }
};
CONTRACT_SUITE(RoundTripTest);

// One row at a time, bound from blocks that are exactly as long as their values.
void insertRows(Connection &db, const std::string &sql, const std::vector<Column> &columns, size_t rows) {
    for (size_t row = 0; row < rows; ++row) {
        Statement insert(db, sql);
        insert.set(0, static_cast<int32_t>(row));
        for (uint32_t i = 0; i < columns.size(); ++i) {
            const auto &[kind, samples] = columns[i];
            const std::optional<Sample> &sample = samples[row];
            if (kind.type == kClob || kind.type == kBlob)
                insert.setLob(i + 1, kind.type, sample ? std::optional<std::string_view>(sample->bytes) : std::nullopt);
            else if (sample)
                insert.setBytes(i + 1, kind.type, sample->bytes);
            else
                insert.bind(i + 1, kind.type, nullptr, 0);
        }
        ASSERT_EQ(insert.execute(), 1U);
    }
}

// The memory of a column's array.
struct Array {
    std::string block;
    std::vector<uint16_t> lengths;
};

Array arrayOf(const Column &column, size_t rows) {
    const auto &[kind, samples] = column;
    const bool large = kind.type == kClob || kind.type == kBlob;
    Array array = {std::string(rows * kind.width, '\0'), {}};
    for (size_t row = 0; row < rows; ++row) {
        if (samples[row] && !large)
            array.block.replace(row * kind.width, samples[row]->bytes.size(), samples[row]->bytes);
        const size_t length = large ? 16 : samples[row] ? samples[row]->bytes.size() : 65535;
        array.lengths.push_back(static_cast<uint16_t>(length));
    }
    return array;
}

void insertArrays(Connection &db, const std::string &sql, const std::vector<Column> &columns, size_t rows) {
    Statement insert(db, sql);
    insert.rows(static_cast<uint32_t>(rows));
    std::vector<int32_t> ids(rows);
    std::vector<uint16_t> idLengths(rows, 4);
    for (size_t row = 0; row < rows; ++row)
        ids[row] = static_cast<int32_t>(row);
    insert.bind(0, kInteger, ids.data(), 4, idLengths.data());
    std::deque<Array> arrays;
    for (uint32_t i = 0; i < columns.size(); ++i) {
        const auto &[kind, samples] = columns[i];
        const Array &array = arrays.emplace_back(arrayOf(columns[i], rows));
        insert.bind(i + 1, kind.type, array.block.data(), kind.width, array.lengths.data());
        for (uint32_t row = 0; row < rows; ++row) {
            uint32_t written = 0;
            const auto length = static_cast<uint32_t>(samples[row] ? samples[row]->bytes.size() : 0);
            if (kind.type == kClob && samples[row]) {
                ASSERT_EQ(qdc_write_batch_clob(insert, i + 1, row, samples[row]->bytes.data(), length, &written), 0U);
                ASSERT_EQ(written, length);
            } else if (kind.type == kBlob && samples[row]) {
                ASSERT_EQ(qdc_write_batch_blob(insert, i + 1, row, samples[row]->bytes.data(), length), 0U);
            }
        }
    }
    ASSERT_EQ(insert.execute(), rows);
}

TEST_P(RoundTripTest, WhatWentInComesOut) {
    const uint64_t seed = seedOfRun();
    SCOPED_TRACE("ORMEL_SEED=" + std::to_string(seed));
    Random random(seed);
    Connection db = connect();
    for (int round = 0; round < 30; ++round) {
        const std::string table = "r" + std::to_string(round);
        const size_t rows = 1 + below(random, 40);
        std::string create = "create table " + table + " (id integer";
        std::string insert = "insert into " + table + " values (:1";
        std::vector<Column> columns(1 + below(random, 10));
        for (size_t i = 0; i < columns.size(); ++i) {
            auto &[kind, samples] = columns[i];
            kind = kinds().at(below(random, kinds().size()));
            create += ", c" + std::to_string(i) + " " + kind.words;
            insert += ", :" + std::to_string(i + 2);
            for (size_t row = 0; row < rows; ++row)
                samples.push_back(below(random, 8) == 0 ? std::nullopt : std::optional(kind.make(random, kind.length)));
        }
        db.run(create + ")");
        (below(random, 2) == 0 ? insertRows : insertArrays)(db, insert + ")", columns, rows);
        Statement query(db, "select * from " + table + " order by id");
        query.readAhead(1 + static_cast<uint32_t>(below(random, 50)));
        query.execute();
        for (size_t row = 0; row < rows; ++row) {
            ASSERT_TRUE(query.fetch());
            for (uint32_t i = 0; i < columns.size(); ++i) {
                const std::optional<Sample> &sample = columns[i].second[row];
                ASSERT_EQ(query.value(i + 1), sample ? Value(sample->expected) : std::nullopt)
                    << create << "), row " << row << ", column c" << i;
            }
        }
        EXPECT_FALSE(query.fetch());
        db.commit();
    }
}

} // namespace
