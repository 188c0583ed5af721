// SPDX-License-Identifier: MIT
// Options: what is given acts or is refused, and nothing of the user's is overwritten.
#include "run.h"

namespace knotfit::test {
namespace {

namespace fs = std::filesystem;

struct Refusal {
  std::vector<std::string> arguments;
  std::string line;
};

// The demonstration data, a fit of each kind, and points in a PLY file.
class Options : public ::testing::Test {
 protected:
  Options() {
    EXPECT_EQ(knotfit({"demo", "."}).code, 0);
    EXPECT_EQ(knotfit({"curve", "egg.csv", "-o", "egg.json"}).code, 0);
    EXPECT_EQ(knotfit({"surface", "hill.csv", "--height", "-o", "hill.json"}).code, 0);
    write("p.ply",
          "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\nproperty float y\n"
          "end_header\n1 2\n3 4\n");
  }
  const Folder folder_;
};

TEST_F(Options, WhatCannotActIsRefusedInOneLine) {
  const std::vector<Refusal> refusals = {
      {{"curve", "egg.csv", "--tol", "0"}, "--tol: wants a number above 0, not '0'"},
      {{"curve", "egg.csv", "--merge", "-1"}, "--merge: wants a number from 0, not '-1'"},
      {{"curve", "egg.csv", "--smooth", "-1"}, "--smooth: wants a number from 0, not '-1'"},
      {{"check", "egg.json", "egg.csv", "--tol", "-1"}, "--tol: wants a number from 0, not '-1'"},
      {{"curve", "egg.csv", "--tess", "4"},
       "--tess: is for CSV and PLY files, and no -o names one"},
      {{"convert", "egg.json", "-o", "a.igs", "--tess", "4"},
       "--tess: is for CSV and PLY files, and no -o names one"},
      {{"curve", "egg.csv", "--format", "json"},
       "--format: names the format of files, and no -o names one"},
      {{"surface", "hill.csv", "--spacing", "2,2"},
       "--spacing: is for grids of heights; add --height"},
      {{"curve", "egg.csv", "-q", "--progress", "always"},
       "--progress always: leave out -q, which takes the bar's place"},
      {{"eval", "egg.json", "--at", "0.5", "--n", "9"},
       "--at excludes --n (see knotfit eval --help)"},
      {{"eval", "hill.json", "--at", "0.5"}, "--at: a surface takes two parameters, U,V"},
      {{"eval", "egg.json", "--at", "0.5,0.5"}, "--at: a curve takes one parameter"},
      {{"info", "egg.json", "--columns", "x,y"},
       "egg.json: a fit has no columns; leave out --columns, --delimiter, --skip"},
      {{"curve", "p.ply", "--skip", "1"}, "p.ply: --skip does not suit a PLY file; leave it out"},
      {{"curve", "p.ply", "--delimiter", "tab"},
       "p.ply: --delimiter does not suit a PLY file; leave it out"},
      {{"surface", "hill.csv", "--height", "--pass", "3"},
       "surface has no option --pass; it belongs to curve (see knotfit surface --help)"},
      {{"curve", "egg.csv", "--height"},
       "curve has no option --height; it belongs to surface (see knotfit curve --help)"},
      {{"curve", "egg.csv", "--tol", "1", "--tol", "2"},
       "--tol: is given more than once (see knotfit curve --help)"},
      {{"curve", "egg.csv", "--refine"}, "--refine: wants a value (see knotfit curve --help)"},
      {{"curve", "egg.csv", "--knots", "averge"},
       "--knots: wants average, uniform, a file or a list of numbers, not 'averge'"},
      // One word where a list would be read, and lists where one is meant.
      {{"curve", "egg.csv", "--tangent", "at=20,50:0,1"},
       "--tangent: wants a whole number from 1, not '20,50'"},
      {{"curve", "--pass", "3", "egg.csv", "hill.csv"},
       "curve takes no further word: 'hill.csv'; each option takes one (see knotfit curve --help)"},
      {{"curve", "egg.csv", "-o", "a.json", "b.json"},
       "curve takes no further word: 'b.json'; each option takes one (see knotfit curve --help)"},
      {{"insert", "egg.json", "--knot", "0.5", "0.6", "-o", "a.json"},
       "insert takes no further word: '0.6'; each option takes one (see knotfit insert --help)"},
      {{"eval", "egg.json", "-o", "a.json"},
       "a.json: what goes there is CSV; give a name that ends in .csv"},
      {{"check", "egg.json", "egg.csv", "-o", "a.igs"},
       "a.igs: what goes there is CSV; give a name that ends in .csv"},
      {{"curve", "egg.csv", "--report", "a.svg"},
       "a.svg: what goes there is JSON; give a name that ends in .json"},
      {{"lsq", "calibration.csv", "--model", "linear", "--report", "a.csv"},
       "a.csv: what goes there is JSON; give a name that ends in .json"},
      {{"curve", "egg.csv", "-o", "a", "--format", "jsn"},
       "--format: wants json igs stp obj csv ply svg png or pdf, not 'jsn'"},
      {{"nonsense"}, "there is no command 'nonsense' (see knotfit --help)"}};
  const std::size_t before = folder_.files();
  for (const Refusal& r : refusals) {
    const Outcome o = knotfit(r.arguments);
    EXPECT_EQ(o.code, 2) << r.line;
    EXPECT_EQ(o.err, r.line + "\n");
    EXPECT_EQ(o.out, "");
  }
  EXPECT_EQ(folder_.files(), before);
  EXPECT_EQ(knotfit({"check", "egg.json", "egg.csv", "--tol", "0"}).code, 1);
  EXPECT_EQ(knotfit({"curve", "--pass", "3", "--pass", "9,12", "egg.csv"}).code, 0);
}

TEST_F(Options, EmptyValuesAreRefusedWhereverAnOptionTakesOne) {
  const std::vector<std::string> inputs[] = {{"curve", "egg.csv"},
                                             {"surface", "hill.csv", "--height"},
                                             {"eval", "egg.json"},
                                             {"check", "egg.json", "egg.csv"},
                                             {"convert", "egg.json", "-o", "a.igs"},
                                             {"info", "egg.csv"},
                                             {"lsq", "calibration.csv", "--model", "linear"}};
  for (const std::vector<std::string>& input : inputs) {
    std::istringstream help(knotfit({input.front(), "--help"}).out);
    int tried = 0;
    for (std::string line; std::getline(help, line);) {
      const std::size_t at = line.find("--");
      const std::size_t end = line.find(' ', at);
      if (line.find_first_not_of(' ') != 2 || at == std::string::npos) continue;
      const std::string option = line.substr(at, end - at);
      // A flag has its text behind blanks, an option the kind of its value behind one.
      if (end == std::string::npos || end + 1 >= line.size() || line[end + 1] == ' ') continue;
      if (line.find("Excludes: --verbose") != std::string::npos ||
          line.find("Excludes: --quiet") != std::string::npos) {
        continue;
      }
      std::vector<std::string> arguments = input;
      arguments.insert(arguments.end(), {option, ""});
      const Outcome o = knotfit(arguments);
      EXPECT_EQ(o.code, 2) << input.front() << " " << option;
      EXPECT_EQ(o.err.find(option), 0u) << o.err;
      ++tried;
    }
    EXPECT_GE(tried, 3) << input.front();
  }
  EXPECT_FALSE(fs::exists("a.igs"));
}

TEST_F(Options, NoOutputIsAnInputWhateverItsName) {
  fs::create_symlink("egg.csv", "soft.csv");
  fs::create_hard_link("egg.csv", "hard.csv");
  fs::create_symlink("soft.csv", "softer.csv");
  write("u.txt", "0\n1\n");
  const std::string points = contents("egg.csv"), fit = contents("egg.json");
  for (const std::string name : {"egg.csv", "./egg.csv", "soft.csv", "hard.csv", "softer.csv"}) {
    for (const char* option : {"-o", "--report"}) {
      const Outcome o = knotfit({"curve", "egg.csv", option, name, "--force"});
      EXPECT_EQ(o.code, 2) << name;
      EXPECT_EQ(o.err, name + " is the input" + (name == "egg.csv" ? "" : " egg.csv") +
                           "; write to another file\n");
    }
    EXPECT_EQ(knotfit({"check", "egg.json", "egg.csv", "-o", name, "--force"}).code, 2) << name;
  }
  EXPECT_EQ(knotfit({"curve", "egg.csv", "--weights", "u.txt", "--report", "u.txt", "--force"}).err,
            "u.txt is the input; write to another file\n");
  EXPECT_EQ(knotfit({"convert", "egg.json", "-o", "egg.json", "--force"}).code, 2);
  EXPECT_EQ(knotfit({"insert", "egg.json", "--knot", "0.5", "-o", "egg.json", "--force"}).code, 2);
  EXPECT_EQ(knotfit({"eval", "egg.json", "-o", "egg.json", "--force"}).code, 2);
  EXPECT_EQ(knotfit({"lsq", "calibration.csv", "--model", "linear", "--report", "calibration.csv",
                     "--force"})
                .code,
            2);
  EXPECT_EQ(contents("egg.csv"), points);
  EXPECT_EQ(contents("egg.json"), fit);
  EXPECT_EQ(contents("u.txt"), "0\n1\n");
}

TEST_F(Options, NoTwoOutputsAreOneFile) {
  write("old.json", "old");
  fs::create_hard_link("old.json", "link.json");
  fs::create_symlink("new.json", "dangling.json");
  fs::create_directory("folder");
  const std::pair<const char*, const char*> pairs[] = {{"c.json", "./c.json"},
                                                       {"c.json", "folder/../c.json"},
                                                       {"old.json", "link.json"},
                                                       {"new.json", "dangling.json"}};
  for (const auto& [one, two] : pairs) {
    const Outcome o = knotfit({"convert", "egg.json", "-o", one, "-o", two, "--force"});
    EXPECT_EQ(o.code, 2) << one;
    EXPECT_EQ(o.err, std::string(two) + " is written twice; name each file once\n");
    EXPECT_EQ(knotfit({"curve", "egg.csv", "-o", one, "--report", two, "--force"}).code, 2);
  }
  EXPECT_EQ(contents("old.json"), "old");
  EXPECT_FALSE(fs::exists("new.json"));
  ASSERT_EQ(knotfit({"convert", "egg.json", "-o", "dangling.json"}).code, 0);
  EXPECT_TRUE(fs::is_symlink("dangling.json"));
  EXPECT_EQ(contents("new.json"), contents("egg.json"));
}

TEST_F(Options, NamesOfAnyLengthAndAnyBytesAreWrittenAndShownSafely) {
  for (const std::size_t length : {200, 240, 250, 255}) {
    const std::string name = std::string(length - 5, 'n') + ".json";
    EXPECT_EQ(knotfit({"convert", "egg.json", "-o", name}).code, 0) << length;
    EXPECT_EQ(contents(name), contents("egg.json"));
  }
  const std::string beyond = std::string(251, 'n') + ".json";
  EXPECT_EQ(knotfit({"convert", "egg.json", "-o", beyond}).err,
            beyond + ": cannot be written: File name too long\n");
  const std::string wild = "a\n\x1b[31m\xc2\x9b\xc3\xa4 b.json";
  const Outcome o = knotfit({"convert", "egg.json", "-o", wild});
  EXPECT_EQ(o.code, 0);
  EXPECT_EQ(contents(wild), contents("egg.json"));
  EXPECT_NE(o.out.find("'a\\x0a\\x1b[31m\\xc2\\x9b\xc3\xa4 b.json' (JSON)"), std::string::npos)
      << o.out;
  EXPECT_EQ(std::count(o.out.begin(), o.out.end(), '\n'), 2) << o.out;
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"info", "none" + wild},
                                                    {"curve", "none" + wild},
                                                    {"convert", "egg.json", "-o", wild},
                                                    {"curve", "egg.csv", "--pass", wild},
                                                    {"curve", "egg.csv", "-o", "x" + wild + "x"},
                                                    {"nonsense" + wild},
                                                    {"curve", "egg.csv", "--columns", wild},
                                                    {"curve", "egg.csv", "--" + wild}}) {
    const Outcome bad = knotfit(arguments);
    EXPECT_NE(bad.code, 0);
    EXPECT_EQ(std::count(bad.err.begin(), bad.err.end(), '\n'), 1) << bad.err;
    EXPECT_EQ(bad.err.find('\x1b'), std::string::npos) << bad.err;
    EXPECT_EQ(bad.err.find("\xc2\x9b"), std::string::npos) << bad.err;
    EXPECT_NE(bad.err.find("\\x1b[31m"), std::string::npos) << bad.err;
  }
}

}  // namespace
}  // namespace knotfit::test
