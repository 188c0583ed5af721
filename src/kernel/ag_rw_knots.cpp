// SPDX-License-Identifier: MIT
// Conversions between knot vectors and the knot lists of curves and surfaces.
//
// A curve of degree m and n spans has n + 2 m + 1 knots, of which the kernel keeps all but the
// first and the last; a surface has two such lists.
#include "knotwork/kernel/ag_rw.h"
#include "knotwork/platform/kernel/accessors.h"

namespace {

constexpr int kPeriodic = 2;

// A list of knots in records: nodes, linked by `next`, with the addresses of their values.
template <class Node>
struct KnotList {
  Node* first;
  Node* Node::*next;
  double* Node::*value;
  int degree;
  int spans;
  int form;

  // Number of values kept in the list.
  long long stored() const { return static_cast<long long>(spans) + 2LL * degree - 1; }

  // Calls f(k, value) for the stored values, k from 1. @return false where one is missing.
  template <class F>
  bool eachKnot(F f) const {
    Node* node = first;
    for (int k = 1; k <= stored(); ++k, node = node->*next) {
      if (node == nullptr || node->*value == nullptr) return false;
      f(k, *(node->*value));
    }
    return stored() >= 0;
  }
};

auto knotsOf(const ag_spline& s) {
  return KnotList<ag_knode>{AGI_getFirstNode(&s), &ag_knode::next, &ag_knode::t, s.degree, s.spans,
                            ag_get_form_bs(&s)};
}

auto knotsOf(const ag_surface& s, TsurfaceDirection dir) {
  ag_sknode* first = AGI_getFirstSurfaceNode(&s);
  using List = KnotList<ag_sknode>;
  return dir == TsurfaceDirection::u
             ? List{first, &ag_sknode::nextU, &ag_sknode::u, s.uDegree, s.uSpans, s.uForm}
             : List{first, &ag_sknode::nextV, &ag_sknode::v, s.vDegree, s.vSpans, s.vForm};
}

template <class Node>
bool readKnots(const KnotList<Node>& list, DoubleVec& knots) {
  const long long stored = list.stored();
  if (stored < 1 || knots.length() < stored + 2) return false;
  const double beyond = list.form == kPeriodic ? 1.0 : 0.0;
  return list.eachKnot([&](int k, double value) {
    knots(k) = value;
    if (k == 1) knots(0) = value - beyond;
    if (k == stored) knots(k + 1) = value + beyond;
  });
}

template <class Node>
bool writeKnots(const DoubleVec& knots, const KnotList<Node>& list) {
  if (knots.length() != list.stored() + 2) return false;
  return list.eachKnot([&](int k, double& value) { value = knots(k); });
}

}  // namespace

bool TagRw::knotsToDv(const ag_spline* s, DoubleVec& knots) {
  return s != nullptr && readKnots(knotsOf(*s), knots);
}

bool TagRw::dvToKnots(const DoubleVec& knots, ag_spline* s) {
  return s != nullptr && writeKnots(knots, knotsOf(*s));
}

bool TagRw::knotsToDvOne(const ag_surface* s, TsurfaceDirection dir, DoubleVec& knots) {
  return s != nullptr && readKnots(knotsOf(*s, dir), knots);
}

bool TagRw::dvToKnotsOne(const DoubleVec& knots, TsurfaceDirection dir, ag_surface* s) {
  return s != nullptr && writeKnots(knots, knotsOf(*s, dir));
}

bool TagRw::knotsToDv(const ag_surface* s, DoubleVec& uKnots, DoubleVec& vKnots) {
  return knotsToDvOne(s, TsurfaceDirection::u, uKnots) &&
         knotsToDvOne(s, TsurfaceDirection::v, vKnots);
}

bool TagRw::dvToKnots(const DoubleVec& uKnots, const DoubleVec& vKnots, ag_surface* s) {
  return dvToKnotsOne(uKnots, TsurfaceDirection::u, s) &&
         dvToKnotsOne(vKnots, TsurfaceDirection::v, s);
}
