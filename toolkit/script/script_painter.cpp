#include "toolkit/script/script_painter.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstdio>
#include <map>
#include <sstream>

#include "toolkit/color.h"

namespace tk {

void script_painter::record(const drawing_op& op) {
  if (op.kind == drawing_op::clear) ops.clear();
  ops.push_back(op);
}

namespace {

void set_colour(cairo_t* cr, int colour) {
  int r, g, b;
  color(colour).get_rgb(r, g, b);
  cairo_set_source_rgb(cr, r / 255.0, g / 255.0, b / 255.0);
}

// Paints an image in the XPM text layout: a header "w h colours chars", colour lines
// "SYMBOL c #rrggbb", then the rows.
void paint_xpm(cairo_t* cr, int x, int y, const std::vector<std::string>& lines) {
  if (lines.empty()) return;
  int w = 0, h = 0, ncolours = 0, cpp = 0;
  std::istringstream header(lines[0]);
  if (!(header >> w >> h >> ncolours >> cpp) || cpp < 1 || w < 0 || h < 0) return;
  if (static_cast<int>(lines.size()) < 1 + ncolours + h) return;
  std::map<std::string, unsigned> palette;
  for (int k = 0; k < ncolours; ++k) {
    const std::string& line = lines[1 + k];
    if (static_cast<int>(line.size()) < cpp) continue;
    std::string symbol = line.substr(0, cpp);
    std::string::size_type hash = line.find('#', static_cast<size_t>(cpp));
    unsigned rgb = 0;
    if (hash != std::string::npos) rgb = static_cast<unsigned>(std::strtoul(line.c_str() + hash + 1, nullptr, 16));
    palette[symbol] = rgb;
  }
  cairo_surface_t* image = cairo_image_surface_create(CAIRO_FORMAT_RGB24, w > 0 ? w : 1, h > 0 ? h : 1);
  unsigned char* data = cairo_image_surface_get_data(image);
  int stride = cairo_image_surface_get_stride(image);
  cairo_surface_flush(image);
  for (int r = 0; r < h; ++r) {
    const std::string& row = lines[1 + ncolours + r];
    unsigned* out = reinterpret_cast<unsigned*>(data + r * stride);
    for (int c = 0; c < w; ++c) {
      size_t at = static_cast<size_t>(c) * cpp;
      unsigned rgb = 0;
      if (at + cpp <= row.size()) {
        auto found = palette.find(row.substr(at, static_cast<size_t>(cpp)));
        if (found != palette.end()) rgb = found->second;
      }
      out[c] = rgb;
    }
  }
  cairo_surface_mark_dirty(image);
  cairo_set_source_surface(cr, image, x, y);
  cairo_paint(cr);
  cairo_surface_destroy(image);
}

void paint_op(cairo_t* cr, const drawing_op& op, int width, int height) {
  const std::vector<int>& p = op.xy;
  switch (op.kind) {
    case drawing_op::clear:
      set_colour(cr, op.colour);
      cairo_rectangle(cr, 0, 0, width, height);
      cairo_fill(cr);
      break;
    case drawing_op::pixel:
      set_colour(cr, op.colour);
      cairo_rectangle(cr, p[0], p[1], 1, 1);
      cairo_fill(cr);
      break;
    case drawing_op::line:
      set_colour(cr, op.colour);
      cairo_move_to(cr, p[0] + 0.5, p[1] + 0.5);
      cairo_line_to(cr, p[2] + 0.5, p[3] + 0.5);
      cairo_stroke(cr);
      break;
    case drawing_op::disc:
      set_colour(cr, op.colour);
      cairo_arc(cr, p[0] + 0.5, p[1] + 0.5, p[2], 0, 2 * M_PI);
      cairo_fill(cr);
      break;
    case drawing_op::polygon:
    case drawing_op::filled_polygon:
      set_colour(cr, op.colour);
      for (size_t i = 0; i + 1 < p.size(); i += 2) {
        if (i == 0)
          cairo_move_to(cr, p[i] + 0.5, p[i + 1] + 0.5);
        else
          cairo_line_to(cr, p[i] + 0.5, p[i + 1] + 0.5);
      }
      cairo_close_path(cr);
      if (op.kind == drawing_op::filled_polygon)
        cairo_fill(cr);
      else
        cairo_stroke(cr);
      break;
    case drawing_op::rectangle:
    case drawing_op::filled_rectangle: {
      set_colour(cr, op.colour);
      double x0 = std::min(p[0], p[2]), y0 = std::min(p[1], p[3]);
      double w = std::abs(p[2] - p[0]), h = std::abs(p[3] - p[1]);
      if (op.kind == drawing_op::filled_rectangle) {
        cairo_rectangle(cr, x0, y0, w + 1, h + 1);
        cairo_fill(cr);
      } else {
        cairo_rectangle(cr, x0 + 0.5, y0 + 0.5, w, h);
        cairo_stroke(cr);
      }
      break;
    }
    case drawing_op::text:
      set_colour(cr, op.colour);
      cairo_move_to(cr, p[0], p[1]);
      cairo_show_text(cr, op.label.c_str());
      break;
    case drawing_op::pixmap:
      paint_xpm(cr, p[0], p[1], op.xpm);
      break;
  }
}

}  // namespace

bool script_painter::paint_png(const std::string& file, int width, int height) const {
  if (width <= 0 || height <= 0) return false;
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
  cairo_t* cr = cairo_create(surface);
  cairo_set_line_width(cr, 1.0);
  cairo_set_source_rgb(cr, 1, 1, 1);
  cairo_paint(cr);
  for (const drawing_op& op : ops) paint_op(cr, op, width, height);
  cairo_destroy(cr);
  bool ok = cairo_surface_write_to_png(surface, file.c_str()) == CAIRO_STATUS_SUCCESS;
  cairo_surface_destroy(surface);
  return ok;
}

}  // namespace tk
