"""--home, the current directory, and the command line as a whole."""

import os
import subprocess
import unittest

from harness import ORMEL, HomeTest


class Home(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql("CREATE TABLE t (a INTEGER)")

    def test_works_from_anywhere(self):
        os.mkdir(self.path("elsewhere"))
        self.assertEqual(self.succeed("--home", "../home", "count", "t", cwd=self.path("elsewhere")), "0 rows\n")
        self.assertEqual(self.succeed("--home", self.path("home"), "count", "t", cwd="/"), "0 rows\n")

    def test_may_stand_behind_the_command(self):
        self.assertEqual(self.succeed("count", "t", "--home", "home"), "0 rows\n")

    def test_is_not_needed_in_its_bin(self):
        self.assertEqual(self.succeed("count", "t", cwd=self.path("home/bin")), "0 rows\n")

    def test_wins_over_the_current_directory(self):
        self.succeed("new", "other", "--password-file", "password")
        line = self.fail_with(1, "--home", self.path("other"), "count", "t", cwd=self.path("home/bin"))
        self.assertIn("no such table", line)

    def test_a_relative_file_is_the_callers(self):
        self.write("rows.csv", "1\n2\n")
        self.assertEqual(self.ormel("load", "t", "rows.csv"), "2 rows loaded into t\n")
        os.symlink(self.path("home"), self.path("link"))
        self.assertEqual(self.succeed("--home", "../../link", "load", "t", "../../rows.csv",
                                      cwd=self.path("home/bin")), "2 rows loaded into t\n")

    def test_logs_to_a_slot_of_its_own(self):
        self.assertIn("slot-900", os.listdir(self.path("home/var/log")))
        self.assertNotIn("slot-0", os.listdir(self.path("home/var/log")))
        self.assertIn("LOG_ORMEL", self.read("home/var/log/slot-900"))

    def test_takes_the_directory_of_the_log_from_its_configuration(self):
        text = self.read("home/conf/log.conf").replace("log.path=../var/log", "log.path=../elsewhere")
        self.write("home/conf/log.conf", text)
        self.ormel("count", "t")
        self.assertIn("slot-900", os.listdir(self.path("home/elsewhere")))

    def test_without_one_there_is_one_line(self):
        self.assertEqual(self.fail_with(2, "count", "t"),
                         "there is no ../conf/db.conf here; name a home with --home DIR (ormel new DIR makes one)")

    def test_that_is_none(self):
        for name, reason in [("none", "No such file or directory"), ("password", "Not a directory")]:
            self.assertEqual(self.fail_with(2, "--home", name, "count", "t"),
                             f"{name} is no home: cannot enter {name}/bin: {reason} (ormel new DIR makes a home)")


class CommandLine(HomeTest):
    def test_wrong_use_is_one_line_and_code_2(self):
        for words in [[], ["nonsense"], ["describe"], ["count", "t", "u"], ["count", "t", "--wher", "a = 1"],
                      ["count", "t", "--where"], ["load", "t"], ["update", "t", "--all"], ["sql"], ["new"],
                      ["--home"], ["delete", "t", "--all=x"]]:
            with self.subTest(words=words):
                self.assertIn("(ormel --help tells the commands)", self.fail_with(2, *words))

    def test_help_tells_the_commands(self):
        output = self.succeed("--help")
        for command in ["new", "check", "sql", "describe", "load", "count", "show", "delete", "update", "--home"]:
            self.assertIn(command, output)
        self.assertNotIn("called-from", output)
        self.assertIn("--separator", self.succeed("load", "--help"))

    def test_version(self):
        self.assertRegex(self.succeed("--version"), r"^ormel \d+\.\d+\.\d+\n$")

    def test_a_table_may_be_called_like_a_command(self):
        self.sql("CREATE TABLE count (a INTEGER)")
        self.assertEqual(self.ormel("count", "count"), "0 rows\n")

    def test_a_condition_takes_one_word(self):
        self.sql("CREATE TABLE t (a INTEGER)")
        self.assertEqual(self.ormel("count", "--where", "a = 1", "t"), "0 rows\n")

    def test_names_that_are_no_table_names(self):
        for table in ["", "a b", "a;b", "\"a\"", "a--"]:
            self.assertIn("is no table name", self.refused(2, "count", table))
        self.assertEqual(self.refused(2, "describe", "x" * 28),
                         f"the table name '{'x' * 28}' has 28 bytes; the library carries 27, so give it a shorter name")
        self.sql(f"CREATE TABLE {'x' * 27} (a INTEGER)")
        self.assertEqual(self.ormel("count", "x" * 27), "0 rows\n")

    def test_output_that_cannot_be_written_is_a_failure(self):
        self.sql("CREATE TABLE t (id INTEGER)")
        self.write("x.csv", "1\n2\n")
        many = "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5000) SELECT i FROM n"
        for words in [["sql", "SELECT 1"], ["sql", many], ["sql", "DELETE FROM t"], ["check"], ["describe", "t"], ["count", "t"],
                      ["load", "t", "x.csv"], ["show", "t"], ["put", "t", "id=3"], ["delete", "t", "--all"], ["--help"],
                      ["--version"], ["load", "--help"]]:
            with open("/dev/full", "w") as full:
                done = subprocess.run([ORMEL, "--home", "home", *words], cwd=self.directory, stdout=full,
                                      stderr=subprocess.PIPE, encoding="utf-8")
            self.assertEqual((done.returncode, done.stderr),
                             (1, "ormel: cannot write the output: No space left on device\n"), words)

    def test_rows_are_printed_when_they_are_committed(self):
        self.sql("CREATE TABLE p (id INTEGER PRIMARY KEY)")
        self.sql("CREATE TABLE c (id INTEGER REFERENCES p DEFERRABLE INITIALLY DEFERRED)")
        line = self.refused(1, "sql", "INSERT INTO c VALUES (1) RETURNING id")
        self.assertTrue(line.startswith("the database refused the commit, nothing was changed: "), line)


if __name__ == "__main__":
    unittest.main()
