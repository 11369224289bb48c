#include "output.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ostream>

#include <csv.h>
#include <nlohmann/json.hpp>
#include <ormeldb.h>

#include "error.h"
#include "text.h"
#include "value.h"

namespace cli {
namespace {

void write(std::ostream &out, std::string_view text) {
    if (!out.write(text.data(), static_cast<std::streamsize>(text.size())))
        throw Failure(std::string("cannot write the output: ") + std::strerror(errno));
}

// --- An aligned table ------------------------------------------------------------------------------------------

class TableWriter : public RowWriter {
public:
    TableWriter(const std::vector<Heading> &headings, std::ostream &out) : out_(out), grid_(headings) {}

    void add(const std::vector<Cell> &cells) override {
        std::vector<std::string> texts;
        for (const Cell &cell : cells)
            texts.push_back(cell.bytes ? formatValue(cell.type, *cell.bytes) : "NULL");
        grid_.add(texts);
    }

    void finish() override {
        grid_.print(out_);
        write(out_, "(" + rows(grid_.size()) + ")\n");
        flush(out_);
    }

private:
    std::ostream &out_;
    TextTable grid_;
};

// --- CSV -------------------------------------------------------------------------------------------------------

// The field in quotes, which tell an empty text from NULL.
void addField(std::string &line, const std::string &text) {
    const size_t start = line.size();
    const size_t most = 2 * text.size() + 2;
    line.resize(start + most);
    line.resize(start + csv_write(line.data() + start, most, text.data(), text.size()));
}

class CsvWriter : public RowWriter {
public:
    CsvWriter(const std::vector<Heading> &headings, std::ostream &out) : out_(out) {
        std::string line;
        for (const Heading &heading : headings)
            addField(line += line.empty() ? "" : ",", heading.name);
        write(out_, line + "\n");
    }

    void add(const std::vector<Cell> &cells) override {
        std::string line;
        for (size_t i = 0; i < cells.size(); ++i) {
            line += i == 0 ? "" : ",";
            if (cells[i].bytes)
                addField(line, formatValue(cells[i].type, *cells[i].bytes));
        }
        write(out_, line + "\n");
    }

    void finish() override { flush(out_); }

private:
    std::ostream &out_;
};

// --- JSON ------------------------------------------------------------------------------------------------------

// What JSON has no number for, the infinities, is a text, and so are decimals, of which readers would lose digits.
bool isJsonWord(uint32_t type, const std::string &text) {
    const bool isFinite = text.back() >= '0' && text.back() <= '9';
    return type == QDC_TYPE_BOOL || (isNumber(type) && isFinite);
}

class JsonWriter : public RowWriter {
public:
    // What stands in front of the first row and of every other, behind each, and at the end, also where there are none.
    struct Frame {
        const char *first;
        const char *next;
        const char *behind;
        const char *end;
        const char *none;
    };

    JsonWriter(const std::vector<Heading> &headings, std::ostream &out, const Frame &frame) : out_(out), frame_(frame) {
        for (const Heading &heading : headings)
            addName(heading.name);
    }

    void add(const std::vector<Cell> &cells) override {
        std::string line = count_++ == 0 ? frame_.first : frame_.next;
        for (size_t i = 0; i < cells.size(); ++i) {
            line += i == 0 ? "{" : ",";
            line += keys_[i];
            line += cells[i].bytes ? value(names_[i], cells[i].type, *cells[i].bytes) : "null";
        }
        write(out_, line + "}" + frame_.behind);
    }

    void finish() override {
        write(out_, count_ == 0 ? frame_.none : frame_.end);
        flush(out_);
    }

private:
    // Long names that begin the same are cut to one; readers of an object would keep the last of its values.
    void addName(const std::string &name) {
        if (std::find(names_.begin(), names_.end(), name) != names_.end())
            throw Failure("two columns are called " + name +
                          " in the 27 bytes that the library carries of a name; use --csv, or the command sql");
        names_.push_back(name);
        keys_.push_back(json(name, name) + ":");
    }

    std::string value(const std::string &name, uint32_t type, std::span<const uint8_t> bytes) const {
        const std::string text = formatValue(type, bytes);
        return isJsonWord(type, text) ? text : json(name, text);
    }

    // The text in quotes. JSON is UTF-8, and replacing what is not would lose it.
    std::string json(const std::string &name, const std::string &text) const {
        if (const auto bad = firstInvalidByte(text))
            throw Failure("row " + std::to_string(count_) + ": " + printable(name) +
                          ": the text is no UTF-8 from byte " + std::to_string(*bad + 1) +
                          " on, which JSON cannot carry; use --csv, or --fields without it");
        return nlohmann::json(text).dump();
    }

    std::ostream &out_;
    Frame frame_;
    std::vector<std::string> names_;
    std::vector<std::string> keys_; // the names as they stand in front of values
    uint64_t count_ = 0;
};

constexpr JsonWriter::Frame kArray = {"[\n", ",\n", "", "\n]\n", "[]\n"};
constexpr JsonWriter::Frame kLines = {"", "", "\n", "", ""};

} // namespace

void flush(std::ostream &out) {
    if (!out.flush())
        throw Failure(std::string("cannot write the output: ") + std::strerror(errno));
}

void writeBytes(std::span<const uint8_t> bytes, std::ostream &out) {
    write(out, {reinterpret_cast<const char *>(bytes.data()), bytes.size()});
    flush(out);
}

std::unique_ptr<RowWriter> makeWriter(Format format, const std::vector<Heading> &headings, std::ostream &out) {
    switch (format) {
    case Format::csv:
        return std::make_unique<CsvWriter>(headings, out);
    case Format::jsonArray:
        return std::make_unique<JsonWriter>(headings, out, kArray);
    case Format::jsonLines:
        return std::make_unique<JsonWriter>(headings, out, kLines);
    default:
        return std::make_unique<TableWriter>(headings, out);
    }
}

} // namespace cli
