// SPDX-License-Identifier: MIT
// Grids of points of one dimension.
#pragma once

#include <iosfwd>

#include "knotwork/geometry/tuple_vector.h"
#include "knotwork/matrix/double_gen_mat.h"

/// A rows() x cols() grid of points that all have the same dimension, such as the control net of a
/// surface: rows run along u, columns along v. Points are stored column by column in one flat
/// vector: point (i, j), counted from 0, starts at flat element (rows() * j + i) * size().
///
/// Sharing, failed requests and reports are those of TtupleVector: copies share storage, assignment
/// writes values, a request that cannot be met gives an empty result, and only the operations on
/// vectors and matrices underneath report. Members of DoubleVec that are not redefined here work on
/// the flat elements.
class KNOTWORK_API TtupleMatrix : public DoubleVec {
 public:
  /// A grid of 0 x 0 points of dimension 1.
  TtupleMatrix();
  /// Another view on the points of `other`, not a copy.
  TtupleMatrix(const TtupleMatrix& other);
  /// rows x cols points of dimension dim, every component `value`. With dim < 1, rows < 0 or
  /// cols < 0 the dimension is 1, rows and columns are the absolute values, and the flat length is
  /// the product of all three absolute values. Without the memory for that there are 0 x 0 points.
  TtupleMatrix(int dim, int rows, int cols, double value);
  /// The points that lie in `data`, as a view on it. The shape follows the same rule; that the
  /// length fits it is not checked.
  TtupleMatrix(int dim, int rows, int cols, DoubleVec& data);

  /// Copies the values of `other` into the existing storage if the dimension, both counts and the
  /// flat length agree; else does nothing, without a report.
  TtupleMatrix& operator=(const TtupleMatrix& other);

  /// @return number of rows.
  int rows() const;
  /// @return number of columns.
  int cols() const;
  /// @return the dimension: components per point.
  int size() const;
  /// @return view on all flat elements.
  DoubleVec data();
  /// @return new vector of all flat elements.
  DoubleVec data() const;

  /// Point (i, j) of length size(): a view that writes through. Neither index is tested by itself;
  /// reports 0x300C, and gives an empty vector, if the point lies outside the storage.
  DoubleVec point(int i, int j);
  DoubleVec operator()(int i, int j);
  /// Point (i, j) as a new vector, with the same report.
  DoubleVec point(int i, int j) const;
  DoubleVec operator()(int i, int j) const;

  /// @return view on the rows() * size() components of column j, point after point; empty unless
  /// 0 <= j < cols().
  [[nodiscard]] DoubleVec column(int j);
  /// @return new vector of the components of column j; empty unless 0 <= j < cols().
  [[nodiscard]] DoubleVec column(int j) const;
  /// @return new vector of the cols() * size() components of row i, point after point; empty unless
  /// 0 <= i < rows().
  [[nodiscard]] DoubleVec row(int i) const;
  /// @return list of the points of row i: as `row`, a copy.
  [[nodiscard]] TtupleVector rowVector(int i) const;
  /// @return list of the points of column j: as `column`, a view of a grid that can be written, a
  /// copy of a constant one.
  [[nodiscard]] TtupleVector columnVector(int j);
  [[nodiscard]] TtupleVector columnVector(int j) const;

  /// @return new grid whose column k is column which[k]; 0 x 0 and of dimension 1 if one of them
  /// does not exist.
  [[nodiscard]] TtupleMatrix cols(const IntVec& which) const;
  /// Selects rows of a grid of dimension 1: column j of the result is that of the flat elements
  /// which[0], which[1], ... of column j. For larger dimensions these are elements, not points:
  /// each column is then reported with 0x300F, in the name of DoubleVecPick, and filled as far as
  /// the elements go.
  /// @return new grid of which.length() rows; 0 x 0 and of dimension 1 if a column has no such
  /// element.
  [[nodiscard]] TtupleMatrix rows(const IntVec& which) const;

  /// @return view on component c of every point, a rows() x cols() matrix; 0 x 0 unless
  /// 0 <= c < size().
  [[nodiscard]] DoubleGenMat component(int c);
  /// @return new matrix of component c of every point; 0 x 0 unless 0 <= c < size().
  [[nodiscard]] DoubleGenMat component(int c) const;
  /// Copies m's columns into component c of the grid's columns. c is not tested. Reports 0x300F for
  /// every column whose length differs or that m does not have.
  void setComponent(int c, const DoubleGenMat& m);

  /// @return new rows() x cols() matrix of the Euclidean lengths of the points.
  [[nodiscard]] DoubleGenMat vecLen() const;
  /// @return new grid with the same points and storage of its own.
  [[nodiscard]] TtupleMatrix copy() const;
  /// Makes this another view on the points of `other`, with its shape.
  TtupleMatrix& reference(TtupleMatrix& other);

  /// Transforms every point in place, row after row, as `TtupleVector::applyTransformation` does.
  void applyTransformation(const TxformMatrix& transform);

  /// Write nothing.
  void printOn(std::ostream& out) const;
  void printRaw(std::ostream& out) const;
  /// Reads nothing. @return false.
  bool readRaw(std::istream& in);

 protected:
  /// @return whether 0 <= c < size().
  bool correctTuple(int c) const;
  /// @return whether 0 <= i < rows().
  bool correctRow(int i) const;
  /// @return whether 0 <= j < cols().
  bool correctCol(int j) const;
  /// Checks nothing: access to a point checks the whole point.
  void boundsCheck(int i, int j) const;
  /// What the point accessors give.
  DoubleVec realPoint(int i, int j);
  DoubleVec realPoint(int i, int j) const;

 private:
  KNOTWORK_LOCAL TtupleMatrix(const DoubleVec& data, int dim, int rows, int cols);
  KNOTWORK_LOCAL long long offset(int i, int j) const;
  KNOTWORK_LOCAL long long columnLength() const;
  KNOTWORK_LOCAL DoubleVec pointView(int i, int j) const;
  KNOTWORK_LOCAL DoubleVec columnView(int j) const;
  KNOTWORK_LOCAL DoubleGenMat componentView(int c) const;

  int dimension_;
  int rows_;
  int cols_;
};
