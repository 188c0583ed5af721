# SPDX-License-Identifier: MIT
"""Compares points and derivatives of a fit with SciPy's. Usage: compare_evaluation.py KNOTFIT FIT.json."""
import io
import json
import subprocess
import sys

import numpy as np
from scipy.interpolate import BSpline

knotfit, path = sys.argv[1:]
fit = json.load(open(path))
out = subprocess.run([knotfit, "eval", path, "--n", "200", "--deriv", "2"], check=True, capture_output=True, text=True)
table = np.loadtxt(io.StringIO(out.stdout), delimiter=",", skiprows=1)
spline = BSpline(np.array(fit["knots"][0]), np.array(fit["controls"]), fit["degree"][0])
dim = fit["dim"]
for order in range(3):
    mine = table[:, 1 + order * dim:1 + (order + 1) * dim]
    theirs = spline(table[:, 0], nu=order)
    worst = np.abs(mine - theirs).max() / np.abs(theirs).max()
    assert worst < 1e-12, (order, worst)
    print("ok: derivative", order, "relative difference", worst)
