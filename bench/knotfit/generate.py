#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes measured points of any number: generate.py curve N [NOISE [DIM]] | grid N [NOISE] > FILE.

A curve is a slow drift with two waves across it, its noise across the drift alone, so that the
points keep their order; a grid holds heights over a square. Seeds are fixed.
"""
import sys

import numpy as np


def curve(n, noise=1e-3, dim=2):
    t = np.linspace(0, 1, n)
    columns = [100 * t + 2 * np.sin(40 * t), 10 * np.sin(25 * t) + 3 * np.cos(90 * t), 4 * np.sin(13 * t)][:dim]
    random = np.random.default_rng(7)
    for column in columns[1:]:
        column += noise * random.standard_normal(n)
    return np.column_stack(columns)


def grid(n, noise=1e-2):
    x = np.linspace(0, 6, n)
    heights = 5 * np.sin(x)[:, None] * np.cos(1.3 * x)[None, :]
    return heights + noise * np.random.default_rng(7).standard_normal((n, n))


def main():
    kind, n, *rest = sys.argv[1:]
    noise = [float(rest[0])] if rest else []
    values = curve(int(n), *noise, *map(int, rest[1:])) if kind == "curve" else grid(int(n), *noise)
    np.savetxt(sys.stdout, values, fmt="%.9g", delimiter=",")


if __name__ == "__main__":
    main()
