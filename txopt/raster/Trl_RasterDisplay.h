// Trl_RasterDisplay: a window of its own that shows a raster through a legend: the heights
// of the terrain, its building clutter, or the path loss coverage. At most one window of each
// kind exists; it is made at the first show and holds its raster by reference until closed.
// The view rectangle of the terrain and clutter comes from the raster's set_view; the
// coverage is shown whole.
#pragma once

#include <cstdint>

#include "raster/Trl_Legend.h"
#include "raster/Trl_MatrixT.h"
#include "toolkit/string.h"

class Trl_Heightfield;
class Trl_Clutter;
class Trl_CoverageRaster;
namespace tk {
class window;
}

// Paints the matrix, resampled to the window's size, into the pixel rectangle x0..x1,
// y0..y1 (bounds included), each pixel in the palette entry of its value's class.
void paint(tk::window& w, const Trl_MatrixT<double, double>& matrix, const Trl_Legend& legend, int x0, int y0, int x1,
           int y1);

class Trl_RasterDisplay {
 public:
  enum kind_type { terrain, clutter, coverage };

  explicit Trl_RasterDisplay(kind_type kind);
  ~Trl_RasterDisplay();

  void show_heights(Trl_Heightfield& heights, bool full, int x0, int y0, int x1, int y1);
  void show_clutter(Trl_Clutter& clutter, bool full, int x0, int y0, int x1, int y1);
  void show_coverage(Trl_CoverageRaster& raster, bool full, int x0, int y0, int x1, int y1);
  // The display of each kind.
  static Trl_RasterDisplay& of(kind_type kind);

  tk::window* window = nullptr;
  bool opened = false;
  Trl_Heightfield* heights = nullptr;
  Trl_Clutter* buildings = nullptr;
  Trl_CoverageRaster* losses = nullptr;
  int width = 0, height = 0;
  kind_type kind;

  void redraw(bool full, int x0, int y0, int x1, int y1);
  void pointer_at(double x, double y);
  void closed();

 private:
  void make_window();
  void ready(bool& full);
  void paint_view(bool full, int x0, int y0, int x1, int y1);
  void paint_matrix(const Trl_MatrixT<double, double>& matrix, const Trl_Legend& legend, bool full, int x0, int y0,
                    int x1, int y1);
  tk::string coverage_text(double x, double y) const;
};
