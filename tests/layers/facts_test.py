#!/usr/bin/env python3
"""facts.py against made-up lines: each fact written out again is named, and what looks like one is not."""
import pathlib
import tempfile
import unittest

import facts

HEADER = """enum VornelSystem {
    VORNEL_GPS = 1
};
#define VORNEL_EPHEMERIS_REACH 14400.0
"""
USES = "int a = VORNEL_GPS; double b = VORNEL_EPHEMERIS_REACH;\n"
AGAIN = [
    ("VORNEL_SATELLITES", "int counts[135];"),
    ("VORNEL_..._OFFSET", "{kBds, n, 67},"),
    ("VORNEL_..._COUNT", "{kBds, 36, offset},"),
    ("VornelSystem", "inline constexpr int kGalileo = 8;"),
    ("VORNEL_EPOCH_SLOTS", "constexpr int kInputSlots = 64;"),
    ("VORNEL_EPOCH_SLOTS", "std::array<double, 64> code;"),
    ("VornelModel", "if (solver.solveModel == 6) {"),
    ("VornelModel", "return FindFixed(5);"),
    ("VornelStatus", "if (status >= 20) {"),
    ("VornelStatus", "{40, 41, 60, 61, 62, 80, 81},"),
    ("VornelStatus", "StatusEntry{30, 5, K::kFloatFailed, text},"),
    ("VORNEL_LOWEST_CHANNEL, VORNEL_HIGHEST_CHANNEL", "if (channel < -7) {"),
    ("VORNEL_CHANNELS_OF_SLOTS", "int table[] = {1,  -4, 5, 6, 1};"),
    ("VORNEL_PRECISE_BEFORE, VORNEL_PRECISE_AFTER", "return left >= 5 && right >= 6;"),
    ("VORNEL_MISSING_PRECISE_VALUE", "x = 0.999999999999;"),
    ("VORNEL_EPHEMERIS_REACH", "constexpr double kReach = 14400.0;"),
    ("VORNEL_LEAST_ORBIT_RADIUS, VORNEL_GREATEST_ORBIT_RADIUS", "kMinRadius = 15000000.0;"),
    ("VORNEL_BDT_OFFSET", "constexpr double kBdtOffset = 14.0;"),
    ("VORNEL_BDS_GEOSTATIONARY", "constexpr int kLastGeostationary = 5;"),
    ("VORNEL_GREATEST_RATIO", "std::min(ratio, 99.0);"),
    ("VORNEL_DEFAULT_...", "double ratioThreshold = 1.8;"),
]
HARMLESS = """// slots of 135 satellites, 14400 s
const char* text = "64 slots, 99.0";
char line[64];
int tropoModel = config.tropoModel == 1 ? first : second;
if (mode != 0) { status = 0; }
double temperature = 0.0;
const double kHour = 3600.0;
exits = {kMissing = 20, kOther = 21};
"""


class Facts(unittest.TestCase):
    def errors(self, engine="", host="", header=HEADER):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for name, text in {facts.HEADER: header, "src/run/a.cpp": USES + engine,
                               "host/session/b.h": USES + host, "host/io/c.h": "int slots = 64;\n"}.items():
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).write_text(text, encoding="utf-8")
            return list(facts.errors_in(root))

    def test_each_fact_is_told_on_both_sides(self):
        self.assertEqual({name for name, _ in facts.FACTS}, {name for name, _ in AGAIN})
        for name, line in AGAIN:
            for side, place in (("engine", "src/run/a.cpp"), ("host", "host/session/b.h")):
                found = self.errors(**{side: line + "\n"})
                self.assertTrue(any(error.startswith(f"{place}:2: ") and f" is {name} of " in error
                                    for error in found), (line, found))

    def test_what_looks_like_a_fact_is_none(self):
        self.assertEqual(self.errors(engine=HARMLESS, host=HARMLESS), [])

    def test_a_name_that_a_side_does_not_use(self):
        header = HEADER.replace("= 1\n", "= 1,\n    VORNEL_BDS = 4\n")
        self.assertEqual(self.errors(host="int c = VORNEL_BDS;\n", header=header),
                         ["src: does not use VORNEL_BDS of include/VornelBlCore.h"])


if __name__ == "__main__":
    unittest.main()
