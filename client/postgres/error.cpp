#include "error.h"

#include <algorithm>
#include <charconv>

namespace ormel::client::postgres {

namespace {

constexpr uint32_t kLettersInState = 99999;
constexpr size_t kStateLength = 5;

uint32_t codeOf(std::string_view state) {
    uint32_t code = 0;
    const auto parsed = std::from_chars(state.data(), state.data() + state.size(), code);
    return parsed.ec == std::errc() && parsed.ptr == state.data() + state.size() ? code : kLettersInState;
}

std::string onOneLine(std::string_view text) {
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\n' || c == '\t'; }, ' ');
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

// Five digits and capitals, and a colon behind them.
bool isState(std::string_view text) {
    const auto inState = [](char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z'); };
    return text.size() > kStateLength + 1 && text.substr(kStateLength, 2) == ": " &&
           std::all_of(text.begin(), text.begin() + kStateLength, inState);
}

std::string field(const PGresult *result, int code) {
    const char *text = PQresultErrorField(result, code);
    return text != nullptr ? onOneLine(text) : std::string();
}

} // namespace

Error makeError(std::string_view state, std::string_view words) {
    return {codeOf(state), std::string(state) + ": " + std::string(words)};
}

std::string_view stateOf(const Error &error) {
    return std::string_view(error.message).substr(0, kStateLength);
}

std::string_view wordsIn(const Error &error) {
    return std::string_view(error.message).substr(kStateLength + 2);
}

Error errorOf(const PGresult *result) {
    std::string words = field(result, PG_DIAG_MESSAGE_PRIMARY);
    if (words.empty())
        words = onOneLine(PQresultErrorMessage(result));
    addSentence(words, field(result, PG_DIAG_MESSAGE_DETAIL));
    addSentence(words, field(result, PG_DIAG_MESSAGE_HINT));
    const std::string state = field(result, PG_DIAG_SQLSTATE);
    return makeError(state.empty() ? kNoState : state, words);
}

std::string_view stateIn(std::string_view words) {
    constexpr std::string_view mark = ":  "; // behind the severity
    for (size_t at = words.find(mark); at != std::string_view::npos; at = words.find(mark, at + 1))
        if (const std::string_view rest = words.substr(at + mark.size()); isState(rest))
            return rest.substr(0, kStateLength);
    return "";
}

void addSentence(std::string &words, std::string_view sentence) {
    if (sentence.empty())
        return;
    if (!words.empty())
        words += words.back() == '.' ? " " : "; ";
    words += sentence;
}

std::string wordsOf(const PGconn *connection) {
    return onOneLine(PQerrorMessage(connection));
}

void refuse(std::string_view state, std::string_view words) {
    throw makeError(state, words);
}

} // namespace ormel::client::postgres
