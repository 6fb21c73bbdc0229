#!/usr/bin/env python3
"""includes.py ROOT: every folder of the engine and of the host includes only folders below it.

FOLDERS is the whole list, from the bottom to the top. A folder that is missing from it, an entry
without sources, and an include that the entry does not allow are errors. The engine and the host
know nothing of each other but include/VornelBlCore.h."""
import pathlib
import re
import sys

# Folder -> the folders whose headers it may include besides its own. Each names only folders that
# are listed before it, so that no include can go up or in a circle.
FOLDERS = {
    "src/foundation": [],
    "src/orbit": ["foundation"],
    "src/observation": ["foundation", "orbit"],
    # The run: its object, its configuration, its records.
    "src/run": ["foundation", "observation"],
    "src/difference": ["foundation", "observation", "run"],
    # The stages are neighbours; none knows another.
    "src/preparation": ["foundation", "orbit", "observation", "run", "difference"],
    "src/estimation": ["foundation", "run", "difference"],
    "src/ambiguity": ["foundation", "run", "difference"],
    # The exports run the stages through the object of the run, whose members they are.
    "src/exports": ["foundation", "orbit", "observation", "run"],

    "host/io": [],
    "host/engine": ["io"],
    "host/session": ["io", "engine"],
    "host/process": [],
    "host/solve": ["io", "engine", "session", "process"],
    "host/network": ["io", "session"],
    "host/exports": ["io", "session"],
    "host/report": ["io", "engine", "session", "solve"],
    "host/app": ["io", "engine", "session", "process", "solve", "report"],
}
PUBLIC_HEADER = "VornelBlCore.h"
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
SOURCES = (".h", ".cpp")


def sources_of(folder):
    return sorted(p for p in folder.rglob("*") if p.suffix in SOURCES)


def parts_of(root):
    """The folders right below src/ and host/ that hold sources, as "src/run"."""
    return [f"{part}/{folder.name}" for part in ("src", "host")
            for folder in sorted((root / part).iterdir()) if folder.is_dir() and sources_of(folder)]


def errors_of_table(table, present):
    for folder in present:
        if folder not in table:
            yield f"{folder}: not in the table of folders"
    below = []
    for folder, allowed in table.items():
        part = folder.split("/")[0]
        if folder not in present:
            yield f"{folder}: in the table, but without sources"
        for name in allowed:
            if f"{part}/{name}" not in below:
                yield f"{folder}: the table lets it include {name}, which does not stand before it"
        below.append(folder)


def errors_of_includes(root, table):
    names = {folder.split("/")[1] for folder in table}
    for part in ("src", "host"):
        for path in sources_of(root / part):
            place = path.relative_to(root)
            if len(place.parts) < 3:
                yield f"{place}: stands in no folder"
                continue
            own = place.parts[1]
            allowed = [own, *table.get(f"{part}/{own}", [])]
            for quote, name in INCLUDE.findall(path.read_text(encoding="utf-8")):
                first = name.split("/")[0]
                if name == PUBLIC_HEADER or (quote == "<" and first not in names):
                    continue
                # "folder/file.h" from the root of the sources, so that the table can be held to it.
                if first not in allowed or "/" not in name or ".." in name.split("/"):
                    yield f'{place} includes "{name}"'


def errors_in(root, table):
    return sorted({*errors_of_table(table, parts_of(root)), *errors_of_includes(root, table)})


def main():
    found = errors_in(pathlib.Path(sys.argv[1]), FOLDERS)
    print("\n".join(found) if found else f"{len(FOLDERS)} folders, each includes only those below it")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
