#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints the golden bits of tests/vector/order_of_sums_test.cpp.

Every operation is done in exact rational arithmetic and rounded once, to the nearest double, so
that no compiler, processor or mathematical library has a hand in it. The lengths at the end are
those of the published four-phase form, C. L. Lawson et al. (1979), in Python's doubles.
"""
from fractions import Fraction
from math import inf, isqrt, nan, sqrt
from random import Random

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


def dot(x, y, lanes=1, fused=False):
    """In so many partial sums, optionally with products that are not rounded."""
    partial = [Fraction(0)] * lanes
    for i, (xi, yi) in enumerate(zip(x, y)):
        partial[i % lanes] = nearest(partial[i % lanes] + (xi * yi if fused else nearest(xi * yi)))
    total = Fraction(0)
    for p in partial:
        total = nearest(total + p)
    return total


x, y = list(elements(1)), list(elements(3))
total, running = Fraction(0), []
for xi in x:
    total = nearest(total + xi)
    running.append(total)
inner = dot(x, y)
ones = [1] * COUNT
# The data tell every other way of adding up.
assert inner not in [dot(x, y, 1, True), dot(x[::-1], y[::-1])]
for lanes in [2, 3, 4, 8, 16, 32]:
    assert inner not in [dot(x, y, lanes), dot(x, y, lanes, True)]
    assert dot(x, ones) != dot(x, ones, lanes) and dot(x, x) != dot(x, x, lanes)
mean = nearest(total / COUNT)
spread = Fraction(0)
for xi in x:
    d = nearest(xi - mean)
    spread = nearest(spread + nearest(d * d))
squares = dot(x, x)
mixed = dot(running, y)  # every running sum, weighted: one number for the whole of cumsum
for name, value in [("sum", total), ("dot", inner), ("mean", mean),
                    ("variance", nearest(spread / COUNT)), ("vecLen", root(squares)),
                    ("dot(cumsum)", mixed)]:
    print(f"{name:12} {float(value).hex()}")


def length(x, low=8.232e-11, high=1.304e19, small=True, large=True, inclusive=True, scaled=True,
           up=True, down=True, squared=True):
    """The length of x, or what it is with other cuts, or with a phase left out or another scaling."""
    hit = high / max(len(x), 1)
    phase, total, xmax = "zeros", 0.0, 0.0
    for xi in x:
        size = abs(xi)
        if phase in ("zeros", "small") and (size > low or not small):
            total = total * xmax * xmax if up else total * (xmax * xmax)
            phase = "mid"
        if phase == "zeros" and xi != 0.0:
            phase, xmax = "small", size
        if phase == "mid" and large and (size >= hit if inclusive else size > hit):
            total = total / xi / xi if down else total / (xi * xi)
            phase, xmax = "large", size
        if phase == "mid":
            total += xi * xi
        elif phase != "zeros" and (size <= xmax or not scaled):
            total += (xi / xmax) * (xi / xmax)
        elif phase != "zeros":
            ratio = xmax / xi
            total = 1.0 + (total * (ratio * ratio) if squared else total * ratio * ratio)
            xmax = size
    return sqrt(total) if phase == "mid" else xmax * sqrt(total)


def text(number):
    return "kNan" if number != number else str(number).replace("inf", "kInf")


others = [dict(low=8.2319999e-11), dict(low=8.233e-11), dict(low=1e-12), dict(low=1e-10), dict(small=False),
          dict(high=1.303e19), dict(high=1.305e19), dict(high=4e18), dict(high=4e19), dict(large=False),
          dict(inclusive=False), dict(scaled=False), dict(up=False), dict(down=False),
          dict(squared=False)]
families = [[0.0, 2e-11, 8.2315e-11, 8.232e-11, 8.2325e-11, 3e-10], [1e18, 3.259e18, 3.26e18, 3.261e18, 1e19],
            [3e-320, 7e-200, 4e-160, 3e-12, 1.0], [3e-11, 7e-11, 8e-11, 9e-11, 1e-10],
            [1.0, 4e18, 6e150, 7e153, 1e300], [-0.0, 1e-200, 1.0, 1e200]]
cases, random = [[0.0, -0.0], [], [nan], [1.0, nan], [1e200, nan, 1e300], [inf], [1e-300, -inf, 1.0]], Random(7)
for variant in others:
    while True:
        family = random.choice(families)
        case = [random.choice(family) * random.choice([1, 1, -1, 3, 7]) for _ in range(4)]
        if length(case) != length(case, **variant):
            break
    cases.append(case)
print("\nElements and lengths; each of the latter ones tells one other way of computing it:")
for case in cases:
    print(f"      {{{{{', '.join(map(text, case))}}}, {text(length(case))}}},")
