// SPDX-License-Identifier: MIT
// Kernel stand-in: surface records: a grid of points, and two chains of knots that begin in one
// node. As in curves, equal neighbouring knots share a cell.
#include "knotwork/platform/kernel/builders.h"
#include "nodes.h"

using Link = ag_sknode* ag_sknode::*;
using Value = double* ag_sknode::*;

namespace {

// Builds one of the two chains; the node they share is made by the chain that comes first.
bool buildChain(ag_sknode** link, Link next, Value value, long long count, const double* knots) {
  double* previous = nullptr;
  for (long long k = 0; k < count; ++k, link = &((*link)->*next)) {
    if (!*link && !(*link = knotwork::detail::newRecord<ag_sknode>())) return false;
    if (!knots) continue;
    if (!knotwork::detail::setKnot(&((*link)->*value), previous, knots[k])) return false;
    previous = (*link)->*value;
  }
  return true;
}

void releaseValues(ag_sknode* node, Link next, Value value) {
  for (; node; node = node->*next) {
    ag_sknode* const follower = node->*next;
    if (!follower || follower->*value != node->*value) std::free(node->*value);
  }
}

void releaseNodes(ag_sknode* node, Link next) {
  while (node) {
    ag_sknode* const follower = node->*next;
    std::free(node);
    node = follower;
  }
}

void releaseKnots(ag_sknode* first) {
  if (!first) return;
  releaseValues(first, &ag_sknode::nextU, &ag_sknode::u);
  releaseValues(first, &ag_sknode::nextV, &ag_sknode::v);
  releaseNodes(first->nextU, &ag_sknode::nextU);
  releaseNodes(first, &ag_sknode::nextV);
}

bool isSize(long long count) { return count >= 1 && count <= 0x7FFFFFFF; }

}  // namespace

ag_surface* ag_bld_srf(int dim, const double* points, const double* knots, int type, int uDegree,
                       int vDegree, int uSpans, int vSpans, int uRational, int vRational, int uForm,
                       int vForm) {
  const long long rows = static_cast<long long>(uSpans) + uDegree;
  const long long cols = static_cast<long long>(vSpans) + vDegree;
  const bool rational = uRational != 0 || vRational != 0;
  if (dim < 0 || uDegree < 0 || vDegree < 0 || uSpans < 0 || vSpans < 0 || !isSize(rows) ||
      !isSize(cols) || !isSize(static_cast<long long>(dim) + 1)) {
    return nullptr;
  }
  ag_surface* const s = knotwork::detail::newRecord<ag_surface>();
  if (!s) return nullptr;
  *s = {dim,       uDegree, vDegree, uSpans,  vSpans,  uRational,
        vRational, uForm,   vForm,   nullptr, nullptr, type};
  const long long uKnots = rows + uDegree - 1;
  const double* const vStart = knots ? knots + uKnots : nullptr;
  if (knotwork::detail::buildGrid(&s->first, static_cast<int>(rows), static_cast<int>(cols),
                                  dim + (rational ? 1 : 0), points) &&
      buildChain(&s->knots, &ag_sknode::nextU, &ag_sknode::u, uKnots, knots) &&
      buildChain(&s->knots, &ag_sknode::nextV, &ag_sknode::v, cols + vDegree - 1, vStart)) {
    return s;
  }
  ag_rel_srf(s);
  return nullptr;
}

void ag_rel_srf(ag_surface* surface) {
  if (!surface) return;
  knotwork::detail::releaseGrid(surface->first);
  releaseKnots(surface->knots);
  std::free(surface);
}
