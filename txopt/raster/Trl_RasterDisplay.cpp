#include "raster/Trl_RasterDisplay.h"

#include <algorithm>
#include <iostream>

#include "app/Trl_Pixmap.h"
#include "raster/Trl_Clutter.h"
#include "raster/Trl_CoverageRaster.h"
#include "raster/Trl_Heightfield.h"
#include "toolkit/color.h"
#include "toolkit/string.h"
#include "toolkit/window.h"

void paint(tk::window& w, const Trl_MatrixT<double, double>& matrix, const Trl_Legend& legend, int x0, int y0, int x1,
           int y1) {
  int W = w.width(), H = w.height();
  if (W <= 0 || H <= 0 || matrix.size == 0) return;
  Trl_MatrixT<double, double> shown(static_cast<std::uint32_t>(H), static_cast<std::uint32_t>(W));
  shown.resample(matrix);
  Trl_Pixmap picture(W, H, legend.last + 1);
  for (int i = 0; i <= legend.last; ++i) {
    int r, g, b;
    tk::color(i).get_rgb(r, g, b);
    picture.set_colour(i, r, g, b);
    std::cout << "r " << r << " g " << g << " b " << b << "\n";
  }
  for (int py = y1; py >= y0; --py)
    for (int px = x1; px >= x0; --px) {
      // Row r of the matrix is pixmap line H - 1 - r: row 0 lies at the bottom.
      double v = shown.get(static_cast<std::uint32_t>(px), static_cast<std::uint32_t>(H - 1 - py));
      picture.set_pixel(px, py, legend.index_of(v));
    }
  w.draw_pixmap(w.pixel_to_x(0), w.pixel_to_y(0), picture.xpm());
}

namespace {

Trl_RasterDisplay terrain_display(Trl_RasterDisplay::terrain);
Trl_RasterDisplay clutter_display(Trl_RasterDisplay::clutter);
Trl_RasterDisplay coverage_display(Trl_RasterDisplay::coverage);

Trl_RasterDisplay& display_of(tk::window* w) {
  if (w == clutter_display.window) return clutter_display;
  return w == coverage_display.window ? coverage_display : terrain_display;
}

const char* title_of(Trl_RasterDisplay::kind_type kind) {
  if (kind == Trl_RasterDisplay::terrain) return "Celvane  -  Terrain";
  return kind == Trl_RasterDisplay::clutter ? "Celvane  -  Clutter" : "Celvane  -  Coverage";
}

void redraw_part(tk::window* w, double x0, double y0, double x1, double y1) {
  Trl_RasterDisplay& d = display_of(w);
  auto clip = [](double v, int size) { return std::max(0, std::min(size - 1, static_cast<int>(v))); };
  d.redraw(false, clip(x0, d.width), clip(y0, d.height), clip(x1, d.width), clip(y1, d.height));
}

void closing(tk::window* w) { display_of(w).closed(); }

void pointer(tk::window* w, double x, double y) { display_of(w).pointer_at(x, y); }

}  // namespace

Trl_RasterDisplay::Trl_RasterDisplay(kind_type k) : kind(k) {}

Trl_RasterDisplay::~Trl_RasterDisplay() {}

Trl_RasterDisplay& Trl_RasterDisplay::of(kind_type k) {
  if (k == clutter) return clutter_display;
  return k == coverage ? coverage_display : terrain_display;
}

void Trl_RasterDisplay::make_window() {
  window = new tk::window(300, 300, title_of(kind));
  window->set_bg_color(0);
  window->set_redraw(redraw_part);
  window->set_window_delete_handler(closing);
  window->set_coordinate_handler(pointer);
  window->display();
  window->init(0, 300, 0);
  opened = true;
  width = window->width();
  height = window->height();
}

// Makes the window at the first call and notes a new size; either asks for a full picture.
void Trl_RasterDisplay::ready(bool& full) {
  if (!window) {
    make_window();
    full = true;
  }
  if (window->width() != width || window->height() != height) {
    width = window->width();
    height = window->height();
    window->init(0, width, 0);
    full = true;
  }
}

void Trl_RasterDisplay::show_heights(Trl_Heightfield& h, bool full, int x0, int y0, int x1, int y1) {
  ready(full);
  if (heights != &h) {
    h.add_reference();
    if (heights) heights->release();
    heights = &h;
  }
  paint_view(full, x0, y0, x1, y1);
}

void Trl_RasterDisplay::show_clutter(Trl_Clutter& c, bool full, int x0, int y0, int x1, int y1) {
  ready(full);
  if (buildings != &c) {
    c.add_reference();
    if (buildings) buildings->release();
    buildings = &c;
  }
  paint_view(full, x0, y0, x1, y1);
}

void Trl_RasterDisplay::show_coverage(Trl_CoverageRaster& r, bool full, int x0, int y0, int x1, int y1) {
  ready(full);
  if (losses != &r) {
    r.add_reference();
    if (losses) losses->release();
    losses = &r;
  }
  paint_matrix(r.matrix, r.legend, full, x0, y0, x1, y1);
}

// The view's cells as doubles, then the picture; the terrain's legend stretches over the
// heights in view.
void Trl_RasterDisplay::paint_view(bool full, int x0, int y0, int x1, int y1) {
  int vx0, vy0, vx1, vy1;
  if (kind == terrain) {
    vx0 = heights->view_x0, vy0 = heights->view_y0, vx1 = heights->view_x1, vy1 = heights->view_y1;
  } else {
    vx0 = buildings->view_x0, vy0 = buildings->view_y0, vx1 = buildings->view_x1, vy1 = buildings->view_y1;
  }
  std::uint32_t columns = static_cast<std::uint32_t>(vx1 - vx0 + 1), rows = static_cast<std::uint32_t>(vy1 - vy0 + 1);
  Trl_MatrixT<double, double> view(rows, columns);
  for (int r = vy0; r <= vy1; ++r)
    for (int c = vx0; c <= vx1; ++c)
      view.ref(static_cast<std::uint32_t>(c - vx0), static_cast<std::uint32_t>(r - vy0)) =
          kind == terrain ? heights->height(c, r) : (buildings->built(c, r) ? 1.0 : 0.0);
  const Trl_Legend* legend = kind == terrain ? &heights->legend : &buildings->legend;
  if (kind == terrain) {
    double low, high;
    view.min_max(low, high);
    heights->legend = Trl_Legend(false, 14, low, (high - low) / 14);
    legend = &heights->legend;
  }
  paint_matrix(view, *legend, full, x0, y0, x1, y1);
}

void Trl_RasterDisplay::paint_matrix(const Trl_MatrixT<double, double>& matrix, const Trl_Legend& legend, bool full,
                                     int x0, int y0, int x1, int y1) {
  window->start_buffering();
  if (full) {
    window->clear();
    paint(*window, matrix, legend, 0, 0, width - 1, height - 1);
  } else {
    paint(*window, matrix, legend, x0, y0, x1, y1);
  }
  window->flush_buffer();
  window->stop_buffering();
}

void Trl_RasterDisplay::redraw(bool full, int x0, int y0, int x1, int y1) {
  if (kind == terrain && heights) show_heights(*heights, full, x0, y0, x1, y1);
  if (kind == clutter && buildings) show_clutter(*buildings, full, x0, y0, x1, y1);
  if (kind == coverage && losses) show_coverage(*losses, full, x0, y0, x1, y1);
}

// The loss of the cell under the pointer; the coverage has no view and is shown whole.
tk::string Trl_RasterDisplay::coverage_text(double x, double y) const {
  const int columns = static_cast<int>(losses->matrix.columns), rows = static_cast<int>(losses->matrix.rows);
  const int c = std::max(0, std::min(columns - 1, static_cast<int>(x / width * columns)));
  const int r = std::max(0, std::min(rows - 1, static_cast<int>(y / height * rows)));
  return tk::string("  %5.1f dB  ", losses->value(c, r));
}

void Trl_RasterDisplay::pointer_at(double x, double y) {
  if (!window || width <= 0 || height <= 0) return;
  tk::string text;
  int inset = 100;
  if (kind == terrain && heights) {
    int vw = heights->view_x1 - heights->view_x0 + 1, vh = heights->view_y1 - heights->view_y0 + 1;
    int c = static_cast<int>(x / width * vw) + heights->view_x0;
    int r = static_cast<int>(y / height * vh) + heights->view_y0;
    c = std::max(0, std::min(static_cast<int>(heights->grid.nx) - 1, c));
    r = std::max(0, std::min(static_cast<int>(heights->grid.ny) - 1, r));
    text = tk::string("  %g,%g,%g  ", c * heights->grid.dx + heights->grid.x0, r * heights->grid.dy + heights->grid.y0,
                      static_cast<double>(heights->height(c, r)));
  } else if (kind == clutter && buildings) {
    int vw = buildings->view_x1 - buildings->view_x0 + 1, vh = buildings->view_y1 - buildings->view_y0 + 1;
    int c = static_cast<int>(x / width * vw) + buildings->view_x0;
    int r = static_cast<int>(y / height * vh) + buildings->view_y0;
    c = std::max(0, std::min(static_cast<int>(buildings->columns) - 1, c));
    r = std::max(0, std::min(static_cast<int>(buildings->rows) - 1, r));
    text = tk::string("  %.8g,%.8g,%d  ", c * buildings->grid.dx + buildings->grid.x0,
                      r * buildings->grid.dy + buildings->grid.y0, buildings->built(c, r) ? 1 : 0);
  } else if (kind == coverage && losses) {
    text = coverage_text(x, y);
    inset = 50;  // the shorter text stands further right
  } else {
    return;
  }
  window->draw_text(width - inset, height - 40, text, tk::black);
}

void Trl_RasterDisplay::closed() {
  if (window) window->close();
  delete window;
  window = nullptr;
  opened = false;
  if (heights) heights->release();
  if (buildings) buildings->release();
  if (losses) losses->release();
  heights = nullptr;
  buildings = nullptr;
  losses = nullptr;
  width = height = 0;
}
