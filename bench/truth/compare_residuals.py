#!/usr/bin/env python3
"""compare_residuals.py REAL.csv SIMULATED.csv [--duration S]: what real sessions and their simulated
look-alikes have in common, side by side. REAL comes from truth_runs, SIMULATED from look_alikes, both
with the runs "main", "model1" and "model6".

Medians over the sessions of a set; of errors also the 90 % quantile. Millimetres."""
import argparse
import csv
import math

import numpy


def read(path, duration):
    with open(path, encoding="utf-8") as file:
        rows = [row for row in csv.DictReader(file) if float(row["duration"] or 0) == duration]
    return rows


def number(row, column):
    try:
        return float(row[column])
    except (KeyError, ValueError):
        return math.nan


def column(rows, name):
    return numpy.array([number(row, name) for row in rows])


def median(values):
    values = values[numpy.isfinite(values)]
    return float(numpy.median(values)) if values.size else math.nan


def quantile(values, share):
    values = values[numpy.isfinite(values)]
    return float(numpy.quantile(values, share)) if values.size else math.nan


def fixed(rows):
    return [row for row in rows if row["acceptance"] == "fixed"]


def horizontal(rows):
    return numpy.hypot(column(rows, "e_n"), column(rows, "e_e"))


def formal(rows):
    return numpy.hypot(column(rows, "fx_sn"), column(rows, "fx_se"))


def of_model(rows, model):
    """The runs with a model; where the main run took it, that one."""
    return [row for row in rows if row["run"] in ("main", f"model{model}")
            and row["model"] == str(model)]


def ratio_of_models(rows):
    """rms of the residuals of model 6 over that of model 1, session by session."""
    one = {row["cut"]: number(row, "res_rms") for row in of_model(rows, 1)}
    return numpy.array([number(row, "res_rms") / one[row["cut"]] for row in of_model(rows, 6)
                        if one.get(row["cut"])])


def about_mean(rows):
    """Rows whose errors are told about their mean: that of one set, or of one seed. So the known
    vector of a set that is a solution of the set itself asks for it."""
    blocks = {}
    for row in rows:
        key = row["block"].split(" ")[1] if row["source"] == "simulated" else row["set"]
        blocks.setdefault(key, []).append(row)
    for block in blocks.values():
        good = [row for row in block if row["run"] == "main" and row["acceptance"] == "fixed"]
        for name in ("e_n", "e_e", "e_u"):
            mean = median(column(good, name))
            for row in block:
                value = number(row, name)
                row[name] = "" if math.isnan(value) else str(value - mean)
    return rows


KNOWN_FROM_ITSELF = ("rosalia", "milano", "bds-monitor")

BINS = [("res_el0", "below 20"), ("res_el20", "20-30"), ("res_el30", "30-45"), ("res_el45", "45-60"),
        ("res_el60", "above 60")]


def lines(rows):
    """Name and value of each line of a set's comparison."""
    main = [row for row in rows if row["run"] == "main"]
    one, six = of_model(rows, 1), of_model(rows, 6)
    yield "sessions", len(main)
    yield "satellites used", median(column(main, "sats_n"))
    yield "satellites above the mask, mean", median(column(main, "sats_up"))
    for name, rows_of in (("model 1", one), ("model 6", six)):
        if not rows_of or all(math.isnan(v) for v in column(rows_of, "res_rms")):
            continue
        yield f"{name}: residual rms", median(column(rows_of, "res_rms"))
        for key, text in BINS:
            yield f"{name}: rms {text} deg", median(column(rows_of, key))
        yield f"{name}: correlation, next epoch", median(column(rows_of, "res_r1"))
        yield f"{name}: correlation, 300 s", median(column(rows_of, "res_r300"))
        yield f"{name}: correlation, 900 s", median(column(rows_of, "res_r900"))
        yield f"{name}: correlation time, s", median(column(rows_of, "res_tau"))
        yield f"{name}: variance factor", median(column(rows_of, "fx_vf"))
    yield "rms of model 6 over model 1", median(ratio_of_models(rows))
    yield "rows rejected, %", 100 * median(column(main, "res_rejected"))
    yield "fixed, %", 100 * len(fixed(main)) / max(1, len(main))
    wrong = [v for v in horizontal(fixed(main)) if v > 50]
    yield "fixed and 50 mm off, %", 100 * len(wrong) / max(1, len(fixed(main)))
    yield "formal sigma, horizontal", median(formal(fixed(main)))
    yield "error, horizontal, median", median(horizontal(fixed(main)))
    yield "error, horizontal, 90 %", quantile(horizontal(fixed(main)), 0.9)
    yield "error, up, median", median(abs(column(fixed(main), "e_u")))
    yield "error, up, 90 %", quantile(abs(column(fixed(main), "e_u")), 0.9)
    yield "triple difference, horizontal", median(
        numpy.hypot(column(main, "td_n"), column(main, "td_e")))
    yield "code position of the base, m", median(column(main, "code_base"))
    yield "code spread at the base, m", median(column(main, "code_spread_base"))
    yield "code spread at the rover, m", median(column(main, "code_spread_rover"))


def shown(value):
    if isinstance(value, int):
        return str(value)
    return "" if math.isnan(value) else f"{value:.3g}"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("real")
    parser.add_argument("simulated")
    parser.add_argument("--duration", type=float, default=3600)
    options = parser.parse_args()
    real, simulated = (read(path, options.duration) for path in (options.real, options.simulated))
    sets = {}
    for row in real:
        name = "bds-monitor" if row["set"].startswith("bds") else row["set"]
        sets.setdefault(name, []).append(row)
    for name, rows in sets.items():
        others = [row for row in simulated if row["set"] == name]
        if not others:
            continue
        if name in KNOWN_FROM_ITSELF:
            rows, others = about_mean(rows), about_mean(others)
        print(f"== {name}, {options.duration:.0f} s")
        print(f"{'':34} {'real':>9} {'simulated':>9}")
        theirs = dict(lines(others))
        for what, value in lines(rows):
            print(f"{what:34} {shown(value):>9} {shown(theirs.get(what, math.nan)):>9}")
        print()


if __name__ == "__main__":
    main()
