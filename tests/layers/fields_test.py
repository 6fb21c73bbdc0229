#!/usr/bin/env python3
"""fields_test.py COMPILER: fields.py against a made-up run of one stage, whose words are bent."""
import pathlib
import sys
import tempfile
import unittest

import fields

RUN = """struct SolveConfig { int limit = 0, unused = 0; };
class StaticSolve {
  public:
    int rover = 0;
    int base = 0;
    SolveConfig config;
    double result[3];

    // Copies all
    void Solve();
};
"""
HELPER = """// Of the run, Halve
//   reads   base
//   writes  base
#include "run/static_solve.h"
inline void Halve(StaticSolve& solver) { solver.base = solver.base / 2; }
"""
STAGE = """// Of the run, Solve
//   reads   rover, base, config (limit)
//   writes  result, base
#include "difference/halve.h"
void StaticSolve::Solve() {
    Halve(*this);
    const int length = rover - base;
    result[0] =
        length + config.limit;
}
"""
ROWS = "| stage | `Solve` | `rover`, `base`, `config` | `base`, `result` |\n"
COMPILER = "c++"


class Fields(unittest.TestCase):
    def errors(self, stage=STAGE, helper=HELPER, rows=ROWS):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder).resolve()
            for name, text in {"src/run/static_solve.h": "#pragma once\n" + RUN,
                               "src/difference/halve.h": helper,
                               "src/estimation/solve.cpp": stage, fields.TABLE: rows}.items():
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).write_text(text, encoding="utf-8")
            return list(fields.errors_in(root, COMPILER))

    def expect(self, error, **tree):
        self.assertTrue(any(error in line for line in self.errors(**tree)), self.errors(**tree))

    def test_true_words_pass(self):
        self.assertEqual(self.errors(), [])

    def test_a_read_that_is_not_said(self):
        self.expect("does more than it says", stage=STAGE.replace("rover, base", "base"))

    def test_a_write_that_is_not_said(self):
        self.expect("does more than it says",
                    stage=STAGE.replace("reads   rover", "reads   result, rover").replace("result, base", "base"))

    def test_a_write_that_is_not_done(self):
        self.expect("does not write rover", stage=STAGE.replace("result, base", "result, rover, base"))

    def test_a_read_that_is_not_done(self):
        self.expect("rover is said to be read, and does not occur", stage=STAGE.replace("= rover - base", "= -base"))

    def test_what_a_called_function_does(self):
        self.expect("base is written by what it calls", stage=STAGE.replace("result, base", "result"))

    def test_settings(self):
        self.expect("config.limit is used or said, not both", stage=STAGE.replace("(limit)", "(unused)"))
        self.expect("config.unused is used or said, not both", stage=STAGE.replace("(limit)", "(unused)"))

    def test_the_table_of_the_document(self):
        self.expect("rover is in the table or in the source", rows=ROWS.replace("`rover`, ", ""))
        self.expect("no row of Solve", rows="")


if __name__ == "__main__":
    COMPILER = sys.argv.pop()
    unittest.main()
