// SPDX-License-Identifier: MIT
// Reading of files and standard input in bounded memory: a buffer of fixed size, and a line that
// crosses its end is put together apart. Files are never mapped or measured, so pipes and devices
// are read in the same way.
#include "io/byte_source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "base/fault.h"
#include "base/text.h"

namespace knotfit {
namespace {

// As much as a pipe holds on Linux: larger reads would not come back fuller.
constexpr std::size_t kBufferSize = 1 << 16;

std::FILE* opened(const std::string& path) {
  if (path == "-") return stdin;
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    throw Fault(kInput, cat(shownName(path), ": is a directory (give a file)"));
  }
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) {
    const std::string cause = std::generic_category().message(errno);
    throw Fault(kInput, cat(shownName(path), ": ", cause, " (check the name and its permissions)"));
  }
  return file;
}

}  // namespace

ByteSource::ByteSource(const std::string& path)
    : name_(path == "-" ? "standard input" : shownName(path)),
      file_(opened(path)),
      buffer_(kBufferSize) {}

bool ByteSource::fill() {
  errno = 0;
  begin_ = 0;
  end_ = std::fread(buffer_.data(), 1, buffer_.size(), file_.get());
  if (end_ == 0 && std::ferror(file_.get())) {
    throw Fault(kInput, cat(name_, ": ", std::generic_category().message(errno),
                            " (reading failed; try a copy of the file)"));
  }
  return end_ > 0;
}

bool ByteSource::nextLine(std::string_view& line) {
  longLine_.clear();
  if (begin_ == end_ && !fill()) return false;
  ++lineNumber_;
  for (;;) {
    const char* first = buffer_.data() + begin_;
    const auto* stop = static_cast<const char*>(std::memchr(first, '\n', end_ - begin_));
    const std::size_t n = stop ? static_cast<std::size_t>(stop - first) : end_ - begin_;
    // Text has none; a binary file or UTF-16 would otherwise fail somewhere with a stranger line.
    if (std::memchr(first, '\0', n)) fail("NUL byte", "this is no text file; convert it to CSV");
    if (longLine_.size() + n > kLongestLine) {
      fail(cat("line is longer than ", kLongestLine, " bytes"), "one point a line, please");
    }
    if (stop && longLine_.empty()) {
      line = std::string_view(first, n);
      begin_ += n + 1;
      break;
    }
    longLine_.append(first, n);
    begin_ += n + (stop ? 1 : 0);
    if (stop || !fill()) {
      line = longLine_;
      break;
    }
  }
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  // Spreadsheets put a byte order mark in front of UTF-8.
  if (lineNumber_ == 1 && line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);
  return true;
}

bool ByteSource::bytes(char* out, std::size_t n) {
  while (n > 0) {
    if (begin_ == end_ && !fill()) return false;
    const std::size_t part = std::min(n, end_ - begin_);
    std::memcpy(out, buffer_.data() + begin_, part);
    begin_ += part;
    out += part;
    n -= part;
  }
  return true;
}

void ByteSource::fail(const std::string& cause, const std::string& mend) const {
  failAt(lineNumber_, cause, mend);
}

void ByteSource::failAt(std::size_t line, const std::string& cause, const std::string& mend) const {
  const std::string place = line > 0 ? cat(":", line) : "";  // an empty input has no lines
  throw Fault(kInput, cat(name_, place, ": ", cause, " (", mend, ")"));
}

}  // namespace knotfit
