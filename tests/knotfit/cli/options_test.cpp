// SPDX-License-Identifier: MIT
// Options: what is given acts or is refused, and nothing of the user's is overwritten.
#include "run.h"

namespace knotfit::test {
namespace {

namespace fs = std::filesystem;

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
  const std::size_t before = folder_.files();
  const auto refusals = blocksOf("refusals.txt");
  EXPECT_EQ(refusals.size(), 30u);
  for (const std::vector<std::string>& refusal : refusals) {
    const Outcome o = knotfit(wordsOf(refusal.at(0)));
    EXPECT_EQ(o.code, 2) << refusal[0];
    EXPECT_EQ(o.err, refusal.at(1) + "\n");
    EXPECT_EQ(o.out, "") << refusal[0];
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
