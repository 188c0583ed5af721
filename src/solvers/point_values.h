// SPDX-License-Identifier: MIT
// Vectors and lists of points seen alike: a vector holds points of dimension 1. Component c of
// point i is flat element i * dimension + c.
#pragma once

#include <algorithm>
#include <cmath>

#include "knotwork/geometry/tuple_vector.h"
#include "knotwork/vector/double_vec_pick.h"
#include "knotwork/vector/int_vec.h"

namespace knotwork::detail {

inline int dimensionOf(const DoubleVec&) { return 1; }
inline int dimensionOf(const TtupleVector& list) { return list.size(); }

inline unsigned pointsOf(const DoubleVec& v) { return v.length(); }
inline unsigned pointsOf(const TtupleVector& list) { return static_cast<unsigned>(list.points()); }

template <class Values>
bool hasShape(const Values& values, int dimension, unsigned points) {
  return dimensionOf(values) == dimension && pointsOf(values) == points;
}

template <class Values>
Values zeros(int dimension, unsigned points);
template <>
inline DoubleVec zeros(int, unsigned points) {
  return DoubleVec(points, 0.0);
}
template <>
inline TtupleVector zeros(int dimension, unsigned points) {
  return TtupleVector(dimension, static_cast<int>(points), 0.0);
}

/// View on the elements of point i, unchecked.
template <class Values>
DoubleVec pointAt(const Values& values, int i) {
  const auto dimension = static_cast<unsigned>(dimensionOf(values));
  const DoubleVec& flat = values;
  return flat.slice(i * dimensionOf(values), dimension, 1);
}

/// Whether any element is a NaN.
inline bool holdsNaN(const DoubleVec& v) {
  bool holds = false;
  for (int i = 0; i < static_cast<int>(v.length()); ++i) holds |= std::isnan(v(i));
  return holds;
}

/// Gives `values` the shape, in new storage unless it has that shape already: rows and columns of
/// matrices must stay what they are. @return false, with nothing changed, if memory runs out.
template <class Values>
bool reshape(Values& values, int dimension, unsigned points) {
  if (hasShape(values, dimension, points)) return true;
  Values shaped = zeros<Values>(dimension, points);
  if (!hasShape(shaped, dimension, points)) return false;
  values.reference(shaped);
  return true;
}

/// Point i times factors[i], if there are as many.
template <class Values>
void scalePoints(Values& values, const DoubleVec& factors) {
  if (pointsOf(values) != factors.length()) return;
  for (int i = 0; i < static_cast<int>(factors.length()); ++i) {
    DoubleVec point = pointAt(values, i);
    point *= factors(i);
  }
}

/// New values: point i is point which[i] of `from`.
template <class Values>
Values gather(const Values& from, const IntVec& which) {
  const int dimension = dimensionOf(from);
  Values to = zeros<Values>(dimension, which.length());
  const DoubleVec& source = from;
  DoubleVec& target = to;
  for (int i = 0; i < static_cast<int>(pointsOf(to)); ++i) {
    for (int c = 0; c < dimension; ++c) {
      target(i * dimension + c) = source(which(i) * dimension + c);
    }
  }
  return to;
}

/// Point i of `to` becomes point i of `from`, which has no more points.
template <class Values>
void copyPoints(const Values& from, Values& to) {
  const DoubleVec& source = from;
  DoubleVec& target = to;
  for (int i = 0; i < static_cast<int>(source.length()); ++i) target(i) = source(i);
}

/// Point which[i] of `to` becomes point i of `from`.
template <class Values>
void scatter(const Values& from, const IntVec& which, Values& to) {
  const int dimension = dimensionOf(from);
  const DoubleVec& source = from;
  DoubleVec& target = to;
  const unsigned points = std::min(pointsOf(from), which.length());
  for (int i = 0; i < static_cast<int>(points); ++i) {
    for (int c = 0; c < dimension; ++c) {
      target(which(i) * dimension + c) = source(i * dimension + c);
    }
  }
}

}  // namespace knotwork::detail
