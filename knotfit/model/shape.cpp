// SPDX-License-Identifier: MIT
// Splines as the library's own objects: the numbers go into a record of the host's spline kernel,
// and the object copies them out of it. That is the way of every host, and what it costs is one
// copy.
#include "model/shape.h"

#include <algorithm>
#include <new>

#include "model/convert.h"

namespace knotfit {
namespace {

// The library's functions fail on numbers that do not suit each other, which cannot be here, and
// where memory runs out.
void require(bool ok) {
  if (!ok) throw std::bad_alloc();
}

struct ReleaseCurve {
  void operator()(ag_spline* s) const { ag_rel_bs(s); }
};
struct ReleaseSurface {
  void operator()(ag_surface* s) const { ag_rel_srf(s); }
};
using CurveRecord = std::unique_ptr<ag_spline, ReleaseCurve>;
using SurfaceRecord = std::unique_ptr<ag_surface, ReleaseSurface>;

int spansOf(const Spline& s, std::size_t direction) {
  return static_cast<int>(s.size[direction]) - s.degree[direction];
}

// A record keeps one knot fewer at each end than the long form; equal neighbours share their value,
// so the knots are handed to the builder as well.
CurveRecord curveRecord(const Spline& s) {
  const int form = s.closed ? AP_FORM_CLOSED : AP_FORM_OPEN;
  CurveRecord record(ag_bld_bs(s.dim, nullptr, s.knots[0].data() + 1, AP_TYPE_GENERAL, s.degree[0],
                               spansOf(s, 0), 0, form));
  if (!record) throw std::bad_alloc();  // the numbers have been checked: nothing else fails
  const TtupleVector points(s.dim, static_cast<int>(s.size[0]), s.controls.data());
  require(TagRw::tvToCvs(points, record.get(), false));
  require(TagRw::dvToKnots(vecOf(s.knots[0]), record.get()));
  return record;
}

SurfaceRecord surfaceRecord(const Spline& s) {
  std::vector<double> stored(s.knots[0].begin() + 1, s.knots[0].end() - 1);
  stored.insert(stored.end(), s.knots[1].begin() + 1, s.knots[1].end() - 1);
  SurfaceRecord record(ag_bld_srf(s.dim, nullptr, stored.data(), AP_TYPE_GENERAL, s.degree[0],
                                  s.degree[1], spansOf(s, 0), spansOf(s, 1), 0, 0, AP_FORM_OPEN,
                                  AP_FORM_OPEN));
  if (!record) throw std::bad_alloc();
  TtupleMatrix points(s.dim, static_cast<int>(s.size[0]), static_cast<int>(s.size[1]), 0.0);
  for (std::size_t i = 0; i < s.size[0]; ++i) {
    for (std::size_t j = 0; j < s.size[1]; ++j) {
      DoubleVec point = points.point(static_cast<int>(i), static_cast<int>(j));
      for (int c = 0; c < s.dim; ++c) point(c) = s.control(i, j)[c];
    }
  }
  require(TagRw::tmToCvs(points, record.get(), false));
  require(TagRw::dvToKnots(vecOf(s.knots[0]), vecOf(s.knots[1]), record.get()));
  return record;
}

}  // namespace

CurveShape::CurveShape(const Spline& s) : dim_(s.dim) {
  const CurveRecord record = curveRecord(s);
  object_ = std::make_unique<AP_SPLINE>(record.get());
}

CurveShape::~CurveShape() = default;

void CurveShape::eval(double u, int order, double* out) const {
  work_.resize(static_cast<std::size_t>(object_->WorkspaceSize(order)));
  object_->eval(work_.data(), u, order);
  for (int k = 0; k <= order; ++k) {
    for (int c = 0; c < 3; ++c) {
      out[3 * k + c] = c < dim_
                           ? work_[static_cast<std::size_t>(k) * static_cast<std::size_t>(dim_) +
                                   static_cast<std::size_t>(c)]
                           : 0.0;
    }
  }
}

std::array<double, 3> CurveShape::point(double u) const {
  std::array<double, 3> out;
  eval(u, 0, out.data());
  return out;
}

void CurveShape::insert(double u, int times) { require(object_->insert(u, times) >= 0); }

Spline CurveShape::spline(const Spline& like) const {
  const CurveRecord record(object_->AGLIB());
  if (!record) throw std::bad_alloc();
  Spline s = like;
  const int count = object_->Count();
  s.size[0] = static_cast<std::size_t>(count);
  TtupleVector points(s.dim, count, 0.0);
  require(TagRw::cvsToTv(record.get(), points));
  s.controls = stdOf(points.data());
  DoubleVec knots(static_cast<unsigned>(count + s.degree[0] + 1), 0.0);
  require(TagRw::knotsToDv(record.get(), knots));
  s.knots[0] = stdOf(knots);
  return s;
}

SurfaceShape::SurfaceShape(const Spline& s) : heights_(s.heights) {
  const SurfaceRecord record = surfaceRecord(s);
  object_ = std::make_unique<AP_SURFACE>(record.get(), 0);
}

SurfaceShape::~SurfaceShape() = default;

void SurfaceShape::eval(double u, double v, int order, double* out) const {
  work_.resize(static_cast<std::size_t>(object_->WorkspaceSize(order)));
  object_->eval(work_.data(), u, v, order);
  std::copy_n(work_.begin(), 3 * (order + 1) * (order + 1), out);
  if (heights_) tellPlaces(u, v, static_cast<std::size_t>(order), out);
}

// Coordinates that are linear in one parameter, and their derivatives.
void SurfaceShape::tellPlaces(double u, double v, std::size_t order, double* out) const {
  const std::size_t side = order + 1;
  for (std::size_t d = 0; d < 2; ++d) {
    const EvenPlaces& e = (*heights_)[d];
    double* const to = out + e.coordinate;
    for (std::size_t k = 0; k < side * side; ++k) to[3 * k] = 0;
    to[0] = e.at(d == 0 ? u : v);
    if (order > 0) to[3 * (d == 0 ? 1 : side)] = e.slope();
  }
}

std::array<double, 3> SurfaceShape::point(double u, double v) const {
  std::array<double, 3> out;
  eval(u, v, 0, out.data());
  return out;
}

std::array<double, 3> SurfaceShape::normal(double u, double v) const {
  std::array<double, 3> at{}, direction{};
  object_->normal(u, v, at.data(), direction.data());
  return direction;
}

void SurfaceShape::insert(int direction, double at, int times) {
  require((direction == 0 ? object_->uinsert(at, times) : object_->vinsert(at, times)) >= 0);
}

Spline SurfaceShape::spline(const Spline& like) const {
  const SurfaceRecord record(object_->AGLIB());
  if (!record) throw std::bad_alloc();
  Spline s = like;
  s.size = {static_cast<std::size_t>(object_->uCount()),
            static_cast<std::size_t>(object_->vCount())};
  TtupleMatrix points(s.dim, object_->uCount(), object_->vCount(), 0.0);
  require(TagRw::cvsToTm(record.get(), points));
  s.controls.clear();
  for (int i = 0; i < points.rows(); ++i) {
    for (int j = 0; j < points.cols(); ++j) {
      const std::vector<double> point = stdOf(points.point(i, j));
      s.controls.insert(s.controls.end(), point.begin(), point.end());
    }
  }
  DoubleVec u(static_cast<unsigned>(object_->uCount() + s.degree[0] + 1), 0.0);
  DoubleVec v(static_cast<unsigned>(object_->vCount() + s.degree[1] + 1), 0.0);
  require(TagRw::knotsToDv(record.get(), u, v));
  s.knots = {stdOf(u), stdOf(v)};
  placeHeights(s);
  return s;
}

}  // namespace knotfit
