// Every field of every row of a large result: by position, and by names that lie as programs have them.
#include <array>
#include <benchmark/benchmark.h>
#include <map>
#include <string>
#include <vector>

#include <ormeldb.h>

#include "check.h"
#include "database.h"
#include "home.h"

namespace {

using namespace bench;

constexpr uint32_t kRows = 20000;

// Of a wide table; a narrow one has the first of them.
constexpr std::array<const char *, 32> kNames = {
    "id",    "name",    "city",   "height", "born",    "active",  "street",  "number",
    "zip",   "country", "phone",  "mobile", "email",   "website", "company", "branch",
    "title", "manager", "salary", "bonus",  "started", "ended",   "reviews", "vacation",
    "sick",  "badge",   "floor",  "room",   "desk",    "parking", "remarks", "changed"};

// The whole of a table of so many columns.
class Rows {
public:
    explicit Rows(size_t columns) {
        const std::string table = "fields" + std::to_string(columns);
        std::string declared;
        std::string values;
        for (size_t i = 0; i < columns; ++i) {
            declared += (i == 0 ? "" : ", ") + std::string(kNames[i]) + " INTEGER";
            values += i == 0 ? "i" : ", i + " + std::to_string(i);
        }
        run("CREATE TABLE IF NOT EXISTS " + table + " (" + declared + "); DELETE FROM " + table +
            "; WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(kRows) +
            ") INSERT INTO " + table + " SELECT " + values + " FROM n");
        if (ORMEL_SelectRec2(table.c_str(), nullptr, 0, &result_) != ORMEL_OK || result_.uiRecNum != kRows)
            die("no rows of " + table);
    }
    ~Rows() { ORMEL_SelectResultClear(&result_); }
    Rows(const Rows &) = delete;
    Rows &operator=(const Rows &) = delete;
    const ORMEL_SELECT_RESULT *get() const { return &result_; }

private:
    ORMEL_SELECT_RESULT result_ = {};
};

// Reads result after result, field after field; an iteration is one field.
template <class Read> void readFields(benchmark::State &state, size_t columns, Read read) {
    const Rows rows(columns);
    while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(kRows * columns)))
        for (uint32_t row = 0; row < kRows; ++row)
            for (size_t i = 0; i < columns; ++i)
                benchmark::DoNotOptimize(read(rows.get(), row, i));
}

void byPosition(benchmark::State &state, size_t columns) {
    readFields(state, columns, [](const ORMEL_SELECT_RESULT *result, uint32_t row, size_t i) {
        return ORMEL_ResultBinaryGetByPos(result, row, static_cast<int32_t>(i));
    });
}

void byLiteral(benchmark::State &state, size_t columns) {
    readFields(state, columns, [](const ORMEL_SELECT_RESULT *result, uint32_t row, size_t i) {
        return ORMEL_ResultBinaryGet(result, row, kNames[i]);
    });
}

// As ORMEL_AllFieldsGet hands the names out.
void byListedName(benchmark::State &state, size_t columns) {
    const std::string table = "fields" + std::to_string(columns);
    const Rows made(columns);
    std::array<std::array<char, ORMEL_NAME_SIZE>, kNames.size()> names = {};
    uint8_t count = 0;
    check(state, ORMEL_AllFieldsGet(table.c_str(), reinterpret_cast<char(*)[ORMEL_NAME_SIZE]>(names.data()),
                                    static_cast<int32_t>(names.size()), &count));
    readFields(state, columns, [&](const ORMEL_SELECT_RESULT *result, uint32_t row, size_t i) {
        return ORMEL_ResultBinaryGet(result, row, names[i].data());
    });
}

void byString(benchmark::State &state, size_t columns) {
    const std::vector<std::string> names(kNames.begin(), kNames.begin() + static_cast<std::ptrdiff_t>(columns));
    readFields(state, columns, [&](const ORMEL_SELECT_RESULT *result, uint32_t row, size_t i) {
        return ORMEL_ResultBinaryGet(result, row, names[i].c_str());
    });
}

BENCHMARK_CAPTURE(byPosition, 4, 4)->Name("field of 4 columns, by position");
BENCHMARK_CAPTURE(byPosition, 32, 32)->Name("field of 32 columns, by position");
BENCHMARK_CAPTURE(byLiteral, 4, 4)->Name("field of 4 columns, by name: literal");
BENCHMARK_CAPTURE(byLiteral, 32, 32)->Name("field of 32 columns, by name: literal");
BENCHMARK_CAPTURE(byListedName, 4, 4)->Name("field of 4 columns, by name: array");
BENCHMARK_CAPTURE(byListedName, 32, 32)->Name("field of 32 columns, by name: array");
BENCHMARK_CAPTURE(byString, 4, 4)->Name("field of 4 columns, by name: strings");
BENCHMARK_CAPTURE(byString, 32, 32)->Name("field of 32 columns, by name: strings");

} // namespace
