#!/usr/bin/env python3
"""same_vector.py SOLUTION.json VECTOR: the solution of `vornel solve --json` and the output of
solve_tape --exact tell the same vector and the same standard deviations, to the bit."""
import json
import math
import re
import sys

with open(sys.argv[1], encoding="utf-8") as file:
    solution = json.load(file)["solution"]
with open(sys.argv[2], encoding="utf-8") as file:
    lines = re.findall(r"^[XYZ] (\S+) \+- (\S+) m$", file.read(), re.MULTILINE)
told = [(float(value), float(deviation)) for value, deviation in lines]
known = [(value, math.sqrt(solution["covariance_xyz_m2"][i][i]))
         for i, value in enumerate(solution["vector_xyz_m"])]
if told != known:
    sys.exit(f"solve_tape gives {told}, vornel solve {known}")
print("vornel solve gives the same vector, to the bit")
