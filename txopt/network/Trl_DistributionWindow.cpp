#include "network/Trl_DistributionWindow.h"

#include <algorithm>

#include "network/Trl_RxGridDistribution.h"
#include "network/Trl_RxPolyDistribution.h"
#include "raster/Trl_RasterDisplay.h"
#include "toolkit/color.h"
#include "toolkit/window.h"

namespace {

Trl_DistributionWindow grid_window, polygon_window;

Trl_DistributionWindow& owner_of(tk::window* w) { return w == polygon_window.window ? polygon_window : grid_window; }

void redraw_part(tk::window* w, double x0, double y0, double x1, double y1) {
  Trl_DistributionWindow& owner = owner_of(w);
  if (!owner.shown) return;
  auto clip = [](double v, int size) { return std::max(0, std::min(size - 1, static_cast<int>(v))); };
  owner.shown->draw(false, clip(x0, owner.width), clip(y0, owner.height), clip(x1, owner.width),
                    clip(y1, owner.height));
}

void closing(tk::window* w) { Trl_DistributionWindow::closed(w); }

}  // namespace

bool Trl_DistributionWindow::prepare(Trl_RxDistribution& d, bool& redraw_all) {
  if (!window) {
    window = new tk::window(300, 300, "Celvane  -  Distribution parameters");
    window->set_redraw(redraw_part);
    window->set_window_delete_handler(closing);
    redraw_all = true;
  }
  if (!displayed) {
    window->display(tk::window::max, tk::window::min);
    window->init(0, 300, 0);
    displayed = true;
  }
  if (shown != &d) {
    d.ref();
    if (shown) shown->unref();
    shown = &d;
  }
  if (window->width() != width || window->height() != height) {
    width = window->width();
    height = window->height();
    window->init(0, width, 0);
    redraw_all = true;
  }
  return true;
}

void Trl_DistributionWindow::show_grid(Trl_RxGridDistribution& d, bool redraw_all, int x0, int y0, int x1, int y1) {
  Trl_DistributionWindow& self = grid_window;
  self.prepare(d, redraw_all);
  Trl_MatrixT<double, double> values(d.matrix->rows, d.matrix->columns);
  for (unsigned k = 0; k < d.matrix->size; ++k) values.data[k] = d.matrix->data[k];
  self.window->start_buffering();
  if (redraw_all)
    paint(*self.window, values, d.legend, 0, 0, self.width - 1, self.height - 1);
  else
    paint(*self.window, values, d.legend, x0, y0, x1, y1);
  self.window->flush_buffer();
  self.window->stop_buffering();
}

void Trl_DistributionWindow::show_polygons(Trl_RxPolyDistribution& d, bool redraw_all, int, int, int, int) {
  Trl_DistributionWindow& self = polygon_window;
  self.prepare(d, redraw_all);
  // The distribution's box fills the window, with the same scale in both directions.
  tk::point low = d.min_corner(), high = d.max_corner();
  double span = std::max(high.xcoord() - low.xcoord(), high.ycoord() - low.ycoord());
  double scale = span > 0 ? self.width / span : 1;
  self.window->start_buffering();
  self.window->clear();
  tk::list_item v = d.values.first();
  for (const tk::polygon& shape : d.polygons) {
    tk::list<tk::point> corners;
    for (const tk::point& p : shape.vertices())
      corners.append(tk::point((p.xcoord() - low.xcoord()) * scale, (p.ycoord() - low.ycoord()) * scale));
    tk::polygon on_screen(corners, 0, true);
    self.window->draw_filled_polygon(on_screen, d.legend.colour_of(d.values[v]));
    self.window->draw_polygon(on_screen, tk::black);
    v = d.values.succ(v);
  }
  self.window->flush_buffer();
  self.window->stop_buffering();
}

void Trl_DistributionWindow::forget(const Trl_RxDistribution* d) {
  for (Trl_DistributionWindow* w : {&grid_window, &polygon_window})
    if (w->shown == d) w->shown = nullptr;
}

void Trl_DistributionWindow::closed(tk::window* w) {
  Trl_DistributionWindow& owner = owner_of(w);
  if (owner.window) owner.window->close();
  delete owner.window;
  owner.window = nullptr;
  owner.displayed = false;
  if (owner.shown) owner.shown->unref();
  owner.shown = nullptr;
  owner.width = owner.height = 0;
}
