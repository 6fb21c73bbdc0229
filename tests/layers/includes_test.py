#!/usr/bin/env python3
"""includes.py against made-up trees: whatever goes the wrong way is named."""
import pathlib
import tempfile
import unittest

import includes

TABLE = {
    "src/low": [],
    "src/middle": ["low"],
    "src/left": ["low", "middle"],
    "src/right": ["low", "middle"],
    "host/files": [],
    "host/command": ["files"],
}
TREE = {
    "src/low/a.h": "#include <vector>\n",
    "src/middle/b.h": '#include "low/a.h"\n#include "VornelBlCore.h"\n',
    "src/left/c.cpp": '#include "left/c.h"\n#include "middle/b.h"\n',
    "src/left/c.h": "",
    "src/right/d.cpp": '#include "low/a.h"\n',
    "host/files/e.cpp": "#include <sys/stat.h>\n",
    "host/command/f.cpp": '  #  include "files/e.h"\n#include <VornelBlCore.h>\n',
}


class Includes(unittest.TestCase):
    def errors(self, added=(), table=None):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for name, text in {**TREE, **dict(added)}.items():
                path = root / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            return includes.errors_in(root, table or TABLE)

    def expect(self, name, text, error):
        self.assertEqual(self.errors({name: text}), [error])

    def test_a_tree_in_order_has_no_error(self):
        self.assertEqual(self.errors(), [])

    def test_an_include_upward(self):
        self.expect("src/low/a.h", '#include "middle/b.h"\n', 'src/low/a.h includes "middle/b.h"')

    def test_an_include_of_a_neighbour(self):
        self.expect("src/right/d.cpp", '#include "left/c.h"\n', 'src/right/d.cpp includes "left/c.h"')

    def test_the_host_stays_out_of_the_engine(self):
        self.expect("host/files/e.cpp", '#include "low/a.h"\n', 'host/files/e.cpp includes "low/a.h"')

    def test_the_engine_stays_out_of_the_host(self):
        self.expect("src/left/c.h", '#include "files/e.h"\n', 'src/left/c.h includes "files/e.h"')

    def test_angle_brackets_are_no_way_round(self):
        self.expect("src/low/a.h", "#include <middle/b.h>\n", 'src/low/a.h includes "middle/b.h"')

    def test_a_relative_path_is_no_way_round(self):
        self.expect("src/low/a.h", '#include "../middle/b.h"\n',
                    'src/low/a.h includes "../middle/b.h"')
        self.expect("src/low/a.h", '#include "low/../middle/b.h"\n',
                    'src/low/a.h includes "low/../middle/b.h"')

    def test_a_plain_name_says_no_folder(self):
        self.expect("src/left/c.cpp", '#include "c.h"\n', 'src/left/c.cpp includes "c.h"')

    def test_a_folder_that_nobody_wrote_down(self):
        self.expect("src/new/g.h", "", "src/new: not in the table of folders")

    def test_a_source_outside_the_folders(self):
        self.expect("src/g.h", "", "src/g.h: stands in no folder")

    def test_a_folder_that_is_gone(self):
        self.assertEqual(self.errors(table={**TABLE, "src/gone": ["low"]}),
                         ["src/gone: in the table, but without sources"])

    def test_a_table_that_goes_in_a_circle(self):
        found = self.errors(table={**TABLE, "src/low": ["right"]})
        self.assertEqual(found, ["src/low: the table lets it include right, which does not stand before it"])


class ThisTree(unittest.TestCase):
    """The project's own table, on a tree of one header a folder."""

    def test_every_include_that_the_table_does_not_allow_fails(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for name in includes.FOLDERS:
                (root / name).mkdir(parents=True)
                (root / name / "a.h").touch()
            self.assertEqual(includes.errors_in(root, includes.FOLDERS), [])
            for source, allowed in includes.FOLDERS.items():
                header = root / source / "a.h"
                for target in includes.FOLDERS:
                    name = target.split("/")[1]
                    header.write_text(f'#include "{name}/a.h"\n', encoding="utf-8")
                    # Engine and host may each have a room of one name; an include means the own one.
                    permitted = name == source.split("/")[1] or name in allowed
                    self.assertEqual(includes.errors_in(root, includes.FOLDERS),
                                     [] if permitted else [f'{source}/a.h includes "{name}/a.h"'])
                header.write_text("", encoding="utf-8")


if __name__ == "__main__":
    unittest.main()
