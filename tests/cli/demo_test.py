"""The demo, with the command that is being tested."""

import csv
import json
import os
import re
import subprocess
import unittest

from harness import ORMEL, POSTGRES, SOURCE, DirectoryTest

DATA = "/usr/share/unicode/UnicodeData.txt"


class Demo(DirectoryTest):
    def test_shows_what_is_in_the_file(self):
        with open(DATA, encoding="ascii", newline="") as file:
            rows = list(csv.reader(file, delimiter=";"))
        done = subprocess.run([os.path.join(SOURCE, "scripts/demo-steps"), ORMEL, self.directory], capture_output=True,
                              encoding="utf-8", timeout=280)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.stdout)
        steps = {}
        for step in done.stdout.split("\n$ ")[1:]:
            command, _, output = step.partition("\n")
            steps.setdefault(command, []).append(output.split("\n\n# ")[0].strip("\n"))

        def said(command):
            return steps["ormel --home home " + command]

        def count(condition):
            return f"{sum(map(condition, rows))} rows"

        self.assertEqual(said("load unicode /usr/share/unicode/UnicodeData.txt --separator ';'"),
                         [f"{len(rows)} rows loaded into unicode"])
        left = [row for row in rows if row[2] != "Co" and row[0] > "001F"]
        self.assertEqual(said("count unicode"), [f"{len(rows)} rows", f"{len(left)} rows"])
        self.assertEqual(said("count unicode --where 'combining <> 0'"), [count(lambda row: row[3] != "0")])
        self.assertEqual(said("count unicode --where 'name like %ARROW%' --where 'category = Sm'"),
                         [count(lambda row: "ARROW" in row[1] and row[2] == "Sm")])
        snow = count(lambda row: row[1].startswith("SNOW"))
        self.assertTrue(said("show unicode --where 'name like SNOW%'")[0].endswith(f"\n({snow})"))
        self.assertIn(" 2603  | SNOWMAN ", said("show unicode --where 'name like SNOW%'")[0])
        self.assertEqual(json.loads(said("get unicode --where 'name like SNOW%' --fields 'code,name' --limit 2 --json")[0]),
                         [{"CODE": row[0], "NAME": row[1]} for row in rows if row[1].startswith("SNOW")][:2])
        self.assertEqual(said("update unicode 'remark=seen in winter' --where 'name like SNOW%'"), [snow + " updated"])
        self.assertEqual(said("count unicode --where 'remark = seen in winter'"), [snow])
        self.assertEqual(said("delete unicode --where 'category = Co'"), [count(lambda row: row[2] == "Co") + " deleted"])
        self.assertIn("15 columns, record length ", said("describe unicode")[0])
        if POSTGRES:
            self.assertIn(f"\ndatabase       postgres on localhost:{POSTGRES}, until the demo ends\n", done.stdout)
            self.assertIn("engine        postgres\n", said("check")[0])
        for place in ["conf/db.conf", "var/log/slot-900"] + ([] if POSTGRES else ["data/ormel.db"]):
            self.assertIn(self.path("home/" + place), done.stdout)
            self.assertTrue(os.path.exists(self.path("home/" + place)))
        last = steps["tail -n 5 home/var/log/slot-900"][0].splitlines()
        self.assertIn("# The last command began with ORMEL_TransMgrInit", done.stdout)
        self.assertEqual(len(last), 5)
        for line in last:
            self.assertRegex(line, r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{6} [A-Z]+ LOG_ORMEL:\d+:\w+: ")
        self.assertRegex(last[-1], r"ORMEL_TransMgrClean: After Uninit, Conn count: 0$")
        log = self.read("home/var/log/slot-900")
        self.assertIn("a line at the level ERROR would be a failure, and there is none.\n", done.stdout)
        self.assertNotIn(" ERROR ", log)
        self.assertLess(len(log.splitlines()), 1000, "no line for each record")
        self.assertTrue(any(re.search(r"db\.conf host:", line) for line in last), last)

    def run_demo(self, *words):
        return subprocess.run([os.path.join(SOURCE, "scripts/demo"), *words], capture_output=True, encoding="utf-8",
                              timeout=100)

    def test_tells_its_usage(self):
        for word in ["--help", "-h"]:
            done = self.run_demo(word)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertTrue(done.stdout.startswith("usage: scripts/demo [--engine ENGINE]\n"), done.stdout)

    def test_an_engine_that_there_is_not(self):
        for words in [["--engine", "none"], ["--engine"], ["postgres"], ["--engine", "postgres", "twice"]]:
            done = self.run_demo(*words)
            self.assertEqual((done.returncode, done.stdout), (2, ""))
            lines = done.stderr.splitlines()
            self.assertEqual(lines[0], "scripts/demo: it does not take these words: " + " ".join(words))
            self.assertIn("ENGINE is sqlite", lines[2])


if __name__ == "__main__":
    unittest.main()
