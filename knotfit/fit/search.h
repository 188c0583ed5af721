// SPDX-License-Identifier: MIT
// The search for the smallest fit that keeps a tolerance.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace knotfit {

/// Doubles the step until a fit keeps the tolerance, then halves the range. Where none does, the
/// last one that could be made is told to have missed it.
///
/// @param make   make(step) for 0 <= step <= most; nothing where the data do not determine it.
/// @param keeps  keeps(fit) tells whether the tolerance holds.
/// @return the fit of the least step that keeps it; nothing where even step 0 cannot be made.
template <class Fit, class Make, class Keeps>
std::optional<Fit> smallestFit(std::size_t most, Make make, Keeps keeps) {
  std::size_t low = 0, step = 0;  // below `low` the tolerance is missed
  std::optional<Fit> fit = make(step);
  while (fit && !keeps(*fit)) {
    low = step + 1;
    std::size_t next = std::min(most, std::max<std::size_t>(1, 2 * step));
    std::optional<Fit> larger;
    while (low <= most && !(larger = make(next))) {
      most = next - 1;
      next = low + (most - std::min(low, most)) / 2;
    }
    if (!larger) {
      fit->reached = false;
      return fit;
    }
    fit = std::move(larger);
    step = next;
  }
  while (fit && low < step) {
    const std::size_t middle = low + (step - low) / 2;
    std::optional<Fit> smaller = make(middle);
    if (smaller && keeps(*smaller)) {
      fit = std::move(smaller);
      step = middle;
    } else {
      low = middle + 1;
    }
  }
  return fit;
}

}  // namespace knotfit
