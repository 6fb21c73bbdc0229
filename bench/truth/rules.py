#!/usr/bin/python3
"""rules.py CSV... : how many of the fixed answers a rule trusts, and how many of those are wrong.

The answer is the run that the host should make: the first frequency to 30 km, above that the
ionosphere-free combination without Galileo. Its check runs agree when their fix lies within 40 mm
horizontally and 80 mm in height, and contradict beyond 100 and 200 mm. The rule that is printed asks
for five integers, more agreeing than contradicting checks, and
  below 10 km      one of: first two thirds, last two thirds, second frequency
  10 to 30 km      one of: first, last, mask 20; the two frequencies within 40 mm
  ionosphere-free  two of: first, last, mask 20.
Errors are in millimetres."""
import argparse

import numpy as np

from table import Table, distance, length_class, percentile, span_name
from tables import number, selected, share, show

AGREE = (40.0, 80.0)        # mm, horizontally and in height
CONTRADICT = (100.0, 200.0)
NEAR, FAR = 1e4, 3e4        # m
FREQUENCIES = 40.0          # mm, horizontally


class Answer:
    """The run that stands for the answer of each session, and its check runs by name."""

    def __init__(self, table):
        length = table.session("length")
        dual = table.session("freqs") == 2
        self.near = (length < NEAR) | ((length < FAR) & ~dual)
        self.middle = (length >= NEAR) & (length < FAR) & dual
        self.far = length >= FAR

        def choose(near, middle, far):
            return (table.run(*near).where(self.near)
                    .otherwise(table.run(*middle).where(self.middle))
                    .otherwise(table.run(*far).where(self.far)))

        self.main = choose(["main"], ["model1", "main"], ["model6_no_galileo", "main"])
        self.checks = {
            "first": choose(["first_two_thirds"], ["model1_first"],
                            ["model6_no_galileo_first", "first_two_thirds"]),
            "last": choose(["last_two_thirds"], ["model1_last"],
                           ["model6_no_galileo_last", "last_two_thirds"]),
            "mask20": choose(["mask20"], ["model1_mask20"],
                             ["model6_no_galileo_mask20", "mask20"]),
            "second": table.run("model2").where(self.near | self.middle),
        }

    def against(self, name):
        """Which sessions' check agrees, and which contradicts."""
        check = self.checks[name]
        across, up = distance(self.main, check)
        fixed = check.fixed()
        return (fixed & (across <= AGREE[0]) & (up <= AGREE[1]),
                fixed & ((across > CONTRADICT[0]) | (up > CONTRADICT[1])))


def readable(answer):
    """Which fixed answers the rule at the head of this file trusts."""
    agree, contradict = {}, {}
    for name in answer.checks:
        agree[name], contradict[name] = answer.against(name)
    count = sum(a.astype(int) for a in agree.values())
    against = sum(c.astype(int) for c in contradict.values())
    across, _ = distance(answer.main, answer.checks["second"])
    frequencies = answer.checks["second"].fixed() & (across <= FREQUENCIES)
    three = sum(agree[name].astype(int) for name in ("first", "last", "mask20"))
    enough = np.where(answer.near, agree["first"] | agree["last"] | agree["second"],
                      np.where(answer.middle, (three >= 1) & frequencies, three >= 2))
    return answer.main.fixed() & (answer.main.at("integers") >= 5) & (count > against) & enough


def outcome(main, trusted, which):
    fixed, right, wrong = which & main.fixed(), which & main.right(), which & main.wrong()
    off = main.horizontal()[trusted & which]
    return [which.sum(), fixed.sum(), right.sum(), wrong.sum(), (trusted & right).sum(),
            share((trusted & right).sum(), right.sum()), (trusted & wrong).sum(),
            number(percentile(off, 50), 1), number(percentile(off, 95), 1),
            number(percentile(off, 100), 0)]


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("csv", nargs="+")
    parser.add_argument("--select", action="append", default=[], metavar="COLUMN=VALUE,VALUE")
    options = parser.parse_args()
    np.seterr(invalid="ignore", divide="ignore")
    table = Table(options.csv)
    which = selected(table, options.select)
    answer = Answer(table)
    trusted = readable(answer)
    lengths, durations = length_class(table.session("length")), table.session("duration")
    rows = [["all"] + outcome(answer.main, trusted, which)]
    for name in np.unique(table.session("set")[which]):
        rows.append([name] + outcome(answer.main, trusted, which & (table.session("set") == name)))
    for name in np.unique(lengths[which]):
        for duration in np.unique(durations[which & (lengths == name)]):
            members = which & (lengths == name) & (durations == duration)
            rows.append([f"{name}, {span_name(duration)}"] +
                        outcome(answer.main, trusted, members))
    show("trusted by the rule", ["class", "n", "fixed", "right", "wrong", "trusted right", "%",
                                 "trusted wrong", "H50", "H95", "most"], rows)
    off = answer.main.horizontal()
    for i in np.flatnonzero(which & trusted & answer.main.wrong()):
        print(f"  trusted and wrong: {table.cuts[i]} {off[i]:.0f} mm, "
              f"{answer.main.at('integers')[i]:.0f} integers")


if __name__ == "__main__":
    main()
