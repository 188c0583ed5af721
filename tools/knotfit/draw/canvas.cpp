// SPDX-License-Identifier: MIT
// A page to draw on, through Cairo.
#include "draw/canvas.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <string_view>

#include "base/fault.h"

namespace knotfit {
namespace {

constexpr double kPngScale = 2;
constexpr double kTurn = 6.283185307179586;

cairo_status_t append(void* closure, const unsigned char* data, unsigned length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

cairo_surface_t* newSurface(Format format, double width, double height, std::string* bytes) {
  if (format == Format::kSvg)
    return cairo_svg_surface_create_for_stream(append, bytes, width, height);
  if (format == Format::kPdf) {
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

Canvas::Canvas(Format format, double width, double height)
    : format_(format),
      surface_(newSurface(format, width, height, &bytes_), cairo_surface_destroy),
      cairo_(cairo_create(surface_.get()), cairo_destroy) {
  if (cairo_status(cairo_.get()) != CAIRO_STATUS_SUCCESS) {
    throw Fault(kInternal, cairo_status_to_string(cairo_status(cairo_.get())));
  }
  if (format == Format::kPng) cairo_scale(cairo_.get(), kPngScale, kPngScale);
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
  const double shift = anchor == Anchor::kStart    ? 0
                       : anchor == Anchor::kMiddle ? extents.x_advance / 2
                                                   : extents.x_advance;
  cairo_translate(cr, at.x, at.y);
  if (upright) cairo_rotate(cr, -kTurn / 4);
  cairo_move_to(cr, -shift, 0.36 * size);
  use(colour);
  cairo_show_text(cr, text.c_str());
  cairo_restore(cr);
}

void Canvas::clip(const Rect& r) {
  cairo_save(cairo_.get());
  cairo_new_path(cairo_.get());
  cairo_rectangle(cairo_.get(), r.x, r.y, r.width, r.height);
  cairo_clip(cairo_.get());
}

void Canvas::unclip() { cairo_restore(cairo_.get()); }

std::string Canvas::finish() {
  if (format_ == Format::kPng) cairo_surface_write_to_png_stream(surface_.get(), append, &bytes_);
  cairo_show_page(cairo_.get());
  cairo_surface_finish(surface_.get());
  const cairo_status_t status = cairo_status(cairo_.get());
  if (status != CAIRO_STATUS_SUCCESS) throw Fault(kInternal, cairo_status_to_string(status));
  if (format_ == Format::kSvg) forgetPageNumber(bytes_);
  return std::move(bytes_);
}

}  // namespace knotfit
