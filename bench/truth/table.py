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


class Table:
    """table["e_n"]: a column over all runs. table.at("mask20", "e_n"): over all sessions, the value
    of that run, not-a-number (or "") where the session has no such run. table.session("length"):
    over all sessions."""

    def __init__(self, paths):
        parts = [_cached(path) for path in paths]
        self.columns = {name: np.concatenate([part[name] for part in parts]) for name in parts[0]}
        self.cuts, first, self.cut = np.unique(self.columns["cut"], return_index=True,
                                               return_inverse=True)
        self.labels, label = np.unique(self.columns["run"], return_inverse=True)
        self.index = np.full((len(self.cuts), len(self.labels)), -1, dtype=np.int64)
        self.index[self.cut, label] = np.arange(len(label))
        self.first = first

    def __getitem__(self, name):
        return self.columns[name]

    def has(self, label):
        """Which sessions have the run."""
        place = np.flatnonzero(self.labels == label)
        if len(place) == 0:
            return np.zeros(len(self.cuts), dtype=bool)
        return self.index[:, place[0]] >= 0

    def at(self, label, name):
        column = self.columns[name]
        missing = "" if column.dtype.kind == "U" else np.nan
        place = np.flatnonzero(self.labels == label)
        if len(place) == 0:
            return np.full(len(self.cuts), missing)
        rows = self.index[:, place[0]]
        return np.where(rows >= 0, column[np.maximum(rows, 0)], missing)

    def session(self, name):
        return self.columns[name][self.first]

    def fixed(self, label):
        return self.at(label, "acceptance") == "fixed"

    def horizontal(self, label, prefix="e"):
        """mm"""
        return np.hypot(self.at(label, prefix + "_n"), self.at(label, prefix + "_e"))

    def up(self, label, prefix="e"):
        return np.abs(self.at(label, prefix + "_u"))

    def distance(self, one, other, prefix="e", other_prefix=None):
        """mm between two answers: horizontally, and in height."""
        other_prefix = other_prefix or prefix
        north, east, up = (self.at(one, f"{prefix}_{c}") - self.at(other, f"{other_prefix}_{c}")
                           for c in "neu")
        return np.hypot(north, east), np.abs(up)


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
