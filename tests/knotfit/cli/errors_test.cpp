// SPDX-License-Identifier: MIT
// Bad input by table: exit code, the exact line, and no file written.
#include <random>

#include "run.h"

namespace knotfit::test {
namespace {

struct ErrorCase {
  const char* name;
  std::vector<std::string> arguments;
  std::string input;  // in.csv
  int code;
  std::string line;
};

std::string line(int points) {  // points on a parabola
  std::string out;
  for (int i = 0; i < points; ++i) {
    out += std::to_string(i) + "," + std::to_string(i * i) + "\n";
  }
  return out;
}

std::string gap() {  // two groups of points far apart
  std::string out;
  for (int i = 0; i < 30; ++i) out += std::to_string(i + (i < 15 ? 0 : 1000)) + ",0\n";
  return out;
}

const std::vector<ErrorCase>& cases() {
  const std::string nul("1,2\n3,\0004\n", 9);
  static const std::vector<ErrorCase> all = {
      {"Text",
       {},
       "x,y,z\n1,2,3\n4,5,n/a\n",
       3,
       "in.csv:3: column 3 is not a number: 'n/a' (use --columns, or remove the row)"},
      {"NotANumber",
       {},
       "1,2\nnan,3\n",
       3,
       "in.csv:2: column 1 is not a number: 'nan' (use --columns, or remove the row)"},
      {"Infinity",
       {},
       "1,2\n-inf,3\n",
       3,
       "in.csv:2: column 1 is not a number: '-inf' (use --columns, or remove the row)"},
      {"TooLarge",
       {},
       "1,2\n3,1e999\n",
       3,
       "in.csv:2: column 2 is out of range: '1e999' (use --columns, or remove the row)"},
      {"Width",
       {},
       "x,y\n1,2\n3,4,5\n",
       3,
       "in.csv:3: 3 values, line 1 has 2 (make all rows equally wide, or remove the row)"},
      {"Nul", {}, nul, 3, "in.csv:2: NUL byte (this is no text file; convert it to CSV)"},
      {"Control",
       {},
       "1,2\n3,\x01\x02\n",
       3,
       "in.csv:2: column 2 is not a number: '\\x01\\x02' (use --columns, or remove the row)"},
      {"Empty", {}, "", 3, "in.csv: holds no points (one point a line)"},
      {"HeadAlone", {}, "x,y\n", 3, "in.csv: holds no points (one point a line)"},
      {"Columns",
       {},
       "1,2,3,4\n",
       3,
       "in.csv:1: points have 2 or 3 columns, not 4 (choose them with --columns)"},
      {"UnknownColumn",
       {"--columns", "x,q"},
       "x,y\n1,2\n",
       2,
       "no column 'q' (columns are 1 to 2: x, y)"},
      {"EndlessLine",
       {},
       std::string((std::size_t{1} << 22) + 1, '7'),
       3,
       "in.csv:1: line is longer than 4194304 bytes (one point a line, please)"},
      {"Coinciding",
       {},
       "0,0\n1,1\n1,1\n2,0\n3,1\n",
       4,
       "points 2 and 3 coincide: chord-length parameters would repeat; add --merge 1e-9 or use "
       "--param uniform"},
      {"TooFewPoints",
       {"--controls", "40"},
       line(25),
       4,
       "40 control points need at least 40 data points, the file has 25; use --controls 25 or "
       "fewer"},
      {"TooFewForDegree",
       {},
       "0,0\n1,1\n2,4\n",
       4,
       "degree 3 needs at least 4 data points, the file has 3; use --degree 2"},
      {"Undetermined",
       {"--knots", "uniform", "--controls", "20"},
       gap(),
       4,
       "no data between knots 0.05882 and 0.9412: control points 5 to 16 are undetermined; fewer "
       "--controls or --knots average"},
      {"Conflict",
       {"--controls", "8", "--pass", "2,3,4,5,6,7,8,9,10,11"},
       line(30),
       4,
       "constraints conflict: 12 rows for 8 unknowns"},
      {"OnePoint",
       {},
       "1,2\n",
       4,
       "a fit needs at least 2 data points, the file has 1; add points, or see --columns, --thin "
       "and --merge"},
      {"ClosedWithinTolerance",
       {"--tol", "0.1", "--closed"},
       line(5),
       4,
       "5 points are too few: a closed curve of degree 3 takes at least 7 control points; use a "
       "lower --degree"},
      {"CornerWithinTolerance",
       {"--tol", "0.1", "--corner", "3"},
       line(5),
       4,
       "5 points are too few: a curve of degree 3 with 1 corner takes at least 7 control points; "
       "use a lower "
       "--degree"},
      {"CornersTakeControls",
       {"--controls", "9", "--corner", "5,9"},
       line(30),
       2,
       "2 corners of degree 3 take at least 10 control points; use --controls 10 or more"},
      {"CornersTakeData",
       {"--controls", "40", "--corner", "5", "--smooth", "1"},
       line(30),
       2,
       "--corner takes a datum for every control point; use --controls 30 or fewer"},
      {"KnotsTooOften",
       {"--knots", "0.5,0.5,0.5,0.5"},
       line(30),
       3,
       "--knots: a knot within is repeated more than 3 times (give fewer of them)"},
      {"SeamByQr",
       {"--solver", "qr", "--closed"},
       line(30),
       2,
       "--solver qr cannot meet --closed; use --solver householder, or leave it out"},
      {"PassByQr",
       {"--solver", "qr", "--pass", "3"},
       line(30),
       2,
       "--solver qr cannot meet --pass; use --solver householder, or leave it out"},
      {"TangentByQr",
       {"--solver", "qr", "--tangent", "start=1,0"},
       line(30),
       2,
       "--solver qr cannot meet --tangent; use --solver householder, or leave it out"},
      {"EndsByQr",
       {"--solver", "qr", "--ends", "exact"},
       line(30),
       2,
       "--solver qr cannot meet --ends exact; use --solver householder, or leave it out"},
      {"MisspeltParameters",
       {"--param", "cord"},
       line(30),
       2,
       "--param: wants chord, centripetal, uniform or a file of parameters, not 'cord'"},
      {"TangentBackwards",
       {"--controls", "8", "--tangent", "start=-1,0"},
       line(30),
       4,
       "the tangent at point 1 points against the data; reverse its sign"},
      {"NoSuchPoint",
       {"--pass", "99"},
       line(30),
       2,
       "--pass: there is no point 99, the file has 30"},
      {"NegativeWeight",
       {"--weights", "3", "--columns", "1,2"},
       "0,0,1\n1,1,-1\n2,4,1\n3,9,1\n",
       3,
       "the weight of point 2 is negative: -1 (weights are 0 or more)"},
      {"IsTheInput",
       {"-o", "./in.csv"},
       line(30),
       2,
       "./in.csv is the input in.csv; write to another file"},
      {"NoFolder",
       {"-o", "none/out.json"},
       line(30),
       5,
       "none/out.json: cannot be written: there is no folder none (make it first)"},
      {"Suffix",
       {"-o", "out.xyz"},
       line(30),
       2,
       "out.xyz: no known suffix; use .json .igs .stp .obj .csv .ply .svg .png .pdf, or --format"},
      {"Twice",
       {"-o", "a.json", "-o", "a.json"},
       line(30),
       2,
       "a.json is written twice; name each file once"},
      {"Number", {"--tol", "1e"}, line(30), 2, "--tol: not a number: '1e'"},
      {"Choice",
       {"--solver", "magic"},
       line(30),
       2,
       "--solver: magic not in {auto,householder,qr,banded} (see knotfit curve --help)"},
      {"Option",
       {"--colour"},
       line(30),
       2,
       "curve has no option --colour (see knotfit curve --help)"},
      {"Parameters",
       {"--param", "u.txt"},
       line(30),
       2,
       "--param: wants chord, centripetal, uniform or a file of parameters, not 'u.txt'"},
      {"FirstRow",
       {},
       "1,2,n/a\n3,4,5\n",
       3,
       "in.csv:1: column 3 is not a number: 'n/a' (use --columns, use --skip 1, or remove the "
       "row)"},
      {"EmptyField",
       {},
       "x,y,z\n1,2,3\n1,2,\n",
       3,
       "in.csv:3: column 3 is empty (use --columns, or remove the row)"},
      {"HeadOfAnotherWidth",
       {},
       "x,y,z\n1,2\n3,4\n",
       3,
       "in.csv:2: 2 values, line 1 has 3 (make all rows equally wide, or remove the row)"},
      {"TwoDecimalMarks",
       {},
       "1,5;2\n3;1.234\n",
       3,
       "in.csv:2: column 2 has a decimal point, line 1 a comma: '1.234' (write one of them "
       "throughout)"},
      {"SameColumnTwice", {"--columns", "1,1"}, line(30), 2, "--columns: names column 1 twice"}};
  return all;
}

TEST(Errors, OneLineNamesCauseAndMendAndNothingIsWritten) {
  for (const ErrorCase& c : cases()) {
    SCOPED_TRACE(c.name);
    const Folder folder;
    write("in.csv", c.input);
    std::vector<std::string> arguments = {"curve", "in.csv", "-o", "fit.igs", "--report", "r.json"};
    arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
    const Outcome o = knotfit(arguments);
    EXPECT_EQ(o.code, c.code);
    EXPECT_EQ(o.err, c.line + "\n");
    EXPECT_EQ(o.out, "");
    EXPECT_EQ(folder.files(), 1u);
    EXPECT_EQ(contents("in.csv"), c.input);
  }
}

TEST(Errors, FilesThatCannotBeRead) {
  const Folder folder;
  EXPECT_EQ(knotfit({"curve", "."}).err, ".: is a directory (give a file)\n");
  EXPECT_EQ(knotfit({"curve", "none.csv"}).err,
            "none.csv: No such file or directory (check the name and its permissions)\n");
  EXPECT_EQ(knotfit({"convert", ".", "-o", "a.igs"}).code, 3);
}

TEST(Errors, GridsThatAreNone) {
  const Folder folder;
  std::string ragged;
  for (int i = 1; i <= 10; ++i) ragged += (i == 9 ? "1,2,3\n" : "1,2,3,4\n");
  write("ragged.csv", ragged);
  EXPECT_EQ(knotfit({"surface", "ragged.csv", "--height"}).err,
            "ragged.csv:9: grid: row 9 has 3 values, row 1 has 4 (make all rows equally wide)\n");
  write("lines.csv", "0 0 1\n0 1 1\n0 2 1\n1 0 1\n1 1 1\n");
  EXPECT_EQ(knotfit({"surface", "lines.csv"}).err,
            "lines.csv: grid: row 2 has 2 values, row 1 has 3 (make all rows equally long)\n");
  write("cloud.csv", "0 0 1\n1 1 1\n2 0 1\n");
  EXPECT_EQ(knotfit({"surface", "cloud.csv"}).err,
            "cloud.csv: lines of x,y,z without rows (put a blank line between grid rows, or add "
            "--scattered for points in any order)\n");
  write("four.csv", "1,2,3,4\n1,2,3,4\n");
  EXPECT_EQ(knotfit({"surface", "four.csv"}).err,
            "four.csv: rows of 4 values are no x,y,z triples (add --height for heights alone)\n");
  EXPECT_EQ(
      knotfit({"surface", "four.csv", "--height"}).err,
      "degree 3 needs at least 4 data points, the grid's u direction has 2; use --degree 1\n");
}

TEST(Errors, SystemsThatAreTooLarge) {
  const Folder folder;
  std::string many;
  for (int i = 0; i < 70000; ++i) many += std::to_string(i) + ",0\n";
  write("many.csv", many);
  EXPECT_EQ(knotfit({"curve", "many.csv", "--controls", "10", "--solver", "householder"}).err,
            "70000 rows and 10 control points: the householder solver takes fewer than 65536; use "
            "--thin 2 or --solver qr, for a curve --solver auto\n");
  const Outcome taken = knotfit({"curve", "many.csv", "--controls", "10"});
  EXPECT_EQ(taken.code, 0);
  EXPECT_NE(taken.out.find("70000 x 10, rank 10, condition not computed, banded\n"),
            std::string::npos)
      << taken.out;
  EXPECT_EQ(knotfit({"curve", "many.csv", "--controls", "10", "--solver", "qr", "-q"}).code, 0);
  const Outcome huge = knotfit({"curve", "many.csv", "--controls", "69000", "--solver", "qr"});
  EXPECT_EQ(huge.code, 2);
  EXPECT_NE(huge.err.find("the dense system of 70000 x 69000 takes 115.9 GB"), std::string::npos)
      << huge.err;
}

TEST(Errors, FitsThatAreNone) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  ASSERT_EQ(knotfit({"curve", "egg.csv", "-o", "good.json"}).code, 0);
  const std::string good = contents("good.json");
  const std::pair<const char*, std::string> edits[] = {{"\"version\": 1", "\"version\": 2"},
                                                       {"\"degree\": [3]", "\"degree\": [2]"},
                                                       {"\"degree\": [3]", "\"degree\": [1e99]"},
                                                       {"\"dim\": 2", "\"dim\": 3"},
                                                       {"\"size\": [15]", "\"size\": [4000000000]"},
                                                       {"\"knots\": [", "\"knots\": [[],"},
                                                       {"\"kind\": \"curve\"", "\"kind\": 7"},
                                                       {"\"controls\"", "\"control\""},
                                                       {"{", "[[[[[{"}};
  for (const auto& [from, to] : edits) {
    std::string bad = good;
    ASSERT_NE(bad.find(from), std::string::npos) << from;
    bad.replace(bad.find(from), std::string(from).size(), to);
    write("bad.json", bad);
    const Outcome o = knotfit({"convert", "bad.json", "-o", "out.igs"});
    EXPECT_EQ(o.code, 3) << to;
    EXPECT_EQ(o.err.find("bad.json"), 0u) << o.err;
    EXPECT_EQ(std::count(o.err.begin(), o.err.end(), '\n'), 1) << o.err;
    EXPECT_FALSE(std::filesystem::exists("out.igs"));
  }
}

// Text of a fit with one more value in its report.
std::string withInReport(const std::string& fit, const std::string& value) {
  std::string out = fit;
  return out.replace(out.find("\"fit\": {"), 8, "\"fit\": {\"more\": " + value + ", ");
}

TEST(Errors, FitsNestedOrFilledBeyondReasonEndWithALineThatNamesTheFile) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  ASSERT_EQ(knotfit({"curve", "egg.csv", "-o", "good.json"}).code, 0);
  const std::string good = contents("good.json");
  const auto nested = [](std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
  };
  write("flat.json", withInReport(good, nested(10)));
  EXPECT_EQ(knotfit({"convert", "flat.json", "-o", "flat.igs"}).code, 0);
  for (const std::size_t depth : {20000, 200000, 2000000}) {
    write("deep.json", withInReport(good, nested(depth)));
    EXPECT_EQ(knotfit({"info", "deep.json"}).err,
              "deep.json:34: nested deeper than 16 levels (write the fit anew)\n");
    EXPECT_EQ(knotfit({"convert", "deep.json", "-o", "deep.igs"}).code, 3);
  }
  write("long.json", withInReport(good, "\"" + std::string(5 << 20, 'a') + "\""));
  EXPECT_EQ(knotfit({"info", "long.json"}).err,
            "long.json:34: a value of more than 4194304 bytes (write the fit anew)\n");
  std::string many = "[1";
  for (int i = 0; i < 1 << 22; ++i) many += ",1";
  write("many.json", withInReport(good, many + "]"));
  EXPECT_EQ(knotfit({"info", "many.json"}).err,
            "many.json:34: more than 4194304 values beside its control points (write the fit "
            "anew)\n");
}

// Options at random on few points: whatever they are, the program ends with a report or with one
// line.
TEST(Errors, NoCombinationOfOptionsEndsWithoutALine) {
  const Folder folder;
  std::mt19937 random(15);
  const auto one = [&](const std::vector<std::vector<std::string>>& of) {
    return of[random() % of.size()];
  };
  const auto number = [&](int most) {
    return std::to_string(1 + static_cast<int>(random() % static_cast<unsigned>(most)));
  };
  for (int trial = 0; trial < 400; ++trial) {
    const int points = 1 + static_cast<int>(random() % 12);
    write("in.csv", line(points));
    std::vector<std::string> arguments = {"curve", "in.csv", "--report", "r.json", "--force"};
    const std::string n = number(14), i = number(12), k = number(12);
    for (const auto& option :
         {one({{}, {}, {"--degree", number(5)}}),
          one({{}, {"--controls", n}, {"--tol", "0.1"}, {"--tol", "1e-9"}}),
          one({{}, {}, {"--closed"}}), one({{}, {}, {"--corner", i}, {"--corner", i + "," + k}}),
          one({{}, {}, {"--pass", k}}), one({{}, {}, {"--ends", "free"}, {"--ends", "exact"}}),
          one({{}, {}, {"--knots", "uniform"}, {"--knots", "0.3,0.6"}}),
          one({{}, {}, {}, {"--solver", "qr"}}), one({{}, {}, {"--smooth", "0.5"}}),
          one({{}, {}, {"--refine", "3"}}),
          one({{}, {}, {}, {"--tangent", "start=1,0.2"}, {"--tangent", "at=" + i + ":1,1"}}),
          one({{}, {"--param", "uniform"}, {"--param", "centripetal"}})}) {
      arguments.insert(arguments.end(), option.begin(), option.end());
    }
    std::string all;
    for (const std::string& a : arguments) all += a + " ";
    SCOPED_TRACE(all + "(" + std::to_string(points) + " points)");
    const Outcome o = knotfit(arguments);
    ASSERT_TRUE((o.code >= 0 && o.code <= 4) && o.code != 3) << o.code << o.err;
    EXPECT_EQ(std::count(o.err.begin(), o.err.end(), '\n'), o.code > 1 ? 1 : 0) << o.err;
    if (o.code > 1) continue;
    const Json r = Json::parse(contents("r.json"));
    for (const char* key : {"rms", "max"}) {
      EXPECT_TRUE(r["error"][key].is_number() && r["nearest"][key].is_number());
    }
    EXPECT_TRUE(r["ends"]["met"].get<bool>()) << r.dump();
  }
}

TEST(Errors, ToleranceMissedStillWritesTheBestFit) {
  const Folder folder;
  const Outcome o = knotfit({"curve", data("rae2822_measured.csv"), "--tol", "1e-9", "--knots",
                             "uniform", "-o", "fit.json"});
  EXPECT_EQ(o.code, 1);
  EXPECT_NE(o.out.find("tol      1e-09 not reached: this is the best fit\n"), std::string::npos);
  EXPECT_TRUE(std::filesystem::exists("fit.json"));
}

}  // namespace
}  // namespace knotfit::test
