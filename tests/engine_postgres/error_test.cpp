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

TEST(PostgresError, aConnectionsWordsStandOnOneLine) {
    const OwnedConnection failed(PQconnectdb("no such setting"));
    EXPECT_THAT(wordsOf(failed.get()), testing::HasSubstr("no"));
    EXPECT_EQ(wordsOf(failed.get()).find('\n'), std::string::npos);
    EXPECT_EQ(wordsOf(nullptr).find('\n'), std::string::npos);
}

} // namespace ormel::client::postgres
