#!/usr/bin/env python3
"""Fails unless the programs of all engines hold the same cases of the suite: compare_cases.py PROGRAM PROGRAM ..."""
import pathlib
import subprocess
import sys


def cases(program):
    """The names of the suite's cases, without the engine's."""
    engine = pathlib.Path(program).name.removeprefix("contract_")
    found, suite = set(), ""
    listed = subprocess.run([program, "--gtest_list_tests"], check=True, stdout=subprocess.PIPE, encoding="utf-8")
    for line in listed.stdout.splitlines():
        name = line.split("#")[0].strip()
        if not line.startswith(" "):
            suite = name
        elif suite.startswith("Contract/"):
            found.add(suite + name.removesuffix("/" + engine))
    return found


def main():
    first, *others = sys.argv[1:]
    expected = cases(first)
    if not expected or not others:
        sys.exit("compare_cases.py: there is nothing to compare")
    for program in others:
        for case in sorted(expected ^ cases(program)):
            print(f"{case}: only one of {first} and {program} has it", file=sys.stderr)
        if expected != cases(program):
            sys.exit(1)
    print(f"{len(expected)} cases in each of {len(others) + 1} programs")


main()
