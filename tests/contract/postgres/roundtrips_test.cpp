// How often a plain call of the library waits for the server, counted on the wire.
#include <ormeldb.h>

#include "postgres/library_test.h"
#include "postgres/postgres_engine.h"

namespace {

using namespace contract;

struct Most {
    uint64_t ofNew;   // of a call whose statement is new to its connection
    uint64_t ofKnown; // of one whose statement was run before
};
constexpr Most kInsert = {3, 2};
constexpr Most kSelect = {2, 1};
constexpr uint64_t kTable = 2; // more, where the library learns the table as well

#pragma pack(push, 1)
struct Piece {
    int32_t id;
    char v[161];
};
#pragma pack(pop)

class RoundTripsTest : public LibraryTest {
protected:
    RoundTripsTest() {
        Connection db = connect();
        makeTable(db);
        start("");
    }

    static void insert(int32_t id) {
        Piece piece = {id, "piece"};
        const ORMEL_RECORD_BUFFER record = {sizeof piece, 1, sizeof piece, 0, reinterpret_cast<uint8_t *>(&piece)};
        EXPECT_EQ(ORMEL_InsertRec("t", &record), ORMEL_OK);
    }
    static void select() {
        Piece piece = {};
        ORMEL_RECORD_BUFFER record = {sizeof piece, 0, sizeof piece, 0, reinterpret_cast<uint8_t *>(&piece)};
        EXPECT_EQ(ORMEL_SelectRec("t", nullptr, 0, &record), ORMEL_OK);
        EXPECT_EQ(piece.id, 1);
    }

    // One that knows no statement of the test yet, in place of the one that was kept.
    static void leaveNewConnection() {
        restartServer("SIGINT");
        uint32_t rows = 0;
        EXPECT_EQ(ORMEL_LocalExistRecord("t", nullptr, &rows), ORMEL_OK);
    }

    template <class Call> uint64_t roundTripsOf(Call call) {
        proxy().count();
        call();
        return proxy().roundTrips();
    }
    static void expectFew(const std::vector<uint64_t> &counted, const Most &most) {
        EXPECT_LE(counted[0], most.ofNew);
        EXPECT_LE(counted[1], most.ofKnown);
        EXPECT_LE(counted[2], most.ofKnown);
    }
};
ENGINE_SUITE(RoundTripsTest);

TEST_P(RoundTripsTest, PlainCallsOnAKeptConnection) {
    const uint64_t first = roundTripsOf([] { insert(1); });
    leaveNewConnection();
    std::vector<uint64_t> inserts;
    std::vector<uint64_t> selects;
    for (int32_t id = 2; id <= 4; ++id) {
        inserts.push_back(roundTripsOf([&] { insert(id); }));
        selects.push_back(roundTripsOf(select));
    }
    std::cout << "round trips: " << first << " of the first insert, " << testing::PrintToString(inserts)
              << " of an insert, " << testing::PrintToString(selects)
              << " of a select, the first of each new to the connection" << std::endl;
    EXPECT_LE(first, kInsert.ofNew + kTable);
    expectFew(inserts, kInsert);
    expectFew(selects, kSelect);
}

// The server never hears of it, and so never answers: the connection is given up when it is needed again.
TEST_P(RoundTripsTest, ASelectDoesNotWaitForTheEndOfItsTransaction) {
    insert(1);
    proxy().fail({Proxy::toServer, 0, Proxy::Unit::queries, Proxy::Action::silence});
    select();
    while (!proxy().hasFailed())
        std::this_thread::yield();
    proxy().count();
    insert(2);
    uint32_t rows = 0;
    EXPECT_EQ(ORMEL_LocalExistRecord("t", nullptr, &rows), ORMEL_OK);
    EXPECT_EQ(rows, 2U);
}

} // namespace
