// SPDX-License-Identifier: MIT
// Golden cases: text files with the inputs of class operations and their results, bit for bit.
#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <vector>

#include "knotwork/geometry/tuple_vector.h"
#include "support/values.h"

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

/// A step under test: its inputs in the library's classes; results are compared if it has them, and
/// counted.
class GoldenCheck {
 public:
  /// @param exactly  every result must be equal as a number, whatever tolerance its item has.
  GoldenCheck(const GoldenStep& step, bool exactly) : step_(step), exactly_(exactly) {}

  bool has(std::string_view name) const { return step_.hasIn(name); }
  const GoldenItem& item(std::string_view name) const { return step_.in(name); }
  const Values& values(std::string_view name) const { return item(name).values; }
  double number(std::string_view name) const { return values(name).at(0); }
  int integer(std::string_view name) const { return item(name).toInt(); }
  std::vector<int> ints(std::string_view name) const { return item(name).ints(); }
  DoubleVec vector(std::string_view name) const { return vectorOf(values(name)); }
  DoubleGenMat matrix(std::string_view name) const {
    const GoldenItem& it = item(name);
    return DoubleGenMat(it.values.data(), unsigned(it.rows), unsigned(it.cols));
  }
  TtupleVector points(std::string_view name) const {
    const GoldenItem& it = item(name);
    return TtupleVector(it.rows, it.cols, it.values.data());
  }

  bool wants(std::string_view name) const { return step_.hasOut(name); }
  const Values& wanted(std::string_view name) const { return step_.out(name).values; }
  void is(std::string_view name, const Values& got);
  void is(std::string_view name, const auto& got) {
    if constexpr (std::convertible_to<decltype(got), double>)
      is(name, Values{static_cast<double>(got)});
    else
      is(name, valuesOf(got));
  }

  /// Expects that no result of the step was left out, but for the reports. @return their number.
  int finish() const;

 private:
  const GoldenStep& step_;
  bool exactly_;
  int compared_ = 0;
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
