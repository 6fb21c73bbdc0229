#!/usr/bin/env python3
"""names.py ROOT: what the documents name exists.

In every document, READMEs of the tests too: every link to a file leads to one, with its heading, and
every path in backticks exists, where FOLDER and TARGET stand for any name. In the documents of the method every other name in backticks, too, is one of the
source: an option of the command (`--name`), or a class, function, field or constant of src/ or
include/ outside its comments.
"""
import pathlib
import re
import sys

OF_THE_METHOD = {"method.md", "departures.md", "glossary.md"}
ENGINE = "src"


def without_blocks(text):
    return re.sub(r"^```.*?^```", "", text, flags=re.MULTILINE | re.DOTALL)


def slug(heading):
    """The anchor that a renderer gives a heading."""
    text = re.sub(r"[`*]|\[([^\]]*)\]\([^)]*\)", r"\1", heading).strip().lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def anchors_of(path):
    text = without_blocks(path.read_text(encoding="utf-8"))
    return {slug(h) for h in re.findall(r"^#+\s+(.*?)\s*$", text, re.MULTILINE)}


def link_faults(document, text):
    for target in re.findall(r"\]\(([^)\s]+)\)", text):
        if re.match(r"[a-z]+:", target):
            continue
        name, _, anchor = target.partition("#")
        path = document.parent / name if name else document
        if not path.exists():
            yield f"no file {target}"
        elif anchor and anchor not in anchors_of(path):
            yield f"no heading {target}"


def spans_of(text):
    return re.findall(r"`([^`\n]+)`", without_blocks(text))


def path_exists(root, span):
    return next(root.glob(re.sub(r"\b(FOLDER|TARGET)\b", "*", span.rstrip("/"))), None) is not None


def path_faults(root, spans):
    top = {p.name for p in root.iterdir() if p.is_dir() and not p.name.startswith(".")} - {"build"}
    engine = {p.name for p in (root / ENGINE).iterdir() if p.is_dir()}
    for span in spans:
        if not re.fullmatch(r"[\w.*-]+(/[\w.*-]+)*/?", span) or "/" not in span:
            continue
        first = span.split("/")[0]
        if first in top and not path_exists(root, span):
            yield f"no path {span}"
        elif first in engine - top and not path_exists(root / ENGINE, span):
            yield f"no path {span} in {ENGINE}"


def words_of_code(root, folders):
    words = set()
    for folder in folders:
        for path in (root / folder).rglob("*"):
            if path.suffix in (".h", ".cpp"):
                code = re.sub(r"//[^\n]*|/\*.*?\*/", " ", path.read_text(encoding="utf-8"), flags=re.DOTALL)
                words.update(re.findall(r"[A-Za-z_]\w*", code))
    return words


def options_of_host(root):
    names = set()
    for path in (root / "host").rglob("*.cpp"):
        names.update(re.findall(r'"([a-z][a-z0-9-]*)"', path.read_text(encoding="utf-8")))
    return names


def name_faults(root, spans):
    words = words_of_code(root, ["src", "include"])
    options = options_of_host(root)
    for span in spans:
        if "/" in span:
            continue  # a path
        if span.startswith("--"):
            if span[2:] not in options:
                yield f"no option {span}"
        elif not re.fullmatch(r"[A-Za-z_]\w*(::[A-Za-z_]\w*)*", span):
            yield f"neither a path, an option nor a name: {span}"
        elif any(part not in words for part in span.split("::")):
            yield f"no name {span} in the source"


def faults(root):
    documents = [path for kind in ("*.md", "docs/*.md", "data/*.md", "tests/**/README.md")
                 for path in sorted(root.glob(kind))]
    for document in documents:
        text = document.read_text(encoding="utf-8")
        spans = spans_of(text)
        found = [*link_faults(document, without_blocks(text)), *path_faults(root, spans)]
        if document.name in OF_THE_METHOD:
            found += name_faults(root, spans)
            found += [f"no path {s}" for s in spans if "/" in s and not path_exists(root, s)]
        for fault in dict.fromkeys(found):
            yield f"{document.relative_to(root)}: {fault}"


def main():
    found = list(faults(pathlib.Path(sys.argv[1])))
    print("\n".join(found) if found else "every name is there")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
