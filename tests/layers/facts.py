#!/usr/bin/env python3
"""facts.py ROOT: what engine and host both need is written once, in the public header.

Looks in the code of src/ and host/, without comments and strings, for each fact written out again:
a number that names nothing else here, or one beside a name that tells what it is. Says where, and
by which name of include/VornelBlCore.h it goes. A name of that header that either side does not use
is told too, unless it stands for a value that one side only hands through."""
import pathlib
import re
import sys

SETTINGS = ("samplingInterval|minEpochs|slvmode|shortBaselineLimit|maxFixBaseline|ephemerisSource|"
            "outlierFactor|slipTestCap|ratioThreshold|reservedLimit[AB]|codeStd|phaseStd|periodLength|"
            "tropoModel|pressure|temperature|humidity|reservedMode|galFreq[12]")
COMPARED = r"\s*(?:==|!=|<=|>=|<|>)\s*"

# What to use, and the pattern of the fact written out.
FACTS = [
    ("VORNEL_SATELLITES", r"\b135\b"),
    ("VORNEL_..._OFFSET", r"\b(?:67|103)\b"),
    ("VORNEL_..._COUNT", r"\bk(?:Gps|Glonass|Bds|BeiDou|Galileo)\s*,\s*3[256]\b|[sS]lotCount\s*=\s*32\b"),
    ("VornelSystem", r"\bk(?:Gps|Glonass|Bds|BeiDou|Galileo)\s*=\s*\d"),
    ("VORNEL_EPOCH_SLOTS", r"[sS]lots?\s*=\s*64\b|\b(?:int|double)[ >,]*\b64\b|\b(?:int|double)\s+\w+\[64\]"),
    ("VornelModel", r"\b(?:slvmode|solveModel?|model_?|mode_?)" + COMPARED + r"[1-6]\b"
     r"|\b(?:FindFixed|FindFloat|StatusOfModel)\(\d"
     r"|\bk(?:WideLane|IonosphereFree|IonoFree|(?:First|Second|Both|Two)Frequenc\w+)\s*=\s*\d"),
    ("VornelStatus", r"\bstatus(?:_|\b)" + COMPARED + r"\d\d|\bstatus\s*=\s*\d\d|\{\s*\d\d,\s*[0-6],\s*\w+::k"
     r"|\{\s*[34]\d,\s*[34]\d,\s*[56]\d,|\bkTripleDifference(?:Done|Failed)\s*=\s*\d"),
    ("VORNEL_LOWEST_CHANNEL, VORNEL_HIGHEST_CHANNEL",
     r"[cC]hannel\w*" + COMPARED + r"(?:-7|13)\b|[cC]hannel\w*\s*=\s*(?:-7|13)\b"),
    ("VORNEL_CHANNELS_OF_SLOTS", r"\b1,\s*-4,\s*5,\s*6\b"),
    ("VORNEL_PRECISE_BEFORE, VORNEL_PRECISE_AFTER",
     r"(?:Before|After)\s*=\s*[56]\b|>=\s*5\s*&&[^;]*>=\s*6\b"),
    ("VORNEL_MISSING_PRECISE_VALUE", r"0\.9{12}"),
    ("VORNEL_EPHEMERIS_REACH", r"\b14400(?:\.0*)?\b"),
    ("VORNEL_LEAST_ORBIT_RADIUS, VORNEL_GREATEST_ORBIT_RADIUS",
     r"Radius\s*=\s*(?:15000|40000|15000000|40000000|1\.5e7|4\.?0?e7|15e6|40e6)\b"),
    ("VORNEL_BDT_OFFSET", r"\b\w*[bB]d[st]\w*\s*=\s*-?14(?:\.0*)?\b|-14\.0\b"),
    ("VORNEL_BDS_GEOSTATIONARY", r"[gG]eostationary\w*(?:\s*=|" + COMPARED + r")\s*5\b"),
    ("VORNEL_GREATEST_RATIO", r"\b99\.0+\b"),
    ("VORNEL_DEFAULT_...", rf"\b(?:int|double)\s+(?:{SETTINGS})\s*=\s*(?!0\.0;)[\d.]+"),
]
# Files that have such numbers from elsewhere.
OTHERS = (
    "host/io/",                       # the formats of files, which have numbers of their own
    "src/observation/troposphere.h",  # the weather where the configured one cannot be
)
HEADER = "include/VornelBlCore.h"
# Names whose values one side does not need to know.
HANDED_THROUGH = {
    "host": r"VORNEL_PRECISE_[XYZ]$",
    "src": r"VORNEL_(?:LOWEST|HIGHEST)_CHANNEL$",
}


def code_of(text):
    """The text without comments and strings, every line in its place."""
    blank = re.compile(r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"|'(?:\\.|[^'\\\n])+'", re.DOTALL)
    return blank.sub(lambda m: re.sub(r"[^\n]", " ", m.group()), text)


def sources(root, part):
    return sorted(p for p in (root / part).rglob("*") if p.suffix in (".h", ".cpp"))


def errors_in(root):
    header = (root / HEADER).read_text(encoding="utf-8")
    names = re.findall(r"^\s+(VORNEL_\w+) = ", header, re.MULTILINE) + \
        re.findall(r"^#define (VORNEL_\w+) +[\w.-]", header, re.MULTILINE)
    names = [name for name in names if not re.match(r"VORNEL_(?:API|NO_ARGUMENTS|\w+_BLOCK|\w+_ARRAYS)$", name)]
    for part in ("src", "host"):
        used = set()
        for path in sources(root, part):
            place = path.relative_to(root).as_posix()
            code = code_of(path.read_text(encoding="utf-8"))
            used |= set(re.findall(r"\bVORNEL_\w+", code))
            if place.startswith(OTHERS):
                continue
            for name, pattern in FACTS:
                for found in re.finditer(pattern, code):
                    line = code.count("\n", 0, found.start()) + 1
                    yield f"{place}:{line}: `{found.group().strip()}` is {name} of {HEADER}"
        for name in names:
            if name not in used and not re.match(HANDED_THROUGH[part], name):
                yield f"{part}: does not use {name} of {HEADER}"


def main():
    found = list(errors_in(pathlib.Path(sys.argv[1])))
    print("\n".join(found) if found else "every shared fact is written once")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
