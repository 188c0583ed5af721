// SPDX-License-Identifier: MIT
// Reads golden cases.
#include "support/golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace knotwork::test {
namespace {

/// The tokens of a file, with complaints that name it.
class Reader {
 public:
  explicit Reader(const std::string& path) : path_(path), file_(path) {
    if (!file_) fail("cannot be opened");
  }

  [[noreturn]] void fail(const std::string& what) const {
    throw std::runtime_error(path_ + ": " + what);
  }
  std::string word() {
    std::string token;
    if (!(file_ >> token)) fail("ends early");
    return token;
  }
  std::string restOfLine() {
    std::string line;
    std::getline(file_, line);
    const std::size_t start = line.find_first_not_of(' ');
    return start == std::string::npos ? std::string() : line.substr(start);
  }
  int integer() { return static_cast<int>(number()); }
  double number() {
    const std::string token = word();
    char* end = nullptr;
    const double value = std::strtod(token.c_str(), &end);
    if (*end != '\0') fail("not a number: " + token);
    return value;
  }

 private:
  std::string path_;
  std::ifstream file_;
};

// A recipe of eight integers p stands for ((p0 + p1 i + p2 j + p3 i j + p4 i^2 j) mod p5 - p6) /
// p7.
std::vector<double> expandRecipe(Reader& reader, int rows, int cols) {
  long long p[8];
  for (long long& parameter : p) parameter = reader.integer();
  std::vector<double> values;
  for (long long j = 0; j < cols; ++j)
    for (long long i = 0; i < rows; ++i) {
      const long long sum = p[0] + p[1] * i + p[2] * j + p[3] * i * j + p[4] * i * i * j;
      values.push_back(static_cast<double>(sum % p[5] - p[6]) / static_cast<double>(p[7]));
    }
  return values;
}

GoldenItem readItem(Reader& reader, bool isResult) {
  GoldenItem item;
  item.isResult = isResult;
  item.name = reader.word();
  item.type = reader.word();
  if (item.type == "text") {
    item.text = reader.restOfLine();
    return item;
  }
  item.rows = reader.integer();
  item.cols = reader.integer();
  item.tolerance = reader.word();
  if (item.type == "recipe") {
    item.values = expandRecipe(reader, item.rows, item.cols);
  } else {
    for (int left = item.rows * item.cols; left > 0; --left) item.values.push_back(reader.number());
  }
  return item;
}

}  // namespace

const GoldenItem* GoldenStep::find(std::string_view name, bool isResult) const {
  for (const GoldenItem& item : items)
    if (item.isResult == isResult && item.name == name) return &item;
  return nullptr;
}

const GoldenItem& GoldenStep::get(std::string_view name, bool isResult) const {
  if (const GoldenItem* item = find(name, isResult)) return *item;
  throw std::runtime_error("no golden item " + std::string(name));
}

const GoldenItem& GoldenStep::in(std::string_view name) const { return get(name, false); }
const GoldenItem& GoldenStep::out(std::string_view name) const { return get(name, true); }

void GoldenCheck::is(std::string_view name, const Values& got) {
  if (!wants(name)) return;
  ++compared_;
  const GoldenItem& want = step_.out(name);
  double margin = 0;
  if (!exactly_ && want.tolerance != "exact") {
    for (const double value : want.values) margin = std::max(margin, std::abs(value));
    margin = std::stod(want.tolerance) * (margin == 0 ? 1 : margin);
  }
  const auto same = [margin](double x, double y) {
    return x == y || std::abs(x - y) <= margin || (std::isnan(x) && std::isnan(y));
  };
  EXPECT_TRUE(std::ranges::equal(got, want.values, same))
      << name << testing::PrintToString(got) << "\nnot " << testing::PrintToString(want.values);
}

int GoldenCheck::finish() const {
  EXPECT_EQ(compared_, std::ranges::count_if(step_.items, [](const GoldenItem& item) {
              return item.isResult && item.name != "report";
            }));
  return compared_;
}

GoldenCase readGolden(const std::string& path) {
  Reader reader(path);
  GoldenCase golden;
  reader.restOfLine();  // format and version
  for (std::string key = reader.word(); key != "end"; key = reader.word()) {
    if (key == "case") {
      golden.name = reader.word();
    } else if (key == "class") {
      golden.className = reader.word();
    } else if (key == "about") {
      golden.about = reader.restOfLine();
    } else if (key == "op") {
      const std::string operation = reader.word();
      golden.steps.push_back({operation, reader.integer(), {}});
    } else if (key == "in" || key == "out") {
      if (golden.steps.empty()) golden.steps.emplace_back();
      golden.steps.back().items.push_back(readItem(reader, key == "out"));
    } else {
      reader.fail("unknown key " + key);
    }
  }
  return golden;
}

std::vector<std::string> goldenFiles(const std::string& folder) {
  const std::string directory = std::string(KNOTWORK_TEST_DATA) + "/golden/" + folder + "/";
  std::ifstream index(directory + "index.txt");
  std::vector<std::string> files;
  for (std::string line; std::getline(index, line);) {
    std::string file;
    if (std::istringstream(line) >> file) files.push_back(directory + file);
  }
  return files;
}

}  // namespace knotwork::test
