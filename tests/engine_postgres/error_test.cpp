#include "postgres/error.h"

#include <gmock/gmock.h>

#include "support.h"

namespace ormel::client::postgres {

TEST(PostgresError, itsNumberIsTheStateWhereThatIsAllDigits) {
    const std::pair<const char *, uint32_t> states[] = {{"23505", 23505}, {"08006", 8006},  {"00000", 0},
                                                        {"28P01", 99999}, {"XX000", 99999}, {"3D000", 99999},
                                                        {"", 99999},      {"-2350", 99999}, {"4294967296", 99999}};
    for (const auto &[state, code] : states) {
        const Error error = makeError(state, "words");
        EXPECT_EQ(error.code, code) << state;
        EXPECT_EQ(error.message, std::string(state) + ": words");
    }
}

TEST(PostgresError, aResultWithoutAStateIsAnInternalFailure) {
    const OwnedResult result(PQmakeEmptyPGresult(nullptr, PGRES_FATAL_ERROR));
    const Error error = errorOf(result.get());
    EXPECT_EQ(error.code, 99999U);
    EXPECT_EQ(error.message, "XX000: ");
    EXPECT_THAT(errorOf(nullptr).message, testing::StartsWith("XX000: "));
}

TEST(PostgresError, refusesInItsOwnWords) {
    const Error error = caught([] { refuse("42804", "words"); });
    EXPECT_EQ(error.code, 42804U);
    EXPECT_EQ(error.message, "42804: words");
}

// As libpq writes them in its verbose form, in the language of the server and its own.
TEST(PostgresError, theStateIsFoundByItsForm) {
    const std::pair<const char *, const char *> words[] = {
        {"FATAL:  28P01: password authentication failed for user \"x\"", "28P01"},
        {"connection to server at \"127.0.0.1\", port 1 failed: FATAL:  53300: sorry", "53300"},
        {"connexion au serveur sur \"::1\", port 1 a échoué : FATAL:  3D000: la base de données « x » n'existe pas",
         "3D000"},
        {"ВАЖНО:  57P03: система баз данных запускается", "57P03"},
        {"致命的错误:  28000: 没有", "28000"},
        {"connection failed: first:  try again FATAL:  28P01: no", "28P01"},
        {"connection to server at \"127.0.0.1\", port 1 failed: Connection refused Is the server running?", ""},
        {"FATAL:  28p01: no", ""},
        {"FATAL: 28P01: no", ""},
        {"FATAL:  28P012: no", ""},
        {"FATAL:  28P01", ""},
        {"FATAL:  28P01:", ""},
        {":  ", ""},
        {"", ""},
    };
    for (const auto &[text, state] : words)
        EXPECT_EQ(stateIn(text), state) << text;
}

TEST(PostgresError, sentencesAreJoinedAsTheyEnd) {
    std::string words;
    for (const char *sentence : {"", "duplicate key", "", "Key (id)=(7) exists.", "Try another."})
        addSentence(words, sentence);
    EXPECT_EQ(words, "duplicate key; Key (id)=(7) exists. Try another.");
}

TEST(PostgresError, aConnectionsWordsStandOnOneLine) {
    const OwnedConnection failed(PQconnectdb("no such setting"));
    EXPECT_THAT(wordsOf(failed.get()), testing::HasSubstr("no"));
    EXPECT_EQ(wordsOf(failed.get()).find('\n'), std::string::npos);
    EXPECT_EQ(wordsOf(nullptr).find('\n'), std::string::npos);
}

} // namespace ormel::client::postgres
