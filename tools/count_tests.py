#!/usr/bin/env python3
"""Reads ctest's JUnit report and prints `N passed, N failed`, naming first the tests that failed
and those that were skipped. Exits with 1 if a test failed or none passed."""
import sys
import xml.etree.ElementTree as ElementTree


def verdict(case):
    """A test that could not be started, or whose fixture failed, has failed: only one that asks
    to be skipped, or is disabled in the build description, is none."""
    status = case.get("status")
    if status == "run":
        return "passed"
    skipped = case.find("skipped")
    asked = skipped is not None and skipped.get("message", "").startswith("SKIP_")
    return "skipped" if status == "disabled" or asked else "failed"


def main():
    names = {"passed": [], "skipped": [], "failed": []}
    for case in ElementTree.parse(sys.argv[1]).getroot().iter("testcase"):
        names[verdict(case)].append(case.get("name"))
    for word in ("skipped", "failed"):
        for name in names[word]:
            print(f"{word}: {name}")
    print(f"{len(names['passed'])} passed, {len(names['failed'])} failed")
    return 1 if names["failed"] or not names["passed"] else 0


if __name__ == "__main__":
    sys.exit(main())
