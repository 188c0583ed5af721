# SPDX-License-Identifier: MIT
"""Compares poles and knots of a fit with those that another program read from IGES or STEP.

Usage: compare_poles.py FIT.json SHAPE.brep. A shape's text holds lengths in millimetres; its first
B-spline is "7 rational periodic degree poles knots" or "9 urational ... udegree vdegree upoles vpoles
uknots vknots", then the poles, then each distinct knot with its multiplicity.
"""
import json
import re
import sys

fit_path, shape_path = sys.argv[1:]
fit = json.load(open(fit_path))
text = open(shape_path).read()
curve = fit["kind"] == "curve"
head = [7, 0, 0, *fit["degree"], *fit["size"]] if curve else [9, 0, 0, 0, 0, *fit["degree"], *fit["size"]]
found = re.search(r"\n" + r"\s+".join(map(str, head)) + r"\s", text)
assert found, (shape_path, "holds no spline of this degree and size")
numbers = [float(t) for t in text[found.end():found.end() + 200 * len(fit["controls"]) + 10000].split()
           if re.match(r"[-+]?[\d.]", t)]
numbers = numbers[len(fit["size"]):]  # the counts of distinct knots

wanted = [x for p in fit["controls"] for x in p + [0.0] * (3 - fit["dim"])]
poles, knots = numbers[:len(wanted)], numbers[len(wanted):]
worst = max(abs(a - b) for a, b in zip(poles, wanted))
assert len(poles) == len(wanted) and worst <= 1e-12 * max(map(abs, wanted)), (shape_path, worst)
for direction in fit["knots"]:
    for t in sorted(set(direction)):
        assert abs(knots[0] - t) < 1e-12 and knots[1] == direction.count(t), (shape_path, "knot", t)
        knots = knots[2:]
print("ok:", shape_path.rsplit("/", 1)[1], len(wanted) // 3, "poles, largest difference", worst)
