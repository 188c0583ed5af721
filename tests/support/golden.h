// SPDX-License-Identifier: MIT
// Golden cases: text files with the inputs of class operations and their results, bit for bit.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace knotwork::test {

/// One input or result: a rows x cols array, column after column, or a line of text.
struct GoldenItem {
  std::string name, type;  // type: double, int, recipe or text
  bool isResult = false;
  int rows = 0, cols = 0;
  std::vector<double> values;  // integers too
  std::string text;
  std::string tolerance;  // a number t for |got - want| <= t max |want|, "exact", "loose" or "-"

  int toInt() const { return static_cast<int>(values.at(0)); }
  std::vector<int> ints() const { return {values.begin(), values.end()}; }
};

/// An operation with its arguments and results. Files without operations hold a single one.
struct GoldenStep {
  std::string operation;
  int object = 0;
  std::vector<GoldenItem> items;

  /// The item of that name; a missing one throws.
  const GoldenItem& in(std::string_view name) const;
  const GoldenItem& out(std::string_view name) const;
  bool hasIn(std::string_view name) const { return find(name, false) != nullptr; }
  bool hasOut(std::string_view name) const { return find(name, true) != nullptr; }

 private:
  const GoldenItem* find(std::string_view name, bool isResult) const;
  const GoldenItem& get(std::string_view name, bool isResult) const;
};

struct GoldenCase {
  std::string name, className, about;
  std::vector<GoldenStep> steps;
};

/// Reads one case; throws std::runtime_error with the place where a file is not as it should be.
GoldenCase readGolden(const std::string& path);

/// The files of tests/data/golden/`folder`, in the order of its index.
std::vector<std::string> goldenFiles(const std::string& folder);

}  // namespace knotwork::test
