// Trl_CoverageMap: the path loss (dB) from one base station to every cell of a square of the
// height grid. Lines are walked from the base station to each border cell of the square and
// fan out over all its cells: one profile fetch serves every cell of its line, cell k taking
// the first k cells of it, and the first line to reach a cell decides its value. The
// profile is indexed by its buildings once, so that each cell's analysis steps over
// buildings rather than cells.
#pragma once

#include <functional>
#include <vector>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "network/Trl_TxBitvector.h"
#include "propagation/Trl_ProfileRuns.h"
#include "raster/Trl_Grid.h"

class Trl_CoverageRaster;
class Trl_Terrain;
class Trl_XiaBertoni;

class Trl_CoverageMap {
 public:
  // Told the share of border cells done (0 to 1) at each further full percent.
  typedef std::function<void(double)> progress_function;

  // The square of half width radius (cells) round cell (i, j): columns i - radius to
  // i + radius - 1, rows likewise, shifted back inside the grid with its size kept, and
  // cut only where it is larger than the grid.
  static void square(const Trl_Grid& grid, int i, int j, int radius, int& c0, int& r0, int& c1, int& r1);

  // tx must have its cell on the terrain's height grid; user is the template of the mobile
  // placed on each cell (its height and radio values). Without in_buildings, building
  // cells are left at 0.
  Trl_CoverageMap(Trl_Terrain& terrain, Trl_XiaBertoni& model, const Trl_Tx& tx, const Trl_Rx& user,
                  bool in_buildings);

  // A new raster of the square c0..c1, r0..r1 (height grid cells, bounds included) whose
  // one reference goes to the caller.
  Trl_CoverageRaster* compute(int c0, int r0, int c1, int r1, const progress_function& progress);

 private:
  void fan_line(Trl_CoverageRaster& raster, int c0, int r0, int end_col, int end_row);

  Trl_Terrain& terrain;
  Trl_XiaBertoni& model;
  Trl_Tx tx;
  Trl_Rx user;
  bool in_buildings;
  // The profile of the current line, sized for the longest line of the grid.
  std::vector<double> heights;  // m
  std::vector<int> columns, rows;
  Trl_TxBitvector bits;
  Trl_ProfileRuns line;  // the buildings of the current line, for the loss at each of its cells
};
