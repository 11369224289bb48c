#include "insert_columns.h"

#include <cctype>
#include <strings.h>
#include <vector>

namespace ormel::client {

namespace {

std::string_view trimmed(std::string_view text) {
    const auto blank = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    while (!text.empty() && blank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && blank(text.back()))
        text.remove_suffix(1);
    return text;
}

bool isWord(std::string_view text, std::string_view word) {
    return text.size() == word.size() && strncasecmp(text.data(), word.data(), word.size()) == 0;
}

// The items between the next parentheses, which are taken off the text together with what stands before them; that is
// left in lead.
std::vector<std::string_view> takeList(std::string_view &text, std::string_view &lead) {
    const size_t open = text.find('(');
    const size_t close = text.find(')', open == std::string_view::npos ? 0 : open);
    if (open == std::string_view::npos || close == std::string_view::npos)
        return {};
    lead = trimmed(text.substr(0, open));
    std::string_view inside = text.substr(open + 1, close - open - 1);
    text.remove_prefix(close + 1);
    std::vector<std::string_view> items;
    size_t comma = inside.find(',');
    for (; comma != std::string_view::npos; comma = inside.find(',')) {
        items.push_back(trimmed(inside.substr(0, comma)));
        inside.remove_prefix(comma + 1);
    }
    items.push_back(trimmed(inside));
    return items;
}

} // namespace

std::string insertedColumn(std::string_view sql, uint32_t position) {
    std::string_view lead;
    const auto columns = takeList(sql, lead);
    if (lead.size() < 6 || !isWord(lead.substr(0, 6), "insert"))
        return "";
    const auto values = takeList(sql, lead);
    if (!isWord(lead, "values") || values.size() != columns.size() || !trimmed(sql).empty())
        return "";
    const std::string placeholder = ":" + std::to_string(position + 1);
    for (size_t i = 0; i < values.size(); ++i)
        if (values[i] == placeholder)
            return std::string(columns[i]);
    return "";
}

} // namespace ormel::client
