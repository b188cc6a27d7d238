// Test support: a PNG picture read back with cairo, its pixels as 0xRRGGBB row by row from
// the top; an unreadable file gives an empty picture.
#pragma once

#include <cairo.h>

#include <set>
#include <string>
#include <vector>

struct Picture {
  int width = 0, height = 0;
  std::vector<unsigned> pixels;
  unsigned at(int x, int y) const { return pixels.at(static_cast<size_t>(y) * width + x); }
  std::set<unsigned> colours() const { return std::set<unsigned>(pixels.begin(), pixels.end()); }
};

inline Picture read_png(const std::string& file) {
  Picture p;
  cairo_surface_t* s = cairo_image_surface_create_from_png(file.c_str());
  if (cairo_surface_status(s) == CAIRO_STATUS_SUCCESS) {
    cairo_surface_flush(s);
    p.width = cairo_image_surface_get_width(s);
    p.height = cairo_image_surface_get_height(s);
    const unsigned char* data = cairo_image_surface_get_data(s);
    for (int y = 0; y < p.height; ++y)
      for (int x = 0; x < p.width; ++x)
        p.pixels.push_back(reinterpret_cast<const unsigned*>(data + y * cairo_image_surface_get_stride(s))[x] & 0xffffff);
  }
  cairo_surface_destroy(s);
  return p;
}
