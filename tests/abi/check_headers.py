#!/usr/bin/env python3
"""Compiles every installed header alone, as each language and with each compiler that callers use."""
import concurrent.futures
import itertools
import pathlib
import subprocess
import sys

LANGUAGES = {"c99": "c", "c11": "c", "c++20": "c++"}
COMPILERS = {"c": ["gcc", "clang-14"], "c++": ["g++", "clang++-14"]}
WARNINGS = ["-pedantic", "-Wall", "-Wextra", "-Werror"]


def compile_alone(include_dirs, header, standard, compiler):
    """Includes a header twice, so that its guard is tried as well; what the compiler said, or nothing."""
    source = f"#include <{header}>\n" * 2
    command = [compiler, "-x", LANGUAGES[standard], f"-std={standard}", *WARNINGS, "-fsyntax-only"]
    command += [f"-I{directory}" for directory in include_dirs] + ["-"]
    run = subprocess.run(command, input=source, capture_output=True, text=True)
    return f"{header} as {standard} with {compiler}:\n{run.stderr}" if run.returncode else ""


def main():
    if len(sys.argv) < 2:
        sys.exit("usage: check_headers.py INCLUDE_DIRECTORY...")
    include_dirs = [pathlib.Path(argument) for argument in sys.argv[1:]]
    headers = sorted({str(path.relative_to(directory)) for directory in include_dirs for path in directory.rglob("*.h")})
    if not headers:
        sys.exit("no header found below " + " ".join(sys.argv[1:]))
    jobs = [(include_dirs, header, standard, compiler)
            for header, standard in itertools.product(headers, LANGUAGES)
            for compiler in COMPILERS[LANGUAGES[standard]]]
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        complaints = [text for text in pool.map(lambda job: compile_alone(*job), jobs) if text]
    print("\n".join(complaints) + f"{len(headers)} headers, {len(jobs)} compilations, {len(complaints)} failed")
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
