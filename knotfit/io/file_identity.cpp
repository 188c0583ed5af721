// SPDX-License-Identifier: MIT
// Which names lead to one file. POSIX tells by device and number, of open streams as well;
// elsewhere the standard library compares names that exist, and streams are taken for different.
#include "io/file_identity.h"

#include <system_error>

#if !defined(_WIN32)
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace knotfit {

namespace fs = std::filesystem;

#if !defined(_WIN32)
namespace {

bool statusOf(const std::string& path, int stream, struct stat& status) {
  const int failed = path == "-" ? fstat(stream, &status) : stat(path.c_str(), &status);
  return failed == 0 && S_ISREG(status.st_mode);
}

}  // namespace

bool isSameFile(const std::string& input, const std::string& output) {
  struct stat a {
  }, b{};
  return statusOf(input, STDIN_FILENO, a) && statusOf(output, STDOUT_FILENO, b) &&
         a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool takesNewFiles(const fs::path& folder) {
  return access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) == 0;
}
#else
bool isSameFile(const std::string& input, const std::string& output) {
  std::error_code ignored;
  return fs::is_regular_file(input, ignored) && fs::equivalent(input, output, ignored);
}

bool takesNewFiles(const fs::path&) { return true; }
#endif

fs::path linkTarget(const fs::path& path) {
  constexpr int kMostLinks = 40;  // as many as Linux follows
  std::error_code ignored;
  fs::path at = path;
  for (int i = 0; i < kMostLinks && fs::is_symlink(at, ignored); ++i) {
    const fs::path next = fs::read_symlink(at, ignored);
    at = next.is_absolute() ? next : at.parent_path() / next;
  }
  return at;
}

}  // namespace knotfit
