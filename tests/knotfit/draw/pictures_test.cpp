// SPDX-License-Identifier: MIT
// Pictures of fits.
#include "draw/pictures.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <iterator>

#include "base/fault.h"
#include "base/text.h"
#include "draw/axes.h"
#include "draw/canvas.h"
#include "fit/curve_fit.h"
#include "fit/parameters.h"
#include "points.h"
#include "run.h"

namespace knotfit::test {
namespace {

TEST(Pictures, AreDrawnTheSameTwice) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  ASSERT_EQ(knotfit({"curve", "egg.csv", "--closed", "-o", "curve.json"}).code, 0);
  ASSERT_EQ(knotfit({"curve", "spring.csv", "-o", "space.json"}).code, 0);
  ASSERT_EQ(knotfit({"surface", "hill.csv", "--height", "-o", "surface.json"}).code, 0);
  const std::pair<const char*, const char*> kinds[] = {
      {"svg", "<?xml"}, {"png", "\x89PNG"}, {"pdf", "%PDF-"}};
  for (const std::string name : {"curve", "space", "surface"}) {
    for (const auto& [suffix, head] : kinds) {
      const std::string one = name + "1." + suffix, two = name + "2." + suffix;
      ASSERT_EQ(knotfit({"convert", name + ".json", "-o", one, "-o", two}).code, 0);
      EXPECT_EQ(contents(one).find(head), 0u);
      EXPECT_TRUE(contents(one) == contents(two)) << one;
    }
  }
  ASSERT_EQ(knotfit({"curve", "spring.csv", "-o", "a.png"}).code, 0);
  ASSERT_EQ(knotfit({"surface", "hill.csv", "--height", "-o", "b.png"}).code, 0);
  EXPECT_GT(contents("a.png").size(), contents("space1.png").size());  // data and residuals
  EXPECT_GT(contents("b.png").size(), contents("surface1.png").size() * 3 / 4);
}

TEST(Pictures, EndWithALineBeyondWhatCanBeDrawn) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  ASSERT_EQ(knotfit({"curve", "egg.csv", "--controls", "4", "-o", "fit.json"}).code, 0);
  Json fit = Json::parse(contents("fit.json"));
  fit["controls"] = {{-1.5e308, 0}, {1.5e308, 1}, {-1.5e308, 2}, {1.5e308, 3}};
  write("large.json", fit.dump());
  for (const char* picture : {"out.svg", "out.png", "out.pdf"}) {
    const Outcome o = knotfit({"convert", "large.json", "-o", picture});
    EXPECT_EQ(o.code, kOutput) << picture;
    EXPECT_TRUE(o.err.starts_with("the picture cannot be drawn: a control point")) << o.err;
  }
  write("large.csv", "-1.5e308,0\n0,1\n1,1\n1.5e308,2\n");
  const std::vector<std::string> readers[] = {
      {"curve", "large.csv", "-o", "new.svg"},
      {"check", "fit.json", "large.csv"},
      {"info", "large.csv"},
      {"surface", "hill.csv", "--height", "--spacing", "1e308,1", "-o", "new.svg"}};
  for (const auto& command : readers) {
    const Outcome o = knotfit(command);
    EXPECT_EQ(o.code, kInput) << command[0];
    EXPECT_NE(o.err.find("a coordinate is beyond 1e300"), std::string::npos) << o.err;
  }
}

// The numbers of the SVG paths that hold `colour`, path by path.
std::vector<std::vector<double>> paths(const std::string& svg, const std::string& colour) {
  std::vector<std::vector<double>> out;
  for (std::size_t at = svg.find("<path"); at != std::string::npos;
       at = svg.find("<path", at + 1)) {
    const std::string path = svg.substr(at, svg.find("/>", at) - at);
    if (path.find(colour) == std::string::npos) continue;
    std::string d = path.substr(path.find(" d=\"") + 4);
    d.erase(d.find('"'));
    for (char& c : d) c = std::isalpha(static_cast<unsigned char>(c)) ? ' ' : c;
    std::istringstream numbers(d);
    out.emplace_back(std::istream_iterator<double>(numbers), std::istream_iterator<double>());
  }
  return out;
}

PictureData dataOf(const CurveFit& fit, const PointSet& points) {
  return {&points, nullptr, &fit.parameters, &fit.distances};
}

TEST(Pictures, ResidualsStandAtTheirParametersAsHighAsTheirDistances) {
  const PointSet points = wave(25, 2, 4);
  FitOptions o;
  o.controls[0] = 8;
  const CurveFit fit = fitCurve(points, o);
  const std::string svg = pictureOf(fit.spline, dataOf(fit, points), PictureFormat::kSvg);
  std::vector<double> sticks;  // x, foot, x, tip
  for (const auto& path : paths(svg, "rgb(5%,40%,75%)")) {
    if (path.size() == 4 * 25 && path[0] == path[2] && sticks.empty()) sticks = path;
  }
  ASSERT_EQ(sticks.size(), 100u) << "no path of 25 sticks";
  const std::size_t worst = static_cast<std::size_t>(
      std::max_element(fit.distances.begin(), fit.distances.end()) - fit.distances.begin());
  const double left = sticks[0], width = sticks[4 * 24] - left;
  const double high = sticks[4 * worst + 1] - sticks[4 * worst + 3];
  EXPECT_GT(width, 300);
  EXPECT_GT(high, 80);
  for (std::size_t i = 0; i < 25; ++i) {
    EXPECT_NEAR(sticks[4 * i], left + width * fit.parameters[i], 0.01);
    EXPECT_NEAR(sticks[4 * i + 1] - sticks[4 * i + 3],
                high * fit.distances[i] / fit.distances[worst], 0.01);
  }
}

TEST(Pictures, LongTitlesShrinkToTheirRoom) {
  for (const std::size_t length : {10, 60, 200}) {
    Canvas canvas(PictureFormat::kSvg, 400, 100);
    canvas.fittedText({20, 50}, std::string(length, 'm'), 13, 300, true);
    const std::string svg = canvas.finish();
    double right = 0;  // where the last letter begins
    for (std::size_t at = svg.find(" x=\"", svg.find("</defs>")); at != std::string::npos;
         at = svg.find(" x=\"", at + 4)) {
      right = std::max(right, std::stod(svg.substr(at + 4)));
    }
    EXPECT_GT(right, length > 20 ? 280 : 50);
    EXPECT_LT(right, 320) << length;
  }
}

TEST(Pictures, ManyPointsTakeFewBytes) {
  PointSet points = wave(50000, 3, 8);
  Spline s;
  s.size[0] = 2000;
  s.knots[0] = uniformKnots(3, s.size[0]);
  for (std::size_t i = 0; i < 3 * s.size[0]; ++i)
    s.controls.push_back(points.coords[75 * (i / 3) + i % 3]);
  std::vector<double> u, d;
  for (std::size_t i = 0; i < 50000; ++i) {
    u.push_back(static_cast<double>(i) / 49999);
    d.push_back(std::abs(std::sin(static_cast<double>(i))));
  }
  const std::string svg = pictureOf(s, {&points, nullptr, &u, &d}, PictureFormat::kSvg);
  EXPECT_LT(svg.size(), 6000000u);
}

TEST(Pictures, LabelsOfAnAxisAllDiffer) {
  const std::pair<double, double> ranges[] = {
      {0, 1},         {-2.5, 3.5},       {4512350, 4512396}, {-4512396, -4512350},
      {1e9, 1e9 + 5}, {0.1, 0.1 + 1e-7}, {1e200, 3e200},     {-1e-9, 1e-9},
      {-0.3, 1e7},    {1e-200, 2e-200}};
  for (const auto& [low, high] : ranges) {
    const Ticks ticks = roundTicks({low, high}, 5);
    ASSERT_GE(ticks.labels.size(), 3u) << low;
    for (std::size_t i = 0; i < ticks.labels.size(); ++i) {
      double label = 0;
      ASSERT_EQ(parseNumber(ticks.labels[i], label), NumberFault::kNone);
      EXPECT_NEAR(label + ticks.origin, ticks.places[i],
                  1e-9 * (high - low) + 1e-15 * std::abs(low))
          << low;
      EXPECT_NE(ticks.labels[i], "-0");
      EXPECT_LE(ticks.labels[i].size(), 9u) << ticks.labels[i];
      EXPECT_TRUE(i == 0 || ticks.labels[i] != ticks.labels[i - 1]) << ticks.labels[i];
    }
  }
  EXPECT_EQ(roundTicks({4512350, 4512396}, 5).named("x, mm"), "x - 4510000, mm");
  EXPECT_EQ(roundTicks({-4512396, -4512350}, 5).named("x, mm"), "x + 4520000, mm");
  EXPECT_EQ(roundTicks({0, 1}, 5).named("x, mm"), "x, mm");
}

// The darkest cell of the map is that of the grid point furthest away, at its place within the
// frame.
TEST(Pictures, ResidualMapShowsTheWorstPointAtItsRowAndColumn) {
  const Folder folder;
  ASSERT_EQ(knotfit({"demo", "."}).code, 0);
  const std::vector<std::string> fit = {"surface", "hill.csv", "--height", "--controls", "6,6"};
  const Json r = report(fit);
  ASSERT_EQ(knotfit({fit[0], fit[1], fit[2], fit[3], fit[4], "-o", "hill.svg"}).code, 0);
  const std::string svg = contents("hill.svg");
  const auto dark = paths(svg, "fill:rgb(13%,10%,30%)");
  ASSERT_EQ(dark.size(), 1u);
  const double x = (dark[0][0] + dark[0][2]) / 2, y = (dark[0][1] + dark[0][5]) / 2;
  bool framed = false;
  for (const auto& p : paths(svg, "stroke:rgb(10%,10%,12%)")) {
    if (p.size() != 10 || x < p[0] || x > p[2] || y < p[1] || y > p[5]) continue;
    framed = true;
    const double row = r["error"]["row"], column = r["error"]["column"];
    EXPECT_NEAR((x - p[0]) / (p[2] - p[0]), (row - 0.5) / 25, 0.003);
    EXPECT_NEAR((p[5] - y) / (p[5] - p[1]), (column - 0.5) / 20, 0.003);
  }
  EXPECT_TRUE(framed);
}

}  // namespace
}  // namespace knotfit::test
