#include "front/placeholders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "front/errors.h"

namespace {

using namespace ormel::client;

// Everything that a dialect can have, and nothing of it.
constexpr Dialect kFull = {'$', true, true, true, true, true};
constexpr Dialect kPlain = {'?', false, false, false, false, false};

struct Case {
    const char *sql;
    const char *expected;
    uint32_t parameters;
};

void expectAll(const Dialect &dialect, const std::vector<Case> &cases) {
    for (const Case &c : cases) {
        SCOPED_TRACE(c.sql);
        const Rewritten rewritten = rewritePlaceholders(c.sql, dialect);
        EXPECT_EQ(rewritten.sql, c.expected);
        EXPECT_EQ(rewritten.parameters, c.parameters);
    }
}

TEST(PlaceholdersTest, AreReplacedByTheDatabasesOwn) {
    expectAll(kPlain, {
                          {"", "", 0},
                          {"select 1", "select 1", 0},
                          {":1", "?1", 1},
                          {"INSERT INTO t (a, b) values (:1, :2)", "INSERT INTO t (a, b) values (?1, ?2)", 2},
                          {"a=:2 and b=:1 and c=:2", "a=?2 and b=?1 and c=?2", 2},
                          {"x like :10", "x like ?10", 10},
                          {":0001", "?1", 1},
                          {"a=:1b", "a=?1b", 1},
                          {"a=:65535", "a=?65535", 65535},
                          {"(:1)", "(?1)", 1},
                          {"a<:1", "a<?1", 1},
                      });
    expectAll(kFull, {{"a = :1 AND b = :2", "a = $1 AND b = $2", 2}});
}

TEST(PlaceholdersTest, AreNotColonsOfOtherThings) {
    expectAll(kFull, {
                         {"a::1", "a::1", 0},
                         {"a::text", "a::text", 0},
                         {"a::int = :1::int", "a::int = $1::int", 1},
                         {":name", ":name", 0},
                         {": 1", ": 1", 0},
                         {":", ":", 0},
                         {"::", "::", 0},
                         {":::1", "::$1", 1},
                     });
}

TEST(PlaceholdersTest, AreNotInsideQuotes) {
    expectAll(kPlain, {
                          {"':1' :1", "':1' ?1", 1},
                          {"'it''s :1' :2", "'it''s :1' ?2", 2},
                          {"'a\\' :1", "'a\\' ?1", 1}, // no escapes in plain texts
                          {"\":1\" :1", "\":1\" ?1", 1},
                          {"\"a\"\":1\" :1", "\"a\"\":1\" ?1", 1},
                          {"'' :1", "'' ?1", 1},
                          {"'\"' :1", "'\"' ?1", 1},
                          {"':1", "':1", 0}, // never closed
                          {"'", "'", 0},
                          {"'Gr\xC3\xBC\xC3\x9F\x65 :1' :1", "'Gr\xC3\xBC\xC3\x9F\x65 :1' ?1", 1},
                      });
}

TEST(PlaceholdersTest, AreNotInsideComments) {
    expectAll(kPlain, {
                          {"-- :1\n:1", "-- :1\n?1", 1},
                          {"-- it's\n:1", "-- it's\n?1", 1},
                          {"-- :1", "-- :1", 0},
                          {"/* :1 */ :1", "/* :1 */ ?1", 1},
                          {"/* ' */ :1", "/* ' */ ?1", 1},
                          {"/*/ :1 */ :1", "/*/ :1 */ ?1", 1},
                          {"/* /* */ :1", "/* /* */ ?1", 1},
                          {"/* :1", "/* :1", 0},
                          {"'--' :1", "'--' ?1", 1},
                          {"a - :1 / :2 * :3", "a - ?1 / ?2 * ?3", 3},
                          {"a-:1", "a-?1", 1},
                      });
    expectAll(kFull, {
                         {"/* /* :1 */ :1 */ :1", "/* /* :1 */ :1 */ $1", 1},
                         {"/* /* */ :1", "/* /* */ :1", 0},
                         {"/**/:1", "/**/$1", 1},
                     });
}

TEST(PlaceholdersTest, IdentifierQuotesAreTheDialects) {
    expectAll(kFull, {
                         {"[:1] :1", "[:1] $1", 1},
                         {"`:1` :1", "`:1` $1", 1},
                         {"[:1", "[:1", 0},
                     });
    expectAll(kPlain, {
                          {"a[:1]", "a[?1]", 1},
                          {"`:1`", "`?1`", 1},
                      });
}

TEST(PlaceholdersTest, DollarQuotesAreTheDialects) {
    expectAll(kFull, {
                         {"$$ :1 ' $$ :1", "$$ :1 ' $$ $1", 1},
                         {"$tag$ :1 $$ :2 $tag$ :3", "$tag$ :1 $$ :2 $tag$ $3", 3},
                         {"$a$ $b$ :1 $a$ :1", "$a$ $b$ :1 $a$ $1", 1},
                         {"$1 :1", "$1 $1", 1},
                         {"a$b$ :1", "a$b$ $1", 1}, // the dollars belong to the name
                         {"$ :1", "$ $1", 1},
                         {"$$ :1", "$$ :1", 0},
                     });
    expectAll(kPlain, {{"$$ :1 $$", "$$ ?1 $$", 1}});
}

TEST(PlaceholdersTest, EscapesAreTheDialects) {
    expectAll(kFull, {
                         {"E'it\\'s :1' :1", "E'it\\'s :1' $1", 1},
                         {"e'\\\\' :1", "e'\\\\' $1", 1},
                         {"E'a'':1' :1", "E'a'':1' $1", 1},
                         {"E'a''\\':1' :1", "E'a''\\':1' $1", 1},
                         {"E'a'\n '\\':1' :1", "E'a'\n '\\':1' $1", 1},
                         {"E'a' -- b\n '\\':1' :1", "E'a' -- b\n '\\':1' $1", 1},
                         {"E'a' '\\' :1 ''", "E'a' '\\' $1 ''", 1}, // on one line the second begins anew
                         {"E'a'\n, '\\' :1", "E'a'\n, '\\' $1", 1},
                         {"'\\' :1", "'\\' $1", 1},
                         {"E'\\", "E'\\", 0},
                     });
    expectAll(kPlain, {{"E'\\' :1", "E'\\' ?1", 1}});
}

TEST(PlaceholdersTest, NumbersOutOfRangeAreRefused) {
    for (const char *sql : {":0", "a = :00", ":65536", ":99999999999999999999"}) {
        SCOPED_TRACE(sql);
        try {
            rewritePlaceholders(sql, kPlain);
            ADD_FAILURE() << "was taken";
        } catch (const Error &error) {
            EXPECT_EQ(error.code, kMisuse);
            EXPECT_THAT(error.message, testing::HasSubstr("65535"));
        }
    }
}

// Every cut of a text must be readable, whatever it ends in.
TEST(PlaceholdersTest, AnyEndOfATextIsHarmless) {
    const std::string sql = "a'b''c'\"d\"[e]`f`E'\\''''\\'\n--x\n'\\''$$g$$$h$i$h$--j\n/*k/*l*/m*/::n:1";
    for (size_t length = 0; length < sql.size(); ++length)
        for (const Dialect &dialect : {kFull, kPlain}) {
            const std::string cut = sql.substr(0, length);
            EXPECT_EQ(rewritePlaceholders(cut, dialect).sql, cut);
        }
    EXPECT_EQ(rewritePlaceholders(sql, kFull).parameters, 1U);
}

} // namespace
