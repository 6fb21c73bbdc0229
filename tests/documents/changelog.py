"""changelog.py CHANGELOG VERSION: the changelog keeps the form that people and programs read.

It begins with what is not released, lists versions from the newest, of which VERSION is the last, and
sorts changes by the kinds of Keep a Changelog."""
import pathlib
import re
import sys

KINDS = {"Added", "Changed", "Deprecated", "Removed", "Fixed", "Security"}


def faults(text, version):
    sections = re.findall(r"^## (.+)$", text, re.MULTILINE)
    if sections[:1] != ["[Unreleased]"]:
        yield "it does not begin with [Unreleased]"
    released = [s for s in sections if s != "[Unreleased]"]
    for section in released:
        if not re.fullmatch(r"\[\d+\.\d+\.\d+\] - \d{4}-\d\d-\d\d", section):
            yield f"neither a version with its date nor [Unreleased]: {section}"
    dates = [section[-10:] for section in released]
    if dates != sorted(dates, reverse=True):
        yield "the newest version is not the first"
    if not released or not released[0].startswith(f"[{version}]"):
        yield f"{version}, the version of CMakeLists.txt, is not the newest listed"
    for kind in re.findall(r"^### (.+)$", text, re.MULTILINE):
        if kind not in KINDS:
            yield f"no kind of change: {kind}"


def main():
    found = list(faults(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"), sys.argv[2]))
    print("\n".join(found) if found else "the changelog keeps its form")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
