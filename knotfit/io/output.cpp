// SPDX-License-Identifier: MIT
// Files that appear whole or not at all. All contents are written to temporary files beside their
// targets, and only when nothing can fail any more but a renaming do they take the targets' places:
// renaming within a folder is atomic, so a reader sees the old file or the new one, and a run that
// ends before has touched nothing. A signal that asks to stop removes the temporary files itself: a
// signal that were only noted would be lost on a program that is about to wait for a pipe.
#include "io/output.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <list>
#include <memory>
#include <system_error>

#if !defined(_WIN32)
#include <unistd.h>
#endif

#include "base/fault.h"
#include "base/text.h"
#include "io/file_identity.h"

namespace knotfit {
namespace {

namespace fs = std::filesystem;

// Names of the temporary files that stand, null where there is none: what a signal's action
// removes.
std::atomic<std::atomic<const char*>*> standing{nullptr};
std::atomic<std::size_t> places{0};

#if defined(_WIN32)
constexpr std::array<int, 2> kStopSignals = {SIGINT, SIGTERM};
using Action = void (*)(int);

void removeNow(const char* name) { std::remove(name); }
#else
constexpr std::array<int, 4> kStopSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
using Action = struct sigaction;

void removeNow(const char* name) { unlink(name); }
#endif

// Ends at once, wherever the program is: it may be waiting for a pipe that nobody reads. Nothing is
// called here but what may be called in a signal's action. The code is that by which shells tell of
// the signal.
extern "C" void removeAndEnd(int signal) {
  for (std::size_t i = 0; i < places; ++i) {
    if (const char* name = standing.load()[i]) removeNow(name);
  }
  std::_Exit(128 + signal);
}

#if defined(_WIN32)
Action replaced(int signal, Action action) { return std::signal(signal, action); }
Action removing() { return removeAndEnd; }
bool isIgnored(Action action) { return action == SIG_IGN; }

class SignalPause {};
#else
Action replaced(int signal, const Action& action) {
  Action before;
  sigaction(signal, &action, &before);
  return before;
}
Action removing() {
  Action action{};
  action.sa_handler = removeAndEnd;
  return action;
}
bool isIgnored(const Action& action) { return action.sa_handler == SIG_IGN; }

// While it lives, signals that ask to stop wait: a file and its place in the list change together.
class SignalPause {
 public:
  SignalPause() {
    sigset_t all;
    sigemptyset(&all);
    for (const int signal : kStopSignals) sigaddset(&all, signal);
    sigprocmask(SIG_BLOCK, &all, &before_);
  }
  ~SignalPause() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalPause(const SignalPause&) = delete;
  SignalPause& operator=(const SignalPause&) = delete;

 private:
  sigset_t before_;
};
#endif

// While it lives, signals that ask to stop remove the temporary files of at most `files` places.
// What the caller's shell has switched off, as nohup does with the hang-up, stays off.
class SignalGuard {
 public:
  explicit SignalGuard(std::size_t files) : names_(files) {
    standing = names_.data();
    places = files;
    for (std::size_t i = 0; i < before_.size(); ++i) {
      before_[i] = replaced(kStopSignals[i], removing());
      if (isIgnored(before_[i])) replaced(kStopSignals[i], before_[i]);
    }
  }
  ~SignalGuard() {
    for (std::size_t i = 0; i < before_.size(); ++i) replaced(kStopSignals[i], before_[i]);
    places = 0;
  }
  SignalGuard(const SignalGuard&) = delete;
  SignalGuard& operator=(const SignalGuard&) = delete;

  std::atomic<const char*>& place(std::size_t i) { return names_[i]; }

 private:
  std::vector<std::atomic<const char*>> names_;
  std::array<Action, kStopSignals.size()> before_;
};

[[noreturn]] void cannotWrite(const std::string& path, const std::string& cause) {
  throw Fault(kOutput, cat(shownName(path), ": cannot be written: ", cause));
}

std::string messageOf(int error) { return std::generic_category().message(error ? error : EIO); }

void writeAll(std::FILE* file, const std::string& path, const std::string& contents) {
  errno = 0;
  const bool ok = std::fwrite(contents.data(), 1, contents.size(), file) == contents.size() &&
                  std::fflush(file) == 0;
  if (!ok) cannotWrite(path, messageOf(errno));
}

struct Closer {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, Closer>;

// Writes and closes: network file systems tell only on closing that there was no room.
void writeAndClose(File file, const std::string& path, const std::string& contents) {
  writeAll(file.get(), path, contents);
  errno = 0;
  if (std::fclose(file.release()) != 0) cannotWrite(path, messageOf(errno));
}

// A temporary file with the contents, and where it goes in the end; removed if it stays.
class PendingFile {
 public:
  PendingFile(const std::string& path, const std::string& contents, std::atomic<const char*>& place)
      : path_(path), target_(linkTarget(path)), place_(place) {
    File file = created();
    try {
      writeAndClose(std::move(file), path, contents);
    } catch (...) {
      drop();
      throw;
    }
    std::error_code ignored;
    const auto old = fs::status(target_, ignored);
    if (fs::is_regular_file(old)) fs::permissions(temporary_, old.permissions(), ignored);
  }
  ~PendingFile() { drop(); }
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;

  void rename() {
    std::error_code error;
    fs::rename(temporary_, target_, error);
    if (error) cannotWrite(path_, error.message());
    place_ = nullptr;
  }

 private:
  // A new file under the first free name. The name is short, whatever the target's, since names end
  // at 255 bytes; the file is made only where there is none, so that nothing is followed or lost.
  File created() {
    constexpr int kTries = 10000;  // far more than there are runs at a time
    for (int k = 0; k < kTries; ++k) {
      temporary_ = (target_.parent_path() / cat(".knotfit-", k, ".tmp")).string();
      [[maybe_unused]] const SignalPause pause;
      errno = 0;
      File file(std::fopen(temporary_.c_str(), "wbx"));
      if (file) {
        place_ = temporary_.c_str();
        return file;
      }
      if (errno != EEXIST) break;
    }
    cannotWrite(path_, messageOf(errno));
  }
  void drop() noexcept {
    if (place_.exchange(nullptr)) std::remove(temporary_.c_str());
  }

  std::string path_;
  fs::path target_;
  std::string temporary_;
  std::atomic<const char*>& place_;  // names the temporary file while it stands
};

bool isSpecial(const std::string& path) {  // a device or a pipe: written to, never replaced
  std::error_code ignored;
  return fs::exists(path, ignored) && !fs::is_regular_file(path, ignored);
}

// The one name by which a file is announced: its own, behind links, in its folder's own name.
std::string announcedName(const std::string& path) {
  if (path == "-") return path;
  std::error_code error;
  const fs::path target = linkTarget(path);
  const fs::path folder = fs::weakly_canonical(fs::absolute(target, error).parent_path(), error);
  return error ? path : (folder / target.filename()).string();
}

}  // namespace

void OutputSet::announce(const std::string& path) {
  const std::string name = announcedName(path);
  for (const std::string& other : announced_) {
    if (other == name || (name != "-" && other != "-" && isSameFile(other, name))) {
      throw Fault(kUsage, cat(shownName(path), " is written twice; name each file once"));
    }
  }
  for (const std::string& input : inputs_) {
    if (!isSameFile(input, path)) continue;
    throw Fault(kUsage, cat(path == "-" ? "standard output" : shownName(path), " is the input",
                            input == path || input == "-" ? "" : cat(" ", shownName(input)),
                            "; write to another file"));
  }
  announced_.push_back(name);
  if (path == "-") return;
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::is_directory(status)) cannotWrite(path, "is a directory (give a file name)");
  if (fs::exists(status) && !fs::is_regular_file(status)) return;
  if (fs::exists(status) && !overwrite_) {
    throw Fault(kOutput, cat(shownName(path), " exists; add --force"));
  }
  const fs::path folder = linkTarget(path).parent_path();
  if (!folder.empty() && !fs::is_directory(folder, error)) {
    cannotWrite(path, cat("there is no folder ", shownName(folder.string()), " (make it first)"));
  }
  if (status.type() == fs::file_type::none) cannotWrite(path, error.message());
  if (!takesNewFiles(folder)) cannotWrite(path, "its folder takes no files (check permissions)");
}

void OutputSet::add(std::string path, std::string contents) {
  files_.emplace_back(std::move(path), std::move(contents));
}

void OutputSet::writeStreams() {
  for (const auto& [path, contents] : files_) {
    if (path == "-") {
      writeAll(stdout, "standard output", contents);
    } else if (isSpecial(path)) {
      errno = 0;
      File file(std::fopen(path.c_str(), "wb"));
      if (!file) cannotWrite(path, messageOf(errno));
      writeAndClose(std::move(file), path, contents);
    }
  }
}

void OutputSet::commit(const std::function<void()>& last) {
  SignalGuard guard(files_.size());
  std::list<PendingFile> pending;  // whose elements stay where they are
  for (const auto& [path, contents] : files_) {
    if (path == "-" || isSpecial(path)) continue;
    std::error_code ignored;
    if (!overwrite_ && fs::exists(path, ignored)) {  // it came while the command worked
      throw Fault(kOutput, cat(shownName(path), " exists; add --force"));
    }
    pending.emplace_back(path, contents, guard.place(pending.size()));
  }
  writeStreams();
  if (last) last();
  [[maybe_unused]] const SignalPause pause;  // all names or none
  for (PendingFile& file : pending) file.rename();
}

}  // namespace knotfit
