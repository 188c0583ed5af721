// SPDX-License-Identifier: MIT
// Points, grids and columns of numbers from files.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "io/table.h"
#include "model/points.h"

namespace knotfit {

/// How points are to be read.
struct PointOptions {
  TableOptions table;
  std::string columns;       ///< names or numbers, comma separated; empty: x, y, z or all there are
  std::string weightColumn;  ///< name or number; empty for none
  double merge = -1;         ///< points this near to the one before are left out; < 0 keeps all
};

/// How a grid is to be read.
struct GridOptions {
  TableOptions table;
  bool heights = false;        ///< the file holds z alone
  double dx = 1, dy = 1;       ///< spacing of heights
  bool columnsAlongU = false;  ///< the column index runs along u
};

/// Reads CSV, XYZ, OBJ or PLY points, by the file's suffix. Options that a format has no use for
/// are faults (exit code 2).
PointSet readPoints(const std::string& path, const PointOptions& options);

/// Reads a grid: one row of the file per grid row, holding z or x,y,z triples; or one point a line
/// with a blank line between the grid rows; or without blank lines, where x or y is the same all
/// along each grid row.
PointGrid readGrid(const std::string& path, const GridOptions& options);

/// Reads a column of numbers, one a line: parameters, knots or weights.
std::vector<double> readNumbers(const std::string& path);

/// The "v" lines of an OBJ file. Other lines are passed over.
PointSet readObjPoints(ByteSource& source, const TableOptions& options);
/// The vertices of a PLY file, ASCII or binary of either byte order: its properties x, y and z in
/// any case, z where there is one, or those that the options name.
PointSet readPlyPoints(ByteSource& source, const PointOptions& options);

/// @return the columns named x, y and z in any case where two of them are, else all but the
/// weights'.
std::vector<std::size_t> usualColumns(const TableHead& head,
                                      std::optional<std::size_t> weights = std::nullopt);
/// @return the columns of a comma separated list of names or numbers, each once. Faults: exit
/// code 2.
std::vector<std::size_t> namedColumns(const std::string& columns,
                                      const std::vector<std::string>& names, std::size_t width);
/// Faults where a coordinate is beyond 1e300: differences, lengths and pictures of what is read
/// shall stay in the range of numbers.
void checkRange(const ByteSource& source, const std::vector<double>& coords);
/// Faults when a file would take more than kMostNumbers numbers.
void checkRoom(const ByteSource& source, const std::vector<double>& values);

}  // namespace knotfit
