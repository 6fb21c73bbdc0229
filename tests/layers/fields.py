#!/usr/bin/env python3
"""fields.py ROOT COMPILER: a stage reads and writes of the run what its head says, and no more.

The heads of the sources say it so, with members of a field in brackets:

    // Of the run, CutPeriods
    //   reads   epochs (satListF1, satListF2), solveModel
    //   writes  epochs (activeSats), periods

Each source of a stage is compiled against a run that has only the fields which are named there, and
as constants those that are only read: that it compiles shows that it does nothing else. The fields
it says it writes are then made constants, which must give an error at each. Fields that a called
function reads or writes by its own words must be named as well. docs/architecture.md repeats the
fields in a table, which is compared."""
import concurrent.futures
import pathlib
import re
import subprocess
import sys
import tempfile

FOLDERS = ("difference", "preparation", "estimation", "ambiguity")
RUN = "run/static_solve.h"
TABLE = "docs/architecture.md"
ANTENNAS = {"l1PcoRover", "l2PcoRover", "trueHeightRover", "l1PcoBase", "l2PcoBase", "trueHeightBase"}
HEAD = re.compile(r"^// Of the run, (\S+).*\n((?://   .*\n)+)", re.MULTILINE)
FIELD = re.compile(r"^    [\w:<>* ]*?[ *](\w+)(?:\[\d\])?(?: = [^;]+)?;.*$", re.MULTILINE)


def fields_in(declaration):
    """The data members of the run: name -> line of the header."""
    start = declaration.index("class StaticSolve {")
    body = declaration[start:declaration.index("// Copies all", start)]
    return {match[1]: match[0] for match in FIELD.finditer(body)}


def code_of(path):
    return re.sub(r"//[^\n]*", "", path.read_text(encoding="utf-8")) if path.exists() else ""


class Words:
    """What the head of a source says of one function."""

    def __init__(self, path, function, text, fields):
        self.path, self.function = path, function
        joined = " ".join(line[2:].strip() for line in text.splitlines())
        reads, writes = re.fullmatch(r"reads (.*) writes (.*)", joined).groups()
        self.named = [self.plain(reads), self.plain(writes)]
        self.fields = [(names & fields.keys()) | (ANTENNAS if "antennas" in names else set())
                       for names in self.named]
        self.settings = {name for inside in re.findall(r"\bconfig \(([^)]*)\)", joined)
                         for name in inside.split(", ")}

    @staticmethod
    def plain(text):
        return set(re.findall(r"\w+", re.sub(r"\([^)]*\)", "", text)))


class Sources:
    def __init__(self, root):
        self.root, self.src = root, root / "src"
        self.run = (self.src / RUN).read_text(encoding="utf-8")
        self.fields = fields_in(self.run)
        self.words = [Words(path, match[1], match[2], self.fields)
                      for path in sorted(self.src.rglob("*.[ch]*"))
                      for match in HEAD.finditer(path.read_text(encoding="utf-8"))]
        self.stages = [path for folder in FOLDERS for path in sorted((self.src / folder).glob("*.cpp"))
                       if self.src / RUN in self.headers_of(path)]

    def headers_of(self, path, known=None):
        """The project's headers that a source includes, directly or not."""
        known = set() if known is None else known
        for name in re.findall(r'^#include "([^"]+)"', path.read_text(encoding="utf-8"), re.MULTILINE):
            header = self.src / name
            if header.exists() and header not in known:
                known.add(header)
                self.headers_of(header, known)
        return known

    def words_of(self, stem):
        """Of a source and its header."""
        return [words for words in self.words if words.path.with_suffix("") == stem]

    def code_at(self, stem):
        return code_of(stem.with_suffix(".h")) + code_of(stem.with_suffix(".cpp"))

    def called(self, stem):
        """The words on functions of other sources that this one calls."""
        code = self.code_at(stem)
        return [words for words in self.words if words.path.with_suffix("") != stem
                and re.search(rf"\b{words.function}\b", code)]


def union(sets):
    return set().union(*sets)


def errors_of_words(sources):
    for stem in sorted({words.path.with_suffix("") for words in sources.words + [
            Words(path, "", "// reads x writes x", {}) for path in sources.stages]}):
        place = stem.relative_to(sources.root)
        own, called, code = sources.words_of(stem), sources.called(stem), sources.code_at(stem)
        if place == pathlib.Path("src") / pathlib.Path(RUN).with_suffix(""):
            continue  # runs the stages
        for part, verb in enumerate(("read", "written")):
            said = union(words.fields[part] for words in own)
            lent = union(words.fields[part] for words in called)
            for field in sorted(lent - said):
                yield f"{place}: {field} is {verb} by what it calls, which it does not say"
            for field in sorted(said - lent):
                if not re.search(rf"\b{field}\b", code):
                    yield f"{place}: {field} is said to be {verb}, and does not occur"
        settings = set(re.findall(r"\bconfig\.(\w+)", code)) | union(words.settings for words in called)
        for name in sorted(settings ^ union(words.settings for words in own)):
            yield f"{place}: config.{name} is used or said, not both"


def compile_against(sources, compiler, path, readable, writable):
    """Exit code and messages of compiling a source against a run that has these fields alone."""
    run = sources.run
    for field, line in sources.fields.items():
        if field not in readable | writable:
            run = run.replace(line, "")
        elif field not in writable:
            run = run.replace(line, re.sub(r"^    (const )?", "    const ", line))
    options = ["-std=c++20", "-fsyntax-only", "-w"] + ["-ferror-limit=0"] * ("clang" in compiler)
    with tempfile.TemporaryDirectory() as folder:
        altered = pathlib.Path(folder) / RUN
        altered.parent.mkdir()
        altered.write_text(run, encoding="utf-8")
        done = subprocess.run([compiler, *options, f"-I{folder}", f"-I{sources.src}",
                               f"-I{sources.root / 'include'}", path],
                              capture_output=True, text=True, check=False)
    return done.returncode, done.stderr


def errors_of_code(sources, compiler, path):
    place = path.relative_to(sources.root)
    own = sources.words_of(path.with_suffix(""))
    headers = sources.headers_of(path) - {sources.src / RUN}
    at_hand = own + [words for words in sources.words if words.path in headers]
    reads, writes = (union(words.fields[part] for words in at_hand) for part in (0, 1))
    failed, messages = compile_against(sources, compiler, path, reads, writes)
    if failed:
        error = next((line for line in messages.splitlines() if "error:" in line), messages)
        return [f"{place}: does more than it says: {error}"]
    said = union(words.fields[1] for words in own)
    said -= union(words.fields[1] for words in sources.called(path.with_suffix("")))
    if not said:
        return []
    _, messages = compile_against(sources, compiler, path, reads | writes, writes - said)
    return [f"{place}: does not write {field}" for field in sorted(said)
            if not re.search(rf"\b{field}\b", statements_at(path, messages))]


def statements_at(path, messages):
    """The statements of a source, down to the lines that errors point to."""
    lines = path.read_text(encoding="utf-8").splitlines()
    found = []
    for number in re.findall(rf"{re.escape(str(path))}:(\d+):\d+: error:", messages):
        last = first = int(number) - 1
        while first > 0 and not lines[first - 1].rstrip().endswith((";", "{", "}")):
            first -= 1
        found += lines[first:last + 1]
    return "\n".join(found)


def errors_of_table(sources, text):
    """The rows `function` | reads | writes of the document against the words of the sources."""
    rows = {match[1]: match.groups()[1:] for match in re.finditer(
        r"^\|[^|]*\| `(\w+)` \|([^|]*)\|([^|]*)\|$", text, re.MULTILINE)}
    for words in sources.words:
        stage = words.path.parent.name in FOLDERS[1:] and words.path.suffix == ".cpp"
        if not stage and words.function != "SelectSolveMode":
            continue
        if words.function not in rows:
            yield f"{TABLE}: no row of {words.function}"
            continue
        for cell, named in zip(rows[words.function], words.named):
            said = named & (sources.fields.keys() | {"antennas"})
            for field in sorted(set(re.findall(r"`(\w+)`", cell)) ^ said):
                yield f"{TABLE}: {words.function}: {field} is in the table or in the source, not both"


def errors_in(root, compiler):
    sources = Sources(root)
    yield from errors_of_words(sources)
    yield from errors_of_table(sources, (root / TABLE).read_text(encoding="utf-8"))
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        for errors in pool.map(lambda path: errors_of_code(sources, compiler, path), sources.stages):
            yield from errors


def main():
    found = sorted(set(errors_in(pathlib.Path(sys.argv[1]).resolve(), sys.argv[2])))
    print("\n".join(found) if found else "every stage reads and writes what it says")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
