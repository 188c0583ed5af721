#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints the golden bits of tests/vector/order_of_sums_test.cpp.

Every operation is done in exact rational arithmetic and rounded once, to the nearest double, so
that no compiler, processor or mathematical library has a hand in it.
"""
from fractions import Fraction
from math import isqrt

COUNT = 1003  # leaves a remainder for every number of lanes


def nearest(q):
    return Fraction(float(q)) if q else Fraction(0)  # division of Python's integers rounds to even


def elements(state):
    """53-bit signed integers of a linear congruential generator, on 16 scales."""
    for _ in range(COUNT):
        state = (state * 6364136223846793005 + 1442695040888963407) % 2**64
        yield Fraction((state >> 11) - 2**52) * Fraction(2) ** ((state >> 7) % 16 - 60)


def root(q):
    shift = 400  # q * 2^400 has many more digits than a double, so its integer root rounds alike
    return nearest(Fraction(isqrt(int(q * 2**shift)), 2 ** (shift // 2)))


x, y = list(elements(1)), list(elements(3))
total, running = Fraction(0), []
for xi in x:
    total = nearest(total + xi)
    running.append(total)
inner = Fraction(0)
for xi, yi in zip(x, y):
    inner = nearest(inner + nearest(xi * yi))
mean = nearest(total / COUNT)
spread = Fraction(0)
for xi in x:
    d = nearest(xi - mean)
    spread = nearest(spread + nearest(d * d))
squares = Fraction(0)
for xi in x:
    squares = nearest(squares + nearest(xi * xi))
mixed = Fraction(0)  # every running sum, weighted: one number for the whole of cumsum
for r, yi in zip(running, y):
    mixed = nearest(mixed + nearest(r * yi))
for name, value in [("sum", total), ("dot", inner), ("mean", mean),
                    ("variance", nearest(spread / COUNT)), ("vecLen", root(squares)),
                    ("dot(cumsum)", mixed)]:
    print(f"{name:12} {float(value).hex()}")
