// SPDX-License-Identifier: MIT
// A page to draw on, through Cairo. What one figure leaves (colour, width, dashes, path) the next
// one would take over, so each sets all that it uses. Files hold neither a date nor a running
// number: the same picture is the same bytes.
#include "draw/canvas.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <new>
#include <string_view>

#include "base/fault.h"
#include "base/text.h"

namespace knotfit {
namespace {

constexpr double kPngScale = 2;  // pixels to the point: sharp in print and on fine screens
constexpr double kTurn = 6.283185307179586;

// Called from C, which no exception may pass through.
cairo_status_t append(void* closure, const unsigned char* data, unsigned length) {
  try {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  } catch (const std::bad_alloc&) {
    return CAIRO_STATUS_NO_MEMORY;
  }
  return CAIRO_STATUS_SUCCESS;
}

// Every call before may have failed: Cairo keeps the first cause. What is left besides memory are
// numbers that its coordinates cannot hold.
void require(cairo_status_t status) {
  if (status == CAIRO_STATUS_SUCCESS) return;
  if (status == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
  throw Fault(kOutput, cat("the picture cannot be drawn: ", cairo_status_to_string(status),
                           " (measure in other units, or leave the picture out)"));
}

cairo_surface_t* newSurface(PictureFormat format, double width, double height, std::string* bytes) {
  if (format == PictureFormat::kSvg)
    return cairo_svg_surface_create_for_stream(append, bytes, width, height);
  if (format == PictureFormat::kPdf) {
    cairo_surface_t* pdf = cairo_pdf_surface_create_for_stream(append, bytes, width, height);
    cairo_pdf_surface_set_metadata(pdf, CAIRO_PDF_METADATA_CREATE_DATE, "2000-01-01T00:00:00Z");
    cairo_pdf_surface_set_metadata(pdf, CAIRO_PDF_METADATA_CREATOR, "knotfit");
    return pdf;
  }
  return cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(width * kPngScale),
                                    static_cast<int>(height * kPngScale));
}

// Cairo numbers its pages through the whole process; the same picture must be the same file.
void forgetPageNumber(std::string& svg) {
  constexpr std::string_view kName = "id=\"surface";
  const std::size_t at = svg.find(kName);
  if (at == std::string::npos) return;
  const std::size_t digits = at + kName.size();
  svg.erase(digits, svg.find('"', digits) - digits);
}

}  // namespace

Canvas::Canvas(PictureFormat format, double width, double height)
    : format_(format),
      surface_(newSurface(format, width, height, &bytes_), cairo_surface_destroy),
      cairo_(cairo_create(surface_.get()), cairo_destroy) {
  require(cairo_status(cairo_.get()));
  if (format == PictureFormat::kPng) cairo_scale(cairo_.get(), kPngScale, kPngScale);
  cairo_set_line_join(cairo_.get(), CAIRO_LINE_JOIN_ROUND);
  cairo_set_line_cap(cairo_.get(), CAIRO_LINE_CAP_ROUND);
  rectangle({0, 0, width, height}, {1, 1, 1});
}

void Canvas::path(const std::vector<Place>& line) {
  cairo_new_path(cairo_.get());
  for (const Place& p : line) cairo_line_to(cairo_.get(), p.x, p.y);
}

void Canvas::polyline(const std::vector<Place>& line, Colour colour, double width, bool dashed) {
  const double pattern[] = {4, 3};
  path(line);
  use(colour);
  cairo_set_line_width(cairo_.get(), width);
  cairo_set_dash(cairo_.get(), pattern, dashed ? 2 : 0, 0);
  cairo_stroke(cairo_.get());
}

void Canvas::polygon(const std::vector<Place>& outline, Colour fill) {
  path(outline);
  cairo_close_path(cairo_.get());
  use(fill);
  cairo_fill_preserve(cairo_.get());
  cairo_set_line_width(cairo_.get(), 0.5);  // covers the seam to the neighbour
  cairo_set_dash(cairo_.get(), nullptr, 0, 0);
  cairo_stroke(cairo_.get());
}

void Canvas::ring(Place centre, double radius, Colour colour, double width) {
  cairo_new_path(cairo_.get());
  cairo_arc(cairo_.get(), centre.x, centre.y, radius, 0, kTurn);
  use(colour);
  cairo_set_line_width(cairo_.get(), width);
  cairo_set_dash(cairo_.get(), nullptr, 0, 0);
  cairo_stroke(cairo_.get());
}

void Canvas::dot(Place centre, double radius, Colour colour) {
  cairo_new_path(cairo_.get());
  cairo_arc(cairo_.get(), centre.x, centre.y, radius, 0, kTurn);
  use(colour);
  cairo_fill(cairo_.get());
}

// A line without length has round ends all the same.
void Canvas::dots(const std::vector<Place>& centres, double radius, Colour colour) {
  std::vector<Place> ends;
  for (const Place& p : centres) ends.insert(ends.end(), {p, p});
  segments(ends, colour, 2 * radius);
}

void Canvas::segments(const std::vector<Place>& ends, Colour colour, double width) {
  cairo_new_path(cairo_.get());
  for (std::size_t i = 0; i + 1 < ends.size(); i += 2) {
    cairo_move_to(cairo_.get(), ends[i].x, ends[i].y);
    cairo_line_to(cairo_.get(), ends[i + 1].x, ends[i + 1].y);
  }
  use(colour);
  cairo_set_line_width(cairo_.get(), width);
  cairo_set_dash(cairo_.get(), nullptr, 0, 0);
  cairo_stroke(cairo_.get());
}

void Canvas::square(Place c, double side, Colour colour, double width) {
  frame({c.x - side / 2, c.y - side / 2, side, side}, colour, width);
}

void Canvas::rectangle(const Rect& r, Colour fill) {
  cairo_new_path(cairo_.get());
  cairo_rectangle(cairo_.get(), r.x, r.y, r.width, r.height);
  use(fill);
  cairo_fill(cairo_.get());
}

void Canvas::frame(const Rect& r, Colour colour, double width) {
  polyline({{r.x, r.y}, {r.right(), r.y}, {r.right(), r.bottom()}, {r.x, r.bottom()}, {r.x, r.y}},
           colour, width);
}

void Canvas::useFont(double size, bool bold) {
  cairo_select_font_face(cairo_.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                         bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(cairo_.get(), size);
}

double Canvas::textWidth(const std::string& text, double size, bool bold) {
  cairo_text_extents_t extents;
  useFont(size, bold);
  cairo_text_extents(cairo_.get(), text.c_str(), &extents);
  return extents.x_advance;
}

void Canvas::text(Place at, const std::string& text, double size, Anchor anchor, Colour colour,
                  bool upright, bool bold) {
  cairo_t* cr = cairo_.get();
  cairo_save(cr);
  useFont(size, bold);
  cairo_text_extents_t extents;
  cairo_text_extents(cr, text.c_str(), &extents);
  double shift = 0;
  if (anchor == Anchor::kMiddle) shift = extents.x_advance / 2;
  if (anchor == Anchor::kEnd) shift = extents.x_advance;
  cairo_translate(cr, at.x, at.y);
  if (upright) cairo_rotate(cr, -kTurn / 4);
  cairo_move_to(cr, -shift, 0.36 * size);  // half the height of figures: `at` is their middle
  use(colour);
  cairo_show_text(cr, text.c_str());
  cairo_restore(cr);
}

void Canvas::fittedText(Place at, const std::string& line, double size, double room, bool bold) {
  const double width = textWidth(line, size, bold);
  const double fitting = width > room ? size * room / width : size;
  text(at, line, fitting, Anchor::kStart, kInk, false, bold);
}

void Canvas::clip(const Rect& r) {
  cairo_save(cairo_.get());
  cairo_new_path(cairo_.get());
  cairo_rectangle(cairo_.get(), r.x, r.y, r.width, r.height);
  cairo_clip(cairo_.get());
}

void Canvas::unclip() { cairo_restore(cairo_.get()); }

std::string Canvas::finish() {
  require(cairo_status(cairo_.get()));
  if (format_ == PictureFormat::kPng) {
    require(cairo_surface_write_to_png_stream(surface_.get(), append, &bytes_));
  }
  cairo_show_page(cairo_.get());
  cairo_surface_finish(surface_.get());
  require(cairo_status(cairo_.get()));
  require(cairo_surface_status(surface_.get()));
  if (format_ == PictureFormat::kSvg) forgetPageNumber(bytes_);
  return std::move(bytes_);
}

}  // namespace knotfit
