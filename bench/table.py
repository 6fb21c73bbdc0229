#!/usr/bin/env python3
"""table.py BUILD [--runs N] [--quick]: the time and memory of whole runs, as a Markdown table.

Each run is a process of its own; every figure is the median of N of them (9). Processor time, not
wall time; "vornel solve" is that of the whole command, its start and end included. BUILD is a build directory with VORNEL_BUILD_BENCH=ON. --quick leaves out the two long
simulated sessions. Ends with the growth of the run from one simulated hour to a day.
"""
import argparse
import gzip
import json
import lzma
import os
import pathlib
import statistics
import subprocess
import tempfile

TREE = pathlib.Path(__file__).resolve().parent.parent
WETTZELL = [f"data/wettzell/{name}" for name in (
    "WTZR00DEU_R_20201770000_01H_30S_MO.rnx.gz", "WTZZ00DEU_R_20201770000_01H_30S_MO.rnx.gz",
    "ESBC00DNK_R_20201770000_01D_MN.rnx.gz", "ESBC00DNK_R_20201770000_01D_RN.rnx.gz")]
BASELINES = TREE / "tests/data/baselines"
FIELDS = ("read_s", "input_s", "run_s", "report_s")


def plain(path, folder):
    """The file unpacked into `folder`: what is measured is the reading of plain text."""
    opened = {".gz": gzip.open, ".xz": lzma.open}.get(path.suffix, open)
    unpacked = folder / (path.stem if path.suffix in (".gz", ".xz") else path.name)
    with opened(path, "rb") as packed:
        unpacked.write_bytes(packed.read())
    return unpacked


def sessions_of_files(folder):
    """Name, and base, rover and other files, unpacked."""
    yield "Wettzell, 1 h, four systems", [plain(TREE / name, folder) for name in WETTZELL]
    for name, where, first in (("Ciboure-Pasaia, 2 h, four systems", "ciboure-pasaia", "SCOA"),
                               ("Ebre-Bell, 24 h, GPS", "ebre-bell", "ebre")):
        files = [p for p in sorted((BASELINES / where).iterdir()) if p.suffix == ".xz"]
        stations = [p for p in files if not p.name.lower().startswith("brdc")]
        stations.sort(key=lambda p: not p.name.startswith(first))
        yield name, [plain(p, folder) for p in stations + [p for p in files if p not in stations]]


def median_of(runs, command):
    results = []
    for _ in range(runs):
        done = subprocess.run(command, cwd=TREE, capture_output=True, text=True, check=True)
        results.append(json.loads(done.stdout.strip().splitlines()[-1]))
    return {key: statistics.median(r[key] for r in results) for key in results[0]}


def command_seconds(runs, command):
    """Median of the processor time of a process."""
    seconds = []
    for _ in range(runs):
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            raise subprocess.CalledProcessError(process.returncode, command)
        seconds.append(usage.ru_utime + usage.ru_stime)
    return statistics.median(seconds)


def row(name, result, command=None):
    seconds = [result.get(field) for field in FIELDS]
    whole = sum(s for s in seconds if s is not None)
    memory = result.get("peak_kb", result.get("engine_peak_kb"))
    cells = [name, str(int(result["epochs"]))]
    cells += ["" if s is None else f"{s:.3f}" for s in seconds]
    cells += [f"{whole:.3f}", "" if command is None else f"{command:.3f}"]
    cells += [f"{memory / 1024:.1f}", f"{memory / result['epochs']:.1f}",
              f"{result['epochs'] / whole:.0f}"]
    print("| " + " | ".join(cells) + " |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--runs", type=int, default=9)
    parser.add_argument("--quick", action="store_true")
    arguments = parser.parse_args()
    programs = arguments.build.resolve() / "bench"

    print("| session | epochs | read s | input s | run s | report s | whole s "
          "| `vornel solve` s | peak MB | kB/epoch "
          "| epochs/s |")
    print("|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|--:|")
    with tempfile.TemporaryDirectory() as folder:
        for name, files in sessions_of_files(pathlib.Path(folder)):
            base, rover, *others = files
            command = [arguments.build.resolve() / "vornel", "solve", "--base", base, "--rover",
                       rover, *others]
            row(name, median_of(arguments.runs, [programs / "file_run", *files]),
                command_seconds(arguments.runs, command))
    # Of simulated sessions the memory is what the engine adds to the session's own.
    hour = median_of(arguments.runs, [programs / "simulated_run", "120", "30"])
    row("simulated, 1 h at 30 s, four systems", hour)
    if arguments.quick:
        return
    day = median_of(arguments.runs, [programs / "simulated_run", "2880", "30"])
    row("simulated, 24 h at 30 s, four systems", day)
    row("simulated, 4 h at 1 Hz, four systems",
        median_of(min(arguments.runs, 3), [programs / "simulated_run", "14400", "1"]))
    print(f"\nThe run of 24 h takes {day['run_s'] / hour['run_s']:.1f} times that of 1 h.")


if __name__ == "__main__":
    main()
