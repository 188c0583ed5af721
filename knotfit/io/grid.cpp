// SPDX-License-Identifier: MIT
// Grids of heights or points from tables. All layouts end in one: rows along u, columns along v,
// three coordinates each; --thin takes rows and columns alike, --order turns the grid over its
// diagonal.
#include "base/fault.h"
#include "base/text.h"
#include "io/readers.h"

namespace knotfit {
namespace {

std::vector<std::size_t> allColumns(std::size_t width) {
  std::vector<std::size_t> all;
  for (std::size_t i = 0; i < width; ++i) all.push_back(i);
  return all;
}

[[noreturn]] void raggedGrid(const ByteSource& source, std::size_t row, std::size_t has,
                             std::size_t first) {
  throw Fault(kInput, cat(source.name(), ": grid: row ", row, " has ", has, " values, row 1 has ",
                          first, " (make all rows equally long)"));
}

// Blocks of one point a line, with a blank line between the grid rows.
PointGrid blockGrid(const ByteSource& source, const Table& table) {
  PointGrid grid;
  if (table.columns != 3) {
    throw Fault(kInput, cat(source.name(), ": a grid of points needs 3 columns, not ",
                            table.columns, " (give x, y and z)"));
  }
  grid.rows = table.breaks.size() + 1;
  grid.columns = table.breaks.front();
  for (std::size_t i = 0; i < grid.rows; ++i) {
    const std::size_t begin = i ? table.breaks[i - 1] : 0;
    const std::size_t end = i + 1 < grid.rows ? table.breaks[i] : table.rows;
    if (end - begin != grid.columns) raggedGrid(source, i + 1, end - begin, grid.columns);
  }
  grid.coords = table.values;
  return grid;
}

// How many lines from the first on share the coordinate, 0 for x and 1 for y.
std::size_t sharing(const Table& table, std::size_t from, std::size_t coordinate) {
  std::size_t n = 0;
  const double* first = table.values.data() + 3 * from + coordinate;
  while (from + n < table.rows && first[3 * n] == *first) ++n;
  return n;
}

// One point a line and no blank lines: a grid row goes as far as x, or else y, stays the same. That
// takes coordinates that repeat exactly, as those of a raster do.
PointGrid lineGrid(const ByteSource& source, const Table& table) {
  PointGrid grid;
  const std::size_t coordinate = sharing(table, 0, 0) > 1 ? 0 : 1;
  grid.columns = sharing(table, 0, coordinate);
  for (std::size_t from = 0; from < table.rows; from += grid.columns, ++grid.rows) {
    if (grid.columns == 1 || grid.columns == table.rows) {
      throw Fault(kInput, cat(source.name(), ": lines of x,y,z without rows (put a blank line ",
                              "between grid rows, or add --scattered for points in any order)"));
    }
    const std::size_t n = sharing(table, from, coordinate);
    if (n != grid.columns) raggedGrid(source, grid.rows + 1, n, grid.columns);
  }
  grid.coords = table.values;
  return grid;
}

PointGrid tripleGrid(const ByteSource& source, const Table& table) {
  if (table.columns % 3 != 0) {
    throw Fault(kInput, cat(source.name(), ": rows of ", table.columns,
                            " values are no x,y,z triples (add --height for heights alone)"));
  }
  PointGrid grid;
  grid.rows = table.rows;
  grid.columns = table.columns / 3;
  grid.coords = table.values;
  return grid;
}

// Rows stand dx apart along x, columns dy along y, from the origin on.
PointGrid heightGrid(const Table& table, const GridOptions& options) {
  PointGrid grid;
  grid.rows = table.rows;
  grid.columns = table.columns;
  grid.coords.reserve(3 * table.values.size());
  for (std::size_t i = 0; i < grid.rows; ++i) {
    for (std::size_t j = 0; j < grid.columns; ++j) {
      grid.coords.push_back(options.dx * static_cast<double>(i));
      grid.coords.push_back(options.dy * static_cast<double>(j));
      grid.coords.push_back(table.values[i * grid.columns + j]);
    }
  }
  grid.heights = {{{0, options.dx, grid.rows - 1}, {1, options.dy, grid.columns - 1}}};
  return grid;
}

// The first row and column stay, as the first point of a sequence does.
PointGrid thinned(const PointGrid& grid, std::size_t step) {
  PointGrid out;
  out.rows = (grid.rows + step - 1) / step;
  out.columns = (grid.columns + step - 1) / step;
  for (std::size_t i = 0; i < grid.rows; i += step) {
    for (std::size_t j = 0; j < grid.columns; j += step) {
      out.coords.insert(out.coords.end(), grid.at(i, j), grid.at(i, j) + 3);
    }
  }
  out.heights = grid.heights;
  if (out.heights) {
    (*out.heights)[0].steps = step * (out.rows - 1);
    (*out.heights)[1].steps = step * (out.columns - 1);
  }
  return out;
}

PointGrid transposed(const PointGrid& grid) {
  PointGrid out;
  out.rows = grid.columns;
  out.columns = grid.rows;
  for (std::size_t i = 0; i < out.rows; ++i) {
    for (std::size_t j = 0; j < out.columns; ++j) {
      out.coords.insert(out.coords.end(), grid.at(j, i), grid.at(j, i) + 3);
    }
  }
  if (grid.heights) out.heights = {{(*grid.heights)[1], (*grid.heights)[0]}};
  return out;
}

// The layout tells itself apart: blank lines between rows, one point a line, or a grid row a line.
PointGrid gridOf(const ByteSource& source, const Table& table, const GridOptions& options) {
  if (options.heights) return heightGrid(table, options);
  if (!table.breaks.empty()) return blockGrid(source, table);
  return table.columns == 3 ? lineGrid(source, table) : tripleGrid(source, table);
}

}  // namespace

PointGrid readGrid(const std::string& path, const GridOptions& options) {
  ByteSource source(path);
  TableOptions how = options.table;
  how.grid = true;
  how.thin = 1;
  const Table table =
      readTable(source, how, [](const TableHead& head) { return allColumns(head.width); });
  PointGrid grid = gridOf(source, table, options);
  checkRange(source, grid.coords);
  if (options.table.thin > 1) grid = thinned(grid, options.table.thin);
  return options.columnsAlongU ? transposed(grid) : grid;
}

}  // namespace knotfit
