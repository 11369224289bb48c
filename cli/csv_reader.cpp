#include "csv_reader.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <sys/stat.h>

#include "error.h"

namespace cli {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

constexpr int kBetweenRecords = 0; // of csv_parser::pstate
constexpr size_t kLeastGrowth = 128;

int isNoSpace(unsigned char) {
    return 0;
}

bool isBlank(std::string_view line) {
    return line == "\n" || line == "\r\n";
}

} // namespace

CsvReader::CsvReader(const std::string &path, std::string name, char separator)
    : name_(std::move(name)), file_(std::fopen(path.c_str(), "re")) {
    if (file_ == nullptr)
        throw Failure("cannot read " + name_ + ": " + std::strerror(errno));
    struct stat status {};
    if (fstat(fileno(file_.get()), &status) == 0 && S_ISREG(status.st_mode))
        size_ = static_cast<uint64_t>(status.st_size);
    csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI | CSV_EMPTY_IS_NULL);
    csv_set_delim(&parser_, static_cast<unsigned char>(separator));
    csv_set_space_func(&parser_, isNoSpace); // blanks belong to the fields
}

CsvReader::~CsvReader() {
    csv_free(&parser_);
    std::free(text_);
}

void CsvReader::takeField(void *text, size_t length, void *self) noexcept {
    auto &fields = static_cast<CsvReader *>(self)->current_.fields;
    if (text == nullptr)
        fields.emplace_back();
    else
        fields.emplace_back(std::in_place, static_cast<char *>(text), length);
}

void CsvReader::takeRecord(int, void *self) noexcept {
    auto *reader = static_cast<CsvReader *>(self);
    reader->complete_.push_back(std::move(reader->current_));
    reader->current_ = {reader->line_, {}};
}

void CsvReader::malformed() const {
    throw Failure(place(current_.line) + ": field " + std::to_string(current_.fields.size() + 1) +
                  ": a quote stands where none may; a field with a quote in it is written \"like \"\"this\"\"\"");
}

// The parser is given a line at a time, so that every record knows where it begins.
bool CsvReader::feedLine() {
    const ssize_t length = getline(&text_, &capacity_, file_.get());
    if (length < 0) {
        if (std::feof(file_.get()) == 0)
            throw Failure("cannot read " + name_ + ": " + std::strerror(errno));
        return false;
    }
    ++line_;
    read_ += static_cast<uint64_t>(length);
    std::string_view line(text_, static_cast<size_t>(length));
    if (line_ == 1 && line.substr(0, kByteOrderMark.size()) == kByteOrderMark)
        line.remove_prefix(kByteOrderMark.size());
    if (parser_.pstate == kBetweenRecords) {
        current_.line = line_;
        if (blankIsRecord_ && isBlank(line))
            complete_.push_back({line_, {std::nullopt}});
    }
    // The parser's buffer grows by steps of one size, which would take the square of a large field's time.
    csv_set_blk_size(&parser_, std::max({kLeastGrowth, line.size(), csv_get_buffer_size(&parser_)}));
    if (csv_parse(&parser_, line.data(), line.size(), takeField, takeRecord, this) != line.size())
        malformed();
    return true;
}

void CsvReader::finish() {
    atEnd_ = true;
    if (csv_fini(&parser_, takeField, takeRecord, this) != 0)
        throw Failure(place(current_.line) + ": field " + std::to_string(current_.fields.size() + 1) +
                      ": the file ends inside a quoted field; close it with a quote");
}

bool CsvReader::next(CsvRecord &record) {
    while (complete_.empty() && !atEnd_)
        if (!feedLine())
            finish();
    if (complete_.empty())
        return false;
    record = std::move(complete_.front());
    complete_.pop_front();
    return true;
}

} // namespace cli
