// SPDX-License-Identifier: MIT
// The program as a process: pipes, devices, Ctrl-C; and garbage in every format.
#include <cstdlib>
#include <random>

#include "cli/progress.h"
#include "run.h"

namespace knotfit::test {
namespace {

#if !defined(_WIN32)
int shell(const std::string& command) {
  const int status = std::system(("export K='" KNOTFIT_PROGRAM "'; " + command).c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Process, PipesCarryPointsAndFits) {
  const Folder folder;
  ASSERT_EQ(shell("\"$K\" demo . > demo.txt"), 0);
  ASSERT_EQ(shell("\"$K\" curve egg.csv -o a.json -q"), 0);
  EXPECT_EQ(shell("\"$K\" curve - -o - --format json < egg.csv > b.json 2> report.txt"), 0);
  EXPECT_EQ(contents("a.json"), contents("b.json"));
  EXPECT_EQ(contents("report.txt").find("curve    60 points"), 0u);
  EXPECT_EQ(shell("\"$K\" convert - -o - --format obj < a.json 2> log | grep -q '^curv 0 1 1 2 '"),
            0);
}

TEST(Process, DevicesEndWithALine) {
  const Folder folder;
  ASSERT_EQ(shell("\"$K\" demo . > demo.txt"), 0);
  EXPECT_EQ(shell("\"$K\" info /dev/zero 2> err"), 3);
  EXPECT_EQ(contents("err"), "/dev/zero:1: NUL byte (this is no text file; convert it to CSV)\n");
  EXPECT_EQ(shell("\"$K\" info /dev/null 2> err"), 3);
  EXPECT_EQ(shell("yes 1,2,3,4,5 | tr -d '\\n' | \"$K\" info - 2> err"), 3);
  EXPECT_EQ(contents("err"),
            "standard input:1: line is longer than 4194304 bytes (one point a line, please)\n");
  if (std::filesystem::exists("/dev/full")) {
    EXPECT_EQ(shell("\"$K\" curve egg.csv -o /dev/full --format json 2> err"), 5);
    EXPECT_EQ(contents("err"), "/dev/full: cannot be written: No space left on device\n");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
  }
}

TEST(Process, CtrlCLeavesNoHalfFile) {
  const Folder folder;
  std::string points;
  for (int i = 0; i < 30000; ++i) points += std::to_string(i) + "," + std::to_string(i % 97) + "\n";
  write("points.csv", points);
  // Wherever the signal comes, the file is whole or not there, and nothing else is left.
  for (const char* delay : {"0.05", "0.3", "1"}) {
    const std::string run = std::string("timeout -s INT ") + delay +
                            " \"$K\" curve points.csv --controls 2000 -q -o fit.json -o fit.csv";
    const int code = shell(run + " 2> err");
    const bool done = code == 0;
    EXPECT_EQ(std::filesystem::exists("fit.json"), done);
    EXPECT_EQ(folder.files(), done ? 4u : 2u);
    EXPECT_EQ(shell("if [ -e fit.json ]; then \"$K\" info fit.json > /dev/null && rm fit.*; fi"),
              0);
  }
}
#endif

TEST(Process, GarbageEndsWithOneLineInEveryFormat) {
  const Folder folder;
  std::mt19937 random(17);
  const std::string seeds[] = {"x,y,z\n1,2,3\n4,5,6\n",
                               "ply\nformat ascii 1.0\nelement vertex 2\nproperty double x\n"
                               "property double y\nproperty double z\nend_header\n1 2 3\n4 5 6\n",
                               "v 1 2 3\nv 4 5 6\n",
                               "{\"format\":\"knotfit\",\"version\":1,\"knots\":[[0,1]]}"};
  const char* suffixes[] = {".csv", ".ply", ".obj", ".json"};
  for (int trial = 0; trial < 400; ++trial) {
    const std::size_t kind = static_cast<std::size_t>(trial) % 4;
    std::string text = seeds[kind];
    for (int edit = 0; edit < 1 + trial % 7; ++edit) {
      const std::size_t at = random() % text.size();
      if (random() % 3 == 0)
        text.erase(at, random() % 4);
      else
        text.insert(at, 1, static_cast<char>(random() % 256));
      if (text.empty()) text = "\n";
    }
    const std::string name = std::string("in") + suffixes[kind];
    write(name, text);
    const Outcome o = knotfit({"info", name});
    EXPECT_TRUE(o.code == 0 || o.code == 3) << o.code << text;
    EXPECT_EQ(std::count(o.err.begin(), o.err.end(), '\n'), o.code ? 1 : 0) << o.err;
  }
}

TEST(Process, VerboseShowsTheSolversLinesAndQuietNothing) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  testing::internal::CaptureStderr();
  EXPECT_EQ(knotfit({"curve", "egg.csv", "-v"}).code, 0);
  const std::string lines = testing::internal::GetCapturedStderr();
  EXPECT_NE(lines.find("Report: ( Region cutoff value set to 0.000000)\n"), std::string::npos);
  testing::internal::CaptureStderr();
  EXPECT_EQ(knotfit({"curve", "egg.csv", "-q"}).out, "");
  {
    Progress young(Talk::kBar);
    young.reportProgress(0.5);
  }  // no bar before half a second
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace knotfit::test
