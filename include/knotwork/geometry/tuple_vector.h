// SPDX-License-Identifier: MIT
// Lists of points of one dimension.
#pragma once

#include <iosfwd>

#include "knotwork/vector/double_vec.h"

class TxformMatrix;

/// An ordered list of points that all have the same dimension, kept in one flat vector: component c
/// of point i is flat element i * size() + c. Elements behind the last whole point are ignored.
///
/// As with every vector, copies and `data` share storage, assignment writes values into the
/// existing storage, `copy` and `deepenShallowCopy` make private storage. Members of DoubleVec that
/// are not redefined here work on the flat elements.
///
/// Requests that cannot be met give an empty result or false. Reports come from the flat vector
/// alone, in the name of DoubleVec: 0x300C for a point outside the list, 0x300F for values that do
/// not fit, 0x3008 when memory cannot be had; should the handler return, no element outside the
/// list is read or written.
class KNOTWORK_API TtupleVector : public DoubleVec {
 public:
  /// No points, of dimension 1.
  TtupleVector();
  /// Another view on the points of `other`, not a copy.
  TtupleVector(const TtupleVector& other);
  /// n points of dimension dim, every component `value`. With dim < 1 or n < 0 the dimension is 1
  /// and the flat length the product of the absolute values.
  TtupleVector(int dim, int n, double value);
  /// n points of dimension dim, copied from `values` point after point. With dim < 1 or n < 0 the
  /// dimension is 1 and the flat length, which is also that of `values`, the product of the
  /// absolute values.
  TtupleVector(int dim, int n, const double* values);
  /// As many elements as n points of dimension dim have, of which element i becomes the last
  /// component of `points[i]` for every i < n, the others 0; to lay out whole points, use the
  /// constructor from a flat array. With dim < 1 that dimension is stored all the same, element i
  /// becomes the first component of `points[i]`, and the list has no points. Nothing is read where
  /// n is negative or the flat length 0.
  TtupleVector(int dim, int n, const double* const* points);
  /// The points that lie in `data`, as a view on it; a dimension below 1 is taken as 1.
  TtupleVector(int dim, DoubleVec& data);

  /// Copies the values of `other` into the existing storage if both the dimension and the flat
  /// length agree; else does nothing, without a report.
  TtupleVector& operator=(const TtupleVector& other);

  /// @return number of whole points.
  int points() const;
  /// @return the dimension: components per point.
  int size() const;
  /// @return view on all flat elements.
  DoubleVec data();
  /// @return new vector of all flat elements.
  DoubleVec data() const;

  /// Point i of length size(): a view that writes through. Reports 0x300C, and gives an empty
  /// vector, unless 0 <= i < points().
  DoubleVec point(int i);
  DoubleVec operator()(int i);
  DoubleVec operator[](int i);
  /// Point i as a new vector, with the same report.
  DoubleVec point(int i) const;
  DoubleVec operator()(int i) const;
  DoubleVec operator[](int i) const;

  /// @return view on component c of every point, of length points(); empty unless 0 <= c < size().
  [[nodiscard]] DoubleVec component(int c);
  /// @return new vector of component c of every point; empty unless 0 <= c < size().
  [[nodiscard]] DoubleVec component(int c) const;
  /// @return new list of the same points with components first, ..., first + count - 1 only; empty
  /// and of dimension 1 if one of them does not exist or there are none.
  [[nodiscard]] TtupleVector components(int first, int count) const;
  /// @return new list of the same points with component j that was which[j]; empty and of
  /// dimension 1 if one of them does not exist or there are none.
  [[nodiscard]] TtupleVector components(const IntVec& which) const;

  /// @return view on points start, ..., start + count - 1; empty and of this dimension if one of
  /// them does not exist or there are none.
  [[nodiscard]] TtupleVector lPoints(int start, int count);
  /// @return new list of points start, ..., start + count - 1; empty and of this dimension if one
  /// of them does not exist or there are none.
  [[nodiscard]] TtupleVector lPoints(int start, int count) const;
  [[nodiscard]] TtupleVector rPoints(int start, int count) const;
  /// @return new list whose point k is point which[k]; empty and of dimension 1 if one of them does
  /// not exist, empty and of this dimension if there are none.
  [[nodiscard]] TtupleVector rPoints(const IntVec& which) const;

  /// Copies point k of `source` into point start + k for k = 0, ..., count - 1, in that order also
  /// where the two share storage.
  ///
  /// Reports 0x300F, from each assignment, where the source's dimension is below this one or its
  /// points run out (these are also reported with 0x300C).
  /// @return false, with nothing written, if a point of the range does not exist, the source's
  /// dimension is below 1 or above this one; else true. A count of 0 is true before all else; a
  /// negative one writes nothing.
  bool setPoints(int start, int count, const TtupleVector& source);
  /// Copies point k of `source` into point which[k], in order of k, with the same reports.
  /// @return false, with nothing written, if the source's dimension is below 1 or above this one;
  /// false at the first which[k] that is no point, with those before it written; else true.
  bool setPoints(const IntVec& which, const TtupleVector& source);

  /// Makes this a list of n points in storage of its own; the leading ones are kept, new ones are
  /// 0. The same number of elements changes nothing. Reports 0x3008 for a negative n.
  void resize(int n);
  /// @return new vector of the Euclidean lengths of the points.
  [[nodiscard]] DoubleVec vecLen() const;
  /// @return new list with the same points and storage of its own.
  [[nodiscard]] TtupleVector copy() const;
  /// Makes this another view on the points of `other`, with its dimension.
  TtupleVector& reference(TtupleVector& other);

  /// Transforms every point in place and in order: (x, y, z, w), with w = 1 below dimension 4, as a
  /// row times the matrix. There is no division by w, which is stored for dimension 4 and above and
  /// dropped below; further components stay. Below dimension 3 the missing components are the next
  /// ones of the flat list (those behind its end are 0 and are dropped).
  void applyTransformation(const TxformMatrix& transform);

  /// Write nothing.
  void printOn(std::ostream& out) const;
  void printRaw(std::ostream& out) const;
  /// Reads nothing. @return false.
  bool readRaw(std::istream& in);

 protected:
  /// @return whether 0 <= i < points().
  bool correctIndex(int i) const;
  /// @return whether 0 <= c < size().
  bool correctTuple(int c) const;
  /// Checks nothing: access to a point checks the whole point.
  void boundsCheck(int i) const;
  /// What the point accessors give.
  DoubleVec realPoint(int i);
  DoubleVec realPoint(int i) const;

 private:
  KNOTWORK_LOCAL TtupleVector(const DoubleVec& data, int dim);
  KNOTWORK_LOCAL DoubleVec pointView(int i) const;
  KNOTWORK_LOCAL DoubleVec componentView(int c) const;
  KNOTWORK_LOCAL bool correctRange(int start, int count) const;
  KNOTWORK_LOCAL bool accepts(const TtupleVector& source) const;

  int dimension_;
};
