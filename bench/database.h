// The database under the library, past the library. Each engine's folder has a body of it, and the same work as the
// library does over the database's own interface ("x/raw").
#pragma once

#include <cstdint>
#include <string>

namespace bench {

// The lines of db.conf that lead to it, and its password.
std::string settings();
std::string password();

// Runs statements; ends the program with a message where one fails.
void run(const std::string &sql);

// What it calls a column of bytes.
extern const char *const kBytes;

// A row of the table people, or of another with its columns, as a program without ormeldb would keep it.
struct Person {
    int id;
    std::string name;
    std::string city;
    double height;
    int64_t born;
    bool active;
};

// The columns of such a table, and a query that makes rows for it out of numbers from 0 on.
inline const std::string kPersonColumns =
    "id INTEGER PRIMARY KEY, name VARCHAR(32), city VARCHAR(32), height DOUBLE PRECISION, born BIGINT, active BOOLEAN";
inline std::string persons(int count) {
    return "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < " + std::to_string(count) +
           ") SELECT i, 'name ' || i, 'city ' || (i % 100), i * 0.5, CAST(i AS BIGINT) * 1000000000, i % 2 = 1 FROM n";
}

} // namespace bench
