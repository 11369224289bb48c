#!/usr/bin/env python3
"""Checks the tables of a document that say of each case what holds and which tests show it.

Every row names tests in its last column, "shown by", in `backticks`: as `Suite.Case`, one that a program of GoogleTest's
lists, or as a test of ctest's. All of them are there. The rows are those of a list, so that none is lost.
"""
import argparse
import collections
import pathlib
import re
import subprocess

HEAD = "| shown by |"
SEPARATOR = re.compile(r"(\|-+)+\|")
SUITE = re.compile(r"([\w/]+)\.(?:  # .*)?")
CASE = re.compile(r"  ([\w/]+)(?:  # .*)?")


def rows_of(document):
    """The first and the last cell of each row of the tables whose last column is "shown by"."""
    rows, inside = [], False
    for line in document.read_text(encoding="utf-8").splitlines():
        if not line.startswith("|"):
            inside = False
        elif line.endswith(HEAD):
            inside = True
        elif inside and not SEPARATOR.fullmatch(line):
            cells = [cell.strip() for cell in line.strip("|").split("|")]
            rows.append((cells[0], re.findall(r"`([^`]+)`", cells[-1])))
    return rows


def suite_of(name):
    """Without the instances of parameters: Instance/Suite, Suite/0, Instance/Suite/0."""
    return [part for part in name.split("/") if not part.isdigit()][-1]


def cases_of(program):
    """Suite.Case of every test that the program would run."""
    listed = subprocess.run([program, "--gtest_list_tests"], capture_output=True, encoding="utf-8", check=True).stdout
    suite = None
    for line in listed.splitlines():
        if found := SUITE.fullmatch(line):
            suite = suite_of(found[1])
        elif found := CASE.fullmatch(line):
            yield suite + "." + found[1].split("/")[0]


def faults(rows, known, tests):
    """What is wrong, in words."""
    names = collections.Counter(name for name, _ in rows)
    expected = collections.Counter(known)
    yield from (f"the row '{name}' is gone" for name in expected - names)
    yield from (f"the row '{name}' is not in the list" for name in names - expected)
    for name, named in rows:
        if not named:
            yield f"the row '{name}' names no test"
        yield from (f"the row '{name}' names {test}, and there is no such test" for test in named if test not in tests)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("document", type=pathlib.Path)
    parser.add_argument("list", type=pathlib.Path, help="the first cells of the rows, one a line")
    parser.add_argument("--programs", nargs="+", required=True)
    parser.add_argument("--tests", nargs="+", required=True)
    arguments = parser.parse_args()
    rows = rows_of(arguments.document)
    tests = set(arguments.tests).union(*map(cases_of, arguments.programs))
    found = list(faults(rows, arguments.list.read_text(encoding="utf-8").splitlines(), tests))
    for fault in found:
        print(f"{arguments.document.name}: {fault}")
    print(f"{len(rows)} rows, {sum(len(named) for _, named in rows)} tests named")
    return 1 if found else 0


if __name__ == "__main__":
    raise SystemExit(main())
