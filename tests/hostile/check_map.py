#!/usr/bin/env python3
"""Checks that every test that a document names as `Suite.Case` is there."""
import pathlib
import re
import sys

NAMED = re.compile(r"`(\w+\.[A-Z]\w+)`")
DEFINED = re.compile(r"^TEST(?:_F|_P)?\(\s*(\w+)\s*,\s*(\w+)\s*\)", re.MULTILINE)


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: check_map.py DOCUMENT FOLDER_OF_TESTS")
    document, tests = map(pathlib.Path, sys.argv[1:])
    defined = {".".join(found) for path in tests.rglob("*.cpp") for found in DEFINED.findall(path.read_text())}
    named = set(NAMED.findall(document.read_text()))
    missing = sorted(named - defined)
    for name in missing:
        print(f"{document.name} names {name}, and there is no such test")
    print(f"{len(named)} tests named")
    return not missing and bool(named)


if __name__ == "__main__":
    sys.exit(0 if main() else 1)
