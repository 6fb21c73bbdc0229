"""ci_run_test.py TREE: what .ci/run tells of its steps, with stand-ins for all of them."""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

tree = pathlib.Path(sys.argv[1])
STEPS = ["check", "tools/coverage", "tools/fuzz", "tools/memcheck", "tools/same-bits", "tools/format.sh"]
PROGRAMS = ["cmake", "ctest", "python3"]


class CiRun(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name) / "checkout"
        for step in STEPS:
            self.stand_in(self.root / step, "exit 0")
        for program in PROGRAMS:
            self.stand_in(self.root / "programs" / program, "exit 0")
        (self.root / ".ci").mkdir()
        (self.root / ".ci" / "run").write_bytes((tree / ".ci" / "run").read_bytes())

    @staticmethod
    def stand_in(path, text):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f"#!/bin/sh\n{text}\n")
        path.chmod(0o755)

    def run_all(self, **environment):
        inherited = {name: value for name, value in os.environ.items() if name != "VORNEL_RECORDED_RUNS"}
        path = f"{self.root}/programs:{inherited['PATH']}"
        run = subprocess.run(["bash", self.root / ".ci" / "run"], stdout=subprocess.PIPE, text=True, check=False,
                             env={**inherited, "PATH": path, **environment})
        return run.returncode, run.stdout.splitlines()

    def record_runs(self, folder):
        folder.mkdir(parents=True)
        (folder / "verify.py").touch()
        self.stand_in(self.root / "programs" / "python3",
                      'case $1 in *verify.py) echo "36 passed, 0 failed" ;; esac')

    def test_recorded_runs_that_are_not_there_are_said_aloud_and_counted_nowhere(self):
        code, lines = self.run_all()
        said = [line for line in lines if line.startswith("NOT RUN: recorded runs: there is no ")]
        self.assertEqual(len(said), 2)  # where the step would be, and at the end
        self.assertEqual(lines[-2:], [said[0], "8 passed, 0 failed"])
        self.assertEqual(code, 0)

    def test_recorded_runs_beside_the_checkout_are_counted_one_by_one(self):
        self.record_runs(self.root.parent / "shared" / "verify")
        code, lines = self.run_all()
        self.assertFalse([line for line in lines if "NOT RUN" in line])
        self.assertEqual((code, lines[-1]), (0, "44 passed, 0 failed"))

    def test_recorded_runs_are_found_where_the_variable_says(self):
        self.record_runs(self.root.parent / "elsewhere")
        _, lines = self.run_all(VORNEL_RECORDED_RUNS=str(self.root.parent / "elsewhere"))
        self.assertEqual(lines[-1], "44 passed, 0 failed")

    def test_a_step_that_fails_is_counted_and_the_others_run(self):
        self.stand_in(self.root / "tools" / "memcheck", "exit 1")
        self.stand_in(self.root / "check", 'echo "10 passed, 2 failed"; exit 1')
        code, lines = self.run_all()
        self.assertEqual((code, lines[-1]), (1, "16 passed, 3 failed"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
