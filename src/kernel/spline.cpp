// SPDX-License-Identifier: MIT
// AP_SPLINE: construction, access, evaluation, knot insertion and printing.
//
// A point is a combination of the degree + 1 control points of its span. The triangular scheme
// gives the weights of all orders at once, from the nearer end of the span; for a rational curve
// they combine the coordinates times their weight, and the quotient rule divides at the end.
#include "knotwork/kernel/spline.h"

#include <algorithm>

#include "kernel/knot_insertion.h"
#include "kernel/number_text.h"
#include "kernel/quotient_rule.h"
#include "kernel/storage.h"
#include "kernel/triangular_scheme.h"

using namespace knotwork::detail;

namespace {

// Control points by which storage grows: knots are mostly inserted one by one, and most of them
// then find room.
constexpr int kGrowBy = 8;

// The static eval() takes the curve whose member eval() ran last, and keeps its results in an area
// that all curves share.
const AP_SPLINE* current = nullptr;
ResultArea area;

}  // namespace

AP_SPLINE::AP_SPLINE(int dim, int degree, int spans, AP_RATIONALITY rationality)
    : AP_GEOMETRIC(dim),
      rationality_(rationality),
      form_(),
      type_(),
      knots_(dim < 0 ? -1 : degree, spans),
      growBy_(kGrowBy) {
  if (Count() > 0) allocate(Count(), Coords(), schemeNumbers(degree));
}

AP_SPLINE::AP_SPLINE(const AP_SPLINE& other)
    : AP_SPLINE(other.dim_, other.Degree(), other.Spans(), other.rationality_) {
  form_ = other.form_;
  type_ = other.type_;
  if (Count() == 0) return;
  knots_.assign(other.knots_.at(knots_.first()), knots_.last() - knots_.first() + 1);
  std::copy_n(other.cv_, static_cast<std::ptrdiff_t>(Count()) * Coords(), cv_);
}

AP_SPLINE::~AP_SPLINE() {
  if (current == this) current = nullptr;
}

int AP_SPLINE::Degree() const { return knots_.degree(); }

int AP_SPLINE::Spans() const { return knots_.spans(); }

int AP_SPLINE::Count() const { return knots_.spans() + knots_.degree(); }

int AP_SPLINE::Coords() const { return dim_ + (rationality_ ? 1 : 0); }

AP_RATIONALITY AP_SPLINE::Rationality() const { return rationality_; }

AP_FORM AP_SPLINE::Form() const { return form_; }

AP_TYPE AP_SPLINE::Type() const { return type_; }

int AP_SPLINE::WorkspaceSize(int k) const {
  return static_cast<int>((unsignedMax(Degree(), k) + 1) * static_cast<unsigned>(Coords()));
}

knotwork::KnotRecord& AP_SPLINE::Knots() { return knots_; }

const knotwork::KnotRecord& AP_SPLINE::Knots() const { return knots_; }

double* AP_SPLINE::operator[](int i) { return cv_ + static_cast<std::ptrdiff_t>(i) * Coords(); }

const double* AP_SPLINE::operator[](int i) const {
  return cv_ + static_cast<std::ptrdiff_t>(i) * Coords();
}

void AP_SPLINE::make_cnodes() {
  if (!nodes_) nodes_ = listNodes<AP_CNODE>(cv_, Count(), Coords());
}

AP_CNODE* AP_SPLINE::node0() {
  make_cnodes();
  return Count() > 0 ? &nodes_[0] : nullptr;
}

AP_CNODE* AP_SPLINE::noden() {
  AP_CNODE* const first = node0();
  return first ? first + (Count() - 1) : nullptr;
}

AP_MMBOX& AP_SPLINE::Box(int force) { return bound(Count(), Coords(), force); }

void AP_SPLINE::eval(double* out, double t, int nderiv) const {
  current = this;
  if (nderiv < 0) return;
  const std::ptrdiff_t coords = Coords();
  const int m = Degree();
  // Orders above the degree are zeros; the quotient rule makes something of them.
  const int orders = Spans() < 1 ? 0 : std::min(nderiv, m) + 1;
  if (orders > 0) {
    const NearEnd end = nearEnd(knots_, t);
    const Rows points((*this)[end.span], coords, m, end);
    forEachOrder(spare(), m, end, t, nderiv, [&](int q, const double* weights) {
      combine(points, q, weights, out + q * coords, Coords(), m);
    });
  }
  std::fill(out + orders * coords, out + (nderiv + std::ptrdiff_t{1}) * coords, 0.0);
  if (rationality_ && orders > 0) quotientRule(out, dim_, nderiv, 0);
}

double* AP_SPLINE::eval(double t, int nderiv) {
  if (!current || nderiv < 0) return nullptr;
  const long long rows = std::max(current->Degree(), nderiv) + 1LL;
  double* const out = area.take(rows * current->Coords());
  current->eval(out, t, nderiv);
  return out;
}

int AP_SPLINE::insert(double t, int mult) {
  if (!knots_.contains(t)) return -1;
  const int s = knots_.span(t) + 1;
  if (mult < 1) return s;
  // All storage before the first change: what throws leaves the curve as it was.
  const long long needed = static_cast<long long>(Count()) + mult;
  knots_.reserve(mult);
  reserve(needed, Coords(), growBy_, schemeNumbers(Degree()));
  nodes_.reset();  // they link the points that were
  for (int k = 0; k < mult; ++k) insertOnce(t);
  return s;
}

void AP_SPLINE::insertOnce(double t) {
  const int count = Count();
  const int s = knots_.insert(t);
  insertRow(cv_, count, Coords(), knots_, s, t);
}

void AP_SPLINE::set(const double* values, int n) { set(0, values, n); }

void AP_SPLINE::set(int i, const double* values, int n) {
  if (i < 0 || i >= Count()) return;
  const std::ptrdiff_t coords = Coords();
  write(i * coords, Count() * coords, values, n);
}

int AP_SPLINE::EqualTo(const AP_SPLINE&) const { return 0; }

void AP_SPLINE::SetForm(AP_FORM form) { form_ = form; }

void AP_SPLINE::SetForm(AP_TYPE type) { type_ = type; }

void AP_SPLINE::print(std::FILE* file) const {
  if (!file) return;
  std::fputs("Knots: ", file);
  for (int k = knots_.first(); k <= knots_.last(); ++k) {
    printNumber(file, knots_(k), std::chars_format::fixed, 4, 2);
    std::fputc(knots_.repeats(k) ? '=' : ' ', file);
  }
  std::fputs("\n", file);
  for (int i = 0; i < Count(); ++i) {
    for (int c = 0; c < Coords(); ++c) {
      printNumber(file, (*this)[i][c], std::chars_format::scientific, 10, 3);
    }
    std::fputs("\n", file);
  }
  std::fputs("\n", file);
}

AP_SPLINE* AP_SPLINE::operator->() { return this; }
