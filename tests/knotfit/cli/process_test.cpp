// SPDX-License-Identifier: MIT
// The program as a process: pipes, devices, signals; and garbage in every format.
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <random>
#include <thread>

#if !defined(_WIN32)
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

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

TEST(Process, OutputThatIsNotTakenEndsWithALineAndNoFile) {
  const Folder folder;
  ASSERT_EQ(shell("\"$K\" demo . > demo.txt && \"$K\" curve egg.csv -o egg.json -q && > err"), 0);
  const std::size_t before = folder.files();
  const std::string broken = "standard output: cannot be written: ";
  for (const char* command :
       {"", "help", "--version", "curve --help", "curve egg.csv", "curve egg.csv -o n.json",
        "surface hill.csv --height --report n.json", "eval egg.json", "eval egg.json --n 100000",
        "check egg.json egg.csv -o n.csv", "info egg.csv", "info egg.json", "demo n",
        "lsq calibration.csv --model linear", "convert egg.json -o n.igs",
        "insert egg.json --knot 0.5 -o n.json", "convert egg.json -o - --format igs"}) {
    const std::string run = std::string("\"$K\" ") + command;
    if (std::filesystem::exists("/dev/full")) {
      EXPECT_EQ(shell(run + " > /dev/full 2> err"), 5) << command;
      EXPECT_EQ(contents("err"), broken + "No space left on device\n") << command;
    }
    EXPECT_EQ(shell(run + " >&- 2> err"), 5) << command;
    EXPECT_EQ(contents("err"), broken + "Bad file descriptor\n") << command;
    std::filesystem::remove("n");
    EXPECT_EQ(folder.files(), before) << command;
  }
  // A pipe whose reader is gone before anything comes.
  EXPECT_EQ(shell("mkfifo p; (\"$K\" eval egg.json --n 100000 2> err; echo $? > code) > p & "
                  "head -1 p > first; wait"),
            0);
  EXPECT_EQ(contents("err"), broken + "Broken pipe\n");
  EXPECT_EQ(contents("code"), "5\n");
  EXPECT_EQ(contents("first"), "u,x,y\n");
  // Without a standard output, the first file that is opened does not take its place.
  EXPECT_EQ(shell("\"$K\" curve egg.csv -q -o n.json >&- 2>&- <&-"), 0);
  EXPECT_EQ(contents("n.json"), contents("egg.json"));
}

// The program as a child with a signal's action set before it starts.
class Child {
 public:
  explicit Child(std::vector<std::string> arguments, int ignored = 0) {
    arguments.insert(arguments.begin(), KNOTFIT_PROGRAM);
    std::vector<char*> words;
    for (std::string& a : arguments) words.push_back(a.data());
    words.push_back(nullptr);
    id_ = fork();
    if (id_ != 0) return;
    if (ignored) std::signal(ignored, SIG_IGN);
    alarm(120);  // outlives exec: no test waits for ever
    execv(KNOTFIT_PROGRAM, words.data());
    std::_Exit(127);
  }
  void send(int signal) const { kill(id_, signal); }
  int code() const {
    int status = 0;
    waitpid(id_, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  pid_t id_;
};

void waitForTemporaryFile() {
  const auto found = [] {
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
      if (entry.path().extension() == ".tmp" && entry.file_size() > 0) return true;
    }
    return false;
  };
  for (int i = 0; i < 12000 && !found(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

TEST(Process, SignalsLeaveNoHalfFile) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  const std::size_t before = folder.files();
  // The pipe has no reader: the program waits there with the first file under its temporary name.
  const std::vector<std::string> run = {"curve", "egg.csv", "-q",       "-o",  "a.json",
                                        "-o",    "pipe",    "--format", "json"};
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    const Child child(run);
    waitForTemporaryFile();
    child.send(signal);
    EXPECT_EQ(child.code(), 128 + signal);
    EXPECT_EQ(folder.files(), before) << signal;
  }
  // A hang-up that nohup has switched off stays off.
  const Child child(run, SIGHUP);
  waitForTemporaryFile();
  child.send(SIGHUP);
  const std::string read = contents("pipe");
  EXPECT_EQ(child.code(), 0);
  EXPECT_EQ(read, contents("a.json"));
  EXPECT_EQ(folder.files(), before + 1);
}

extern "C" void ownAction(int) {}

TEST(Process, SignalsHaveTheirActionsBackBehindAWrite) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    const auto before = std::signal(signal, ownAction);
    EXPECT_EQ(knotfit({"curve", "egg.csv", "-o", "a.json", "--force"}).code, 0);
    EXPECT_EQ(std::signal(signal, before), ownAction) << signal;
  }
}

TEST(Process, PipesWithNamesAreReadOnceAndWrittenTo) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  ASSERT_EQ(mkfifo("points.csv", 0600), 0);
  EXPECT_EQ(shell("timeout 60 sh -c 'cat egg.csv > points.csv' & timeout 60 \"$K\" info points.csv "
                  "> a; wait"),
            0);
  EXPECT_EQ(contents("a"), knotfit({"info", "egg.csv"}).out);
  ASSERT_EQ(knotfit({"curve", "egg.csv", "-o", "egg.json"}).code, 0);
  EXPECT_EQ(
      shell(
          "timeout 60 cat points.csv > b & timeout 60 \"$K\" eval egg.json -o points.csv && wait"),
      0);
  EXPECT_EQ(contents("b"), knotfit({"eval", "egg.json"}).out);
  EXPECT_TRUE(std::filesystem::is_fifo("points.csv"));
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
    Progress young(Talk::kLine);
    young.reportProgress(0.5);
  }  // nothing before half a second
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace knotfit::test
