#!/usr/bin/python3
"""tables.py CSV... [--select COLUMN=VALUE,VALUE]... [--tables NAME,NAME]: what the sessions of
truth_runs tell, as tables of text.

classes   per class of length and duration: answers, fixed, right, wrong, errors
levers    each other configuration against the plain run, on the sessions that have both
checks    each run as a check of the fixed answer: how many right and wrong ones agree with it
coverage  how often formal bounds hold
signs     what the plain run's own figures tell about a fixed answer
Errors are in millimetres; a fixed answer more than 50 mm off horizontally is wrong."""
import argparse
import sys

import numpy as np

from table import WRONG, LENGTHS, Table, length_class, percentile, span_name

AGREES = 25.0  # mm, horizontally, between the fixed vectors of two runs


def number(value, digits=0):
    return "-" if not np.isfinite(value) else f"{value:.{digits}f}"


def share(part, whole):
    return "-" if whole == 0 else f"{100.0 * part / whole:.0f}"


def show(title, heading, rows):
    if not rows:
        return
    rows = [heading] + [[str(cell) for cell in row] for row in rows]
    widths = [max(len(row[i]) for row in rows) for i in range(len(heading))]
    print(f"\n{title}")
    for row in rows:
        cells = [row[0].ljust(widths[0])] + [c.rjust(w) for c, w in zip(row[1:], widths[1:])]
        print("  " + "  ".join(cells).rstrip())


def independent(table, which):
    return len(np.unique(table.session("block")[which]))


def groups(table, which, by_set=False):
    """Name and members of each class of length and duration that has sessions."""
    lengths = table.session("set") if by_set else length_class(table.session("length"))
    durations = table.session("duration")
    names = sorted(set(lengths[which])) if by_set else [name for _, _, name in LENGTHS]
    for name in names:
        for duration in np.unique(durations[which & (lengths == name)]):
            yield f"{name}, {span_name(duration)}", which & (lengths == name) & (
                durations == duration)


def verdicts(table, label, which):
    fixed = which & table.fixed(label)
    off = table.horizontal(label)
    return fixed, fixed & (off <= WRONG), fixed & (off > WRONG)


def classes(table, which, label="main", by_set=False, title="classes"):
    rows = []
    for name, members in groups(table, which & table.has(label), by_set):
        fixed, right, wrong = verdicts(table, label, members)
        off, up = table.horizontal(label), table.up(label)
        rows.append([name, members.sum(), independent(table, members), fixed.sum(), right.sum(),
                     wrong.sum(), number(percentile(off[members], 50)),
                     number(percentile(off[members], 95)), number(percentile(up[members], 50)),
                     number(percentile(up[members], 95)), number(percentile(off[fixed], 50), 1),
                     number(percentile(off[fixed], 95), 1), number(percentile(up[fixed], 50), 1),
                     number(percentile(up[fixed], 95), 1)])
    show(f"{title}: {label}",
         ["class", "n", "blocks", "fixed", "right", "wrong", "H50", "H95", "U50", "U95",
          "fixed H50", "H95", "U50", "U95"], rows)


def levers(table, which):
    rows = []
    for label in table.labels:
        if label in ("main", "refused", "died"):
            continue
        both = which & table.has("main") & table.has(label)
        if not both.any():
            continue
        row = [label, both.sum()]
        for run in ("main", label):
            _, right, wrong = verdicts(table, run, both)
            off, up = table.horizontal(run)[both], table.up(run)[both]
            row += [right.sum(), wrong.sum(), number(percentile(off, 50), 1),
                    number(percentile(off, 95)), number(percentile(up, 50), 1),
                    number(percentile(up, 95))]
        row.append(number(np.nansum(table.at(label, "run_cpu")[both]) /
                          np.nansum(table.at("main", "run_cpu")[both]), 2))
        rows.append(row)
    show("levers: the plain run, then the other one; the same sessions",
         ["run", "n", "right", "wrong", "H50", "H95", "U50", "U95", "right", "wrong", "H50", "H95",
          "U50", "U95", "cpu"], rows)


def checks(table, which, main="main"):
    fixed, right, wrong = verdicts(table, main, which)
    rows = []
    for label in table.labels:
        if label in (main, "refused", "died"):
            continue
        has = table.has(label)
        if not (has & fixed).any():
            continue
        apart, _ = table.distance(main, label)
        agree = table.fixed(label) & (apart <= AGREES)
        rows.append([label, (has & right).sum(), (has & right & agree).sum(),
                     share((has & right & agree).sum(), (has & right).sum()),
                     (has & wrong).sum(), (has & wrong & agree).sum(),
                     (has & agree & fixed).sum(),
                     share((has & wrong & agree).sum(), (has & wrong).sum())])
    show(f"checks of {main}: fix of the check within {AGREES:.0f} mm of it",
         ["run", "right", "agree", "%", "wrong", "agree", "of agreeing", "% of wrong"], rows)


def coverage(table, which, label="main"):
    rows = []
    r = np.clip(table.at(label, "res_r1"), -0.99, 0.9999)
    stretched = np.sqrt((1 + r) / (1 - r))
    tau = np.sqrt(np.maximum(1.0, table.at(label, "res_tau") / table.session("interval")))
    for prefix, kind, chosen in (
            ("fx", "fixed, right", which & table.fixed(label) & (table.horizontal(label) <= WRONG)),
            ("fl", "float shown", which & (table.at(label, "acceptance") == "float"))):
        for name, members in groups(table, chosen):
            if members.sum() < 10:
                continue
            row = [f"{kind}, {name}", members.sum(), number(np.nanmedian(r[members]), 2),
                   number(np.nanmedian(table.at(label, "res_tau")[members]))]
            for factor in (1.0, stretched, tau):
                for c in "neu":
                    error = np.abs(table.at(label, f"{prefix}_{c}"))
                    bound = 1.96 * table.at(label, f"{prefix}_s{c}") * factor
                    row.append(share((error <= bound)[members].sum(), members.sum()))
            rows.append(row)
    show("coverage of 95 % bounds in percent: formal; times root of (1+r)/(1-r); times root of "
         "correlation time / interval (N E U each)",
         ["class", "n", "r", "tau s", "N", "E", "U", "N", "E", "U", "N", "E", "U"], rows)


def signs(table, which, label="main"):
    fixed, _, wrong = verdicts(table, label, which)
    off_td, _ = table.distance(label, label, "e", "td")
    off_fl, _ = table.distance(label, label, "e", "fl")
    figures = [("integers", [0, 2, 3, 4, 5, 7, 10, 20, 1e9], table.at(label, "integers")),
               ("ratio", [0, 1.8, 2.5, 4, 8, 16, 30, 98.9, 1e9], table.at(label, "ratio")),
               ("wide-lane ratio", [0, 1.8, 4, 30, 98.9, 1e9], table.at(label, "ratio_wl")),
               ("variance factor", [0, 0.25, 0.5, 1, 2, 5, 10, 100, 1e12], table.at(label, "fx_vf")),
               ("rms mm", [0, 2, 5, 10, 20, 50, 100, 1e9], table.at(label, "fx_rms")),
               ("rejected share", [0, 0.01, 0.03, 0.1, 0.2, 0.5, 1.1],
                table.at(label, "res_rejected")),
               ("worst mean, sigmas", [0, 2, 3, 4, 6, 1e9], table.at(label, "res_mean_sigmas")),
               ("to triple difference, mm", [0, 50, 100, 300, 1000, 1e9], off_td),
               ("to float, mm", [0, 20, 50, 100, 300, 1000, 1e9], off_fl),
               ("satellites", [0, 3, 4, 5, 6, 8, 12, 99], table.at(label, "sats_n")),
               ("periods with integers / all", [0, 0.3, 0.6, 0.99, 1.01],
                table.at(label, "periods_fixed") / table.at(label, "periods"))]
    rows = []
    for model in (1, 6):
        of_model = fixed & (table.at(label, "model") == model)
        for name, bounds, values in figures:
            for low, high in zip(bounds, bounds[1:]):
                members = of_model & (values >= low) & (values < high)
                if members.any():
                    rows.append([f"model {model}: {name} {low:g} to {high:g}", members.sum(),
                                 (members & wrong).sum(),
                                 share((members & wrong).sum(), members.sum())])
    show("signs: what else the fixed answers have", ["sign", "fixed", "wrong", "%"], rows)


def parse(arguments):
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("csv", nargs="+")
    parser.add_argument("--select", action="append", default=[], metavar="COLUMN=VALUE,VALUE")
    parser.add_argument("--tables", default="classes,levers,checks,coverage,signs")
    parser.add_argument("--main", default="main", help="the run that stands for the answer")
    return parser.parse_args(arguments)


def selected(table, wishes):
    which = np.ones(len(table.cuts), dtype=bool)
    for wish in wishes:
        name, _, values = wish.partition("=")
        column = table.session(name)
        if column.dtype.kind == "U":
            which &= np.isin(column, values.split(","))
        else:
            which &= np.isin(column, [float(value) for value in values.split(",")])
    return which


def main(arguments):
    options = parse(arguments)
    table = Table(options.csv)
    which = selected(table, options.select)
    print(f"{which.sum()} sessions, {independent(table, which)} blocks, "
          f"{np.isin(table.cut, np.flatnonzero(which)).sum()} runs")
    np.seterr(invalid="ignore", divide="ignore")
    for name in options.tables.split(","):
        if name == "classes":
            classes(table, which, options.main)
        elif name == "sets":
            classes(table, which, options.main, by_set=True, title="sets")
        elif name == "levers":
            levers(table, which)
        elif name == "checks":
            checks(table, which, options.main)
        elif name == "coverage":
            coverage(table, which, options.main)
        elif name == "signs":
            signs(table, which, options.main)
        else:
            sys.exit(f"tables.py: no table '{name}'")


if __name__ == "__main__":
    main(sys.argv[1:])
