#!/usr/bin/env python3
"""Compares the interface of a shared library, names, signatures and layouts, with the committed dump of it.

With --accept, writes the dump anew instead: after a name was added, or together with a new soname.
"""
import argparse
import pathlib
import re
import subprocess
import sys
import tempfile

# Left out: what would make the dump depend on the machine or on the compiler's options.
DUMP = ["abidw", "--exported-interfaces-only", "--drop-private-types", "--no-show-locs", "--no-comp-dir-path",
        "--no-corpus-path", "--no-elf-needed"]
SOURCE = re.compile(r"(?<= path=')[^']*/(?=src/)")  # the way from the build folder to the sources
COMPARE = ["abidiff", "--no-show-locs"]
CHANGED, FAILED = 4, 3  # of abidiff's exit status


def dump(library, headers):
    command = [*DUMP, "--headers-dir", headers, library]
    return SOURCE.sub("", subprocess.run(command, capture_output=True, text=True, check=True).stdout)


def differences(old, new, *options):
    """What abidiff says; empty where the interfaces are the same."""
    run = subprocess.run([*COMPARE, *options, old, new], capture_output=True, text=True)
    if run.returncode & FAILED:
        sys.exit(f"abidiff failed with {run.returncode}:\n{run.stdout}{run.stderr}")
    return run.stdout if run.returncode & CHANGED else ""


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("library")
    parser.add_argument("headers", help="folder of the installed headers")
    parser.add_argument("dump", type=pathlib.Path)
    parser.add_argument("--accept", action="store_true")
    arguments = parser.parse_args()
    present = dump(arguments.library, arguments.headers)
    if arguments.accept:
        arguments.dump.write_text(present)
        return
    with tempfile.NamedTemporaryFile("w", suffix=".abi") as file:
        file.write(present)
        file.flush()
        moved = differences(arguments.dump, file.name, "--no-added-syms")
        if moved:
            sys.exit(f"{moved}\nPrograms that were built with the old interface may break: mend it, or raise the soname.")
        added = differences(arguments.dump, file.name)
    if added:
        command = " ".join([sys.argv[0], arguments.library, arguments.headers, str(arguments.dump), "--accept"])
        sys.exit(f"{added}\nOnly additions: take them into the dump with\n  {command}")


if __name__ == "__main__":
    main()
