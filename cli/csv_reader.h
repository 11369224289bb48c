// Records of a CSV file, one after the other.
#pragma once

#include <cstdint>
#include <cstdio>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <csv.h>

namespace cli {

struct CsvRecord {
    uint64_t line;                                  // on which the record begins, from 1
    std::vector<std::optional<std::string>> fields; // none: nothing stands there, not even quotes
};

// Reads a file in memory of the size of its longest record. Fields are as they stand, blanks included; a field with a
// separator, a quote or a line end in it is quoted with ", quotes inside doubled. Blank lines are passed over unless
// they are records.
class CsvReader {
public:
    // The name is what messages call the file. Throws Failure.
    CsvReader(const std::string &path, std::string name, char separator);
    ~CsvReader();
    CsvReader(const CsvReader &) = delete;
    CsvReader &operator=(const CsvReader &) = delete;

    // From now on a blank line is a record of one field, in which nothing stands.
    void takeBlankLines() { blankIsRecord_ = true; }

    // The next record; false at the end. Throws Failure.
    bool next(CsvRecord &record);

    // "name:line", the place of a record in messages.
    std::string place(uint64_t line) const { return name_ + ":" + std::to_string(line); }

    // Bytes of the file, 0 where that is not known, and how many of them were read.
    uint64_t size() const { return size_; }
    uint64_t read() const { return read_; }

private:
    struct Close {
        void operator()(std::FILE *file) const { std::fclose(file); }
    };

    static void takeField(void *text, size_t length, void *self) noexcept;
    static void takeRecord(int lineEnd, void *self) noexcept;
    bool feedLine();
    void finish();
    [[noreturn]] void malformed() const;

    std::string name_;
    std::unique_ptr<std::FILE, Close> file_;
    csv_parser parser_{};
    char *text_ = nullptr; // the current line, which getline(3) allocates
    size_t capacity_ = 0;
    uint64_t line_ = 0;
    uint64_t size_ = 0;
    uint64_t read_ = 0;
    bool atEnd_ = false;
    bool blankIsRecord_ = false;
    CsvRecord current_{1, {}};
    std::deque<CsvRecord> complete_;
};

} // namespace cli
