// SPDX-License-Identifier: MIT
// AP_SPLINE from and to the curve records of the host's spline kernel.
#include "kernel/record_chain.h"
#include "kernel/storage.h"
#include "knotwork/kernel/spline.h"
#include "knotwork/platform/kernel/accessors.h"

using namespace knotwork::detail;

namespace {

// Whether a record holds all the numbers it counts.
bool isWhole(const ag_spline* s) {
  if (!s || s->dim < 0 || s->degree < 0 || s->spans < 1) return false;
  const long long points = static_cast<long long>(s->spans) + s->degree;
  return chainHolds(s->first, &ag_cnode::next, &ag_cnode::p, points) &&
         chainHolds(AGI_getFirstNode(s), &ag_knode::next, &ag_knode::t, points + s->degree - 1);
}

// An incomplete record asks for a curve that cannot be, which gives the empty one.
int degreeOf(const ag_spline* s) { return isWhole(s) ? s->degree : -1; }

}  // namespace

AP_SPLINE::AP_SPLINE(const ag_spline* s)
    : AP_SPLINE(s ? s->dim : 0, degreeOf(s), s ? s->spans : 0, s ? s->rational : 0) {
  if (Count() == 0) return;
  form_ = static_cast<AP_FORM>(ag_get_form_bs(s));
  type_ = static_cast<AP_TYPE>(s->type);
  const auto knots = newArray<double>(knotCount(knots_));
  readKnots(AGI_getFirstNode(s), &ag_knode::next, &ag_knode::t, knots.get(), knotCount(knots_));
  knots_.assign(knots.get(), knotCount(knots_));
  const ag_cnode* node = s->first;
  for (int i = 0; i < Count(); ++i, node = node->next) ag_V_copy(node->p, (*this)[i], Coords());
}

ag_spline* AP_SPLINE::AGLIB() const {
  if (Count() == 0) return nullptr;
  OwnedRecord<ag_spline, ag_rel_bs> s(
      ag_bld_bs(dim_, nullptr, nullptr, type_, Degree(), Spans(), rationality_, form_));
  if (!s.get() || !writeKnots(AGI_getFirstNode(s.get()), &ag_knode::next, &ag_knode::t, knots_)) {
    return nullptr;
  }
  ag_cnode* node = s->first;
  for (int i = 0; node && i < Count(); ++i, node = node->next) {
    ag_V_copy((*this)[i], node->p, Coords());
  }
  return s.release();
}
