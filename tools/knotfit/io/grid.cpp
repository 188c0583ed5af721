// SPDX-License-Identifier: MIT
// Grids of heights or points from tables.
#include "base/fault.h"
#include "base/text.h"
#include "io/points.h"

namespace knotfit {
namespace {

std::vector<std::size_t> allColumns(std::size_t width) {
  std::vector<std::size_t> all;
  for (std::size_t i = 0; i < width; ++i) all.push_back(i);
  return all;
}

[[noreturn]] void raggedGrid(std::size_t row, std::size_t has, std::size_t first) {
  throw Fault(kInput, cat("grid: row ", row, " has ", has, " values, row 1 has ", first));
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
    if (end - begin != grid.columns) raggedGrid(i + 1, end - begin, grid.columns);
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

PointGrid heightGrid(const Table& table, const GridOptions& options) {
  PointGrid grid;
  grid.rows = table.rows;
  grid.columns = table.columns;
  grid.heights = true;
  grid.coords.reserve(3 * table.values.size());
  for (std::size_t i = 0; i < grid.rows; ++i) {
    for (std::size_t j = 0; j < grid.columns; ++j) {
      grid.coords.push_back(options.dx * static_cast<double>(i));
      grid.coords.push_back(options.dy * static_cast<double>(j));
      grid.coords.push_back(table.values[i * grid.columns + j]);
    }
  }
  return grid;
}

PointGrid thinned(const PointGrid& grid, std::size_t step) {
  PointGrid out;
  out.rows = (grid.rows + step - 1) / step;
  out.columns = (grid.columns + step - 1) / step;
  out.heights = grid.heights;
  for (std::size_t i = 0; i < grid.rows; i += step) {
    for (std::size_t j = 0; j < grid.columns; j += step) {
      out.coords.insert(out.coords.end(), grid.at(i, j), grid.at(i, j) + 3);
    }
  }
  return out;
}

PointGrid transposed(const PointGrid& grid) {
  PointGrid out;
  out.rows = grid.columns;
  out.columns = grid.rows;
  out.heights = grid.heights;
  for (std::size_t i = 0; i < out.rows; ++i) {
    for (std::size_t j = 0; j < out.columns; ++j) {
      out.coords.insert(out.coords.end(), grid.at(j, i), grid.at(j, i) + 3);
    }
  }
  return out;
}

}  // namespace

PointGrid readGrid(const std::string& path, const GridOptions& options) {
  ByteSource source(path);
  TableOptions how = options.table;
  how.grid = true;
  how.thin = 1;
  const Table table =
      readTable(source, how, [](const auto&, std::size_t width) { return allColumns(width); });
  PointGrid grid = options.heights         ? heightGrid(table, options)
                   : !table.breaks.empty() ? blockGrid(source, table)
                                           : tripleGrid(source, table);
  if (options.table.thin > 1) grid = thinned(grid, options.table.thin);
  return options.columnsAlongU ? transposed(grid) : grid;
}

}  // namespace knotfit
