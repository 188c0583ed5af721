// SPDX-License-Identifier: MIT
// Reading of files and standard input in bounded memory: lines of limited length, or raw bytes.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace knotfit {

/// An open input. Faults (exit code 3) name the file, the line, the cause and the mend.
class ByteSource {
 public:
  /// Longest line accepted, in bytes.
  static constexpr std::size_t kLongestLine = std::size_t{1} << 22;

  /// Opens a file, or standard input for "-". A directory or an unreadable file is a fault.
  explicit ByteSource(const std::string& path);

  /// Reads the next line, without its end; CR LF counts as one end. NUL bytes and lines longer than
  /// kLongestLine are faults. `line` stays valid until the next call.
  /// @return false at the end of the input.
  bool nextLine(std::string_view& line);
  /// Reads exactly n bytes behind what was read so far. @return false when the input ends before.
  bool bytes(char* out, std::size_t n);
  /// Reads one byte behind what was read so far, counting lines. @return false at the end.
  bool nextByte(char& byte) {
    if (begin_ == end_ && !fill()) return false;
    byte = buffer_[begin_++];
    lineNumber_ += lineNumber_ == 0 || byte == '\n';
    return true;
  }

  /// Name used in messages, in quotes where it cannot be shown as it is.
  const std::string& name() const { return name_; }
  /// Number of the line read last, counted from 1.
  std::size_t lineNumber() const { return lineNumber_; }
  /// Ends with "name:line: cause (mend)".
  [[noreturn]] void fail(const std::string& cause, const std::string& mend) const;
  /// The same for a line read before.
  [[noreturn]] void failAt(std::size_t line, const std::string& cause,
                           const std::string& mend) const;

 private:
  struct Close {
    void operator()(std::FILE* f) const {
      if (f != stdin) std::fclose(f);
    }
  };
  bool fill();

  std::string name_;
  std::unique_ptr<std::FILE, Close> file_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0, end_ = 0;
  std::string longLine_;
  std::size_t lineNumber_ = 0;
};

}  // namespace knotfit
