// SPDX-License-Identifier: MIT
// Kernel stand-in: curve records.
//
// Nodes of equal neighbouring knots share one cell with the value, so that moving one of them moves
// all. What is released knows a cell by its last node.
#include "knotwork/platform/kernel/builders.h"
#include "nodes.h"

namespace {

bool buildKnots(ag_knode** link, long long count, const double* knots) {
  double* previous = nullptr;
  for (long long k = 0; k < count; ++k, link = &(*link)->next) {
    if (!(*link = knotwork::detail::newRecord<ag_knode>())) return false;
    if (!knots) continue;
    if (!knotwork::detail::setKnot(&(*link)->t, previous, knots[k])) return false;
    previous = (*link)->t;
  }
  return true;
}

}  // namespace

ag_spline* ag_bld_bs(int dim, const double* points, const double* knots, int type, int degree,
                     int spans, int rational, int form) {
  // Wide enough for the sums of any ints: records come from hosts.
  const long long size = static_cast<long long>(dim) + (rational < 0 ? -1LL : 1LL) * rational;
  const long long count = static_cast<long long>(spans) + degree;
  constexpr long long kMost = 0x7FFFFFFF;
  if (dim < 0 || degree < 0 || spans < 0 || count < 1 || count > kMost || size > kMost) {
    return nullptr;
  }
  ag_spline* const curve = knotwork::detail::newRecord<ag_spline>();
  if (!curve) return nullptr;
  *curve = {dim, degree, spans, rational, nullptr, nullptr, form, type};
  if (knotwork::detail::buildPoints(&curve->first, static_cast<int>(count), static_cast<int>(size),
                                    points) &&
      buildKnots(&curve->knots, count + degree - 1, knots)) {
    return curve;
  }
  ag_rel_bs(curve);
  return nullptr;
}

void ag_rel_bs(ag_spline* curve) {
  if (!curve) return;
  knotwork::detail::releasePoints(curve->first);
  for (ag_knode* node = curve->knots; node;) {
    ag_knode* const next = node->next;
    if (!next || next->t != node->t) std::free(node->t);
    std::free(node);
    node = next;
  }
  std::free(curve);
}
