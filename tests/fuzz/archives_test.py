"""archives_test.py TREE TARGET...: the kept corpus of each target is one archive, as tools/fuzz
writes it: the same inputs give the same bytes, so that an archive changes only with its inputs."""
import importlib.machinery
import importlib.util
import os
import pathlib
import random
import sys
import tarfile
import tempfile
import unittest

tree, targets = pathlib.Path(sys.argv[1]), sys.argv[2:]
sys.dont_write_bytecode = True
loader = importlib.machinery.SourceFileLoader("fuzz", str(tree / "tools" / "fuzz"))
fuzz = importlib.util.module_from_spec(importlib.util.spec_from_loader("fuzz", loader))
loader.exec_module(fuzz)


class Archives(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = pathlib.Path(folder.name) / "some.tar.xz"

    def test_each_target_has_one_and_nothing_else_is_there(self):
        self.assertEqual(sorted(targets), sorted(fuzz.TARGETS))
        self.assertEqual(sorted(p.name for p in (tree / "tests/fuzz/corpus").iterdir()),
                         sorted(f"{target}.tar.xz" for target in targets))

    def test_inputs_within_their_size_and_told_by_nobody(self):
        for target in targets:
            with self.subTest(target), tarfile.open(fuzz.archive_of(target)) as archive:
                members = archive.getmembers()
                self.assertGreater(len(members), 0)
                self.assertEqual([m.name for m in members], sorted({m.name for m in members}))
                self.assertEqual({(m.type, m.mode, m.mtime, m.uid, m.gid, m.uname, m.gname) for m in members},
                                 {(tarfile.REGTYPE, 0o644, 0, 0, 0, "", "")})
                self.assertFalse([m.name for m in members if "/" in m.name or m.name.startswith(".")])
                # Named inputs may take a target beyond what a merge fills.
                grown = [m.size for m in members if len(m.name) == 40]
                self.assertLessEqual(sum(grown), fuzz.CORPUS_BYTES)

    def test_what_is_written_is_read(self):
        inputs = {"b": b"\0\xff" * 300, "a": b"", "0" * 40: os.urandom(2000)}
        fuzz.write_archive(self.path, inputs)
        self.assertEqual(fuzz.read_archive(self.path), inputs)

    def test_the_same_inputs_in_any_order_give_the_same_bytes(self):
        inputs = fuzz.read_archive(fuzz.archive_of(targets[0]))
        written = set()
        for seed in range(3):
            names = list(inputs)
            random.Random(seed).shuffle(names)
            fuzz.write_archive(self.path, {name: inputs[name] for name in names})
            written.add(self.path.read_bytes())
        self.assertEqual(len(written), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
