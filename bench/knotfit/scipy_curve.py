#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The fit of `knotfit curve FILE --controls N --ends free` by SciPy: scipy_curve.py FILE N.

Reads, fits on the same averaged knots and chord-length parameters, measures at the parameters.
"""
import sys
import time

import numpy as np
from scipy.interpolate import make_lsq_spline


def main():
    begin = time.perf_counter()
    points, count, degree = np.loadtxt(sys.argv[1], delimiter=","), int(sys.argv[2]), 3
    read = time.perf_counter()
    u = np.concatenate([[0], np.cumsum(np.linalg.norm(np.diff(points, axis=0), axis=1))])
    u /= u[-1]
    at = np.arange(1, count - degree) * len(u) / (count - degree)
    i = at.astype(int)
    inner = (1 - (at - i)) * u[i - 1] + (at - i) * u[i]
    knots = np.concatenate([np.zeros(degree + 1), inner, np.ones(degree + 1)])
    spline = make_lsq_spline(u, points, knots, degree)
    fitted = time.perf_counter()
    distance = np.linalg.norm(spline(u) - points, axis=1)
    measured = time.perf_counter()
    print(f"rms {np.sqrt(np.mean(distance**2)):.7g}, max {distance.max():.7g}; "
          f"read {read - begin:.3f} s, fit {fitted - read:.3f} s, measure {measured - fitted:.3f} s")


if __name__ == "__main__":
    main()
