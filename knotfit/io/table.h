// SPDX-License-Identifier: MIT
// Tables of numbers: comma, semicolon, tab or blank separated text with an optional head line.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "base/stage.h"
#include "io/byte_source.h"

namespace knotfit {

/// How a text table is to be read.
struct TableOptions {
  char delimiter = 0;          ///< 0 finds it in the first lines; ' ' stands for runs of blanks
  std::size_t skip = 0;        ///< lines left out at the top
  std::size_t thin = 1;        ///< every thin-th row is kept
  bool grid = false;           ///< rows are rows of a grid: say so when their widths differ
  Watcher* watcher = nullptr;  ///< hears of the rows read; null: nobody
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

/// What is known of a table before its rows are read.
struct TableHead {
  const std::vector<std::string>& names;  ///< of all columns; empty without a head line
  std::size_t width = 0;                  ///< columns of the file
  std::size_t line = 0;                   ///< line of the first row
};

/// Chooses columns, counted from 0.
using ColumnChoice = std::function<std::vector<std::size_t>(const TableHead& head)>;

/// Most numbers that are read from one file: 2 GB of them.
inline constexpr std::size_t kMostNumbers = std::size_t{1} << 28;

/// Reads a table. '#' starts a comment line; the last text line above the first row of numbers is
/// its head line when it is as wide, lines above that are titles. Empty fields behind the last
/// column are passed over; where the delimiter is no comma, numbers may have a decimal comma.
/// Faults name the line: a field that is no finite number, a row of another width than the first,
/// decimal points and commas in one file, too many numbers, no row at all.
Table readTable(ByteSource& source, const TableOptions& options, const ColumnChoice& choose);

/// Finds a column by name (any case) or number from 1. Faults (exit code 2) name what there is.
std::size_t findColumn(const std::string& wanted, const std::vector<std::string>& names,
                       std::size_t width);

}  // namespace knotfit
