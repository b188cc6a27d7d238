// Trl_Terrain: the height field and the building clutter of one planning area, which must
// share a spacing and be aligned on whole cells. It keeps the shift between their cell
// numbers and the rectangle where both exist, and answers the questions of propagation and
// of placing users: height and building profiles along a line, open or built ground.
// Cell numbers are those of the height grid unless said otherwise. Reference counted.
#pragma once

#include <functional>

#include "raster/Trl_Clutter.h"
#include "raster/Trl_Grid.h"
#include "raster/Trl_Heightfield.h"
#include "toolkit/point.h"
#include "toolkit/string.h"

class Trl_TxBitvector;
namespace tk {
class window;
}

class Trl_Terrain {
 public:
  typedef std::function<void(const tk::string&)> message_function;

  Trl_Terrain();
  virtual ~Trl_Terrain();
  Trl_Terrain(const Trl_Terrain&) = delete;
  Trl_Terrain& operator=(const Trl_Terrain&) = delete;

  void add_reference() { ++refCount; }
  void release();

  // Loads "NAME.map" (a drive path) and "NAME.urb" beside it; problems are told through
  // say. Afterwards both rasters are there, or neither.
  void load(const tk::string& file_name, const message_function& say);
  bool loaded() const { return heightfield != nullptr && clutter != nullptr; }

  const Trl_Grid& height_grid() const { return heightfield->grid; }
  const Trl_Grid& clutter_grid() const { return clutter->grid; }
  // The rectangle of the common cells with their outer halves, bounds included.
  bool contains(const tk::point& p) const;
  bool in_clutter(int i, int j) const;
  bool is_open(const tk::point& p) const;
  bool is_open(int i, int j) const { return !clutter->built(i + offset_i, j + offset_j); }
  short height(int i, int j) const { return heightfield->height(i, j); }

  // The heights (m) of the cells of the line walk from (i0, j0) to (i1, j1), and their
  // count; the arrays must hold the larger of nx and ny of the height grid.
  void height_profile(int i0, int j0, int i1, int j1, double distance, int& count, double* heights) const;
  void height_profile(int i0, int j0, int i1, int j1, double distance, int& count, double* heights,
                      int* columns, int* rows) const;
  // The building bits of the same walk, bit k for the k-th cell.
  void clutter_profile(int i0, int j0, int i1, int j1, int& count, Trl_TxBitvector& bits) const;
  // The full displays of the two rasters, each in its own window.
  void show_heights(tk::window& parent);
  void show_clutter(tk::window& parent);
  // The two extents in the plan: grey for the heights, a black outline for the clutter.
  void draw(tk::window& w) const;

  int refCount;
  Trl_Heightfield* heightfield;
  Trl_Clutter* clutter;
  int offset_i;
  int offset_j;
  Trl_Grid grid;

 private:
  void release_rasters();
};
