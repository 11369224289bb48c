#!/usr/bin/env python3
"""Compares the names that a shared library exports with a reviewed list, both ways.

With --imports, compares instead the names that the library leaves to the other libraries given: the list has exactly
those, and none of the others' names is defined in it.
"""
import argparse
import pathlib
import subprocess
import sys


def names(library, option):
    """The library's dynamic names without their versions; the versions themselves (A) are no names."""
    listing = subprocess.run(["nm", "-D", option, library], capture_output=True, text=True, check=True).stdout
    fields = (line.split() for line in listing.splitlines())
    return {field[-1].split("@")[0] for field in fields if field[-2] != "A"}


def compare(found, listed, list_path, kind):
    """Prints the differences in the form of a patch to the list; whether there is none."""
    for name in sorted(found - listed):
        print(f"+{name}\t{kind} and not in {list_path}")
    for name in sorted(listed - found):
        print(f"-{name}\tin {list_path} and not {kind}")
    return found == listed


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("library")
    parser.add_argument("list", type=pathlib.Path)
    parser.add_argument("--imports", nargs="+", metavar="LIBRARY")
    arguments = parser.parse_args()
    lines = [line for line in arguments.list.read_text().splitlines() if line and not line.startswith("#")]
    sound = lines == sorted(set(lines))
    if not sound:
        print(f"{arguments.list} is not sorted or has a name twice")
    defined = names(arguments.library, "--defined-only")
    if arguments.imports is None:
        return sound & compare(defined, set(lines), arguments.list.name, "exported")
    provided = set().union(*(names(library, "--defined-only") for library in arguments.imports))
    for name in sorted(defined & provided):
        print(f"{name}\tdefined in {arguments.library}, where it belongs to another library")
    imported = names(arguments.library, "--undefined-only") & provided
    return sound & compare(imported, set(lines), arguments.list.name, "imported") & defined.isdisjoint(provided)


if __name__ == "__main__":
    sys.exit(0 if main() else 1)
