// SPDX-License-Identifier: MIT
// Files that appear whole or not at all.
#include "io/output.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

#include "base/fault.h"
#include "base/text.h"

namespace knotfit {
namespace {

namespace fs = std::filesystem;

volatile std::sig_atomic_t stopAsked = 0;
extern "C" void askToStop(int) { stopAsked = 1; }

// While it lives, Ctrl-C and a polite kill are noted and acted upon between two steps.
class SignalGuard {
 public:
  SignalGuard()
      : interrupt_(std::signal(SIGINT, askToStop)), end_(std::signal(SIGTERM, askToStop)) {}
  ~SignalGuard() {
    std::signal(SIGINT, interrupt_ == SIG_ERR ? SIG_DFL : interrupt_);
    std::signal(SIGTERM, end_ == SIG_ERR ? SIG_DFL : end_);
  }
  SignalGuard(const SignalGuard&) = delete;
  SignalGuard& operator=(const SignalGuard&) = delete;

 private:
  void (*interrupt_)(int);
  void (*end_)(int);
};

[[noreturn]] void cannotWrite(const std::string& path, const std::string& cause) {
  throw Fault(kOutput, cat(path, ": cannot be written: ", cause));
}

void writeAll(std::FILE* file, const std::string& path, const std::string& contents) {
  errno = 0;
  const bool ok = std::fwrite(contents.data(), 1, contents.size(), file) == contents.size() &&
                  std::fflush(file) == 0;
  if (!ok) cannotWrite(path, std::generic_category().message(errno ? errno : EIO));
}

struct Closer {
  void operator()(std::FILE* f) const { std::fclose(f); }
};

void writeTo(const std::string& where, const std::string& path, const std::string& contents,
             const char* mode) {
  const std::unique_ptr<std::FILE, Closer> file(std::fopen(where.c_str(), mode));
  if (!file) cannotWrite(path, std::generic_category().message(errno));
  writeAll(file.get(), path, contents);
}

// A temporary file with the contents, and where it goes in the end; removed if it stays.
class PendingFile {
 public:
  PendingFile(const std::string& path, const std::string& contents, int number)
      : target_(fs::is_symlink(path) ? fs::weakly_canonical(path) : fs::path(path)) {
    for (int k = 0;; ++k) {
      temporary_ = target_;
      temporary_ += cat(".knotfit", number, "-", k, ".tmp");
      if (!fs::exists(temporary_)) break;
    }
    try {
      writeTo(temporary_.string(), path, contents, "wbx");
    } catch (...) {
      drop();
      throw;
    }
    std::error_code ignored;
    const auto old = fs::status(target_, ignored);
    if (fs::is_regular_file(old)) fs::permissions(temporary_, old.permissions(), ignored);
  }
  ~PendingFile() { drop(); }
  PendingFile(PendingFile&& other) noexcept
      : target_(std::move(other.target_)), temporary_(std::move(other.temporary_)) {
    other.temporary_.clear();
  }
  PendingFile& operator=(PendingFile&&) = delete;

  void rename() {
    std::error_code error;
    fs::rename(temporary_, target_, error);
    if (error) cannotWrite(target_.string(), error.message());
    temporary_.clear();
  }

 private:
  void drop() noexcept {
    std::error_code ignored;
    if (!temporary_.empty()) fs::remove(temporary_, ignored);
  }
  fs::path target_, temporary_;
};

bool isSpecial(const std::string& path) {  // a device or a pipe: written to, never replaced
  std::error_code ignored;
  return fs::exists(path, ignored) && !fs::is_regular_file(path, ignored);
}

}  // namespace

void OutputSet::announce(const std::string& path) {
  if (std::count(announced_.begin(), announced_.end(), path)) {
    throw Fault(kUsage, cat(path, " is written twice; name each file once"));
  }
  announced_.push_back(path);
  if (path == "-") return;
  std::error_code ignored;
  const fs::path folder = fs::path(path).parent_path();
  if (fs::is_directory(path, ignored)) cannotWrite(path, "is a directory (give a file name)");
  if (isSpecial(path)) return;
  if (fs::exists(path, ignored) && !overwrite_) {
    throw Fault(kOutput, cat(path, " exists; add --force"));
  }
  if (!folder.empty() && !fs::is_directory(folder, ignored)) {
    cannotWrite(path, cat("there is no folder ", folder.string(), " (make it first)"));
  }
}

void OutputSet::add(std::string path, std::string contents) {
  files_.emplace_back(std::move(path), std::move(contents));
}

void OutputSet::commit() {
  const SignalGuard guard;
  std::vector<PendingFile> pending;
  int number = 0;
  for (const auto& [path, contents] : files_) {
    if (path == "-" || isSpecial(path)) continue;
    if (!overwrite_ && fs::exists(path)) throw Fault(kOutput, cat(path, " exists; add --force"));
    pending.emplace_back(path, contents, number++);
    if (stopAsked) break;
  }
  if (stopAsked) {
    pending.clear();
    std::_Exit(130);
  }
  for (PendingFile& file : pending) file.rename();
  for (const auto& [path, contents] : files_) {
    if (path == "-")
      writeAll(stdout, "standard output", contents);
    else if (isSpecial(path))
      writeTo(path, path, contents, "wb");
  }
}

}  // namespace knotfit
