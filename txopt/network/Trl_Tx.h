// One base station: a plain value record with its position, its powers (W) and its radio
// factors (linear ratios). Lists hold it by value; it copies the parameters it was made with.
// Also the reader of one record of a base station file (".dtx": number, x, y in metres).
#pragma once

#include <istream>

#include "toolkit/d3_point.h"
#include "toolkit/list.h"
#include "toolkit/point.h"
#include "toolkit/string.h"

namespace tk {
class window;
}

class Trl_Grid;
class Trl_Rx;
class Trl_RandomRegion;
class Trl_Terrain;

class Trl_Tx {
 public:
  // Values of `status`.
  enum {
    usable = 0,      // free for a search to take or leave
    used = 1,        // used by the assignment just shown
    unused = 2,      // not used by the assignment just shown
    fixed = 3,       // belongs to every solution
    excluded = 4     // takes no part
  };

  tk::string label;
  int number;               // running number in its list, 0 upward; -1 while unset
  int cell_i;               // column of the position in the terrain grid
  int cell_j;               // row of the position in the terrain grid
  tk::d3_point position;    // x, y in m; z the antenna height in m
  int spare;                // 0 from the constructors, -1 after a file read
  int status;               // one of the values above
  double max_power;         // W
  double pilot_power;       // W
  double max_channel_power; // W
  double gain;              // effective antenna gain, linear
  double noise_factor;      // noise figure, linear
  double orthogonality;     // downlink orthogonality factor, 0 to 1

  // label "none", number -1, position (0, 0, 30), 20 W, 2 W, 2 W, 9 dB, 5 dB, 0.4, status 0.
  Trl_Tx();
  Trl_Tx(const tk::d3_point& position, const tk::string& label, int number, double max_power,
         double pilot_power, double max_channel_power, double gain, double noise_factor,
         double orthogonality, int status);

  // Takes x and y of the point and keeps z.
  void set_xy(const tk::point& p);
  // Cell of the position's x, y through the grid's column and row operations.
  void set_cell(const Trl_Grid& grid);
  // Thermal noise in W: (273.18 + temperature) * 1.380658e-23 * bandwidth [Hz] * noise_factor.
  double noise(double temperature_celsius, double bandwidth) const;
  // Spatial distance to the user in m, heights included.
  double distance(const Trl_Rx& rx) const;
  // Reads one record "n x y": label "BS%04d" with n, number -1, cell 0, 0, position (x, y, z),
  // spare -1, status 0; the radio values stay. False at the end of the stream or on a bad token.
  bool read(std::istream& in, double z);

  // The property dialog "Base station" over the window. It works on a copy and assigns it
  // back on "Ok" once the values pass; status 1 and 2 come back as 0. False on "Cancel".
  bool edit(tk::window& parent);

  // Reads a whole base station file: every record is a copy of the template with the
  // record's label and position (z 0) and `number` from a counter starting at 0, appended to
  // the list; low and high take in its x, y. False when the stream failed before its end
  // (garbage in the file); a record cut off by the end of the file is dropped quietly.
  static bool read_list(std::istream& in, const Trl_Tx& templ, tk::list<Trl_Tx>& list,
                        tk::point& low, tk::point& high);

  // Random base stations on bare coordinates: region.count copies of the template at drawn
  // points, labelled "BS%04d" and numbered from 0, appended to the list.
  static void generate(tk::list<Trl_Tx>& list, const Trl_Tx& templ, Trl_RandomRegion& region);
  // Random base stations on a terrain: draws until region.count stand on the terrain; on a
  // building cell z becomes the roof height plus height_over_building (m); with
  // only_on_building a cell without a building is drawn again.
  static void generate(tk::list<Trl_Tx>& list, const Trl_Tx& templ, Trl_RandomRegion& region,
                       const Trl_Terrain& terrain, bool only_on_building,
                       double height_over_building);

  // Base station closest in the plane to the point: the first of equally distant ones;
  // nil for an empty list.
  static tk::list_item nearest(const tk::list<Trl_Tx>& list, const tk::point& p);
};

// Three-way orderings by x and by y of the position, for sorting a list of base stations.
int compare_tx_x(const Trl_Tx& a, const Trl_Tx& b);
int compare_tx_y(const Trl_Tx& a, const Trl_Tx& b);
