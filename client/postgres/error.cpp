#include "error.h"

#include <algorithm>
#include <charconv>

namespace ormel::client::postgres {

namespace {

constexpr uint32_t kLettersInState = 99999;

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

std::string field(const PGresult *result, int code) {
    const char *text = PQresultErrorField(result, code);
    return text != nullptr ? onOneLine(text) : std::string();
}

} // namespace

Error makeError(std::string_view state, std::string_view words) {
    return {codeOf(state), std::string(state) + ": " + std::string(words)};
}

Error errorOf(const PGresult *result) {
    std::string words = field(result, PG_DIAG_MESSAGE_PRIMARY);
    if (words.empty())
        words = onOneLine(PQresultErrorMessage(result));
    if (const std::string detail = field(result, PG_DIAG_MESSAGE_DETAIL); !detail.empty())
        words += "; " + detail;
    if (const std::string hint = field(result, PG_DIAG_MESSAGE_HINT); !hint.empty())
        words += "; " + hint;
    const std::string state = field(result, PG_DIAG_SQLSTATE);
    return makeError(state.empty() ? kNoState : state, words);
}

std::string wordsOf(const PGconn *connection) {
    return onOneLine(PQerrorMessage(connection));
}

void refuse(std::string_view state, std::string_view words) {
    throw makeError(state, words);
}

} // namespace ormel::client::postgres
