"""ormel dump: a table of any size, row by row."""

import json
import os
import subprocess
import unittest

from harness import ORMEL, HomeTest, fill

ROWS = 50000
WIDTH = 400
MOST_GROWTH = 16 * 1024  # KiB of memory


class Dump(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql("CREATE TABLE t (id INTEGER, name VARCHAR(20), body TEXT, raw BLOB)")
        self.sql("INSERT INTO t VALUES (1, 'Zo\u00eb', 'a,\"b\"' || char(10), x'0001'), (2, '', '', x''),"
                 " (3, NULL, NULL, NULL)")

    def dump(self, *words):
        return self.ormel("dump", "t", *words)

    def test_csv_is_the_default(self):
        text = '"ID","NAME","BODY","RAW"\n"1","Zo\u00eb","a,""b""\n","0001"\n"2","","",""\n"3",,,\n'
        self.assertEqual(self.dump(), text)
        self.assertEqual(self.dump("--csv"), text)

    def test_json_has_an_object_a_line(self):
        lines = self.dump("--json").splitlines()
        self.assertEqual([json.loads(line) for line in lines],
                         [{"ID": 1, "NAME": "Zo\u00eb", "BODY": "a,\"b\"\n", "RAW": "0001"},
                          {"ID": 2, "NAME": "", "BODY": "", "RAW": ""},
                          {"ID": 3, "NAME": None, "BODY": None, "RAW": None}])

    def test_takes_fields_and_conditions(self):
        self.assertEqual(self.dump("--fields", "name,id", "--where", "id <= 2", "--where", "body like a%"),
                         '"NAME","ID"\n"Zo\u00eb","1"\n')
        self.assertEqual(self.dump("--where", "id = 9"), '"ID","NAME","BODY","RAW"\n')
        self.assertEqual(self.dump("--json", "--where", "id = 9"), "")

    def test_refuses_what_get_refuses(self):
        for words, reason in [(["--json", "--csv"], "--json and --csv exclude each other; choose one"),
                              (["--fields", "id,id"], "the column id is named twice; name it once"),
                              (["--fields", "nam"], "t has no column 'nam'; it has ID, NAME, BODY, RAW")]:
            self.assertEqual(self.refused(2, "dump", "t", *words), reason)
        self.assertIn("--limit", self.refused(2, "dump", "t", "--limit", "1"))
        self.assertIn("no comparison with NULL is ever true", self.refused(2, "dump", "t", "--where", "id = NULL"))

    def test_what_is_dumped_can_be_loaded(self):
        self.sql("CREATE TABLE copy (id INTEGER, name VARCHAR(20))")
        heading, _, rows = self.dump("--fields", "id,name", "--where", "id <= 2").partition("\n")
        self.assertEqual(heading, '"ID","NAME"')
        self.write("copy.csv", rows)
        self.assertEqual(self.ormel("load", "copy", "copy.csv"), "2 rows loaded into copy\n")
        self.assertEqual(self.database().execute("SELECT * FROM copy").fetchall(), [(1, "Zo\u00eb"), (2, "")])


class LargeDump(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql(f"CREATE TABLE many (id INTEGER, name VARCHAR({WIDTH}))")
        fill(self, f"many SELECT i, printf('%.*c', {WIDTH}, 'x')", ROWS)

    def peak(self, *words):
        """The memory in KiB that a dump took at most, and its output."""
        # A sanitizer keeps what was freed for a while; without one the word means nothing.
        environment = {**os.environ, "ASAN_OPTIONS": "quarantine_size_mb=1"}
        with open(self.path("out"), "w+", encoding="utf-8") as out, subprocess.Popen(
                [ORMEL, "--home", "home", "dump", "many", *words], cwd=self.directory, stdout=out, env=environment) as process:
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            self.assertEqual(process.returncode, 0)
        return usage.ru_maxrss, self.read("out")

    def test_memory_does_not_grow_with_the_table(self):
        few, _ = self.peak("--where", "id <= 10")
        for words in [], ["--json"]:
            most, text = self.peak(*words)
            self.assertGreater(len(text), ROWS * WIDTH)
            self.assertLess(most - few, MOST_GROWTH)

    def test_every_row_is_there(self):
        lines = self.ormel("dump", "many", "--fields", "id").splitlines()
        self.assertEqual(lines, ['"ID"'] + [f'"{i}"' for i in range(1, ROWS + 1)])

    def test_a_row_that_cannot_be_read_ends_it(self):
        self.sql("INSERT INTO many VALUES ('text', 'x')")
        done = self.run_ormel("--home", "home", "dump", "many", "--fields", "id", "--json")
        self.assertEqual(done.returncode, 1)
        self.assertTrue(done.stdout.endswith(f'{{"ID":{ROWS}}}\n'))
        self.assertEqual(done.stderr, "ormel: cannot read the next row of many: column ID is declared as an integer of 32 "
                                      "bits, but a row holds text; declare the column as what it holds, or mend the row\n")

    def test_a_damaged_file_ends_it(self):
        database = self.database()
        database.execute("PRAGMA wal_checkpoint(TRUNCATE)")
        page, = database.execute("SELECT rootpage FROM sqlite_master WHERE name = 'many'").fetchone()
        database.close()
        with open(self.path("home/data/ormel.db"), "r+b") as file:
            file.seek((page + 1000) * 4096)
            file.write(b"\0" * 4096)
        done = self.run_ormel("--home", "home", "dump", "many")
        self.assertEqual((done.returncode, done.stderr),
                         (1, "ormel: cannot read the next row of many: database disk image is malformed\n"))
        self.assertIn('"5000",', done.stdout)

    def run_into(self, out, *words):
        return subprocess.run([ORMEL, "--home", "home", *words], cwd=self.directory, stdout=out, stderr=subprocess.PIPE,
                              encoding="utf-8", timeout=200)

    def test_a_reader_that_goes_away(self):
        for words in [["dump", "many"], ["dump", "many", "--json"], ["get", "many", "--csv"]]:
            reader, writer = os.pipe()
            os.close(reader)
            done = self.run_into(writer, *words)
            os.close(writer)
            self.assertEqual((done.returncode, done.stderr), (1, "ormel: cannot write the output: Broken pipe\n"), words)

    def test_a_full_disk(self):
        for words in [["dump", "many"], ["dump", "many", "--where", "id = 1"], ["get", "many", "--where", "id = 1"],
                      ["get", "many", "--json", "--limit", "1"], ["get", "many", "--csv", "--limit", "1"]]:
            with open("/dev/full", "w", encoding="utf-8") as full:
                done = self.run_into(full, *words)
            self.assertEqual((done.returncode, done.stderr),
                             (1, "ormel: cannot write the output: No space left on device\n"), words)

    def test_rows_that_others_write_meanwhile_do_not_disturb_it(self):
        with subprocess.Popen([ORMEL, "--home", "home", "dump", "many"], cwd=self.directory, stdout=subprocess.PIPE) as process:
            process.stdout.readline()
            self.database().execute("DELETE FROM many WHERE id > 10")
            self.assertEqual(len(process.stdout.readlines()), ROWS)
            self.assertEqual(process.wait(), 0)


class BeginDump(HomeTest):
    def test_a_row_among_the_first_that_cannot_be_read(self):
        self.sql("CREATE TABLE d (id INTEGER)")
        database = self.database()
        for before in [0, 15]:
            database.execute("DELETE FROM d")
            database.executemany("INSERT INTO d VALUES (?)", [(i,) for i in range(before)] + [(5000000000,)])
            self.assertEqual(self.refused(1, "dump", "d"),
                             "cannot read the rows of d: column ID is declared as an integer of 32 bits, but a row holds the "
                             "integer 5000000000; declare the column as what it holds, or mend the row", before)

    def test_a_row_that_cannot_be_computed(self):
        self.sql("CREATE TABLE n (i INTEGER)")
        self.sql("CREATE VIEW v AS SELECT i, abs(i - 1 - 9223372036854775807) AS big FROM n")
        database = self.database()
        for before in [0, 15]:
            database.execute("DELETE FROM n")
            database.executemany("INSERT INTO n VALUES (?)", [(i,) for i in range(1, before + 1)] + [(0,)])
            self.assertEqual(self.refused(1, "dump", "v"), "cannot read the rows of v: integer overflow", before)

    def test_the_database_s_own_words(self):
        self.sql('CREATE TABLE k ("order" INTEGER, a INTEGER)')
        for words in [["--fields", "order"], ["--where", "order = 1"]]:
            self.assertEqual(self.refused(1, "dump", "k", *words),
                             'cannot read the rows of k: near "ORDER": syntax error')
        self.assertIn("cannot describe the table none: no such table: none", self.refused(1, "dump", "none"))


if __name__ == "__main__":
    unittest.main()
