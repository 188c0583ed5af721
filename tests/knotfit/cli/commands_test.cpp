// SPDX-License-Identifier: MIT
// The commands, their help and their manual.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <set>

#include "fit/curve_fit.h"
#include "io/readers.h"
#include "model/deviation.h"
#include "run.h"

namespace knotfit::test {
namespace {

TEST(Commands, EvalCheckAndInfoSpeakOfTheSameFit) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  ASSERT_EQ(knotfit({"curve", "egg.csv", "--ends", "exact", "-o", "egg.json"}).code, 0);
  EXPECT_EQ(knotfit({"eval", "egg.json", "--at", "0"}).out, "u,x,y\n0,34,0\n");
  EXPECT_EQ(knotfit({"eval", "egg.json", "--at", "1.5"}).err,
            "--at 1.5 is outside the domain 0 to 1\n");
  const Json r = report({"curve", "egg.csv"});
  const Outcome o = knotfit({"check", "egg.json", "egg.csv", "--tol", "1e-9", "-o", "d.csv"});
  EXPECT_EQ(o.code, 1);
  EXPECT_EQ(contents("d.csv").find("point,u,distance\n1,0,0\n"), 0u);
  EXPECT_EQ(knotfit({"check", "egg.json", "egg.csv", "--nearest", "--tol", "9"}).code, 0);
  EXPECT_NE(knotfit({"info", "egg.json"}).out.find("degree 3, 15 control points"),
            std::string::npos);
  EXPECT_NE(knotfit({"info", "egg.csv"}).out.find("60 points (2 columns)"), std::string::npos);
  EXPECT_EQ(knotfit({}).out.find("knotfit fits B-spline"), 0u);
  for (const char* c :
       {"curve", "surface", "eval", "check", "insert", "convert", "info", "lsq", "demo"}) {
    EXPECT_NE(knotfit({c, "--help"}).out.find("Example: knotfit "), std::string::npos) << c;
  }
}

TEST(Commands, InfoCountsWhatIsThere) {
  const Folder folder;
  write("p.csv", "0,0\n3,4\n3,4\n3,4\n3,10\n");
  EXPECT_EQ(knotfit({"info", "p.csv"}).out,
            "points   5 points (2 columns)\n"
            "x        0 to 3\n"
            "y        0 to 10\n"
            "spacing  0 to 6, mean 2.75, length 11\n"
            "same     2 points coincide with the one before\n");
  write("q.csv", "0,0\n1,0\n1,0\n");
  EXPECT_NE(knotfit({"info", "q.csv"}).out.find("1 point coincides with the one before\n"),
            std::string::npos);
  write("t.csv", "1,2,3,4\n5,6,7,-8\n");
  EXPECT_EQ(knotfit({"info", "t.csv"}).out, "table    2 rows, 4 columns\nvalues   -8 to 7\n");
  EXPECT_EQ(knotfit({"info", "t.csv", "--columns", "2,4"}).out.find("points   2 points"), 0u);
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  ASSERT_EQ(knotfit({"curve", "egg.csv", "-o", "c.json"}).code, 0);
  // Each knot that is put in counts once more, a place once.
  ASSERT_EQ(knotfit({"insert", "c.json", "--knot", "0.5:2", "-o", "d.json"}).code, 0);
  EXPECT_NE(knotfit({"info", "c.json"}).out.find("19 knots, 13 distinct, range 0 to 1\n"),
            std::string::npos);
  EXPECT_NE(knotfit({"info", "d.json"}).out.find("21 knots, 14 distinct, range 0 to 1\n"),
            std::string::npos);
}

TEST(Commands, NormalsOfPlaneCurvesPointToTheLeft) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  ASSERT_EQ(knotfit({"curve", "egg.csv", "-o", "c.json"}).code, 0);
  ASSERT_EQ(
      knotfit({"eval", "c.json", "--n", "40", "--deriv", "1", "--normals", "-o", "n.csv"}).code, 0);
  std::istringstream table(contents("n.csv"));
  std::string line;
  std::getline(table, line);
  EXPECT_EQ(line, "u,x,y,x1,y1,nx,ny");
  int rows = 0;
  for (; std::getline(table, line); ++rows) {
    std::replace(line.begin(), line.end(), ',', ' ');
    std::istringstream words(line);
    double u, x, y, dx, dy, nx, ny;
    words >> u >> x >> y >> dx >> dy >> nx >> ny;
    EXPECT_NEAR(dx * nx + dy * ny, 0, 1e-12 * std::hypot(dx, dy));
    EXPECT_NEAR(dx * ny - dy * nx, std::hypot(dx, dy), 1e-12 * std::hypot(dx, dy));
  }
  EXPECT_EQ(rows, 40);
  // A curve that stands still at a place has no normal there.
  std::string still = contents("c.json");
  const std::size_t first = still.find("\"controls\": [") + 13, end = still.find("],", first) + 2;
  const std::size_t second = still.find("],", end) + 2;
  still.replace(end, second - end, still.substr(first, end - first));
  write("still.json", still);
  EXPECT_EQ(knotfit({"eval", "still.json", "--at", "0", "--normals"}).out.substr(11),
            "\n0,34,0,0,0\n");
}

TEST(Commands, OptionsReachTheFit) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  EXPECT_EQ(report({"curve", "egg.csv", "--smooth", "0.25"})["smooth"], 0.25);
  const Json rows = report({"surface", "hill.csv", "--height"});
  const Json columns = report({"surface", "hill.csv", "--height", "--order", "columns"});
  EXPECT_EQ(rows["points"], Json::array({25, 20}));
  EXPECT_EQ(columns["points"], Json::array({20, 25}));
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"help", "curve"}, {"help", "lsq"}}) {
    EXPECT_EQ(knotfit(arguments).out, knotfit({arguments[1], "--help"}).out);
    EXPECT_NE(knotfit(arguments).out.find("\nUsage: knotfit " + arguments[1] + " "),
              std::string::npos);
  }
  EXPECT_EQ(knotfit({"help"}).out, knotfit({}).out);
  EXPECT_EQ(knotfit({"help", "nonsense"}).code, 2);
  EXPECT_TRUE(
      knotfit({"help", "curve", "surface"}).err.starts_with("help takes one command, not "));
}

#if !defined(_WIN32)
using Names = std::set<std::string>;

// The options of a command by its help: "  -o,--output FILE  text".
Names optionsOfHelp(const std::string& command) {
  Names out;
  std::istringstream help(knotfit({command, "--help"}).out);
  for (std::string line; std::getline(help, line);) {
    if (line.rfind("  -", 0) != 0) continue;
    std::istringstream names(line.substr(2, line.find(' ', 2) - 2));
    for (std::string name; std::getline(names, name, ',');) out.insert(name);
  }
  out.erase("-h");
  out.erase("--help");
  return out;
}

// The options of a command by the manual: names on the line behind .TP, under headings that name
// commands.
Names optionsOfManual(const std::string& command) {
  Names out;
  std::istringstream manual(contents(KNOTFIT_SOURCES "/cli/knotfit.1"));
  bool inside = false, tag = false;
  for (std::string line; std::getline(manual, line);) {
    if (line.rfind(".SH", 0) == 0) inside = false;
    if (line.rfind(".SS Of ", 0) == 0) inside = (line + " ").find(" " + command + " ") != line.npos;
    if (inside && tag) {
      constexpr char kDash[] = "\\fB\\-";
      for (std::size_t at = line.find(kDash); at != line.npos; at = line.find(kDash, at + 1)) {
        std::string name = line.substr(at + 3, line.find("\\fR", at) - at - 3);
        name.erase(std::remove(name.begin(), name.end(), '\\'), name.end());
        out.insert(name);
      }
    }
    tag = line == ".TP";
  }
  return out;
}

// The options that bash offers.
Names optionsOfCompletion(const std::string& command) {
  const std::string script = "source '" KNOTFIT_SOURCES
                             "/cli/completion.bash'; "
                             "COMP_WORDS=(knotfit " +
                             command +
                             " -); COMP_CWORD=2; _knotfit; "
                             "printf '%s\\n' \"${COMPREPLY[@]}\" > words";
  EXPECT_EQ(std::system(("bash -c \"$(cat <<'END'\n" + script + "\nEND\n)\"").c_str()), 0);
  Names out;
  std::istringstream words(contents("words"));
  for (std::string name; std::getline(words, name);) out.insert(name);
  out.erase("--help");
  return out;
}

TEST(Commands, InfoCountsAndMeasures) {
  const Folder folder;
  write("twice.csv", "0,0\n3,4\n3,4\n3,6\n");
  EXPECT_EQ(
      knotfit({"info", "twice.csv"}).out,
      "points   4 points (2 columns)\nx        0 to 3\ny        0 to 6\n"
      "spacing  0 to 5, mean 2.33333, length 7\nsame     1 point coincides with the one before\n");
  write("thrice.csv", "0,0\n0,0\n0,0\n1,0\n");
  EXPECT_NE(knotfit({"info", "thrice.csv"}).out.find("same     2 points coincide with"),
            std::string::npos);
  write("huge.csv", "0,0\n3e200,4e200\n");
  EXPECT_NE(knotfit({"info", "huge.csv"}).out.find("length 5e+200"), std::string::npos);
  // A parabola whose middle control point the curve does not reach.
  write("arc.csv", "0,0\n1,1\n2,0\n");
  ASSERT_EQ(
      knotfit({"curve", "arc.csv", "--degree", "2", "--param", "uniform", "-o", "arc.json", "-q"})
          .code,
      0);
  EXPECT_EQ(knotfit({"info", "arc.json"}).out,
            "curve    degree 2, 3 control points, dimension 2, mm\n"
            "knots u  6 knots, 2 distinct, range 0 to 1\nx        0 to 2\ny        0 to 1\n");
}

TEST(Commands, EvalGivesNormalsOnTheLeftAndOnePlaceOfASurface) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  write("line.csv", "0,0\n1,0\n2,0\n3,0\n");
  ASSERT_EQ(knotfit({"curve", "line.csv", "-o", "line.json", "-q"}).code, 0);
  const std::string row = knotfit({"eval", "line.json", "--at", "0", "--normals"}).out;
  EXPECT_NE(row.find("u,x,y,nx,ny\n0,0,0,"), std::string::npos) << row;
  EXPECT_NE(row.find(",1\n"), std::string::npos) << row;
  ASSERT_EQ(knotfit({"surface", "hill.csv", "--height", "-o", "hill.json", "-q"}).code, 0);
  EXPECT_EQ(knotfit({"eval", "hill.json", "--at", "0,0"}).out.find("u,v,x,y,z\n0,0,"), 0u);
  EXPECT_EQ(knotfit({"eval", "hill.json", "--at", "0.5"}).err,
            "--at: a surface takes two parameters, U,V\n");
}

TEST(Commands, NormalsOfACurveThatStandsStillAreZero) {
  const Folder folder;
  write("still.json",
        "{\"format\":\"knotfit\",\"version\":1,\"kind\":\"curve\",\"dim\":2,\"degree\":[1],"
        "\"closed\":false,\"rational\":false,\"knots\":[[0,0,1,1]],\"controls\":[[2,3],[2,3]],"
        "\"size\":[2],"
        "\"domain\":[[0,1]],\"units\":\"mm\"}");
  EXPECT_EQ(knotfit({"eval", "still.json", "--at", "0", "--normals"}).out,
            "u,x,y,nx,ny\n0,2,3,0,0\n");
}

TEST(Commands, SmoothingWeighsAsAsked) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  const Json r =
      report({"curve", "egg.csv", "--smooth", "0.25", "--controls", "20", "--ends", "free"});
  EXPECT_EQ(r["smooth"], 0.25);
  PointSet egg = readPoints("egg.csv", {});
  FitOptions o;
  o.controls[0] = 20;
  o.smooth = 0.25;
  o.endsExact = false;
  EXPECT_EQ(summaryOf(fitCurve(egg, o).distances).rms, r["error"]["rms"].get<double>());
}

TEST(Manual, HelpManualAndCompletionNameTheSameOptions) {
  const Folder folder;
  for (const char* command :
       {"curve", "surface", "eval", "check", "insert", "convert", "info", "lsq", "demo"}) {
    const Names help = optionsOfHelp(command);
    EXPECT_FALSE(help.empty()) << command;
    EXPECT_EQ(optionsOfManual(command), help) << command;
    EXPECT_EQ(optionsOfCompletion(command), help) << command;
  }
}
#endif

}  // namespace
}  // namespace knotfit::test
