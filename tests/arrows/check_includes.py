#!/usr/bin/env python3
"""Reads the include lines of the sources and compares them with arrows.txt, both ways."""
import pathlib
import re
import sys

SOURCES = ("src", "platform", "client", "cli", "examples")
INCLUDE = re.compile(r'^\s*#\s*include\s+([<"])([^>"]+)[>"]', re.MULTILINE)
# Headers of libraries that stand in no folder of the library's name.
LIBRARY_HEADERS = {"csv.h": "csv", "sqlite3.h": "sqlite3", "libpq-fe.h": "libpq"}
SYSTEM_FOLDERS = {"sys", "netinet", "arpa", "linux"}


def read_arrows(path):
    """The list as pairs of where an arrow begins and where it may go."""
    lines = [line for line in path.read_text().splitlines() if line and not line.startswith("#")]
    arrows = set()
    for line in lines:
        begin, ends = line.split(":")
        arrows |= {(begin, end) for end in ends.split()} | {(begin, begin)}
    return arrows


def target_of(root, source, bracket, header):
    """Where an include line points; None for headers of the system."""
    if header in ("ormeldb/qdc.h", "dao/qdc.h"):
        return "qdc"
    if header.startswith("ormeldb/platform/"):
        return "platform"
    if header == "ormeldb.h" or header.startswith("ormeldb/"):
        return "public"
    if bracket == "<":
        folder, slash, _ = header.rpartition("/")
        if slash:
            return None if folder.split("/")[0] in SYSTEM_FOLDERS else folder.split("/")[0]
        return LIBRARY_HEADERS.get(header)
    for base in (source.parent, pathlib.Path(source.parts[0])):
        if (root / base / header).is_file():
            return str((base / header).parent)
    return f"a file that is not there ({header})"


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: check_includes.py SOURCE_ROOT ARROWS_FILE")
    root = pathlib.Path(sys.argv[1])
    arrows = read_arrows(pathlib.Path(sys.argv[2]))
    used, wrong, files = set(), [], 0
    for path in sorted(path for folder in SOURCES for path in (root / folder).rglob("*.*")):
        if path.suffix not in (".c", ".cpp", ".h"):
            continue
        files += 1
        source = path.relative_to(root)
        for bracket, header in INCLUDE.findall(path.read_text()):
            target = target_of(root, source, bracket, header)
            begins = (str(source), str(source.parent))
            allowed = {(begin, target) for begin in begins} & arrows
            used |= allowed
            if target is not None and target not in begins and not allowed:
                wrong.append(f"{source}: includes {header}, but there is no arrow {begins[1]} -> {target}")
    wrong += [f"{begin} -> {end}: listed, and no file includes so" for begin, end in sorted(arrows - used)
              if begin != end]
    if files == 0:
        wrong.append(f"no source file found below {root}")
    print("\n".join(wrong + [f"{files} files read, {len(wrong)} arrows wrong"]))
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
