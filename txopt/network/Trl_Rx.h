// One mobile user: a plain value record with its position, its powers (W), its link
// targets (linear Eb/N0) and rates (kbit/s). Also the reader of one record of a mobile user
// file (".drx": number, x, y in metres) and the angular order round one base station.
#pragma once

#include <istream>

#include "toolkit/d3_point.h"
#include "toolkit/list.h"
#include "toolkit/point.h"

class Trl_Grid;
class Trl_Tx;
class Trl_RandomRegion;
class Trl_Terrain;

class Trl_Rx {
 public:
  int number;           // running number in its list, 0 upward; -1 in a default-built record
  int index;            // number of the serving base station; -1 from every constructor
  int cell_i;           // column of the position in the terrain grid
  int cell_j;           // row of the position in the terrain grid
  tk::d3_point position;  // x, y in m; z the user height in m
  double ebno_down;     // required Eb/N0 in the downlink, linear
  double ebno_up;       // required Eb/N0 in the uplink, linear
  double noise_factor;  // noise figure, linear
  double max_power;     // W
  double min_power;     // W; takes part in no computation
  double gain;          // effective antenna gain, linear
  double activity;      // activity factor, 0 to 1
  double rate_down;     // kbit/s
  double rate_up;       // kbit/s
  int bearer;           // uplink bearer of a generated user, else 0; only drawing reads it

  // The default record keeps its two Eb/N0 values the other way round from the planner's
  // defaults (5.5 dB down, 10 dB up); records that reach the model come from the full one.
  Trl_Rx();
  Trl_Rx(const tk::d3_point& position, int number, double ebno_down, double ebno_up,
         double noise_factor, double max_power, double min_power, double gain, double activity,
         double rate_down, double rate_up, int bearer);

  void set_cell(const Trl_Grid& grid);
  void set_cell(int i, int j);
  // Thermal noise in W, the same formula as for a base station, on this user's noise factor.
  double noise(double temperature_celsius, double bandwidth) const;
  // x * Eb/N0 * rate in bit/s; with x = 1/chip rate this is the SIR target.
  double required_down(double x) const;
  double required_up(double x) const;
  // Reads one record "n x y" into number and the position's x, y; z stays. False at the end
  // of the stream or on a bad token.
  bool read(std::istream& in);

  // Reads a whole mobile user file: each record is a copy of the template at the record's
  // x, y with `number` from a counter starting at 0 that advances for every record read.
  // With a terrain a record off it is not kept but counted in `ignored`, a record on it gets
  // its cell in the height grid. Every record widens low and high, kept or not.
  // False when the stream failed before its end.
  static bool read_list(std::istream& in, const Trl_Rx& templ, const Trl_Terrain* terrain,
                        tk::list<Trl_Rx>& list, tk::point& low, tk::point& high, int& ignored);

  // Uniform mobile users: copies of the template (which carries the user height as z and all
  // radio values) at drawn points, numbered from 0, appended to the list. Without a terrain
  // region.count are drawn. With one, nothing is made when the region misses the height
  // grid; otherwise rounds of up to 100 draws each take the first point on the terrain
  // (with streets_only only on a cell without a building) until region.count stand.
  static void generate(tk::list<Trl_Rx>& list, const Trl_Rx& templ, Trl_RandomRegion& region,
                       bool streets_only, const Trl_Terrain* terrain);

  // The reference cell of the angular order, shared by the whole class.
  static void set_reference(const Trl_Tx& tx);
  static int reference_i;
  static int reference_j;
};

// Compares the angles atan2(j - reference j, i - reference i) of two users, in whole cells:
// -1, 0 or 1. Sorting by it lays users out anticlockwise from -pi to pi.
int compare_rx_angle(const Trl_Rx& a, const Trl_Rx& b);
