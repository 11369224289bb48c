"""ormel get: rows by request object, in three formats."""

import csv
import io
import json
import unittest

from harness import HomeTest, fill

TYPES = ("id INTEGER, big BIGINT, part DOUBLE, flag BOOLEAN, name VARCHAR(10), code CHAR(3), price NUMERIC(8,2),"
         " day DATE, raw BINARY(3), some VARBINARY(4), body CLOB, bytes BLOB")


class Get(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql(f"CREATE TABLE t ({TYPES})")
        self.sql("INSERT INTO t VALUES (2147483647, 9223372036854775807, 0.1, 1, 'Zo\u00eb', 'a,b', 12.5, '2026-01-02',"
                 " x'00ff00', x'00', 'one' || char(10) || '\"two\"', x'00010000'),"
                 " (-2147483648, -9223372036854775808, -1e300, 0, '', '', 0, '', x'000000', x'', '', x'')")
        self.sql("INSERT INTO t (name) VALUES ('NULL')")

    def get(self, *words):
        return self.ormel("get", "t", *words)

    def json(self, *words):
        return json.loads(self.get("--json", *words))

    def refusal(self, *words):
        return self.refused(2, "get", "t", *words)

    def ids(self, *conditions):
        words = [word for condition in conditions for word in ("--where", condition)]
        return [row["ID"] for row in self.json("--fields", "id", *words)]

    def test_prints_an_aligned_table_with_null_and_large_objects(self):
        self.assertEqual(self.get("--fields", "id,name,price,body,bytes"),
                         "          ID | NAME | PRICE | BODY       | BYTES\n"
                         "-------------+------+-------+------------+----------\n"
                         "  2147483647 | Zo\u00eb  |  12.5 | one\\n\"two\" | 00010000\n"
                         " -2147483648 |      |     0 |            |\n"
                         "        NULL | NULL |  NULL | NULL       | NULL\n"
                         "(3 rows)\n")

    def test_json_has_every_type(self):
        nothing = dict.fromkeys("ID BIG PART FLAG NAME CODE PRICE DAY RAW SOME BODY BYTES".split())
        self.assertEqual(self.json(), [
            {"ID": 2147483647, "BIG": 9223372036854775807, "PART": 0.1, "FLAG": True, "NAME": "Zo\u00eb", "CODE": "a,b",
             "PRICE": "12.5", "DAY": "2026-01-02", "RAW": "00ff00", "SOME": "00", "BODY": "one\n\"two\"",
             "BYTES": "00010000"},
            {"ID": -2147483648, "BIG": -9223372036854775808, "PART": -1e300, "FLAG": False, "NAME": "", "CODE": "",
             "PRICE": "0", "DAY": "", "RAW": "000000", "SOME": "", "BODY": "", "BYTES": ""},
            {**nothing, "NAME": "NULL"}])

    def test_csv_tells_null_from_empty(self):
        self.assertEqual(self.get("--csv", "--fields", "id,name,price,body"),
                         '"ID","NAME","PRICE","BODY"\n'
                         '"2147483647","Zo\u00eb","12.5","one\n""two"""\n'
                         '"-2147483648","","0",""\n'
                         ',"NULL",,\n')
        rows = list(csv.reader(io.StringIO(self.get("--csv"))))
        self.assertEqual(rows[1], ["2147483647", "9223372036854775807", "0.1", "true", "Zo\u00eb", "a,b", "12.5",
                                   "2026-01-02", "00ff00", "00", "one\n\"two\"", "00010000"])

    def test_without_rows(self):
        for words, output in [(["--json"], "[]\n"), (["--csv"], '"ID"\n'), ([], " ID\n----\n(0 rows)\n")]:
            self.assertEqual(self.get("--fields", "id", "--where", "id = 7", *words), output)

    def test_fields_come_in_the_order_in_which_they_are_named(self):
        self.assertEqual(list(self.json("--fields", "name, ID ,big")[0]), ["NAME", "ID", "BIG"])

    def test_every_operator(self):
        low, high = -2147483648, 2147483647
        for condition, ids in [("id = 2147483647", [high]), ("id <> 2147483647", [low]), ("id < 2147483647", [low]),
                               ("id <= 2147483647", [high, low]), ("name LIKE zo%", [high]), ("body like %two%", [high]),
                               ("price like 12%", [high])]:
            self.assertEqual(self.ids(condition), ids, condition)

    def test_every_type_can_be_a_condition(self):
        for condition in ["big = 9223372036854775807", "part = 0.1", "flag = true", "name = Zo\u00eb", "code = 'a,b'",
                          "price = 12.50", "day = 2026-01-02", "raw = 00ff00", "some = 00", "body = one\n\"two\"",
                          "bytes = 00010000"]:
            self.assertEqual(self.ids(condition), [2147483647], condition)
        for condition in ["name =", "code = ''", "some =", "body =", "bytes =", "day ="]:
            self.assertEqual(self.ids(condition), [-2147483648], condition)

    def test_all_conditions_hold(self):
        self.assertEqual(self.ids("id <= 0", "big < 0"), [-2147483648])
        self.assertEqual(self.ids("id <= 0", "big = 1"), [])
        self.assertEqual(len(self.ids(*["id <= 2147483647"] * 32)), 2)

    def test_the_null_text_is_no_null(self):
        self.assertEqual(self.json("--fields", "name", "--where", "name = 'NULL'"), [{"NAME": "NULL"}])

    def test_a_value_of_a_condition_is_longer_than_a_record_s(self):
        self.sql("CREATE TABLE wide (raw BINARY(300), text VARCHAR(300))")
        self.sql("INSERT INTO wide VALUES (x'" + "ab" * 300 + "', '" + "y" * 299 + "z')")
        for condition in ["raw = " + "ab" * 300, "text = " + "y" * 299 + "z"]:
            self.assertTrue(self.ormel("get", "wide", "--where", condition).endswith("(1 row)\n"))
        self.assertTrue(self.ormel("get", "wide", "--where", "text = " + "y" * 300).endswith("(0 rows)\n"))

    def test_a_page(self):
        self.sql("CREATE TABLE page (id INTEGER)")
        fill(self, "page (id) SELECT i", 10)
        for words, ids in [(["--limit", "3"], [1, 2, 3]), (["--limit", "3", "--offset", "8"], [9, 10]), (["--limit", "0"], []),
                           (["--limit", "3", "--offset", "10"], []), (["--limit", "2147483647", "--offset", "7"], [8, 9, 10])]:
            rows = json.loads(self.ormel("get", "page", "--json", *words))
            self.assertEqual([row["ID"] for row in rows], ids, words)

    def test_more_rows_than_one_select_hands_out(self):
        self.sql("CREATE TABLE many (id INTEGER)")
        fill(self, "many (id) SELECT i", 100002)
        lines = self.ormel("get", "many", "--csv").splitlines()
        self.assertEqual(lines, ['"ID"'] + [f'"{i}"' for i in range(1, 100003)])
        lines = self.ormel("get", "many", "--csv", "--limit", "100001", "--offset", "1").splitlines()
        self.assertEqual((len(lines), lines[1], lines[-1]), (100002, '"2"', '"100002"'))

    def test_a_row_that_cannot_be_read_is_no_end(self):
        self.sql("CREATE TABLE bad (id INTEGER)")
        fill(self, "bad (id) SELECT i", 100500)
        self.sql("INSERT INTO bad VALUES ('text')")
        fill(self, "bad (id) SELECT i", 10)
        reason = "column ID is declared as an integer of 32 bits, but a row holds text"
        self.assertIn(f"only 100500 of 100511 rows of bad can be read: {reason}", self.refused(1, "get", "bad", "--csv"))
        self.assertIn(f"only 100400 of 100405 rows of bad can be read: {reason}",
                      self.refused(1, "get", "bad", "--limit", "100405", "--offset", "100"))
        self.assertIn(reason, self.refused(1, "get", "bad", "--limit", "20", "--offset", "100490"))
        self.assertTrue(self.ormel("get", "bad", "--limit", "100400", "--offset", "100").endswith("(100400 rows)\n"))

    def test_large_objects_come_whole(self):
        self.sql("CREATE TABLE large (body TEXT, bytes BLOB)")
        self.database().execute("INSERT INTO large VALUES (?, ?)", ("\u732b" * 100000, b"\0\xff" * 100000))
        self.assertEqual(json.loads(self.ormel("get", "large", "--json")),
                         [{"BODY": "\u732b" * 100000, "BYTES": "00ff" * 100000}])

    def test_text_that_is_not_utf8(self):
        self.sql("INSERT INTO t (id, name) VALUES (5, CAST(x'61ff' AS TEXT))")
        done = self.run_ormel("--home", "home", "get", "t", "--json", "--fields", "name")
        self.assertEqual((done.returncode, done.stderr),
                         (1, "ormel: row 4: NAME: the text is no UTF-8 from byte 2 on, which JSON cannot carry; use --csv, "
                             "or --fields without it\n"))
        self.assertIn(" a\\xff\n", self.get("--fields", "name", "--where", "id = 5"))

    def test_an_operator_that_is_not_there_shows_nothing(self):
        for condition, op in [("id > 1", ">"), ("id >= 1", ">="), ("id != 1", "!="), ("name is NULL", "is"), ("id in (1)", "in"),
                              ("id between 1", "between"), ("name glob x", "glob"), ("name not like x", "not")]:
            for command in ["get", "dump"]:
                line = self.refused(2, command, "t", "--where", condition)
                self.assertEqual(line, f"there is no operator '{op}': use = <> < <= or like, or say it in SQL: "
                                       f"ormel sql \"SELECT ... WHERE {condition}\"")
        self.assertIn("there is no operator '=='", self.refusal("--where", "id == 1"))

    def test_what_does_not_fit_is_refused(self):
        long = "x" * 28
        for words, reason in [
                (["--where", "id = NULL"], "no comparison with NULL is ever true: ask in SQL, ormel sql \"SELECT ... WHERE id "
                                           "IS NULL\" (or IS NOT NULL), or write 'NULL' in quotes for the text"),
                (["--where", "id = x"], "id: 'x' is no whole number"),
                (["--where", "id = 2147483648"], "id: '2147483648' is outside -2147483648 to 2147483647"),
                (["--where", "id like 1%"], "id: like compares texts, and the column is of the type INTEGER"),
                (["--where", "bytes like 00"], "bytes: like compares texts, and the column is of the type BLOB"),
                (["--where", "price = cheap"], "price: 'cheap' is no number"),
                (["--where", f"{long} = 1"],
                 f"the column name '{long}' has 28 bytes; the library carries 27, so use the command sql"),
                (["--where", "id <= 1"] * 33, "a statement takes at most 32 conditions; use the command sql for more"),
                (["--fields", "nam"], "t has no column 'nam'; it has ID, BIG, PART, FLAG, NAME, CODE, PRICE, DAY, RAW, SOME, "
                                      "BODY, BYTES"),
                (["--fields", "id,big,ID"], "the column ID is named twice; name it once"),
                (["--fields", long], f"the column name '{long}' has 28 bytes; the library carries 27, so use the command sql"),
                (["--fields", "id" + ",id" * 32],
                 "a select takes at most 32 fields, and --fields names 33; leave --fields out for all columns, or use the "
                 "command sql"),
                (["--fields"], "--fields '' lacks a name: write names with commas between them, a,b"),
                (["--limit"], "--limit takes a whole number from 0 to 2147483647, not ''"),
                (["--limit", "few"], "--limit takes a whole number from 0 to 2147483647, not 'few'"),
                (["--limit", "-1"], "--limit takes a whole number from 0 to 2147483647, not '-1'"),
                (["--offset", "1"],
                 "--offset passes over the first rows of a page; say with --limit how many rows that has"),
                (["--json", "--csv"], "--json and --csv exclude each other; choose one")]:
            self.assertEqual(self.refusal(*words), reason)
        self.assertIn("has 28 bytes; the library carries 27", self.refused(2, "get", long))

    def test_more_columns_than_an_object_names(self):
        self.sql("CREATE TABLE wide (" + ", ".join(f"c{i} INTEGER" for i in range(300)) + ")")
        self.sql("INSERT INTO wide (c299) VALUES (299)")
        row, = json.loads(self.ormel("get", "wide", "--json", "--where", "c299 = 299"))
        self.assertEqual((len(row), row["C298"], row["C299"]), (300, None, 299))
        fields = ",".join(f"c{i}" for i in range(268, 300))
        self.assertEqual(len(json.loads(self.ormel("get", "wide", "--json", "--fields", fields))[0]), 32)

    def test_names_that_the_library_cuts_to_one(self):
        self.sql("CREATE TABLE cut (" + "x" * 27 + "a INTEGER, " + "x" * 27 + "b INTEGER)")
        self.sql("INSERT INTO cut VALUES (1, 2)")
        self.assertIn('\n"1","2"\n', self.ormel("get", "cut", "--csv"))
        self.assertIn("two columns are called " + "X" * 27, self.refused(1, "get", "cut", "--json"))

    def test_expressions_of_a_view(self):
        self.sql("CREATE VIEW v AS SELECT id, id + 1 AS next, part * 2 AS twice, name || 'x' AS name, x'00ff' AS bytes,"
                 " NULL AS none FROM t WHERE id > 0")
        self.assertEqual(json.loads(self.ormel("get", "v", "--json")), [
            {"ID": 2147483647, "NEXT": 2147483648, "TWICE": 0.2, "NAME": "Zo\u00ebx", "BYTES": "00ff", "NONE": None}])
        self.assertEqual(self.ormel("dump", "v", "--fields", "twice,next", "--where", "name like zo%"),
                         '"TWICE","NEXT"\n"0.2","2147483648"\n')
        self.assertEqual(self.refused(2, "get", "v", "--where", "next = 2147483648"),
                         "next: v does not say of what type the column is, so only like compares it; use the command sql")

    def test_the_database_s_own_words(self):
        self.sql('CREATE TABLE k ("order" INTEGER, a INTEGER)')
        self.assertEqual(self.ormel("get", "k", "--csv"), '"ORDER","A"\n')
        for words in [["--fields", "order"], ["--where", "order = 1"], ["--fields", "order", "--limit", "1"]]:
            self.assertEqual(self.refused(1, "get", "k", *words),
                             'cannot read the rows of k: near "ORDER": syntax error')
        self.assertIn("cannot describe the table none: no such table: none", self.refused(1, "get", "none"))


if __name__ == "__main__":
    unittest.main()
