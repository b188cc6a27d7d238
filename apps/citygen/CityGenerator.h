// CityGenerator: a synthetic city for the sample plan and the tests. Streets in a grid
// with a diagonal avenue and a square, blocks of buildings of varied heights, a river and
// a park without buildings, ground that rises gently; and base stations on roofs and in
// streets, and mobile users in the streets. Its file writers are apart from the program's
// readers, so that a reader fault cannot hide behind a writer fault.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

class CityGenerator {
 public:
  CityGenerator(int cells, double cell_size, unsigned seed);

  bool write_heights(const std::string& path) const;   // ".map"
  bool write_clutter(const std::string& path) const;   // ".urb"
  bool write_base_stations(const std::string& path, int count);  // ".dtx"
  // The same count on a square lattice over the whole city, each moved to the nearest cell
  // of its kind (roof or street), so that no user is far from a station: a plan in which
  // every station can be switched on at once, however large the city.
  bool write_base_stations_on_grid(const std::string& path, int count) const;  // ".dtx"
  bool write_users(const std::string& path, int count);          // ".drx"
  // User densities: a grid of 50 m cells and a set of districts, busier downtown, almost
  // empty over the river and the park.
  bool write_grid_distribution(const std::string& path) const;     // ".drd", grid form
  bool write_polygon_distribution(const std::string& path) const;  // ".drd", polygon form
  // IMT-2000 traffic: the services in the six environments ("Entrada.ent"), and the bearers
  // with four districts of the city ("Datos.ent"): downtown, the west side, the south bank
  // and the east side.
  bool write_imt2000_traffic(const std::string& path) const;
  bool write_imt2000_users(const std::string& path) const;

  bool built(int column, int row) const { return building[index(column, row)] != 0; }
  short height(int column, int row) const { return heights[index(column, row)]; }

 private:
  int index(int column, int row) const { return row * cells + column; }
  bool street(int column, int row) const;
  bool nearest_of_kind(int& column, int& row, bool on_roof) const;
  double busy(double x, double y) const;  // users per 50 m square at the busy hour
  void lay_out();

  int cells;
  double size;
  std::mt19937 random;
  std::vector<std::uint8_t> building;
  std::vector<short> heights;
};
