// SPDX-License-Identifier: MIT
// A second spline kernel: what the library asks of one, and nothing in common with the stand-in. It
// is built with the stand-in's records, and with those of a host that has its own.
// Records are cut out of an arena of fixed size that is rewound when the last record goes, nodes
// lie one after the other, and a full arena gives null.
#include "arena_kernel.h"

#include <cstddef>
#include <cstring>

#include "knotwork/platform/kernel/accessors.h"
#include "knotwork/platform/kernel/builders.h"
#include "knotwork/platform/kernel/ticks.h"

namespace {

constexpr std::size_t kArena = std::size_t{1} << 18;
alignas(16) unsigned char arena[kArena];
std::size_t used = 0;
unsigned total = 0;
int records = 0;

template <class T>
T* take(long long n) {
  const std::size_t bytes = (static_cast<std::size_t>(n) * sizeof(T) + 15) / 16 * 16;
  if (n < 1 || n > static_cast<long long>(kArena) || bytes > kArena - used) return nullptr;
  void* const place = std::memset(arena + used, 0, bytes);
  used += bytes;
  total += static_cast<unsigned>(bytes);
  return static_cast<T*>(place);
}

void giveBack(const void* record) {
  if (record && --records == 0) used = 0;
}

// A chain of nodes with `size` doubles each, or with values from `knots`.
template <class Node>
Node* chain(long long n, Node* Node::*next, double* Node::*value, int size, const double* from) {
  Node* const nodes = take<Node>(n);
  double* const cells = take<double>(n * size);
  if (!nodes || (size > 0 && !cells)) return nullptr;
  for (long long i = 0; i < n; ++i) {
    nodes[i].*next = i + 1 < n ? nodes + i + 1 : nullptr;
    nodes[i].*value = size > 0 ? cells + i * size : nullptr;
  }
  if (from && cells) std::memcpy(cells, from, static_cast<std::size_t>(n * size) * sizeof(double));
  return nodes;
}

ag_snode* grid(int rows, int cols, int size, const double* points) {
  ag_snode* below = nullptr;
  for (int i = rows - 1; i >= 0; --i) {
    const double* const row =
        points ? points + static_cast<std::ptrdiff_t>(i) * cols * size : nullptr;
    ag_snode* const head = chain<ag_snode>(cols, &ag_snode::nextV, &ag_snode::p, size, row);
    for (ag_snode* node = head; node; node = node->nextV) node->nextU = below;
    below = head;
  }
  return below;
}

template <class Record>
Record* finish(const Record& record, bool whole) {
  Record* const kept = whole ? take<Record>(1) : nullptr;
  if (!kept) return nullptr;
  ++records;
  return &(*kept = record);
}

}  // namespace

int arena_records() { return records; }
unsigned arena_bytes() { return total; }

double* ag_al_dbl(int n) { return take<double>(n); }

ag_spline* ag_bld_bs(int dim, const double* points, const double* knots, int type, int degree,
                     int spans, int rational, int form) {
  if (degree < 0 || spans < 0 || degree + spans < 1) return nullptr;
  const int size = dim + (rational < 0 ? -rational : rational);
  ag_spline s{};
  s.dim = dim, s.degree = degree, s.spans = spans, s.rational = rational;
  s.form = form, s.type = type;
  s.first = chain<ag_cnode>(spans + degree, &ag_cnode::next, &ag_cnode::p, size, points);
  s.knots =
      chain<ag_knode>(spans + 2 * degree - 1, &ag_knode::next, &ag_knode::t, knots ? 1 : 0, knots);
  return finish(s, s.first != nullptr);
}

ag_surface* ag_bld_srf(int dim, const double* points, const double* knots, int type, int uDegree,
                       int vDegree, int uSpans, int vSpans, int uRational, int vRational, int uForm,
                       int vForm) {
  if (uDegree < 1 || vDegree < 1 || uSpans < 1 || vSpans < 1) return nullptr;
  const int size = dim + (uRational || vRational ? 1 : 0);
  const int uKnots = uSpans + 2 * uDegree - 1, vKnots = vSpans + 2 * vDegree - 1;
  ag_surface s{};
  s.dim = dim, s.type = type;
  s.uDegree = uDegree, s.uSpans = uSpans, s.uRational = uRational, s.uForm = uForm;
  s.vDegree = vDegree, s.vSpans = vSpans, s.vRational = vRational, s.vForm = vForm;
  s.first = grid(uSpans + uDegree, vSpans + vDegree, size, points);
  s.knots = chain<ag_sknode>(uKnots, &ag_sknode::nextU, &ag_sknode::u, knots ? 1 : 0, knots);
  ag_sknode* const inV = chain<ag_sknode>(vKnots, &ag_sknode::nextV, &ag_sknode::v, knots ? 1 : 0,
                                          knots ? knots + uKnots : nullptr);
  if (!s.first || !s.knots || !inV) return nullptr;
  s.knots->nextV = inV->nextV;
  s.knots->v = inV->v;
  return finish(s, true);
}

void ag_rel_bs(ag_spline* s) { giveBack(s); }
void ag_rel_srf(ag_surface* s) { giveBack(s); }

ag_knode* AGI_getFirstNode(const ag_spline* s) { return s ? s->knots : nullptr; }
ag_sknode* AGI_getFirstSurfaceNode(const ag_surface* s) { return s ? s->knots : nullptr; }
int ag_get_form_bs(const ag_spline* s) { return s ? s->form : 0; }

void ag_V_copy(const double* from, double* to, int n) {
  if (n > 0) std::memmove(to, from, static_cast<std::size_t>(n) * sizeof(double));
}

void ag_V_zero(double* to, int n) {
  if (n > 0) std::memset(to, 0, static_cast<std::size_t>(n) * sizeof(double));
}

static ag_tick_function heard = nullptr;
void ag_register_tick_function(ag_tick_function function) { heard = function; }
int arena_tick(int step, int maximum) { return heard ? heard(step, maximum) : 0; }
