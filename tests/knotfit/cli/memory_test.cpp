// SPDX-License-Identifier: MIT
// Memory that runs out anywhere: the program ends with its line for that, and leaves no file.
#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <iostream>

#include "base/fault.h"
#include "run.h"
#include "support/failing_new.h"

namespace knotfit::test {
namespace {

using knotwork::test::Failing;
using knotwork::test::FailingNew;

// The exit code of a run in a process of its own, for the library's handler ends the process.
int codeWithout(const std::vector<std::string>& arguments, long granted, Failing which) {
  const pid_t child = fork();
  if (child == 0) {
    const int err = open("err", O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(err, STDERR_FILENO);
    std::ostringstream out;
    int code = 0;
    {
      const FailingNew failing(granted, which);
      code = run(arguments, {out, std::cerr});
    }
    _exit(code);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST(Memory, EndsWithItsLineWhereverItRunsOut) {
  if (!knotwork::test::canObserveAllocation()) GTEST_SKIP();
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  ASSERT_EQ(knotfit({"curve", "egg.csv", "-o", "fit.json", "-q"}).code, 0);
  const std::vector<std::string> commands[] = {
      {"curve", "egg.csv", "--closed", "--controls", "9", "--refine", "1", "-o", "out.igs",
       "--report", "r.json"},
      {"surface", "hill.csv", "--height", "--controls", "5,5", "-o", "out.igs"},
      {"insert", "fit.json", "--knot", "0.3", "-o", "out.igs"},
      {"lsq", "calibration.csv", "--model", "poly:2", "--report", "r.json"}};
  for (const auto& command : commands) {
    const long before = knotwork::test::newCalls();
    ASSERT_EQ(knotfit(command).code, 0) << command[0];
    const long calls = knotwork::test::newCalls() - before;
    const std::string whole = contents("out.igs");
    int refused = 0;
    for (long n = 0; n < calls; n += 1 + calls / 60) {
      for (const Failing which : knotwork::test::kBothWays) {
        std::filesystem::remove("out.igs");
        std::filesystem::remove("r.json");
        const int code = codeWithout(command, n, which);
        SCOPED_TRACE(command[0] + " " + std::to_string(n) + " of " + std::to_string(calls));
        ASSERT_TRUE(code == 0 || code == kUsage) << code << contents("err");
        EXPECT_EQ(contents("err"),
                  code == 0 ? "" : "memory is exhausted; use fewer --controls or --thin N\n");
        EXPECT_EQ(contents("out.igs"), code == 0 ? whole : "");
        refused += code == kUsage;
      }
    }
    EXPECT_GT(refused, 40) << command[0];
    std::filesystem::remove("out.igs");
    std::filesystem::remove("r.json");
  }
}

}  // namespace
}  // namespace knotfit::test
#endif
