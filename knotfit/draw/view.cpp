// SPDX-License-Identifier: MIT
// The box that a view shows.
#include "draw/view.h"

namespace knotfit {
namespace {

// One digit and zeros: the factor is printed beside the axis.
double roundStretch(double wanted) {
  const double power = std::pow(10.0, std::floor(std::log10(wanted)));
  const double digit = wanted / power;
  return power * std::floor(digit);
}

}  // namespace

Box boxOf(const Spline& s) {
  Box box;
  for (std::size_t c = 0; c < 3; ++c) {
    Range r{s.controls[c], s.controls[c]};
    for (std::size_t i = c; i < s.controls.size(); i += 3) r.take(s.controls[i]);
    if (r.size() == 0) r = r.widened(0);
    box.range[c] = r;
  }
  const double across = std::max(box.range[0].size(), box.range[1].size());
  const double ratio = box.range[2].size() / across;
  // Flat ground would show as a line, a tower would leave the page.
  if (ratio < 0.2) box.stretch = roundStretch(0.45 / ratio);
  if (ratio > 2) box.stretch = roundStretch(1.0 / ratio);
  return box;
}

}  // namespace knotfit
