// SPDX-License-Identifier: MIT
// What is written reads back the same, whole, and byte for byte again.
#include <clocale>
#include <cmath>
#include <locale>

#include "io/fit_json.h"
#include "io/readers.h"
#include "io/writers.h"
#include "run.h"

namespace knotfit::test {
namespace {

// Fits of the demonstration data in all formats.
class Formats : public ::testing::Test {
 protected:
  Formats() {
    EXPECT_EQ(knotfit({"demo", "."}).code, 0);
    fit("curve", {"curve", "egg.csv", "--closed", "--units", "in"});
    fit("space", {"curve", "spring.csv", "--units", "cm"});
    fit("surface", {"surface", "hill.csv", "--height", "--spacing", "1e-7,3", "--units", "m"});
  }

  void fit(const std::string& name, std::vector<std::string> arguments) {
    for (const char* suffix : {"json", "igs", "stp", "obj", "csv", "ply"}) {
      arguments.insert(arguments.end(), {"-o", name + "." + suffix});
    }
    arguments.push_back("--force");
    const Outcome o = knotfit(arguments);
    EXPECT_EQ(o.code, 0) << o.err;
  }

  const Folder folder_;
  const std::vector<std::string> names_ = {"curve", "space", "surface"};
};

void expectSame(const Spline& a, const Spline& b) {
  EXPECT_EQ(a.knots, b.knots);
  EXPECT_EQ(a.controls, b.controls);
  EXPECT_EQ(a.size, b.size);
  EXPECT_EQ(a.degree, b.degree);
}

TEST_F(Formats, JsonReadsBackTheSame) {
  for (const std::string& name : names_) {
    const StoredFit s = readFit(name + ".json");
    EXPECT_EQ(fitJson(s), contents(name + ".json"));
    ASSERT_EQ(knotfit({"convert", name + ".json", "-o", name + "2.json"}).code, 0);
    EXPECT_EQ(contents(name + "2.json"), contents(name + ".json"));
  }
}

// A reader of just what free-form OBJ files hold.
Spline readObj(const std::string& path) {
  Spline s;
  std::ifstream file(path);
  std::vector<double> points;  // u fastest
  for (std::string text; std::getline(file, text);) {
    std::istringstream words(text);
    std::string key, direction;
    words >> key;
    if (key == "v") {
      double x, y, z;
      words >> x >> y >> z;
      points.insert(points.end(), {x, y, z});
    } else if (key == "deg") {
      words >> s.degree[0];
      if (words >> s.degree[1]) s.directions = 2;
    } else if (key == "parm") {
      words >> direction;
      for (double t; words >> t;) s.knots[direction == "v"].push_back(t);
    }
  }
  for (std::size_t d = 0; d < static_cast<std::size_t>(s.directions); ++d) {
    s.size[d] = s.knots[d].size() - static_cast<std::size_t>(s.degree[d]) - 1;
  }
  for (std::size_t i = 0; i < s.size[0]; ++i) {
    for (std::size_t j = 0; j < s.size[1]; ++j) {
      const double* p = &points[3 * (j * s.size[0] + i)];
      s.controls.insert(s.controls.end(), p, p + 3);
    }
  }
  return s;
}

TEST_F(Formats, ObjReadsBackTheSame) {
  for (const std::string name : {"space", "surface"}) {
    SCOPED_TRACE(name);
    Spline s = readFit(name + ".json").spline;
    if (s.isCurve()) s.degree[1] = readObj(name + ".obj").degree[1];
    expectSame(readObj(name + ".obj"), s);
  }
}

TEST_F(Formats, IgesKeepsItsColumnsAndItsNumbers) {
  for (const std::string& name : names_) {
    SCOPED_TRACE(name);
    std::istringstream file(contents(name + ".igs"));
    std::string data, sections;
    int last = 0;
    for (std::string text; std::getline(file, text);) {
      ASSERT_EQ(text.size(), 80u);
      const char section = text[72];
      if (sections.empty() || sections.back() != section) sections += section, last = 0;
      EXPECT_EQ(std::stoi(text.substr(73)), ++last);
      if (section == 'P') {
        EXPECT_EQ(text.substr(64, 8), "       1");
        data += text.substr(0, 64);
      }
    }
    EXPECT_EQ(sections, "SGDPT");
    std::vector<double> numbers;
    std::vector<std::string> fields;
    for (std::size_t at = 0; at < data.size();) {
      const std::size_t end = data.find_first_of(",;", at);
      fields.push_back(data.substr(at, end - at));
      fields.back().erase(0, fields.back().find_first_not_of(' '));
      numbers.push_back(std::stod(fields.back()));
      at = data[end] == ';' ? data.size() : end + 1;
    }
    const Spline s = readFit(name + ".json").spline;
    const std::size_t head = s.isCurve() ? 7 : 10;
    for (std::size_t i = head; i < fields.size(); ++i) {
      EXPECT_NE(fields[i].find('.'), std::string::npos) << fields[i];
    }
    const std::size_t knots = s.knots[0].size() + s.knots[1].size(), points = s.count();
    ASSERT_EQ(numbers.size(), head + knots + 4 * points + (s.isCurve() ? 5 : 4));
    EXPECT_TRUE(std::equal(s.knots[0].begin(), s.knots[0].end(), &numbers[head]));
    for (std::size_t i = 0; i < s.size[0]; ++i) {
      for (std::size_t j = 0; j < s.size[1]; ++j) {
        for (int c = 0; c < s.dim; ++c) {
          EXPECT_EQ(numbers[head + knots + points + 3 * (j * s.size[0] + i) +
                            static_cast<std::size_t>(c)],
                    s.control(i, j)[c]);
        }
      }
    }
  }
  EXPECT_NE(contents("curve.igs").find(",1,2HIN,"), std::string::npos);
  EXPECT_NE(contents("space.igs").find(",10,2HCM,"), std::string::npos);
  EXPECT_NE(contents("surface.igs").find(",6,1HM,"), std::string::npos);
  EXPECT_NE(contents("curve.igs").find("126,14,3,1,1,1,0,"), std::string::npos);
  EXPECT_NE(contents("space.igs").find("126,29,3,0,0,1,0,"), std::string::npos);
}

TEST_F(Formats, StepListsDistinctKnotsWithTheirTimes) {
  const std::string text = contents("space.stp");
  EXPECT_EQ(text.find("ISO-10303-21;\nHEADER;\n"), 0u);
  EXPECT_NE(text.find("B_SPLINE_CURVE_WITH_KNOTS('',3,("), std::string::npos);
  EXPECT_NE(text.find(".UNSPECIFIED.,.F.,.F.,(4,1,1,"), std::string::npos);
  EXPECT_NE(text.find(",1,4),(0.,"), std::string::npos);
  EXPECT_NE(text.find("SI_UNIT(.CENTI.,.METRE.)"), std::string::npos);
  EXPECT_NE(contents("surface.stp").find("GEOMETRICALLY_BOUNDED_SURFACE_SHAPE_REPRESENTATION"),
            std::string::npos);
}

TEST_F(Formats, PlyAndCsvHoldPointsOfTheShape) {
  const PointSet mesh = readPoints("surface.ply", {});
  PointOptions columns;
  columns.columns = "x,y,z";
  EXPECT_EQ(readPoints("surface.csv", columns).coords, mesh.coords);
  EXPECT_EQ(readPoints("space.csv", columns).coords, readPoints("space.ply", {}).coords);
  const Spline s = readFit("surface.json").spline;
  EXPECT_EQ(mesh.count(), (8 * (s.size[0] - 3) + 1) * (8 * (s.size[1] - 3) + 1));
}

// Decimal comma and grouped digits, as the streams of C++ would write them.
struct Comma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\1"; }
};

TEST_F(Formats, TwoRunsAndAnotherLocaleGiveTheSameBytes) {
  const std::vector<std::string> suffixes = {".json", ".igs", ".stp", ".obj", ".csv", ".ply"};
  std::vector<std::string> first;
  for (const std::string& name : names_) {
    for (const std::string& suffix : suffixes) first.push_back(contents(name + suffix));
  }
  for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "C.UTF-8"}) {
    if (std::setlocale(LC_ALL, name)) break;  // the comma of C, where such a locale is installed
  }
  const std::locale before = std::locale::global(std::locale(std::locale(), new Comma));
  fit("curve", {"curve", "egg.csv", "--closed", "--units", "in"});
  fit("space", {"curve", "spring.csv", "--units", "cm"});
  fit("surface", {"surface", "hill.csv", "--height", "--spacing", "1e-7,3", "--units", "m"});
  std::locale::global(before);
  std::setlocale(LC_ALL, "C");
  std::size_t k = 0;
  for (const std::string& name : names_) {
    for (const std::string& suffix : suffixes) {
      EXPECT_TRUE(contents(name + suffix) == first[k++]) << name << suffix;
    }
  }
}

TEST_F(Formats, OverwritesOnForceAloneAndKeepsLinksAndModes) {
  namespace fs = std::filesystem;
  write("old.igs", "old");
  fs::permissions("old.igs", fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(knotfit({"convert", "curve.json", "-o", "new.stp", "-o", "old.igs"}).code, 5);
  EXPECT_FALSE(fs::exists("new.stp"));
  EXPECT_EQ(contents("old.igs"), "old");
  fs::create_symlink("old.igs", "link.igs");
  EXPECT_EQ(knotfit({"convert", "curve.json", "-o", "link.igs", "--force"}).code, 0);
  EXPECT_TRUE(fs::is_symlink("link.igs"));
  EXPECT_EQ(contents("old.igs"), contents("curve.igs"));
  EXPECT_EQ(fs::status("old.igs").permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

}  // namespace
}  // namespace knotfit::test
