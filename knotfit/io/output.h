// SPDX-License-Identifier: MIT
// Files that appear whole or not at all.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace knotfit {

/// Collects the files of one command and writes them in one go: each under a temporary name in its
/// folder, then all renamed. An error, a hang-up, Ctrl-C or a polite kill before the renaming
/// leaves everything as it was.
class OutputSet {
 public:
  explicit OutputSet(bool overwrite) : overwrite_(overwrite) {}

  /// Names a file that the command reads: no output announced later may be the same file, whatever
  /// its name. "-" is standard input.
  void protect(const std::string& input) { inputs_.push_back(input); }
  /// Faults when the file could not be written later on. Exit code 2: it is an input or announced
  /// already. Exit code 5: it exists and may not be overwritten, is a directory, or its folder does
  /// not exist or takes no files. "-" is standard output.
  void announce(const std::string& path);
  /// Adds contents for an announced file.
  void add(std::string path, std::string contents);
  /// Writes all: temporary files first, then what cannot be taken back (devices, pipes, standard
  /// output, what `last` prints), then renames. Faults: exit code 5, and whatever `last` throws.
  void commit(const std::function<void()>& last = {});

 private:
  void writeStreams();

  bool overwrite_;
  std::vector<std::string> inputs_, announced_;
  std::vector<std::pair<std::string, std::string>> files_;
};

}  // namespace knotfit
