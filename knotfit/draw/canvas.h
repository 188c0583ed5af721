// SPDX-License-Identifier: MIT
// A page to draw on, through Cairo. Places are in points, 72 to the inch, from the top left corner.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <cairo.h>

#include "draw/pictures.h"

namespace knotfit {

struct Place {
  double x = 0, y = 0;
};

struct Rect {
  double x = 0, y = 0, width = 0, height = 0;
  double right() const { return x + width; }
  double bottom() const { return y + height; }
};

struct Colour {
  double red = 0, green = 0, blue = 0;
};

inline constexpr Colour kInk{0.1, 0.1, 0.12}, kFaint{0.82, 0.82, 0.84}, kMuted{0.5, 0.5, 0.54},
    kDatum{0.05, 0.4, 0.75}, kShape{0.75, 0.12, 0.1};

enum class Anchor { kStart, kMiddle, kEnd };

/// One page of SVG, PNG (at twice the size) or PDF.
class Canvas {
 public:
  Canvas(PictureFormat format, double width, double height);

  void polyline(const std::vector<Place>& line, Colour colour, double width, bool dashed = false);
  void polygon(const std::vector<Place>& outline, Colour fill);
  void ring(Place centre, double radius, Colour colour, double width);
  void dot(Place centre, double radius, Colour colour);
  /// Many dots as one path, which takes a tenth of the bytes.
  void dots(const std::vector<Place>& centres, double radius, Colour colour);
  /// Lines between the places with even and odd numbers, as one path.
  void segments(const std::vector<Place>& ends, Colour colour, double width);
  void square(Place centre, double side, Colour colour, double width);
  void rectangle(const Rect& r, Colour fill);
  void frame(const Rect& r, Colour colour, double width);
  /// Text whose vertical middle is at `at`; turned a quarter anticlockwise when `upright`.
  void text(Place at, const std::string& text, double size, Anchor anchor, Colour colour = kInk,
            bool upright = false, bool bold = false);
  /// Text from `at` to the right, smaller where it would take more than `room`.
  void fittedText(Place at, const std::string& text, double size, double room, bool bold = false);
  /// @return width of the text.
  double textWidth(const std::string& text, double size, bool bold = false);
  /// Restricts drawing to a rectangle until `unclip`.
  void clip(const Rect& r);
  void unclip();

  /// @return the finished file; nothing can be drawn afterwards.
  std::string finish();

 private:
  void path(const std::vector<Place>& line);
  void useFont(double size, bool bold);
  void use(Colour colour) {
    cairo_set_source_rgb(cairo_.get(), colour.red, colour.green, colour.blue);
  }

  PictureFormat format_;
  std::string bytes_;
  std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface_;
  std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cairo_;
};

}  // namespace knotfit
