// SPDX-License-Identifier: MIT
// Bad input, by the table of tests/data/knotfit/errors.txt and otherwise: exit code, the exact
// line, and no file written.
#include <random>

#include "run.h"

namespace knotfit::test {
namespace {

std::string line(int points) {  // points on a parabola
  std::string out;
  for (int i = 0; i < points; ++i) {
    out += std::to_string(i) + "," + std::to_string(i * i) + "\n";
  }
  return out;
}

// The input that a line of the table stands for.
std::string inputOf(const std::string& spelt) {
  if (spelt.starts_with("= parabola ")) return line(std::stoi(spelt.substr(11)));
  if (spelt == "= empty") return "";
  if (spelt == "= endless") return std::string((std::size_t{1} << 22) + 1, '7');
  std::string out;
  for (int i = 0; spelt == "= gap" && i < 30; ++i)  // two groups of points far apart
    out += std::to_string(i + (i < 15 ? 0 : 1000)) + ",0\n";
  for (std::size_t i = 0; spelt != "= gap" && i < spelt.size(); ++i) {
    if (spelt[i] != '\\') {
      out += spelt[i];
    } else if (spelt[++i] == 'n') {
      out += '\n';
    } else {
      out += static_cast<char>(std::stoi(spelt.substr(i + 1, 2), nullptr, 16));
      i += 2;
    }
  }
  return out;
}

TEST(Errors, OneLineNamesCauseAndMendAndNothingIsWritten) {
  const auto cases = blocksOf("errors.txt");
  EXPECT_EQ(cases.size(), 46u);
  for (const std::vector<std::string>& lines : cases) {
    const std::vector<std::string> head = wordsOf(lines.at(0));  // name, code, arguments
    SCOPED_TRACE(lines[0]);
    std::vector<std::string> arguments = {"curve", "in.csv", "-o", "fit.igs", "--report", "r.json"};
    arguments.insert(arguments.end(), head.begin() + 2, head.end());
    const Folder folder;
    const std::string input = inputOf(lines.at(1));
    write("in.csv", input);
    const Outcome o = knotfit(arguments);
    EXPECT_EQ(std::to_string(o.code), head[1]);
    EXPECT_EQ(o.err, lines.at(2) + "\n");
    EXPECT_EQ(o.out, "");
    EXPECT_EQ(folder.files(), 1u);
    EXPECT_EQ(contents("in.csv"), input);
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
