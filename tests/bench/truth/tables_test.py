#!/usr/bin/python3
"""The tables of made-up runs whose counts are known."""
import contextlib
import csv
import io
import pathlib
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[3]
sys.path.insert(0, str(ROOT / "bench" / "truth"))
import rules
import table
import tables

NAMES = ("source set cut block start duration interval length systems orbits antennas run fault "
         "acceptance model ratio ratio_wl integers periods periods_fixed sats_used sats_n run_cpu "
         "e_n e_e e_u td_n td_e td_u fl_n fl_e fl_u fl_sn fl_se fl_su fx_n fx_e fx_u fx_sn fx_se "
         "fx_su fx_vf fx_rms res_r1 res_tau res_mean_sigmas res_rejected res_mean_sat").split()


def run(cut, label, acceptance, error, **more):
    row = dict.fromkeys(NAMES, "1")
    row |= dict(source="real", set="here", cut=cut, block=cut[0], duration="3600", interval="30",
                length="500", run=label, acceptance=acceptance, model="1", run_cpu="2")
    for prefix in ("e", "fl", "fx", "td"):
        row |= {f"{prefix}_{c}": str(v) for c, v in zip("neu", error)}
    return row | {name: str(value) for name, value in more.items()}


# Sessions a1 and a2 share a block. Main: right, wrong by 60 mm, right, and one float.
ROWS = [
    run("a1", "main", "fixed", (3, 4, 10)),
    run("a1", "check", "fixed", (3, -20, 0), run_cpu=1),
    run("a2", "main", "fixed", (60, 0, 5)),
    run("a2", "check", "fixed", (64, 0, 5), run_cpu=1),
    run("b1", "main", "fixed", (0, 10, 20)),
    run("b1", "check", "fixed", (0, -90, 20), run_cpu=1),
    run("c1", "main", "float", (300, 400, 900), length=20000),
]


class Tables(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.path = pathlib.Path(self.folder.name) / "runs.csv"
        with open(self.path, "w", newline="", encoding="utf-8") as file:
            writer = csv.DictWriter(file, NAMES)
            writer.writeheader()
            writer.writerows(ROWS)

    def text(self, *arguments):
        out = io.StringIO()
        with contextlib.redirect_stdout(out):
            tables.main([str(self.path), *arguments])
        return [line.split() for line in out.getvalue().splitlines()]

    def line(self, *arguments, begins):
        found = [line for line in self.text(*arguments) if line[:len(begins)] == begins]
        self.assertEqual(len(found), 1, found)
        return found[0][len(begins):]

    def test_classes_count_blocks_once_and_judge_the_fixed(self):
        near = self.line("--tables", "classes", begins=["to", "1", "km,", "1", "h"])
        self.assertEqual(near[:6], ["3", "2", "3", "2", "1", "10"])
        far = self.line("--tables", "classes", begins=["10-30", "km,", "1", "h"])
        self.assertEqual(far[:10],
                         ["1", "1", "0", "0", "0", "500", "500", "900", "900", "-"])

    def test_a_check_agrees_within_its_limit(self):
        check = self.line("--tables", "checks", begins=["check"])
        # Two right ones, of which a1's check lies 24 mm off and b1's 100; the wrong one's 4 mm.
        self.assertEqual(check, ["2", "1", "50", "1", "1", "2", "100"])

    def test_levers_compare_the_sessions_that_have_both(self):
        lever = self.line("--tables", "levers", begins=["check"])
        self.assertEqual(lever[:4], ["3", "2", "1", "10.0"])
        self.assertEqual(lever[7:9], ["1", "2"])
        self.assertEqual(lever[-1], "0.50")

    def test_selection_by_column(self):
        self.assertEqual(self.text("--select", "length=20000", "--tables", "classes")[0][:2],
                         ["1", "sessions,"])

    def test_missing_runs_are_not_numbers(self):
        data = table.Table([self.path])
        check = data.run("check")
        self.assertEqual(list(check.has()), [True, True, True, False])
        self.assertEqual(list(check.fixed()), [True, True, True, False])
        self.assertTrue(check.horizontal()[3] != check.horizontal()[3])
        self.assertEqual(list(data.run("none", "check", "main").at("e_n")), [3, 64, 0, 300])
        again = table.Table([self.path])  # from the arrays kept beside the file
        self.assertEqual(list(again.run("main").at("e_n")), [3, 60, 0, 300])

    def test_the_readable_rule(self):
        def answer(*checks, integers=5, length=500):
            rows = [run("a1", "main", "fixed", (0, 0, 0), integers=integers, length=length)]
            rows += [run("a1", label, "fixed", (off, 0, 0), length=length) for label, off in checks]
            with open(self.path, "w", newline="", encoding="utf-8") as file:
                writer = csv.DictWriter(file, [*NAMES, "freqs"])
                writer.writeheader()
                writer.writerows(row | {"freqs": "2"} for row in rows)
            self.path.with_suffix(".npz").unlink(missing_ok=True)
            return bool(rules.readable(rules.Answer(table.Table([self.path])))[0])

        self.assertTrue(answer(("first_two_thirds", 39)))
        self.assertFalse(answer(("first_two_thirds", 41)))
        self.assertFalse(answer(("first_two_thirds", 39), integers=4))
        self.assertFalse(answer(("mask20", 1)))
        self.assertFalse(answer(("first_two_thirds", 1), ("last_two_thirds", 101)))
        self.assertTrue(answer(("first_two_thirds", 1), ("last_two_thirds", 99)))
        self.assertFalse(answer(("first_two_thirds", 1), ("mask20", 1), length=20e3))
        self.assertTrue(answer(("model1_first", 1), ("model2", 39), length=20e3))
        self.assertFalse(answer(("first_two_thirds", 1), length=40e3))
        self.assertTrue(answer(("first_two_thirds", 1), ("mask20", 39), length=40e3))

    def test_classes_of_length_begin_at_their_bound(self):
        names = table.length_class([0.5, 999.9, 1000.0, 3e4, 2e6])
        self.assertEqual(list(names), ["to 1 km", "to 1 km", "1-10 km", "30-100 km",
                                       "above 300 km"])


if __name__ == "__main__":
    unittest.main()
