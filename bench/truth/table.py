"""The CSV of truth_runs as arrays: one entry per engine run, and an index from session and label of
the run to that entry."""
import csv
import pathlib

import numpy as np

TEXT = {"source", "set", "cut", "block", "start", "systems", "orbits", "antennas", "run", "fault",
        "acceptance", "sats_used", "res_mean_sat"}

WRONG = 50.0  # mm: a fixed answer further off than this horizontally is wrong


def _read(path):
    with open(path, newline="", encoding="utf-8") as file:
        rows = csv.reader(file)
        names = next(rows)
        columns = [[] for _ in names]
        for row in rows:
            if len(row) == len(names):
                for column, value in zip(columns, row):
                    column.append(value)
    table = {}
    for name, column in zip(names, columns):
        if name in TEXT:
            table[name] = np.array(column)
        else:
            table[name] = np.array([float(v) if v else np.nan for v in column])
    return table


def _cached(path):
    """Reading text takes long; the arrays are kept beside it."""
    path = pathlib.Path(path)
    kept = path.with_suffix(".npz")
    if kept.exists() and kept.stat().st_mtime >= path.stat().st_mtime:
        with np.load(kept) as arrays:
            return {name: arrays[name] for name in arrays.files}
    table = _read(path)
    np.savez(kept, **table)
    return table


class Runs:
    """One engine run of each session, or none: rows of the table, -1 where there is none. Values
    without a run are not-a-number, or empty."""

    def __init__(self, table, rows):
        self.table = table
        self.rows = rows

    def has(self):
        return self.rows >= 0

    def at(self, name):
        column = self.table.columns[name]
        missing = "" if column.dtype.kind == "U" else np.nan
        return np.where(self.rows >= 0, column[np.maximum(self.rows, 0)], missing)

    def otherwise(self, other):
        """The other run where a session has not this one."""
        return Runs(self.table, np.where(self.rows >= 0, self.rows, other.rows))

    def where(self, which):
        """None for the other sessions."""
        return Runs(self.table, np.where(which, self.rows, -1))

    def fixed(self):
        return self.at("acceptance") == "fixed"

    def horizontal(self, prefix="e"):
        """mm"""
        return np.hypot(self.at(prefix + "_n"), self.at(prefix + "_e"))

    def up(self, prefix="e"):
        return np.abs(self.at(prefix + "_u"))

    def right(self):
        return self.fixed() & (self.horizontal() <= WRONG)

    def wrong(self):
        return self.fixed() & (self.horizontal() > WRONG)


def distance(one, other, prefix="e", other_prefix=None):
    """mm between the answers of two runs: horizontally, and in height."""
    other_prefix = other_prefix or prefix
    north, east, up = (one.at(f"{prefix}_{c}") - other.at(f"{other_prefix}_{c}") for c in "neu")
    return np.hypot(north, east), np.abs(up)


class Table:
    """table["e_n"]: a column over all runs. table.run("mask20").at("e_n"): over all sessions, the
    value of that run. table.session("length"): over all sessions."""

    def __init__(self, paths):
        parts = [_cached(path) for path in paths]
        self.columns = {name: np.concatenate([part[name] for part in parts]) for name in parts[0]}
        self.cuts, self.first, self.cut = np.unique(self.columns["cut"], return_index=True,
                                                    return_inverse=True)
        self.labels, label = np.unique(self.columns["run"], return_inverse=True)
        self.index = np.full((len(self.cuts), len(self.labels)), -1, dtype=np.int64)
        self.index[self.cut, label] = np.arange(len(label))

    def __getitem__(self, name):
        return self.columns[name]

    def run(self, *labels):
        """The first of the runs that a session has."""
        runs = Runs(self, np.full(len(self.cuts), -1, dtype=np.int64))
        for label in labels:
            place = np.flatnonzero(self.labels == label)
            if len(place) > 0:
                runs = runs.otherwise(Runs(self, self.index[:, place[0]]))
        return runs

    def session(self, name):
        return self.columns[name][self.first]


LENGTHS = [(0.0, 1e3, "to 1 km"), (1e3, 1e4, "1-10 km"), (1e4, 3e4, "10-30 km"),
           (3e4, 1e5, "30-100 km"), (1e5, 3e5, "100-300 km"), (3e5, 1e7, "above 300 km")]


def length_class(lengths):
    names = np.array([name for _, _, name in LENGTHS])
    bounds = np.array([low for low, _, _ in LENGTHS])
    return names[np.searchsorted(bounds, lengths, side="right") - 1]


def span_name(seconds):
    minutes = seconds / 60.0
    return f"{minutes:.0f} min" if minutes < 60 else f"{minutes / 60:.0f} h"


def percentile(values, share):
    values = values[np.isfinite(values)]
    return np.nan if len(values) == 0 else float(np.percentile(values, share))
