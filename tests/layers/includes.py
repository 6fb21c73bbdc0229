#!/usr/bin/env python3
"""includes.py ROOT: the folders know each other in one direction only.

The lower three subsystems know nothing above them, so that numbers, orbits and observations can be
used and tested without a run. The host knows the engine through its public header alone; its own
folders stand one upon the other: files, the session made of them, what is told of it, the command."""
import pathlib
import re
import sys

# Folder, and the folders whose headers it may include besides its own. Folders of the engine that
# are not listed carry the stages of a run and may know each other.
ALLOWED = {
    "src/foundation": [],
    "src/orbit": ["foundation"],
    "src/observation": ["foundation", "orbit"],
    "host": ["io", "session", "app", "report"],
    "host/io": [],
    "host/session": ["io"],
    "host/report": ["io", "session"],
    "host/app": ["io", "session", "report"],
}


def included(path):
    return re.findall(r'^\s*#\s*include\s*"([^"]+)"', path.read_text(encoding="utf-8"), re.MULTILINE)


def offences(root):
    engine = {folder.name for folder in (root / "src").iterdir() if folder.is_dir()}
    host = {folder.name for folder in (root / "host").iterdir() if folder.is_dir()}
    for folder, allowed in ALLOWED.items():
        sources = [p for p in (root / folder).rglob("*") if p.suffix in (".h", ".cpp")]
        if not sources:
            yield f"{folder}: no sources found"
        for path in sources:
            for name in included(path):
                first = name.split("/")[0]
                own = first == pathlib.Path(folder).name
                if first in engine | host and not own and first not in allowed:
                    yield f'{path.relative_to(root)} includes "{name}"'


def main():
    found = sorted(set(offences(pathlib.Path(sys.argv[1]))))
    print("\n".join(found) if found else "every folder knows only those below it")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
