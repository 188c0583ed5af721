// SPDX-License-Identifier: MIT
// AP_SURFACE: construction, access, evaluation, knot insertion and printing.
//
// A knot more in v is a row of control points more, so the rows are what Boehm's rule blends. A
// knot more in u is a point more in every row: rows move apart, the last one first, and each is
// blended on its own.
#include "knotwork/kernel/surface.h"

#include <algorithm>
#include <climits>

#include "kernel/knot_insertion.h"
#include "kernel/number_text.h"
#include "kernel/quotient_rule.h"
#include "kernel/storage.h"
#include "kernel/tensor_product.h"

using namespace knotwork::detail;
using knotwork::KnotRecord;

namespace {

constexpr int kGrowBy = 64;

const AP_SURFACE* current = nullptr;  // the surface whose member eval() ran last
ResultArea area;

void printScientific(std::FILE* file, double x) {
  printNumber(file, x, std::chars_format::scientific, 10, 3);
}

void printKnots(std::FILE* file, const KnotRecord& knots) {
  for (int k = knots.first(); k <= knots.last(); ++k) {
    printScientific(file, knots(k));
    std::fputc(knots.repeats(k) ? '*' : ' ', file);
  }
}

// Whether there are such surfaces, their control points counted by an int.
bool isSurface(int dim, int uDegree, int vDegree, int uSpans, int vSpans) {
  if (std::min({dim, uDegree, vDegree, uSpans, vSpans}) < 0) return false;
  const long long columns = static_cast<long long>(uSpans) + uDegree;
  const long long rows = static_cast<long long>(vSpans) + vDegree;
  return columns > 0 && rows > 0 && columns <= INT_MAX / rows;
}

void copyKnots(const KnotRecord& from, KnotRecord& to) {
  to.assign(from.at(from.first()), from.last() - from.first() + 1);
}

}  // namespace

AP_SURFACE::AP_SURFACE(int dim, int uDegree, int vDegree, int uSpans, int vSpans,
                       AP_RATIONALITY uRationality, AP_RATIONALITY vRationality)
    : AP_GEOMETRIC(dim),
      type_(),
      uRationality_(uRationality),
      vRationality_(vRationality),
      uForm_(),
      vForm_(),
      uKnots_(isSurface(dim, uDegree, vDegree, uSpans, vSpans) ? uDegree : -1, uSpans),
      vKnots_(uCount() > 0 ? vDegree : -1, vSpans),
      growBy_(kGrowBy) {
  if (points() > 0) {
    allocate(points(), Coords(), schemeNumbers(std::max(uDegree, vDegree)));
  } else {
    uKnots_.clear();
    vKnots_.clear();
  }
}

AP_SURFACE::AP_SURFACE(const AP_SURFACE& other)
    : AP_SURFACE(other.dim_, other.uDegree(), other.vDegree(), other.uSpans(), other.vSpans(),
                 other.uRationality_, other.vRationality_) {
  type_ = other.type_;
  uForm_ = other.uForm_;
  vForm_ = other.vForm_;
  if (points() == 0) return;  // the empty surface
  copyKnots(other.uKnots_, uKnots_);
  copyKnots(other.vKnots_, vKnots_);
  std::copy_n(other.cv_, points() * Coords(), cv_);
}

AP_SURFACE::~AP_SURFACE() {
  if (current == this) current = nullptr;
}

int AP_SURFACE::uDegree() const { return uKnots_.degree(); }

int AP_SURFACE::vDegree() const { return vKnots_.degree(); }

int AP_SURFACE::uSpans() const { return uKnots_.spans(); }

int AP_SURFACE::vSpans() const { return vKnots_.spans(); }

int AP_SURFACE::uCount() const { return uSpans() + uDegree(); }

int AP_SURFACE::vCount() const { return vSpans() + vDegree(); }

int AP_SURFACE::Coords() const { return dim_ + (uRationality_ || vRationality_ ? 1 : 0); }

AP_RATIONALITY AP_SURFACE::uRationality() const { return uRationality_; }

AP_RATIONALITY AP_SURFACE::vRationality() const { return vRationality_; }

AP_FORM AP_SURFACE::uForm() const { return uForm_; }

AP_FORM AP_SURFACE::vForm() const { return vForm_; }

AP_TYPE AP_SURFACE::Type() const { return type_; }

long long AP_SURFACE::points() const { return static_cast<long long>(uCount()) * vCount(); }

int AP_SURFACE::WorkspaceSize(int k) const {
  const unsigned uRows = unsignedMax(uDegree(), k) + 1;
  const unsigned vRows = unsignedMax(vDegree(), k) + 1;
  const unsigned blocks =
      uRows * (static_cast<unsigned>(k) + 1) + vRows * (static_cast<unsigned>(uDegree()) + 1);
  return static_cast<int>(blocks * static_cast<unsigned>(Coords()));
}

long long AP_SURFACE::workspace(int k) const {
  const long long uRows = std::max(uDegree(), k) + 1LL;
  const long long vRows = std::max(vDegree(), k) + 1LL;
  return sizeProduct(uRows * (k + 1LL) + vRows * (uDegree() + 1LL), Coords());
}

KnotRecord& AP_SURFACE::uKnots() { return uKnots_; }

const KnotRecord& AP_SURFACE::uKnots() const { return uKnots_; }

KnotRecord& AP_SURFACE::vKnots() { return vKnots_; }

const KnotRecord& AP_SURFACE::vKnots() const { return vKnots_; }

double* AP_SURFACE::index(int i, int j) {
  return cv_ + (static_cast<std::ptrdiff_t>(uCount()) * i + j) * Coords();
}

const double* AP_SURFACE::index(int i, int j) const {
  return cv_ + (static_cast<std::ptrdiff_t>(uCount()) * i + j) * Coords();
}

void AP_SURFACE::make_snodes() {
  if (!nodes_) nodes_ = listNodes<AP_SNODE>(cv_, points(), Coords());
}

AP_SNODE* AP_SURFACE::node0() {
  make_snodes();
  return points() > 0 ? &nodes_[0] : nullptr;
}

AP_SNODE* AP_SURFACE::noden() {
  AP_SNODE* const first = node0();
  return first ? first + (points() - 1) : nullptr;
}

AP_MMBOX& AP_SURFACE::Box(int force) {
  return bound(static_cast<std::ptrdiff_t>(points()), Coords(), force);
}

bool AP_SURFACE::isEmpty() const { return uSpans() < 1 || vSpans() < 1; }

void AP_SURFACE::eval(double* out, double u, double v, int nderiv) const {
  current = this;
  if (nderiv < 0) return;
  const std::ptrdiff_t coords = Coords();
  const std::ptrdiff_t orders = nderiv + std::ptrdiff_t{1};
  std::fill_n(out, orders * orders * coords, 0.0);
  if (isEmpty()) return;
  const Direction inU(uKnots_, u, nderiv), inV(vKnots_, v, nderiv);
  double* const rows = out + (std::max(uDegree(), nderiv) + 1) * orders * coords;
  evaluateTensorProduct(index(inV.end.span, inU.end.span), uCount() * coords, Coords(), inU, inV,
                        spare(), rows, out);
  if (coords > dim_) quotientRule(out, dim_, nderiv, nderiv);
}

double* AP_SURFACE::eval(double u, double v, int nderiv) {
  if (!current || nderiv < 0) return nullptr;
  double* const out = area.take(current->workspace(nderiv));
  current->eval(out, u, v, nderiv);
  return out;
}

// Makes room for `mult` knots more, each of which brings `perKnot` control points. Returns whether
// t can be inserted.
bool AP_SURFACE::reserveInsertion(KnotRecord& knots, double t, int mult, long long perKnot) {
  if (isEmpty() || !knots.contains(t)) return false;
  if (mult > 0) {
    knots.reserve(mult);
    reserve(points() + mult * perKnot, Coords(), growBy_,
            schemeNumbers(std::max(uDegree(), vDegree())));
  }
  return true;
}

int AP_SURFACE::uinsert(double t, int mult) {
  if (!reserveInsertion(uKnots_, t, mult, vCount())) return -1;
  const int s = uKnots_.span(t) + 1;
  for (int k = 0; k < mult; ++k) uinsertOnce(t);
  return s;
}

int AP_SURFACE::vinsert(double t, int mult) {
  if (!reserveInsertion(vKnots_, t, mult, uCount())) return -1;
  const int s = vKnots_.span(t) + 1;
  for (int k = 0; k < mult; ++k) vinsertOnce(t);
  return s;
}

void AP_SURFACE::uinsertOnce(double t) {
  nodes_.reset();
  const std::ptrdiff_t coords = Coords();
  const std::ptrdiff_t before = uCount() * coords;
  const std::ptrdiff_t after = before + coords;
  const int s = uKnots_.insert(t);
  for (std::ptrdiff_t i = vCount() - 1; i >= 0; --i) {  // from the last row on, rows move apart
    double* const row = cv_ + i * before;
    if (i > 0) std::copy_backward(row, row + before, cv_ + i * after + before);
    insertRow(cv_ + i * after, uCount() - 1, coords, uKnots_, s, t);
  }
}

void AP_SURFACE::vinsertOnce(double t) {
  nodes_.reset();
  const int rows = vCount();
  const int s = vKnots_.insert(t);
  insertRow(cv_, rows, static_cast<long long>(uCount()) * Coords(), vKnots_, s, t);
}

void AP_SURFACE::set(const double* values, int n) { set(0, 0, values, n); }

void AP_SURFACE::set(int i, int j, const double* values, int n) {
  if (i < 0 || j < 0 || i >= vCount() || j >= uCount()) return;
  write(index(i, j) - cv_, static_cast<std::ptrdiff_t>(points()) * Coords(), values, n);
}

void AP_SURFACE::SetForm(AP_FORM u, AP_FORM v) {
  uForm_ = u;
  vForm_ = v;
}

void AP_SURFACE::SetForm(AP_TYPE type) { type_ = type; }

void AP_SURFACE::print(std::FILE* file) const {
  if (!file) return;
  std::fputs("U: ", file);
  printKnots(file, uKnots_);
  std::fputs("\nV: ", file);
  printKnots(file, vKnots_);
  std::fputs("\n\n", file);
  for (int i = 0; i < vCount(); ++i) {
    for (int c = 0; c < Coords(); ++c) {
      for (int j = 0; j < uCount(); ++j) printScientific(file, index(i, j)[c]);
      std::fputs("\n", file);
    }
    std::fputs("\n", file);
  }
  std::fputs("\n", file);
}

AP_SURFACE* AP_SURFACE::operator->() { return this; }
