"""run_paths_test.py BUILD CMAKE: the loader looks for libraries only where they are.

An empty element of a run path is the current folder, and so is a relative one a folder below it: who
calls a program from a folder of somebody else would load that somebody's library. The programs of
the build tree and of an installed tree name the library's folder from their own place, so that the
trees can be moved."""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

build, cmake = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2]
LIBRARY = "libVornelBlCore.so.0"


def is_elf(path):
    with path.open("rb") as file:
        return file.read(4) == b"\x7fELF"


def binaries_of(tree):
    """Programs and libraries; not the objects they are linked from, nor what waits to be installed."""
    for folder, folders, files in os.walk(tree):
        folders[:] = [name for name in folders if name not in ("CMakeFiles", "to_install")]
        for path in (pathlib.Path(folder) / name for name in files):
            if not path.is_symlink() and path.suffix not in (".o", ".a") and path.stat().st_size > 4 and is_elf(path):
                yield path


def dynamic_section(path):
    shown = subprocess.run(["readelf", "--wide", "--dynamic", path], stdout=subprocess.PIPE, text=True, check=True).stdout
    needed = re.findall(r"\(NEEDED\).*\[(.*)\]", shown)
    run_paths = re.findall(r"\((?:RUNPATH|RPATH)\).*\[(.*)\]", shown)
    return needed, [element for run_path in run_paths for element in run_path.split(":")]


class RunPaths(unittest.TestCase):
    def check(self, tree):
        """How many programs of the tree need the library. Other libraries may lie anywhere."""
        found = 0
        for path in binaries_of(tree):
            needed, elements = dynamic_section(path)
            with self.subTest(path.relative_to(tree)):
                for element in elements:
                    self.assertRegex(element, r"^(\$ORIGIN)?/|^\$ORIGIN$", elements)
                    self.assertFalse(element.startswith(str(tree)), elements)
                if LIBRARY in needed:
                    found += 1
                    folders = [pathlib.Path(e.replace("$ORIGIN", str(path.parent))) for e in elements]
                    self.assertTrue(folders and (folders[0] / LIBRARY).is_file(), elements)
        return found

    def test_build_tree(self):
        self.assertGreater(self.check(build), 0)

    def test_installed_tree(self):
        with tempfile.TemporaryDirectory() as prefix:
            subprocess.run([cmake, "--install", build, "--prefix", prefix], stdout=subprocess.DEVNULL, check=True)
            self.assertEqual(self.check(pathlib.Path(prefix)), int((build / "vornel").exists()))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
