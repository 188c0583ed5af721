// SPDX-License-Identifier: MIT
// The text form of matrices: "2x3 [", the rows, "]".
//
// What is read is a size and a vector. The vector bounds the size, but for matrices without
// columns, whose text is an empty line for each row: there a dozen characters could ask for as many
// lines as an integer counts. Such a matrix is read up to a million rows; more fail the stream.
#pragma once

#include <cctype>
#include <istream>
#include <ostream>

#include "knotwork/vector/math_codes.h"
#include "vector/math_report.h"

namespace knotwork::detail {

/// Writes the size and every value in the given width.
template <class Mat>
void printElements(std::ostream& out, std::streamsize width, const Mat& m) {
  out << m.rows() << "x" << m.cols() << " [\n";
  for (int i = 0; i < static_cast<int>(m.rows()); ++i) {
    for (int j = 0; j < static_cast<int>(m.cols()); ++j) {
      out.width(width);
      out << m.val(i, j) << " ";
    }
    out << "\n";
  }
  out << "]";
}

/// Leaves the stream before the next digit.
inline void skipToDigit(std::istream& in) {
  constexpr auto kEnd = std::istream::traits_type::eof();
  auto c = in.get();
  while (c != kEnd && !std::isdigit(c)) c = in.get();
  if (c != kEnd) in.unget();
}

inline constexpr unsigned kMostEmptyRows = 1000000;

/// A size and the elements row by row, as read from a stream.
template <class Vec>
class ScannedMatrix {
 public:
  explicit ScannedMatrix(std::istream& in) {
    skipToDigit(in);
    in >> rows_ >> std::ws;
    // One separator, unless the next number follows at once.
    if (std::isdigit(in.peek()) == 0) in.get();
    in >> cols_;
    elements_.scanFrom(in);
    if (cols_ == 0 && rows_ > kMostEmptyRows) in.setstate(std::ios_base::failbit);
    good_ = in.good();
  }

  unsigned rows() const { return rows_; }
  unsigned cols() const { return cols_; }

  /// Whether the stream held all of it.
  bool good() const { return good_; }

  /// Reports 0x4017 unless there is one value for every element.
  bool isComplete(const char* className) const {
    if (elements_.length() == static_cast<unsigned long long>(rows_) * cols_) return true;
    raiseMathErrorCode(kWrongElementCount, elements_.length(), className, rows_, cols_);
    return false;
  }

  /// Element k of the text stands in row k / cols, column k mod cols.
  template <class Store>
  void forEach(Store store) const {
    const int cols = static_cast<int>(cols_);
    for (int k = 0; k < static_cast<int>(elements_.length()); ++k) {
      store(k / cols, k % cols, elements_(k));
    }
  }

 private:
  unsigned rows_ = 0;
  unsigned cols_ = 0;
  Vec elements_;
  bool good_;
};

}  // namespace knotwork::detail
