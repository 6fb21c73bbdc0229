#!/usr/bin/env python3
"""instructions.py BUILD [--accept]: have three key runs become slower?

Counts the instructions of whole runs (valgrind; the same for the same compiler, whatever else the
machine does) and compares them with those recorded in bench/instructions.json. Exit code 1 when one
has grown by more than 5 %. --accept records the counts as they are now: for a change that is worth
its cost, or one that brought a gain to keep.
BUILD is an optimised build directory with VORNEL_BUILD_BENCH=ON.
"""
import argparse
import json
import pathlib
import re
import subprocess
import sys
import tempfile

from table import sessions_of_files

RECORD = pathlib.Path(__file__).resolve().parent / "instructions.json"
LIMIT = 1.05


# Of the simulated session the engine's exports alone count, not the simulation.
EXPORTS = [f"--toggle-collect={name}" for name in ("InputEpochObsData", "StartProcess")]


def instructions_of(command, folder):
    counter = EXPORTS if "simulated" in command[0].name else []
    done = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={folder}/counts",
                           *counter, *map(str, command)],
                          capture_output=True, text=True, check=False)
    found = re.search(r"I\s+refs:\s+([\d,]+)", done.stderr)
    if done.returncode != 0 or not found:
        sys.exit(f"instructions: this failed: {' '.join(map(str, command))}\n{done.stderr}")
    return int(found.group(1).replace(",", ""))


def key_runs(programs, folder):
    """Name and command."""
    for name, files in sessions_of_files(folder):
        if not name.startswith("Ciboure"):
            yield name, [programs / "file_run", *files]
    yield "simulated, 1 h at 30 s, four systems", [programs / "simulated_run", "120", "30"]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--accept", action="store_true")
    arguments = parser.parse_args()
    programs = arguments.build.resolve() / "bench"
    with tempfile.TemporaryDirectory() as folder:
        counts = {name: instructions_of(command, folder)
                  for name, command in key_runs(programs, pathlib.Path(folder))}
    if arguments.accept:
        RECORD.write_text(json.dumps(counts, indent=2) + "\n")
    recorded = json.loads(RECORD.read_text()) if RECORD.exists() else {}
    grown = []
    for name, count in counts.items():
        before = recorded.get(name, 0)
        share = count / before if before else float("inf")
        print(f"{name:40} {count / 1e6:9.1f} million instructions, "
              f"{100.0 * (share - 1.0):+6.2f} % of the record")
        if share > LIMIT:
            grown.append(name)
    if grown:
        print(f"instructions: grown by more than 5 %: {'; '.join(grown)}. Look for the cause, or record it "
              f"with bench/instructions.py {arguments.build} --accept")
        return 1
    print("instructions: three key runs cost what they did")
    return 0


if __name__ == "__main__":
    sys.exit(main())
