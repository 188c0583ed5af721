// SPDX-License-Identifier: MIT
// Knot vectors.
#pragma once

#include <iosfwd>

#include "knotwork/vector/double_vec.h"

/// A non-decreasing sequence of numbers used as a knot vector: a run of equal values is one
/// breakpoint, the length of the run its multiplicity. Values are equal by ==, nothing merges
/// values that are merely close.
///
/// `add` keeps the order and the constructor from a vector makes it; nothing else checks it. Unlike
/// other vectors a copy has storage of its own; `reference` and `data` share. Members of DoubleVec
/// that are not redefined here work on the values.
class KNOTWORK_API TnumberSequence : public DoubleVec {
 public:
  /// No values.
  TnumberSequence();
  /// A private copy.
  TnumberSequence(const TnumberSequence& other);
  /// n values: start, then each the rounded sum of the one before and `increment`. Reports 0x3008,
  /// and is empty, for a negative n.
  TnumberSequence(double start, double increment, int n);
  /// A private copy of the values, sorted.
  TnumberSequence(const DoubleVec& values);

  /// Copies the values into the existing storage. Reports 0x300F if the lengths differ.
  TnumberSequence& operator=(const TnumberSequence& other);
  /// Makes this another view on the values of `other`.
  TnumberSequence& reference(TnumberSequence& other);

  /// @return value i, unchecked.
  double operator()(int i) const;
  /// @return view on the values.
  DoubleVec data();
  /// @return number of values, repeats included.
  int length() const;

  /// The last index whose value is at most x; -1 if x is below the first value or there is none.
  ///
  /// @param fromLeft  from an index above 0, step back to the last index of the run before, or to 0
  ///                  if there is none: at a breakpoint, x then ends the interval on its left. The
  ///                  step is taken for an x between two breakpoints as well.
  [[nodiscard]] int findInterval(double x, bool fromLeft) const;
  /// @return the number, from 0, of the breakpoint that value i belongs to; 0 for a negative i, -1
  /// for one beyond the last.
  [[nodiscard]] int whichBreakpoint(int i) const;
  /// @return new vector of the distinct values in order.
  [[nodiscard]] DoubleVec breakpoints() const;
  /// @return new vector of the run lengths, one for each breakpoint.
  [[nodiscard]] IntVec multiplicities() const;

  /// Inserts x `multiplicity` times, behind all values up to x; a multiplicity below 1 changes
  /// nothing. The sequence gets storage of its own. Reports 0x3008, and stays as it is, where so
  /// many values cannot be had.
  void add(double x, int multiplicity);
  /// Merges in `values`, which must be sorted, each behind the equal ones that are here; into an
  /// empty sequence they are copied as they are. The sequence gets storage of its own.
  void add(const DoubleVec& values);
  /// Removes value i; the sequence gets storage of its own.
  /// @return false, with nothing changed, unless 0 <= i < length().
  bool remove(int i);

  /// Which knots of b are to be inserted into a curve with the knots a: those values of b, in
  /// order, that have no partner in a. Both are walked once from the front; values that differ by
  /// at most `tolerance` (knot units) are partners, each of one value only.
  /// @return slice of a new vector as long as b.
  [[nodiscard]] static DoubleVec extra(const TnumberSequence& a, const TnumberSequence& b,
                                       double tolerance);

  /// Sort ascending in place by exchanging neighbours: stable, quadratic, fit for knot vectors.
  static void sortDoubleVecInPlace(DoubleVec& v);
  static void sortIntVecInPlace(IntVec& v);

  /// Write nothing.
  void printOn(std::ostream& out) const;
  void printRaw(std::ostream& out) const;
  /// Reads nothing. @return false.
  bool readRaw(std::istream& in);
};
