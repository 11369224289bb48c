#include "postgres/library_test.h"

#include <cstring>
#include <ormeldb.h>
#include <ormeldb/platform/decrypt.h>

#include "postgres/postgres_engine.h"

namespace contract {

LibraryTest::LibraryTest() : proxy_(serverPort()) {}

LibraryTest::~LibraryTest() {
    ORMEL_UnInit();
}

void LibraryTest::start(const std::string &lines) {
    const Target where = target();
    configure("db.host=127.0.0.1\ndb.port=" + std::to_string(proxy_.port()) + "\ndb.user=" + where.user +
              "\nauth.sslmode=DISABLED\n" + lines);
    std::strcpy(reinterpret_cast<char *>(g_decrypt_info_s) + ORMEL_DECRYPT_PASSWORD_OFFSET, where.password.c_str());
    EXPECT_EQ(ORMEL_Init(), ORMEL_OK);
}

} // namespace contract
