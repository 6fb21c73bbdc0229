#!/usr/bin/env python3
"""names.py against made-up trees: whatever is not there is named."""
import pathlib
import tempfile
import unittest

import names

TREE = {
    "README.md": "[method](docs/method.md#a-solve) [web](https://example.org/x)\n",
    "docs/method.md": "# Method\n\n## A `Solve`\n\n`Solve` in `src/run/solve.cpp`, `Solver::Run`, `--mask`\n"
                      "```\n`nothing here counts`\n```\n",
    "docs/other.md": "[up](method.md) `not a name`, `run/solve.*`, `tests/*`\n",
    "src/run/solve.cpp": "class Solver { void Run(); };  // Ghost\nint Solve();\n/* Spirit */\n",
    "include/api.h": "int Start(void);\n",
    "host/settings.cpp": 'Setting("mask");\n',
    "tests/a.py": "",
    "tests/some/README.md": "",
}


class Names(unittest.TestCase):
    def faults(self, name="", text=""):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for path, content in TREE.items():
                (root / path).parent.mkdir(parents=True, exist_ok=True)
                (root / path).write_text(content + (text if path == name else ""), encoding="utf-8")
            return list(names.faults(root))

    def test_a_tree_in_order_has_no_fault(self):
        self.assertEqual(self.faults(), [])

    def test_a_file_that_is_gone(self):
        self.assertEqual(self.faults("README.md", "[a](docs/gone.md)\n"), ["README.md: no file docs/gone.md"])

    def test_a_heading_that_is_gone(self):
        self.assertEqual(self.faults("docs/other.md", "[a](method.md#gone)\n"),
                         ["docs/other.md: no heading method.md#gone"])

    def test_a_path_that_is_gone(self):
        self.assertEqual(self.faults("docs/other.md", "`src/run/gone.cpp` `run/gone.*`\n"),
                         ["docs/other.md: no path src/run/gone.cpp",
                          "docs/other.md: no path run/gone.* in src"])

    def test_a_folder_that_the_reader_chooses(self):
        self.assertEqual(self.faults("docs/other.md", "`src/FOLDER/` `tests/FOLDER/gone`\n"),
                         ["docs/other.md: no path tests/FOLDER/gone"])

    def test_documents_outside_docs(self):
        self.assertEqual(self.faults("tests/some/README.md", "`src/gone`\n"),
                         ["tests/some/README.md: no path src/gone"])

    def test_a_name_that_is_in_a_comment_alone(self):
        self.assertEqual(self.faults("docs/method.md", "`Ghost` `Solver::Spirit` `Start`\n"),
                         ["docs/method.md: no name Ghost in the source",
                          "docs/method.md: no name Solver::Spirit in the source"])

    def test_an_option_that_does_not_exist(self):
        self.assertEqual(self.faults("docs/method.md", "`--gone`\n"), ["docs/method.md: no option --gone"])

    def test_something_else_in_code_type(self):
        self.assertEqual(self.faults("docs/method.md", "`x + y`\n"),
                         ["docs/method.md: neither a path, an option nor a name: x + y"])


if __name__ == "__main__":
    unittest.main()
