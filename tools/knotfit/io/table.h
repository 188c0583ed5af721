// SPDX-License-Identifier: MIT
// Tables of numbers: comma, semicolon, tab or blank separated text with an optional head line.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "io/byte_source.h"

namespace knotfit {

/// How a text table is to be read.
struct TableOptions {
  char delimiter = 0;    ///< 0 finds it in the first line; ' ' stands for runs of blanks
  std::size_t skip = 0;  ///< lines left out at the top
  std::size_t thin = 1;  ///< every thin-th row is kept
  bool grid = false;     ///< rows are rows of a grid: say so when their widths differ
};

/// Rows of numbers, the chosen columns alone.
struct Table {
  std::size_t columns = 0;
  std::size_t rows = 0;
  std::vector<double> values;       ///< row after row
  std::vector<std::size_t> breaks;  ///< rows before which a blank line stood
  std::vector<std::string> names;   ///< of all columns of the file; empty without a head line
  std::size_t width = 0;            ///< columns of the file
};

/// Chooses columns (0-based) from the names (empty without a head line) and the width of a file.
using ColumnChoice = std::function<std::vector<std::size_t>(const std::vector<std::string>& names,
                                                            std::size_t width)>;

/// Most numbers that are read from one file.
inline constexpr std::size_t kMostNumbers = std::size_t{1} << 26;

/// Reads a table. The first row is a head line when none of its fields is a number; '#' starts a
/// comment line. Faults name the line: a field that is no finite number, a row of another width
/// than the first, too many numbers, no row at all.
Table readTable(ByteSource& source, const TableOptions& options, const ColumnChoice& choose);

/// Finds a column by name (any case) or number from 1. Faults (exit code 2) name what there is.
std::size_t findColumn(const std::string& wanted, const std::vector<std::string>& names,
                       std::size_t width);
/// @return the comma separated parts of text, blanks trimmed.
std::vector<std::string> commaList(const std::string& text);

}  // namespace knotfit
