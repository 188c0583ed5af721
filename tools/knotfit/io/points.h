// SPDX-License-Identifier: MIT
// Measured points as they come from files: a sequence for curves, a grid for surfaces.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "io/table.h"

namespace knotfit {

/// A sequence of points of dimension 2 or 3.
struct PointSet {
  int dim = 0;
  std::vector<double> coords;   ///< point after point
  std::vector<double> weights;  ///< one per point, or empty
  std::size_t merged = 0;       ///< points left out because they coincide with the one before

  std::size_t count() const { return dim ? coords.size() / static_cast<std::size_t>(dim) : 0; }
  const double* operator[](std::size_t i) const {
    return coords.data() + i * static_cast<std::size_t>(dim);
  }
};

/// A rows x columns grid of 3-D points; rows run along u, columns along v.
struct PointGrid {
  std::size_t rows = 0, columns = 0;
  bool heights = false;        ///< x and y are multiples of a spacing, z is the datum
  std::vector<double> coords;  ///< point (i, j) at 3 * (i * columns + j)

  const double* at(std::size_t i, std::size_t j) const {
    return coords.data() + 3 * (i * columns + j);
  }
};

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

/// Reads CSV, XYZ, OBJ or PLY points, by the file's suffix.
PointSet readPoints(const std::string& path, const PointOptions& options);

/// Reads a grid: one row of the file per grid row, holding z or x,y,z triples; or one point a line
/// with a blank line between the grid rows.
PointGrid readGrid(const std::string& path, const GridOptions& options);

/// Reads a column of numbers, one a line: parameters, knots or weights.
std::vector<double> readNumbers(const std::string& path);

/// The "v" lines of an OBJ file. Other lines are passed over.
PointSet readObjPoints(ByteSource& source, const TableOptions& options);
/// The vertices of a PLY file, ASCII or binary of either byte order.
PointSet readPlyPoints(ByteSource& source, const TableOptions& options);

/// Faults when a file would take more than kMostNumbers numbers.
void checkRoom(const ByteSource& source, const std::vector<double>& values);

}  // namespace knotfit
