#include "cli/csv_reader.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "cli/error.h"

namespace {

using namespace cli;
using Fields = std::vector<std::optional<std::string>>;

constexpr std::nullopt_t none = std::nullopt;

class Csv : public testing::Test {
protected:
    void SetUp() override {
        char name[] = "/tmp/ormel-csv-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        directory_ = name;
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    std::string file(const std::string &text) const {
        std::ofstream(directory_ + "/x.csv", std::ios::binary) << text;
        return directory_ + "/x.csv";
    }

    std::vector<CsvRecord> records(const std::string &text, char separator = ',') const {
        CsvReader reader(file(text), "x.csv", separator);
        std::vector<CsvRecord> all;
        CsvRecord record{};
        while (reader.next(record))
            all.push_back(record);
        EXPECT_EQ(reader.size(), text.size());
        EXPECT_EQ(reader.read(), text.size());
        return all;
    }

    std::vector<Fields> fields(const std::string &text, char separator = ',') const {
        std::vector<Fields> all;
        for (const CsvRecord &record : records(text, separator))
            all.push_back(record.fields);
        return all;
    }

    std::string refusal(const std::string &text) const {
        try {
            records(text);
        } catch (const Failure &failure) {
            return failure.what();
        }
        return "taken";
    }

    std::string directory_;
};

TEST_F(Csv, SplitsFieldsAndRecords) {
    EXPECT_EQ(fields("a,b\nc,d\n"), (std::vector<Fields>{{"a", "b"}, {"c", "d"}}));
    EXPECT_EQ(fields("a;b,c\n", ';'), (std::vector<Fields>{{"a", "b,c"}}));
    EXPECT_EQ(fields("a\tb c\n", '\t'), (std::vector<Fields>{{"a", "b c"}}));
    EXPECT_EQ(fields(""), std::vector<Fields>{});
}

TEST_F(Csv, TheLastLineNeedsNoEnd) {
    EXPECT_EQ(fields("a,b\nc,"), (std::vector<Fields>{{"a", "b"}, {"c", none}}));
    EXPECT_EQ(fields("a,\"b\""), (std::vector<Fields>{{"a", "b"}}));
}

TEST_F(Csv, LineEndsOfOtherSystemsAndBlankLines) {
    EXPECT_EQ(fields("a,b\r\nc,d\r\n"), (std::vector<Fields>{{"a", "b"}, {"c", "d"}}));
    EXPECT_EQ(fields("\n\na\n\r\n\nb\n\n"), (std::vector<Fields>{{"a"}, {"b"}}));
}

TEST_F(Csv, FieldsStayAsTheyStand) {
    EXPECT_EQ(fields(" a , b\t,\u00e9\n"), (std::vector<Fields>{{" a ", " b\t", "\u00e9"}}));
    EXPECT_EQ(fields(std::string("a\0b,c\n", 6)), (std::vector<Fields>{{std::string("a\0b", 3), "c"}}));
    EXPECT_EQ(fields(",,\n"), (std::vector<Fields>{{none, none, none}}));
}

TEST_F(Csv, QuotesHoldSeparatorsQuotesAndLineEnds) {
    EXPECT_EQ(fields("\"a,b\",\"say \"\"hi\"\"\",\"x\r\ny\"\n"),
              (std::vector<Fields>{{"a,b", "say \"hi\"", "x\r\ny"}}));
    EXPECT_EQ(fields("\"\"\n"), (std::vector<Fields>{{""}}));
}

TEST_F(Csv, QuotesTellAnEmptyFieldFromNone) {
    EXPECT_EQ(fields("\"\",,\"\"\r\n,\"\"\n,"), (std::vector<Fields>{{"", none, ""}, {none, ""}, {none, none}}));
    EXPECT_EQ(fields("\"\""), (std::vector<Fields>{{""}}));
}

TEST_F(Csv, BlankLinesCanBeRecords) {
    CsvReader reader(file("\n\"a\n\n\"\n\r\n\"\"\nb"), "x.csv", ',');
    reader.takeBlankLines();
    std::vector<std::pair<uint64_t, Fields>> all;
    for (CsvRecord record{}; reader.next(record);)
        all.emplace_back(record.line, record.fields);
    EXPECT_EQ(all, (std::vector<std::pair<uint64_t, Fields>>{
                       {1, {none}}, {2, {"a\n\n"}}, {5, {none}}, {6, {""}}, {7, {"b"}}}));
}

TEST_F(Csv, FieldsOfAnySize) {
    const std::string large(3000000, 'x');
    std::string lines;
    for (int i = 0; i < 200000; ++i)
        lines += "line\n";
    EXPECT_EQ(fields(large + ",\"" + lines + "\"\n"), (std::vector<Fields>{{large, lines}}));
}

TEST_F(Csv, AByteOrderMarkIsNoPartOfTheFirstField) {
    EXPECT_EQ(fields("\xEF\xBB\xBF"
                     "a,b\n"),
              (std::vector<Fields>{{"a", "b"}}));
    EXPECT_EQ(fields("\xEF\xBB\xBF\"a\",b\n"), (std::vector<Fields>{{"a", "b"}}));
}

TEST_F(Csv, ARecordKnowsTheLineOnWhichItBegins) {
    const auto all = records("a,b\n\n\"c\nc\nc\",d\ne,f");
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0].line, 1u);
    EXPECT_EQ(all[1].line, 3u);
    EXPECT_EQ(all[2].line, 6u);
}

TEST_F(Csv, QuotesThatMeanNothingAreRefused) {
    const std::string hint =
        ": a quote stands where none may; a field with a quote in it is written \"like \"\"this\"\"\"";
    EXPECT_EQ(refusal("a,b\nc,x\"y\n"), "x.csv:2: field 2" + hint);
    EXPECT_EQ(refusal("\"a\" ,b\n"), "x.csv:1: field 1" + hint);
    EXPECT_EQ(refusal("a,b\n\"c\nd,e\n"),
              "x.csv:2: field 1: the file ends inside a quoted field; close it with a quote");
}

TEST_F(Csv, FilesThatCannotBeRead) {
    const auto open = [&](const std::string &path) {
        try {
            CsvReader reader(path, "named", ',');
            CsvRecord record{};
            reader.next(record);
        } catch (const Failure &failure) {
            return std::string(failure.what());
        }
        return std::string("taken");
    };
    EXPECT_EQ(open(directory_ + "/none"), "cannot read named: No such file or directory");
    EXPECT_EQ(open(directory_), "cannot read named: Is a directory");
}

} // namespace
