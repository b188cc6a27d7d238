// Test support: the path loss of one cell of a coverage square worked out without the
// coverage map. It walks the square's border in its order, takes the first line from the
// base station that passes the cell, reads that line's heights and building bits cell by
// cell from the rasters, and asks the model for the gain on the cells before the target.
#pragma once

class Trl_Terrain;
class Trl_Tx;
class Trl_Rx;
class Trl_XiaBertoni;

struct CoverageSquare {
  int c0, r0, c1, r1;  // height grid cells, bounds included
};

// dB; 0 when no line reaches the cell or it is a building and in_buildings is false.
double loss_by_first_line(const Trl_Terrain& terrain, Trl_XiaBertoni& model, const Trl_Tx& tx, const Trl_Rx& user,
                          const CoverageSquare& square, int col, int row, bool in_buildings);
