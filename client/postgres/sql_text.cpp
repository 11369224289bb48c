#include "sql_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace ormel::client::postgres {

namespace {

constexpr char kView[] = "USER_TAB_COLUMNS";

// Names as this client reports them: in upper case, unless they are found in their own case only.
constexpr char kColumns[] =
    "(SELECT upper(c.relname)::varchar(63) AS table_name,"
    " CASE WHEN a.attname = lower(a.attname) THEN upper(a.attname) ELSE a.attname END::varchar(63) AS column_name,"
    " upper(format_type(a.atttypid, NULL))::varchar(63) AS data_type,"
    " CASE WHEN a.attlen > 0 THEN a.attlen::integer WHEN a.atttypmod > 65535 THEN (a.atttypmod - 4) >> 16"
    " WHEN a.atttypmod > 4 THEN a.atttypmod - 4 ELSE 65535 END AS data_length,"
    " a.attnum::integer AS column_id"
    " FROM pg_catalog.pg_attribute a JOIN pg_catalog.pg_class c ON c.oid = a.attrelid"
    " WHERE a.attnum > 0 AND NOT a.attisdropped AND c.relkind IN ('r', 'v', 'm', 'p', 'f')"
    " AND pg_catalog.pg_table_is_visible(c.oid) AND c.relnamespace NOT IN"
    " ('pg_catalog'::regnamespace, 'information_schema'::regnamespace)) AS user_tab_columns";

constexpr std::array<std::pair<std::string_view, Role>, 13> kRoles = {{
    {"SELECT", Role::query},
    {"WITH", Role::query},
    {"VALUES", Role::query},
    {"TABLE", Role::query},
    {"BEGIN", Role::control},
    {"START", Role::control},
    {"COMMIT", Role::control},
    {"END", Role::control},
    {"ROLLBACK", Role::control},
    {"ABORT", Role::control},
    {"SAVEPOINT", Role::control},
    {"RELEASE", Role::control},
    {"VACUUM", Role::apart},
}};

constexpr std::array<std::string_view, 5> kChanges = {"INTO", "INSERT", "UPDATE", "DELETE", "MERGE"};

// How texts begin that read and write rows, and what may stand in front of a parenthesis without being a function of
// somebody's own.
constexpr std::array<std::string_view, 4> kRowWords = {"SELECT", "INSERT", "UPDATE", "DELETE"};
constexpr std::array<std::string_view, 10> kHarmless = {"VALUES", "COUNT", "IN",  "AND", "OR",
                                                        "WHERE",  "UPPER", "SUM", "MAX", "MIN"};

// What opens connections from the session, or sets what no RESET knows. It may stand in a text that is code itself, and
// so is looked for anywhere, as LOAD is.
constexpr std::array<std::string_view, 3> kLasting = {"DBLINK_", "SETSEED", "PG_REPLICATION_ORIGIN_SESSION_"};

bool isHarmless(std::string_view name) {
    return std::find(kHarmless.begin(), kHarmless.end(), name) != kHarmless.end();
}

bool isWord(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || (c & 0x80) != 0;
}

// The length of a text up to and with its closing words, or all of it.
size_t through(std::string_view text, std::string_view end, size_t from) {
    const size_t found = text.find(end, from);
    return found == std::string_view::npos ? text.size() : found + end.size();
}

// Comments nest.
size_t commentLength(std::string_view text) {
    size_t at = 0;
    for (size_t depth = 0; at < text.size();) {
        const std::string_view pair = text.substr(at, 2);
        depth = depth + (pair == "/*" ? 1 : 0) - (pair == "*/" ? 1 : 0);
        at += pair == "/*" || pair == "*/" ? 2 : 1;
        if (depth == 0)
            break;
    }
    return at;
}

// Of $tag$ text $tag$, or of what is no quote.
size_t dollarLength(std::string_view text) {
    size_t tag = 1;
    while (tag < text.size() && isWord(text[tag]))
        ++tag;
    const bool quotes = tag < text.size() && text[tag] == '$' && std::isdigit(static_cast<unsigned char>(text[1])) == 0;
    return quotes ? through(text, text.substr(0, tag + 1), tag + 1) : 1;
}

// The length of what the text begins with: a quoted text, a comment, a word, or one character.
size_t pieceLength(std::string_view text) {
    const std::string_view pair = text.substr(0, 2);
    if (text[0] == '\'' || text[0] == '"')
        return through(text, text.substr(0, 1), 1);
    if (pair == "E'" || pair == "e'")
        return escapedLength(text);
    if (pair == "--")
        return through(text, "\n", 2);
    if (pair == "/*")
        return commentLength(text);
    if (text[0] == '$')
        return dollarLength(text);
    const auto *end = std::find_if_not(text.begin(), text.end(), [](char c) { return isWord(c) || c == '$'; });
    return isWord(text[0]) ? static_cast<size_t>(end - text.begin()) : 1;
}

// Takes off what the text begins with.
std::string_view takePiece(std::string_view &text) {
    const std::string_view piece = text.substr(0, pieceLength(text));
    text.remove_prefix(piece.size());
    return piece;
}

bool isBlank(std::string_view piece) {
    return std::isspace(static_cast<unsigned char>(piece[0])) != 0 || piece.substr(0, 2) == "--" ||
           piece.substr(0, 2) == "/*";
}

// Whether a query may make or change rows, which is no cursor's. Behind FOR and FOR NO KEY an UPDATE only locks them.
bool changesRows(std::string_view query) {
    std::string before;
    while (!query.empty()) {
        const std::string_view piece = takePiece(query);
        if (isBlank(piece))
            continue;
        const std::string word = isWord(piece[0]) ? upperCase(piece) : "";
        const bool locks = word == "UPDATE" && (before == "FOR" || before == "KEY");
        if (!locks && std::find(kChanges.begin(), kChanges.end(), word) != kChanges.end())
            return true;
        before = word;
    }
    return false;
}

} // namespace

std::string_view statementIn(std::string_view text) {
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, pieceLength(text));
        if (!isBlank(piece) && piece != ";")
            break;
        text.remove_prefix(piece.size());
    }
    return text;
}

Role roleOf(std::string_view text) {
    const std::string word = text.starts_with('(') ? "SELECT" : firstWord(text);
    const auto *found =
        std::find_if(kRoles.begin(), kRoles.end(), [&](const auto &role) { return role.first == word; });
    const Role role = found != kRoles.end() ? found->second : Role::other;
    return role == Role::query && changesRows(text) ? Role::other : role;
}

bool mayAlterSession(std::string_view text) {
    const std::string first = firstWord(text);
    const bool makesTable = first == "SELECT" && hasWord(text, "INTO");
    if (makesTable || std::find(kRowWords.begin(), kRowWords.end(), first) == kRowWords.end())
        return true;
    std::string name; // in front, without what qualifies it
    bool qualified = false;
    bool isTable = false; // that rows go into
    bool dotted = false;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view piece = takePiece(rest);
        if (isBlank(piece))
            continue;
        if (isWord(piece[0]) || piece[0] == '"') {
            isTable = dotted ? isTable : name == "INTO";
            qualified = dotted;
            name = upperCase(piece);
        } else if (piece == "(" && !name.empty() && !isTable && (qualified || !isHarmless(name))) {
            return true;
        } else if (piece != ".") {
            name.clear();
        }
        dotted = piece == ".";
    }
    return false;
}

bool leavesForGood(std::string_view text) {
    const std::string upper = upperCase(text);
    const auto holds = [&](std::string_view name) { return upper.find(name) != std::string::npos; };
    return hasWord(text, "LOAD") || std::any_of(kLasting.begin(), kLasting.end(), holds);
}

bool dropsPrepared(std::string_view text) {
    return firstWord(text) == "DEALLOCATE" && hasWord(text, "ALL");
}

std::string withCatalogue(const std::string &sql) {
    if (!hasWord(sql, kView))
        return sql;
    std::string replaced;
    for (std::string_view rest = sql; !rest.empty();) {
        const std::string_view piece = takePiece(rest);
        replaced += upperCase(piece) == kView ? kColumns : piece;
    }
    return replaced;
}

} // namespace ormel::client::postgres
