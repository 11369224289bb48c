#include "placeholders.h"

#include <algorithm>
#include <cctype>

#include "common/sql_words.h"
#include "errors.h"

namespace ormel::client {

namespace {

constexpr uint32_t kMostParameters = 65535;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isWord(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || (c & 0x80) != 0;
}

// Walks over a text and copies it, placeholders excepted.
class Scanner {
public:
    Scanner(std::string_view sql, const Dialect &dialect) : sql_(sql), dialect_(dialect) {}

    Rewritten run() {
        out_.sql.reserve(sql_.size());
        while (at_ < sql_.size())
            step();
        return std::move(out_);
    }

private:
    char peek(size_t ahead = 0) const { return at_ + ahead < sql_.size() ? sql_[at_ + ahead] : '\0'; }
    bool startsWith(std::string_view text) const { return sql_.substr(at_, text.size()) == text; }

    void copy(size_t count) {
        out_.sql.append(sql_.substr(at_, count));
        at_ += count;
    }
    // Copies up to and with a closing text, or to the end.
    void copyThrough(std::string_view close, size_t from) {
        const size_t end = sql_.find(close, at_ + from);
        copy(end == std::string_view::npos ? sql_.size() - at_ : end + close.size() - at_);
    }

    void step() {
        const char c = peek();
        if (c == '\'' || c == '"' || (c == '`' && dialect_.backtickIdentifiers))
            copyThrough(sql_.substr(at_, 1), 1); // a doubled quote begins another text, which comes to the same
        else if (dialect_.escapeStrings && (startsWith("E'") || startsWith("e'")))
            copy(escapedLength(sql_.substr(at_)));
        else if (c == '[' && dialect_.bracketIdentifiers)
            copyThrough("]", 1);
        else if (startsWith("--"))
            copyThrough("\n", 2);
        else if (startsWith("/*"))
            copyComment();
        else if (c == '$' && dialect_.dollarQuotes)
            copyDollarQuoted();
        else if (isWord(c))
            copyWord();
        else if (startsWith("::"))
            copy(2);
        else if (c == ':' && isDigit(peek(1)))
            replace();
        else
            copy(1);
    }

    void copyComment() {
        if (!dialect_.nestedComments)
            return copyThrough("*/", 2);
        size_t depth = 0;
        do {
            const bool opens = startsWith("/*");
            const bool closes = startsWith("*/");
            depth = depth + (opens ? 1 : 0) - (closes ? 1 : 0);
            copy(opens || closes ? 2 : 1);
        } while (depth > 0 && at_ < sql_.size());
    }

    void copyDollarQuoted() {
        size_t length = 1;
        while (isWord(peek(length)) && (length > 1 || !isDigit(peek(length))))
            ++length;
        if (peek(length) != '$')
            return copy(1);
        copyThrough(sql_.substr(at_, length + 1), length + 1);
    }

    // A whole name or number, so that a "$" or an "E" inside it begins nothing.
    void copyWord() {
        size_t length = 1;
        while (isWord(peek(length)) || peek(length) == '$')
            ++length;
        copy(length);
    }

    void replace() {
        uint32_t number = 0;
        size_t length = 1;
        for (; isDigit(peek(length)); ++length)
            number = std::min(number * 10 + static_cast<uint32_t>(peek(length) - '0'), kMostParameters + 1);
        if (number == 0 || number > kMostParameters)
            fail(kMisuse, "a placeholder's number is 1 to " + std::to_string(kMostParameters) + ": " +
                              std::string(sql_.substr(at_, length)));
        out_.sql += dialect_.placeholder + std::to_string(number);
        out_.parameters = std::max(out_.parameters, number);
        at_ += length;
    }

    std::string_view sql_;
    const Dialect &dialect_;
    size_t at_ = 0;
    Rewritten out_;
};

} // namespace

Rewritten rewritePlaceholders(std::string_view sql, const Dialect &dialect) {
    return Scanner(sql, dialect).run();
}

} // namespace ormel::client
