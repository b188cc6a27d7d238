#include "raster/Trl_Terrain.h"

#include <fstream>

#include "network/Trl_TxBitvector.h"
#include "raster/Trl_RasterDisplay.h"
#include "toolkit/color.h"
#include "toolkit/directory.h"
#include "toolkit/window.h"

Trl_Terrain::Trl_Terrain()
    : refCount(1), heightfield(nullptr), clutter(nullptr), offset_i(0), offset_j(0), grid(2, 2, 0, 0, 1, 1, 1) {}

Trl_Terrain::~Trl_Terrain() { release_rasters(); }

void Trl_Terrain::release() {
  if (--refCount == 0) delete this;
}

void Trl_Terrain::release_rasters() {
  if (heightfield) heightfield->release();
  if (clutter) clutter->release();
  heightfield = nullptr;
  clutter = nullptr;
}

void Trl_Terrain::load(const tk::string& file_name, const message_function& say) {
  release_rasters();
  heightfield = new Trl_Heightfield(tk::to_native_path(file_name));
  if (!heightfield->valid) {
    delete heightfield;
    heightfield = nullptr;
    return;
  }
  tk::string clutter_name = file_name;
  int at = clutter_name.pos(".map");
  if (at >= 0) clutter_name = clutter_name.replace(at, at + 3, ".urb");
  std::ifstream in(tk::to_native_path(clutter_name));
  if (in.is_open()) {
    clutter = new Trl_Clutter(in);
    if (!clutter->valid) {
      delete clutter;
      clutter = nullptr;
    }
  }
  bool matched = clutter != nullptr;
  if (matched && !heightfield->grid.offset_to(clutter->grid, offset_i, offset_j)) {
    say("Terrain and clutter differ in grid spacing.");
    matched = false;
  }
  if (!matched) release_rasters();
  if (!heightfield || !clutter || !heightfield->grid.intersect(clutter->grid, grid)) {
    say("Terrain and clutter do not overlap.");
    release_rasters();
  }
}

bool Trl_Terrain::contains(const tk::point& p) const {
  double hx = grid.dx * 0.5, hy = grid.dy * 0.5;
  return grid.x0 - hx <= p.xcoord() && p.xcoord() <= grid.x1 + hx && grid.y0 - hy <= p.ycoord() &&
         p.ycoord() <= grid.y1 + hy;
}

bool Trl_Terrain::in_clutter(int i, int j) const {
  int ci = i + offset_i, cj = j + offset_j;
  return ci >= 0 && cj >= 0 && ci < static_cast<int>(clutter->columns) && cj < static_cast<int>(clutter->rows);
}

bool Trl_Terrain::is_open(const tk::point& p) const {
  return !clutter->built(clutter->grid.column_of(p), clutter->grid.row_of(p));
}

void Trl_Terrain::height_profile(int i0, int j0, int i1, int j1, double, int& count, double* heights) const {
  count = 0;
  for (Trl_Grid::iterator_line it(heightfield->grid, i0, j0, i1, j1); !it.at_end(); it.advance())
    heights[count++] = heightfield->height(it.col, it.row);
}

void Trl_Terrain::height_profile(int i0, int j0, int i1, int j1, double, int& count, double* heights,
                                 int* columns, int* rows) const {
  count = 0;
  for (Trl_Grid::iterator_line it(heightfield->grid, i0, j0, i1, j1); !it.at_end(); it.advance()) {
    heights[count] = heightfield->height(it.col, it.row);
    columns[count] = it.col;
    rows[count] = it.row;
    ++count;
  }
}

void Trl_Terrain::clutter_profile(int i0, int j0, int i1, int j1, int& count, Trl_TxBitvector& bits) const {
  count = 0;
  for (Trl_Grid::iterator_line it(clutter->grid, i0 + offset_i, j0 + offset_j, i1 + offset_i, j1 + offset_j);
       !it.at_end(); it.advance()) {
    // A cell beyond the clutter raster reads as open ground rather than memory past it.
    bool inside = it.col >= 0 && it.row >= 0 && it.col < static_cast<int>(clutter->columns) &&
                  it.row < static_cast<int>(clutter->rows);
    bits.assign(count++, inside && clutter->built(it.col, it.row));
  }
}

void Trl_Terrain::draw(tk::window& w) const {
  if (!loaded()) return;
  const Trl_Grid& h = heightfield->grid;
  const Trl_Grid& c = clutter->grid;
  w.draw_filled_rectangle(h.x0 - 0.5 * h.dx, h.y0 - 0.5 * h.dy, h.x1 + 0.5 * h.dx, h.y1 + 0.5 * h.dy, 13);
  w.draw_rectangle(tk::point(c.x0 - 0.5 * c.dx, c.y0 - 0.5 * c.dy), tk::point(c.x1 + 0.5 * c.dx, c.y1 + 0.5 * c.dy),
                   tk::black);
}

void Trl_Terrain::show_heights(tk::window&) {
  if (heightfield) Trl_RasterDisplay::of(Trl_RasterDisplay::terrain).show_heights(*heightfield, true, 0, 0, 0, 0);
}

void Trl_Terrain::show_clutter(tk::window&) {
  if (clutter) Trl_RasterDisplay::of(Trl_RasterDisplay::clutter).show_clutter(*clutter, true, 0, 0, 0, 0);
}
