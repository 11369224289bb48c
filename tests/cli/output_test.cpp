#include "cli/output.h"

#include <clocale>
#include <cstring>
#include <limits>
#include <sstream>

#include <gtest/gtest.h>
#include <ormeldb.h>

#include "cli/error.h"

namespace {

using namespace cli;

// Owns the bytes of a row's cells.
class Row {
public:
    template <typename Number> Row &number(uint32_t type, Number value) {
        std::string bytes(sizeof value, '\0');
        std::memcpy(bytes.data(), &value, sizeof value);
        return text(bytes, type);
    }
    Row &text(std::string bytes, uint32_t type = QDC_TYPE_VARCHAR) {
        values_.emplace_back(type, std::move(bytes));
        return *this;
    }
    Row &null() {
        values_.emplace_back(QDC_TYPE_VARCHAR, std::nullopt);
        return *this;
    }
    std::vector<Cell> cells() const {
        std::vector<Cell> result;
        for (const auto &[type, bytes] : values_) {
            result.push_back({type, std::nullopt});
            if (bytes)
                result.back().bytes = std::span(reinterpret_cast<const uint8_t *>(bytes->data()), bytes->size());
        }
        return result;
    }

private:
    std::vector<std::pair<uint32_t, std::optional<std::string>>> values_;
};

const std::vector<Heading> kOneText = {{"A"}};

class Output : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr); }

    static std::string printed(Format format, const std::vector<Heading> &headings, const std::vector<Row> &rows) {
        std::ostringstream out;
        const auto writer = makeWriter(format, headings, out);
        for (const Row &row : rows)
            writer->add(row.cells());
        writer->finish();
        return out.str();
    }

    static std::string jsonOf(const Row &row) { return printed(Format::jsonLines, kOneText, {row}); }
};

TEST_F(Output, TableTellsNullAndLinesNumbersUp) {
    EXPECT_EQ(printed(Format::table, {{"ID", Align::right}, {"A"}},
                      {Row().number(QDC_TYPE_INT32, 7).text(""), Row().null().null()}),
              "   ID | A\n"
              "------+------\n"
              "    7 |\n"
              " NULL | NULL\n"
              "(2 rows)\n");
}

TEST_F(Output, CsvQuotesEveryValueButNull) {
    EXPECT_EQ(printed(Format::csv, {{"ID"}, {"A\"B"}},
                      {Row().number(QDC_TYPE_INT32, 7).text(""), Row().null().null(),
                       Row().number(QDC_TYPE_INT32, -1).text("a,\"b\"\r\nc")}),
              "\"ID\",\"A\"\"B\"\n"
              "\"7\",\"\"\n"
              ",\n"
              "\"-1\",\"a,\"\"b\"\"\r\nc\"\n");
}

TEST_F(Output, CsvKeepsBytesAsTheyAre) {
    EXPECT_EQ(printed(Format::csv, kOneText, {Row().text(std::string("a\0\xFF", 3))}),
              std::string("\"A\"\n\"a\0\xFF\"\n", 10));
}

TEST_F(Output, JsonArrayHasARowALine) {
    EXPECT_EQ(printed(Format::jsonArray, kOneText, {}), "[]\n");
    EXPECT_EQ(printed(Format::jsonArray, kOneText, {Row().text("x")}), "[\n{\"A\":\"x\"}\n]\n");
    EXPECT_EQ(printed(Format::jsonArray, kOneText, {Row().text("x"), Row().null()}),
              "[\n{\"A\":\"x\"},\n{\"A\":null}\n]\n");
}

TEST_F(Output, JsonLinesEndWithEachRow) {
    EXPECT_EQ(printed(Format::jsonLines, kOneText, {}), "");
    EXPECT_EQ(printed(Format::jsonLines, kOneText, {Row().text("x"), Row().null()}), "{\"A\":\"x\"}\n{\"A\":null}\n");
}

TEST_F(Output, JsonKeepsNumbersExact) {
    EXPECT_EQ(jsonOf(Row().number(QDC_TYPE_INT64, std::numeric_limits<int64_t>::max())),
              "{\"A\":9223372036854775807}\n");
    EXPECT_EQ(jsonOf(Row().number(QDC_TYPE_INT64, std::numeric_limits<int64_t>::min())),
              "{\"A\":-9223372036854775808}\n");
    EXPECT_EQ(jsonOf(Row().number(QDC_TYPE_INT32, -1)), "{\"A\":-1}\n");
    EXPECT_EQ(jsonOf(Row().number(QDC_TYPE_DOUBLE, 0.1)), "{\"A\":0.1}\n");
    EXPECT_EQ(jsonOf(Row().number(QDC_TYPE_DOUBLE, 1e300)), "{\"A\":1e+300}\n");
    EXPECT_EQ(jsonOf(Row().number(QDC_TYPE_BOOL, 1)), "{\"A\":true}\n");
    EXPECT_EQ(jsonOf(Row().text("12345678901234567.89", QDC_TYPE_TEXT)), "{\"A\":\"12345678901234567.89\"}\n");
}

TEST_F(Output, JsonHasTextForWhatItHasNoNumberFor) {
    EXPECT_EQ(jsonOf(Row().number(QDC_TYPE_DOUBLE, std::numeric_limits<double>::infinity())), "{\"A\":\"inf\"}\n");
    EXPECT_EQ(jsonOf(Row().number(QDC_TYPE_DOUBLE, -std::numeric_limits<double>::infinity())), "{\"A\":\"-inf\"}\n");
    EXPECT_EQ(jsonOf(Row().text(std::string("\0\xFF", 2), QDC_TYPE_BLOB)), "{\"A\":\"00ff\"}\n");
}

TEST_F(Output, JsonEscapesText) {
    EXPECT_EQ(jsonOf(Row().text(std::string("\"\\\n\0\x1f", 5))), "{\"A\":\"\\\"\\\\\\n\\u0000\\u001f\"}\n");
    EXPECT_EQ(jsonOf(Row().text("Zo\u00eb \u732b", QDC_TYPE_CLOB)), "{\"A\":\"Zo\u00eb \u732b\"}\n");
}

TEST_F(Output, JsonRefusesWhatItCannotCarry) {
    std::ostringstream out;
    const auto writer = makeWriter(Format::jsonLines, kOneText, out);
    writer->add(Row().text("x").cells());
    try {
        writer->add(Row().text("ab\xFF").cells());
        FAIL() << "taken";
    } catch (const Failure &failure) {
        EXPECT_STREQ(failure.what(),
                     "row 2: A: the text is no UTF-8 from byte 3 on, which JSON cannot carry; use --csv, "
                     "or --fields without it");
    }
    EXPECT_EQ(out.str(), "{\"A\":\"x\"}\n");
    EXPECT_THROW(makeWriter(Format::jsonArray, {kOneText[0], kOneText[0]}, out), Failure);
}

TEST_F(Output, AStreamThatCannotBeWrittenFails) {
    for (const Format format : {Format::table, Format::csv, Format::jsonArray, Format::jsonLines}) {
        std::ostringstream out;
        const auto writer = makeWriter(format, kOneText, out);
        writer->add(Row().text("x").cells());
        out.setstate(std::ios::badbit);
        EXPECT_THROW(writer->finish(), Failure);
    }
}

} // namespace
