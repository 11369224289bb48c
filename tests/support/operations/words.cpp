#include "operations/operations.h"

namespace operations {

const Words kSqlite = {
    "CREATE TABLE item (id INTEGER PRIMARY KEY, name VARCHAR(20), amount BIGINT);"
    "CREATE TABLE sheet (id INTEGER PRIMARY KEY, body TEXT, picture BLOB);",

    "DELETE FROM item; DELETE FROM sheet;"
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 40)"
    " INSERT INTO item SELECT i, 'item ' || i, 100 FROM n;"
    "INSERT INTO sheet VALUES (1, replace(hex(zeroblob(10000)), '0', 'x'), zeroblob(20001));",

    "SELECT (SELECT group_concat(id || coalesce(name, '') || coalesce(amount, '')) FROM item) ||"
    " (SELECT group_concat(id || '-' || length(body) || coalesce(length(picture), '')) FROM sheet)",
};

const Words kPostgres = {
    "CREATE TABLE item (id INTEGER PRIMARY KEY, name VARCHAR(20), amount BIGINT);"
    "CREATE TABLE sheet (id INTEGER PRIMARY KEY, body TEXT, picture BYTEA);",

    "DELETE FROM item; DELETE FROM sheet;"
    "INSERT INTO item SELECT i, 'item ' || i, 100 FROM generate_series(1, 40) AS i;"
    "INSERT INTO sheet VALUES (1, repeat('x', 20000), decode(repeat('00', 20001), 'hex'));",

    "SELECT (SELECT string_agg(concat(id, name, amount), ',' ORDER BY id) FROM item) ||"
    " (SELECT string_agg(concat(id, '-', length(body), length(picture)), ',' ORDER BY id) FROM sheet)",
};

} // namespace operations
