// SPDX-License-Identifier: MIT
// Files that appear whole or not at all.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace knotfit {

/// Collects the files of one command and writes them in one go: each under a temporary name in its
/// folder, then all renamed. An error or Ctrl-C before the renaming leaves everything as it was.
class OutputSet {
 public:
  explicit OutputSet(bool overwrite) : overwrite_(overwrite) {}

  /// Faults (exit code 5) when the file could not be written later on: it exists and may not be
  /// overwritten, is a directory, or its folder does not exist. "-" is standard output.
  void announce(const std::string& path);
  /// Adds contents for an announced file.
  void add(std::string path, std::string contents);
  /// Writes all. Faults: exit code 5.
  void commit();

 private:
  bool overwrite_;
  std::vector<std::string> announced_;
  std::vector<std::pair<std::string, std::string>> files_;
};

}  // namespace knotfit
