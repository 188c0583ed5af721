// SPDX-License-Identifier: MIT
// The same points through every input format.
#include <cstring>

#include "base/fault.h"
#include "io/readers.h"
#include "run.h"

namespace knotfit::test {
namespace {

const std::vector<double> kPoints = {1, 2, 3, -4.5, 1e-3, 6, 7, 8, 9e2};

template <class T>
void put(std::string& out, T value, bool swap) {
  char bytes[sizeof(T)];
  std::memcpy(bytes, &value, sizeof(T));
  if (swap) std::reverse(bytes, bytes + sizeof(T));
  out.append(bytes, sizeof(T));
}

// Vertices behind an element with a list, between other properties.
std::string binaryPly(bool big) {
  std::string out = std::string("ply\nformat binary_") + (big ? "big" : "little") +
                    "_endian 1.0\nelement face 1\nproperty list uchar int v\nelement vertex 3\n"
                    "property uchar red\nproperty double x\nproperty double y\nproperty double z\n"
                    "property float q\nend_header\n";
  out += '\x02';
  for (int i = 0; i < 2; ++i) put<std::int32_t>(out, i, big);
  for (std::size_t i = 0; i < 3; ++i) {
    out += '\x07';
    for (std::size_t c = 0; c < 3; ++c) put(out, kPoints[3 * i + c], big);
    put(out, 0.5f, big);
  }
  return out;
}

TEST(Readers, EveryFormatYieldsTheSamePoints) {
  const Folder folder;
  const std::pair<const char*, std::string> files[] = {
      {"head.csv", "x,y,z\n1,2,3\n-4.5,1e-3,6\n7,8,9e2\n"},
      {"plain.csv", "1,2,3\r\n# a comment\r\n\r\n-4.5,.001,6\r\n7,+8,900"},
      {"names.csv", "id;Z;Y;X\n1;3;2;1\n2;6;1e-3;-4.5\n3;900;8;7\n"},
      {"quoted.csv", "\xEF\xBB\xBF\"x\",\"y\",\"z\"\n\"1\",2,3\n-4.5,0.001,6\n7,8,900\n"},
      {"tabs.csv", "1\t2\t3\n-4.5\t1e-3\t6\n7\t8\t900\n"},
      {"title.csv", "Measured on 3 May, hall 2\nseries 7\nx,y,z\n1,2,3\n-4.5,1e-3,6\n7,8,900\n"},
      {"trailing.csv", "x;y;z;;\n1;2;3;;\n-4.5;0.001;6;;\n7;8;900\n"},
      {"empty_ends.csv", "1,2,3,\n-4.5,1e-3,6,\n7,8,900,,,\n"},
      {"comma.csv", "Messung vom 3. Mai\nx;y;z\n1;2,0;3\n-4,5;1,0e-3;6\n7;8;9e2\n"},
      {"comma_tabs.csv", "1\t2\t3\n-4,5\t,001\t6\n7\t8\t900,0\n"},
      {"comma_blanks.csv", "1 2,0 3\n-4,5 1,0e-3 6\n7 8 9e2\n"},
      {"commas.xyz", "1, 2, 3\n-4.5, 0.001, 6\n7, 8, 900\n"},
      {"footer.csv", "1;2;3\n-4.5;1e-3;6\n7;8;900\n# end of data, 3 points\n"},
      {"blanks.xyz", "  1  2 3\n-4.5 1e-3  6\n7 8 900\n"},
      {"points.obj", "# obj\nv 1 2 3\nvn 0 0 1\nv -4.5 1e-3 6 1\nv\t7 8 900\nf 1 2 3\n"},
      {"ascii.ply",
       "ply\nformat ascii 1.0\ncomment c\nelement vertex 3\nproperty float x\nproperty float y\n"
       "property float z\nelement face 1\nproperty list uchar int v\nend_header\n1 2 3\n"
       "-4.5 1e-3 6\n7 8 900\n3 0 1 2\n"},
      {"capital.ply",
       "ply\nformat ascii 1.0\nelement vertex 3\nproperty float Z\nproperty float q\n"
       "property float X\nproperty float Y\nend_header\n3 0 1 2\n6 0 -4.5 1e-3\n900 0 7 8\n"},
      {"little.ply", binaryPly(false)},
      {"big.ply", binaryPly(true)}};
  for (const auto& [name, text] : files) {
    SCOPED_TRACE(name);
    write(name, text);
    EXPECT_EQ(readPoints(name, {}).coords, kPoints);
  }
}

TEST(Readers, PlyPropertiesAreChosenByNameOrRefused) {
  const Folder folder;
  write("empty.ply", "");
  EXPECT_EQ(knotfit({"info", "empty.ply"}).err,
            "empty.ply: is no PLY file (its first line is 'ply')\n");
  write("abc.ply",
        "ply\nformat ascii 1.0\nelement vertex 2\nproperty float a\nproperty list uchar int l\n"
        "property float b\nproperty float w\nend_header\n1 2 8 8 2 3\n4 0 5 6\n");
  EXPECT_EQ(knotfit({"info", "abc.ply"}).err,
            "abc.ply: its vertices have no x (name the properties x, y and z, or choose them with "
            "--columns)\n");
  PointOptions options;
  options.columns = "b,a";
  options.weightColumn = "W";
  const PointSet points = readPoints("abc.ply", options);
  EXPECT_EQ(points.coords, (std::vector<double>{2, 1, 5, 4}));
  EXPECT_EQ(points.weights, (std::vector<double>{3, 6}));
  write("plane.ply",
        "ply\nformat ascii 1.0\nelement vertex 1\nproperty int y\nproperty int x\n"
        "end_header\n2 1\n");
  EXPECT_EQ(readPoints("plane.ply", {}).coords, (std::vector<double>{1, 2}));
  write("nan.ply",
        "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\nproperty float y\n"
        "end_header\n1 2\n1 nan\n");
  EXPECT_EQ(knotfit({"info", "nan.ply"}).err,
            "nan.ply:8: y is not a number: 'nan' (mend the line, or remove it and lower the "
            "count)\n");
}

TEST(Readers, TitlesAreTextAndRowsOfNumbersAreNever) {
  const Folder folder;
  PointOptions options;
  // The same width as the rows: a row with a fault, not a title.
  write("row.csv", "1,a\n2,3\n4,5\n");
  EXPECT_EQ(knotfit({"info", "row.csv"}).code, 3);
  // Prose without end is no table, and is not searched without end either.
  std::string prose;
  for (int i = 0; i < 200; ++i) prose += "all work and no play\n";
  write("prose.csv", prose + "1,2\n3,4\n");
  EXPECT_EQ(knotfit({"info", "prose.csv"}).err,
            "prose.csv:64: no row of numbers so far (leave out the lines above them with --skip "
            "N)\n");
  options.table.skip = 200;
  EXPECT_EQ(readPoints("prose.csv", options).count(), 2u);
  write("one.csv", "parameter\n0,5\n");
  EXPECT_EQ(knotfit({"info", "one.csv"}).code, 0);
  // Numbers alone in a column, with and without a name.
  write("u.txt", "u\n0\n0.25\n1\n");
  EXPECT_EQ(readNumbers("u.txt"), (std::vector<double>{0, 0.25, 1}));
  write("w.txt", "0 1\n0.25 2\n");
  EXPECT_THROW(readNumbers("w.txt"), Fault);
}

TEST(Readers, WeightsAreNoCoordinates) {
  const Folder folder;
  write("w.csv", "0,0,9\n1,2,8\n");
  PointOptions options;
  options.weightColumn = "3";
  EXPECT_EQ(readPoints("w.csv", options).coords, (std::vector<double>{0, 0, 1, 2}));
  EXPECT_EQ(readPoints("w.csv", options).weights, (std::vector<double>{9, 8}));
}

TEST(Readers, SkipThinMergeAndWeights) {
  const Folder folder;
  write("a.csv", "junk line\nx,y,w\n0,0,1\n0,0,2\n1,0,3\n2,0,4\n2,1e-12,5\n");
  PointOptions options;
  options.table.skip = 1;
  options.columns = "1,y";
  options.weightColumn = "w";
  options.merge = 1e-9;
  const PointSet points = readPoints("a.csv", options);
  EXPECT_EQ(points.coords, (std::vector<double>{0, 0, 1, 0, 2, 0}));
  EXPECT_EQ(points.weights, (std::vector<double>{1, 3, 4}));
  EXPECT_EQ(points.merged, 2u);
  options.merge = -1;
  options.table.thin = 2;
  EXPECT_EQ(readPoints("a.csv", options).weights, (std::vector<double>{1, 3, 5}));
}

TEST(Readers, GridsAsHeightsTriplesAndBlocks) {
  const Folder folder;
  write("heights.csv", "1,2,3\n4,5,6\n");
  write("triples.csv", "0,0,1,0,5,2,0,10,3\n2,0,4,2,5,5,2,10,6\n");
  write("blocks.csv", "x y z\n0 0 1\n0 5 2\n0 10 3\n\n2 0 4\n2 5 5\n2 10 6\n");
  GridOptions heights;
  heights.heights = true;
  heights.dx = 2;
  heights.dy = 5;
  const PointGrid grid = readGrid("heights.csv", heights);
  EXPECT_EQ(readGrid("triples.csv", {}).coords, grid.coords);
  EXPECT_EQ(readGrid("blocks.csv", {}).coords, grid.coords);
  write("lines.csv", "x y z\n0 0 1\n0 5 2\n0 10 3\n2 0 4\n2 5 5\n2 10 6\n");
  EXPECT_EQ(readGrid("lines.csv", {}).coords, grid.coords);
  EXPECT_EQ(readGrid("lines.csv", {}).rows, 2u);
  write("across.csv", "0 0 1\n2 0 4\n0 5 2\n2 5 5\n0 10 3\n2 10 6\n");  // y stays the same
  GridOptions across;
  across.columnsAlongU = true;
  EXPECT_EQ(readGrid("across.csv", across).coords, grid.coords);
  heights.columnsAlongU = true;
  const PointGrid turned = readGrid("heights.csv", heights);
  EXPECT_EQ(turned.rows, 3u);
  EXPECT_EQ(turned.at(2, 1)[2], 6);
}

TEST(Readers, DamagedPlyEndsWithALine) {
  const Folder folder;
  const std::string whole = binaryPly(false);
  for (std::size_t n = 0; n < whole.size(); n += 3) {
    write("cut.ply", whole.substr(0, n));
    const Outcome o = knotfit({"info", "cut.ply"});
    EXPECT_EQ(o.code, 3) << n;
    EXPECT_EQ(std::count(o.err.begin(), o.err.end(), '\n'), 1) << o.err;
  }
  std::string lies = whole;
  lies.replace(lies.find("vertex 3"), 8, "vertex 999999999999");
  write("lies.ply", lies);
  EXPECT_EQ(knotfit({"info", "lies.ply"}).code, 3);
}

}  // namespace
}  // namespace knotfit::test
