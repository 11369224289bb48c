// Statement texts: the search for placeholders, and what the engine of servers looks for in them.
#include <cstring>

#include "common/sql_words.h"
#include "front/errors.h"
#include "front/insert_columns.h"
#include "front/placeholders.h"
#include "postgres/sql_text.h"
#include "support/input.h"
#include "support/require.h"

namespace {

using namespace ormel::client;

Dialect dialectOf(uint8_t bits) {
    const auto bit = [bits](int n) { return (bits >> n & 1) != 0; };
    return {bit(0) ? '$' : '?', bit(1), bit(2), bit(3), bit(4), bit(5)};
}

// What the rewriting leaves is the text without its placeholders, character by character.
void checkCopy(std::string_view sql, const Rewritten &rewritten, char mark) {
    size_t at = 0;
    for (size_t i = 0; i < rewritten.sql.size(); ++i, ++at) {
        if (at < sql.size() && rewritten.sql[i] == sql[at])
            continue;
        fuzz::require(at < sql.size() && sql[at] == ':' && rewritten.sql[i] == mark, "only placeholders are replaced");
        while (at + 1 < sql.size() && sql[at + 1] == '0')
            ++at; // the database's have no zeros in front
    }
    fuzz::require(at == sql.size(), "the whole text is copied");
    fuzz::require(rewritten.parameters <= 65535, "no database takes more parameters");
}

void rewrite(std::string_view sql, const Dialect &dialect) {
    try {
        checkCopy(sql, rewritePlaceholders(sql, dialect), dialect.placeholder);
    } catch (const Error &error) {
        fuzz::require(error.code == kMisuse, "a number that cannot be is misuse");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    const Dialect dialect = dialectOf(input.byte());
    const std::string sql = input.rest();
    rewrite(sql, dialect);
    for (const uint32_t position : {0u, 1u, 31u, 65534u})
        insertedColumn(sql, position);
    postgres::roleOf(sql);
    postgres::mayAlterSession(sql);
    const std::string replaced = postgres::withCatalogue(sql);
    fuzz::require(hasWord(sql, "USER_TAB_COLUMNS") || replaced == sql, "a text without the view stays as it is");
    return 0;
}
