#!/usr/bin/python3
"""tables.py CSV... [--select COLUMN=VALUE,VALUE]... [--tables NAME,NAME]: what the sessions of
truth_runs tell, as tables of text.

classes   per class of length and duration: answers, fixed, right, wrong, errors
levers    each other configuration against the plain run, on the sessions that have both
checks    each run as a check of the fixed answer: how many right and wrong ones agree with it
coverage  how often formal bounds hold
findings  known weak places with and without a remedy
signs     what the plain run's own figures tell about a fixed answer
Errors are in millimetres; a fixed answer more than 50 mm off horizontally is wrong."""
import argparse
import sys

import numpy as np

from table import LENGTHS, WRONG, Table, distance, length_class, percentile, span_name

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


def classes(table, which, label="main", by_set=False, title="classes"):
    runs = table.run(label)
    off, up = runs.horizontal(), runs.up()
    rows = []
    for name, members in groups(table, which & runs.has(), by_set):
        fixed = members & runs.fixed()
        rows.append([name, members.sum(), independent(table, members), fixed.sum(),
                     (members & runs.right()).sum(), (members & runs.wrong()).sum(),
                     number(percentile(off[members], 50)), number(percentile(off[members], 95)),
                     number(percentile(up[members], 50)), number(percentile(up[members], 95)),
                     number(percentile(off[fixed], 50), 1), number(percentile(off[fixed], 95), 1),
                     number(percentile(up[fixed], 50), 1), number(percentile(up[fixed], 95), 1)])
    show(f"{title}: {label}",
         ["class", "n", "blocks", "fixed", "right", "wrong", "H50", "H95", "U50", "U95",
          "fixed H50", "H95", "U50", "U95"], rows)


def levers(table, which, label="main"):
    plain = table.run(label)
    rows = []
    for other in table.labels:
        runs = table.run(other)
        both = which & plain.has() & runs.has()
        if other in (label, "refused", "died") or not both.any():
            continue
        row = [other, both.sum()]
        for side in (plain, runs):
            off, up = side.horizontal()[both], side.up()[both]
            row += [(both & side.right()).sum(), (both & side.wrong()).sum(),
                    number(percentile(off, 50), 1), number(percentile(off, 95)),
                    number(percentile(up, 50), 1), number(percentile(up, 95))]
        row.append(number(np.nansum(runs.at("run_cpu")[both]) /
                          np.nansum(plain.at("run_cpu")[both]), 2))
        rows.append(row)
    show(f"levers: {label}, then the other run; the same sessions",
         ["run", "n", "right", "wrong", "H50", "H95", "U50", "U95", "right", "wrong", "H50", "H95",
          "U50", "U95", "cpu"], rows)


def checks(table, which, label="main"):
    answer = table.run(label)
    right, wrong = which & answer.right(), which & answer.wrong()
    rows = []
    for other in table.labels:
        check = table.run(other)
        has = check.has() & (right | wrong)
        if other in (label, "refused", "died") or not has.any():
            continue
        agree = check.fixed() & (distance(answer, check)[0] <= AGREES)
        rows.append([other, (has & right).sum(), (has & right & agree).sum(),
                     share((has & right & agree).sum(), (has & right).sum()),
                     (has & wrong).sum(), (has & wrong & agree).sum(), (has & agree).sum(),
                     share((has & wrong & agree).sum(), (has & wrong).sum())])
    show(f"checks of {label}: fix of the check within {AGREES:.0f} mm of it",
         ["run", "right", "agree", "%", "wrong", "agree", "of agreeing", "% of wrong"], rows)


def coverage(table, which, label="main"):
    runs = table.run(label)
    r = np.clip(runs.at("res_r1"), -0.99, 0.9999)
    stretched = np.sqrt((1 + r) / (1 - r))
    tau = np.sqrt(np.maximum(1.0, runs.at("res_tau") / table.session("interval")))
    rows = []
    for prefix, kind, chosen in (("fx", "fixed, right", which & runs.right()),
                                 ("fl", "float", which & (runs.at("acceptance") == "float"))):
        for name, members in groups(table, chosen):
            if members.sum() < 10:
                continue
            row = [f"{kind}, {name}", members.sum(), number(np.nanmedian(r[members]), 2),
                   number(np.nanmedian(runs.at("res_tau")[members]))]
            for factor in (1.0, stretched, tau):
                for c in "neu":
                    error = np.abs(runs.at(f"{prefix}_{c}"))
                    bound = 1.96 * runs.at(f"{prefix}_s{c}") * factor
                    row.append(share((error <= bound)[members].sum(), members.sum()))
            rows.append(row)
    show("coverage of 95 % bounds in percent: formal; times root of (1+r)/(1-r); times root of "
         "correlation time / interval (N E U each)",
         ["class", "n", "r", "tau s", "N", "E", "U", "N", "E", "U", "N", "E", "U"], rows)


def signs(table, which, label="main"):
    runs = table.run(label)
    fixed, wrong = which & runs.fixed(), runs.wrong()
    figures = [("integers", [0, 2, 3, 4, 5, 7, 10, 20, 1e9], runs.at("integers")),
               ("ratio", [0, 1.8, 2.5, 4, 8, 16, 30, 98.9, 1e9], runs.at("ratio")),
               ("wide-lane ratio", [0, 1.8, 4, 30, 98.9, 1e9], runs.at("ratio_wl")),
               ("variance factor", [0, 0.25, 0.5, 1, 2, 5, 10, 100, 1e12], runs.at("fx_vf")),
               ("rms mm", [0, 2, 5, 10, 20, 50, 100, 1e9], runs.at("fx_rms")),
               ("rejected share", [0, 0.01, 0.03, 0.1, 0.2, 0.5, 1.1], runs.at("res_rejected")),
               ("worst mean, sigmas", [0, 2, 3, 4, 6, 1e9], runs.at("res_mean_sigmas")),
               ("to triple difference, mm", [0, 50, 100, 300, 1000, 1e9],
                distance(runs, runs, "e", "td")[0]),
               ("to float, mm", [0, 20, 50, 100, 300, 1000, 1e9],
                distance(runs, runs, "e", "fl")[0]),
               ("satellites", [0, 3, 4, 5, 6, 8, 12, 99], runs.at("sats_n")),
               ("periods with integers / all", [0, 0.3, 0.6, 0.99, 1.01],
                runs.at("periods_fixed") / runs.at("periods"))]
    rows = []
    for model in (1, 6):
        of_model = fixed & (runs.at("model") == model)
        for name, bounds, values in figures:
            for low, high in zip(bounds, bounds[1:]):
                members = of_model & (values >= low) & (values < high)
                if members.any():
                    rows.append([f"model {model}: {name} {low:g} to {high:g}", members.sum(),
                                 (members & wrong).sum(),
                                 share((members & wrong).sum(), members.sum())])
    show("signs: what else the fixed answers have", ["sign", "fixed", "wrong", "%"], rows)


def verdict(runs, which):
    """How the answers of some sessions are: number, fixed, wrong, median and 95 % errors."""
    members = which & runs.has()
    off, up = runs.horizontal()[members], runs.up()[members]
    return [members.sum(), (members & runs.fixed()).sum(), (members & runs.wrong()).sum(),
            number(percentile(off, 50), 1), number(percentile(off, 95)),
            number(percentile(up, 50), 1), number(percentile(up, 95))]


def findings(table, which, label="main"):
    """Known weak places, as they are and with a remedy."""
    main = table.run(label)
    length = table.session("length")
    stuck = which & (main.at("status") == 71)
    let_pass = table.run("ratio0")
    rows = []
    for name, members in groups(table, stuck):
        both = members & (let_pass.at("fl_mode") == 6)
        rows.append([f"wide lane alone, {name}"] + verdict(main, both) +
                    [number(percentile(let_pass.horizontal("fl")[both], 50), 1),
                     number(percentile(let_pass.horizontal("fl")[both], 95)),
                     number(percentile(let_pass.up("fl")[both], 50), 1),
                     number(percentile(let_pass.up("fl")[both], 95))])
    show("runs that end with the wide lane: as shown (first errors), ionosphere-free float (last)",
         ["class", "n", "fixed", "wrong", "H50", "H95", "U50", "U95", "H50", "H95", "U50", "U95"],
         rows)

    pairs = [("no Galileo in model 6", which & (main.at("model") == 6), main,
              table.run("no_galileo")),
             ("10-30 km: model 1", which & (length >= 1e4) & (length < 3e4), main,
              table.run("model1")),
             ("headers off by 30 m: true base", which & (table.session("moved") == 30), main,
              table.run("base_true")),
             ("headers off by 30 m: code base", which & (table.session("moved") == 30), main,
              table.run("base_code")),
             ("offsets of antennas left out", which & (table.session("antennas") == "applied"),
              main, table.run("no_offsets")),
             ("coefficients: none", which, main, table.run("no_coefficients")),
             ("coefficients: zeros", which, main, table.run("zero_coefficients"))]
    rows = []
    for name, members, one, other in pairs:
        members = members & one.has() & other.has() & (table.session("moved") == (
            30 if "headers" in name else 0))
        for kind, group in groups(table, members):
            rows.append([f"{name}; {kind}"] + verdict(one, group) + verdict(other, group)[1:])
    show("remedies: as it is, then with the change",
         ["change; class", "n", "fixed", "wrong", "H50", "H95", "U50", "U95", "fixed", "wrong",
          "H50", "H95", "U50", "U95"], rows)


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
            levers(table, which, options.main)
        elif name == "checks":
            checks(table, which, options.main)
        elif name == "coverage":
            coverage(table, which, options.main)
        elif name == "findings":
            findings(table, which, options.main)
        elif name == "signs":
            signs(table, which, options.main)
        else:
            sys.exit(f"tables.py: no table '{name}'")


if __name__ == "__main__":
    main(sys.argv[1:])
