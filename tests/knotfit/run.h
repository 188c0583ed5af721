// SPDX-License-Identifier: MIT
// Runs the program inside the test, in a folder of its own.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "cli/app.h"

namespace knotfit::test {

using Json = nlohmann::ordered_json;

struct Outcome {
  int code;
  std::string out, err;
};

inline Outcome knotfit(const std::vector<std::string>& arguments) {
  std::ostringstream out, err;
  const int code = run(arguments, {out, err});
  return {code, out.str(), err.str()};
}

/// A fresh folder that is the current one while it lives. Its name is drawn until it is new, so
/// that runs beside each other never meet and nobody can lay one out beforehand.
class Folder {
 public:
  Folder() : before_(std::filesystem::current_path()) {
    std::random_device draw;
    do {
      path_ = std::filesystem::temp_directory_path() / ("knotfit_test_" + std::to_string(draw()));
    } while (!std::filesystem::create_directory(path_));
    std::filesystem::current_path(path_);
  }
  ~Folder() {
    std::filesystem::current_path(before_);
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::size_t files() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(path_), {}));
  }

 private:
  std::filesystem::path before_, path_;
};

inline std::string data(const std::string& name) { return KNOTFIT_DATA "/" + name; }

inline std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void write(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

inline std::vector<std::string> wordsOf(const std::string& line) {
  std::istringstream in(line);
  return {std::istream_iterator<std::string>(in), {}};
}

/// The blocks of lines of a table in tests/data/knotfit, which are parted by empty lines; comments
/// begin with '#'.
inline std::vector<std::vector<std::string>> blocksOf(const std::string& table) {
  std::ifstream file(KNOTWORK_TEST_DATA "/knotfit/" + table);
  std::vector<std::vector<std::string>> blocks(1);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() && !blocks.back().empty()) blocks.emplace_back();
    if (!line.empty() && line.front() != '#') blocks.back().push_back(line);
  }
  if (blocks.back().empty()) blocks.pop_back();
  return blocks;
}

/// Runs a command that must succeed and leave its report in report.json.
inline Json report(std::vector<std::string> arguments, int code = 0) {
  arguments.insert(arguments.end(), {"--report", "report.json", "--force", "-q"});
  const Outcome o = knotfit(arguments);
  EXPECT_EQ(o.code, code) << o.err;
  return o.code == code ? Json::parse(contents("report.json")) : Json();
}

}  // namespace knotfit::test
