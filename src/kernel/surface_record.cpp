// SPDX-License-Identifier: MIT
// AP_SURFACE from and to the records of the host's spline kernel: rows here are the v index, there
// the u index.
#include "kernel/record_chain.h"
#include "kernel/storage.h"
#include "knotwork/kernel/surface.h"
#include "knotwork/platform/kernel/accessors.h"

using namespace knotwork::detail;

namespace {

bool gridHolds(const ag_snode* row, long long rows, long long cols) {
  for (; rows > 0; --rows, row = row->nextU) {
    if (!chainHolds(row, &ag_snode::nextV, &ag_snode::p, cols)) return false;
  }
  return true;
}

// Whether a record holds all the numbers it counts.
bool isWhole(const ag_surface* s) {
  if (!s || s->dim < 0 || s->uDegree < 0 || s->vDegree < 0 || s->uSpans < 1 || s->vSpans < 1) {
    return false;
  }
  const long long rows = static_cast<long long>(s->uSpans) + s->uDegree;
  const long long cols = static_cast<long long>(s->vSpans) + s->vDegree;
  const ag_sknode* const first = AGI_getFirstSurfaceNode(s);
  return gridHolds(s->first, rows, cols) &&
         chainHolds(first, &ag_sknode::nextU, &ag_sknode::u, rows + s->uDegree - 1) &&
         chainHolds(first, &ag_sknode::nextV, &ag_sknode::v, cols + s->vDegree - 1);
}

// An incomplete record asks for a surface that cannot be, which gives the empty one.
int uDegreeOf(const ag_surface* s) { return isWhole(s) ? s->uDegree : -1; }

void takeKnots(const ag_sknode* first, ag_sknode* ag_sknode::*next, double* ag_sknode::*value,
               knotwork::KnotRecord& knots) {
  const int count = knotCount(knots);
  const auto values = newArray<double>(count);
  readKnots(first, next, value, values.get(), count);
  knots.assign(values.get(), count);
}

}  // namespace

AP_SURFACE::AP_SURFACE(const ag_surface* s, int)
    : AP_SURFACE(s ? s->dim : 0, uDegreeOf(s), s ? s->vDegree : 0, s ? s->uSpans : 0,
                 s ? s->vSpans : 0, s ? s->uRational : 0, s ? s->vRational : 0) {
  if (points() == 0) return;
  const ag_sknode* const first = AGI_getFirstSurfaceNode(s);
  takeKnots(first, &ag_sknode::nextU, &ag_sknode::u, uKnots_);
  takeKnots(first, &ag_sknode::nextV, &ag_sknode::v, vKnots_);
  SetForm(static_cast<AP_FORM>(s->uForm), static_cast<AP_FORM>(s->vForm));
  SetForm(static_cast<AP_TYPE>(s->type));
  const ag_snode* row = s->first;
  for (int j = 0; j < uCount(); ++j, row = row->nextU) {
    const ag_snode* node = row;
    for (int i = 0; i < vCount(); ++i, node = node->nextV)
      ag_V_copy(node->p, index(i, j), Coords());
  }
}

ag_surface* AP_SURFACE::AGLIB() const {
  if (points() == 0) return nullptr;
  OwnedRecord<ag_surface, ag_rel_srf> s(ag_bld_srf(dim_, nullptr, nullptr, type_, uDegree(),
                                                   vDegree(), uSpans(), vSpans(), uRationality_,
                                                   vRationality_, uForm_, vForm_));
  if (!s.get()) return nullptr;
  ag_sknode* const first = AGI_getFirstSurfaceNode(s.get());
  if (!writeKnots(first, &ag_sknode::nextU, &ag_sknode::u, uKnots_) ||
      !writeKnots(first, &ag_sknode::nextV, &ag_sknode::v, vKnots_)) {
    return nullptr;
  }
  ag_snode* row = s->first;
  for (int j = 0; row && j < uCount(); ++j, row = row->nextU) {
    ag_snode* node = row;
    for (int i = 0; node && i < vCount(); ++i, node = node->nextV) {
      ag_V_copy(index(i, j), node->p, Coords());
    }
  }
  return s.release();
}
