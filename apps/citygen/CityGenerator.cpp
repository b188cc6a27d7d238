#include "citygen/CityGenerator.h"

#include "planfiles/PlanRasterWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <utility>

CityGenerator::CityGenerator(int cells_, double cell_size, unsigned seed)
    : cells(cells_), size(cell_size), random(seed), building(static_cast<size_t>(cells_) * cells_, 0),
      heights(static_cast<size_t>(cells_) * cells_, 0) {
  lay_out();
}

// Streets every 60 m, 12 m wide; one diagonal avenue; a river across the south; a park
// and a square downtown.
bool CityGenerator::street(int c, int r) const {
  double x = c * size, y = r * size, extent = cells * size;
  if (std::fmod(x, 60.0) < 12.0 || std::fmod(y, 60.0) < 12.0) return true;
  if (std::fabs(x - y) < 8.0) return true;                                      // diagonal avenue
  if (y > 0.12 * extent && y < 0.18 * extent) return true;                     // river
  if (x > 0.65 * extent && x < 0.85 * extent && y > 0.6 * extent && y < 0.8 * extent) return true;  // park
  if (std::hypot(x - 0.4 * extent, y - 0.45 * extent) < 0.06 * extent) return true;            // square
  return false;
}

void CityGenerator::lay_out() {
  std::uniform_int_distribution<int> storeys(2, 12);
  double extent = cells * size;
  // Each lot of 20 m by 20 m gets one height; downtown lots are taller.
  int lot = std::max(1, static_cast<int>(20.0 / size));
  int lots = (cells + lot - 1) / lot;
  std::vector<int> lot_height(static_cast<size_t>(lots) * lots);
  for (int j = 0; j < lots; ++j)
    for (int i = 0; i < lots; ++i) {
      double dx = (i + 0.5) * lot * size - 0.5 * extent, dy = (j + 0.5) * lot * size - 0.5 * extent;
      double downtown = std::exp(-(dx * dx + dy * dy) / (0.1 * extent * extent));
      lot_height[static_cast<size_t>(j) * lots + i] = 3 * storeys(random) + static_cast<int>(30 * downtown);
    }
  for (int r = 0; r < cells; ++r)
    for (int c = 0; c < cells; ++c) {
      int ground = 20 + static_cast<int>(0.01 * c * size + 0.005 * r * size);
      bool b = !street(c, r);
      building[index(c, r)] = b ? 1 : 0;
      heights[index(c, r)] = static_cast<short>(ground + (b ? lot_height[static_cast<size_t>(r / lot) * lots + c / lot] : 0));
    }
}

bool CityGenerator::write_heights(const std::string& path) const {
  return PlanRasterWriter(cells, cells, 0, 0, size).write_heights(path, heights);
}

bool CityGenerator::write_clutter(const std::string& path) const {
  return PlanRasterWriter(cells, cells, 0, 0, size).write_clutter(path, building);
}

bool CityGenerator::write_base_stations(const std::string& path, int count) {
  std::ofstream out(path);
  std::uniform_int_distribution<int> cell(0, cells - 1);
  for (int n = 0; n < count; ++n) {
    // Half the stations stand on roofs, half in the streets.
    bool on_roof = n % 2 == 0;
    int c, r;
    do {
      c = cell(random);
      r = cell(random);
    } while (built(c, r) != on_roof);
    out << n << " " << c * size << " " << r * size << "\n";
  }
  return static_cast<bool>(out);
}

// Searches square rings round (column, row) for the nearest cell that is built (on_roof) or
// open; false when the city has none.
bool CityGenerator::nearest_of_kind(int& column, int& row, bool on_roof) const {
  for (int ring = 0; ring < cells; ++ring)
    for (int dr = -ring; dr <= ring; ++dr)
      for (int dc = -ring; dc <= ring; ++dc) {
        if (std::max(std::abs(dc), std::abs(dr)) != ring) continue;
        const int c = column + dc, r = row + dr;
        if (c < 0 || r < 0 || c >= cells || r >= cells || built(c, r) != on_roof) continue;
        column = c;
        row = r;
        return true;
      }
  return false;
}

bool CityGenerator::write_base_stations_on_grid(const std::string& path, int count) const {
  std::ofstream out(path);
  const int side = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(count))));
  for (int n = 0; n < count; ++n) {
    int c = static_cast<int>((n % side + 0.5) * cells / side), r = static_cast<int>((n / side + 0.5) * cells / side);
    // Alternately on a roof and in a street, as in the random layout.
    if (!nearest_of_kind(c, r, n % 2 == 0)) nearest_of_kind(c, r, n % 2 != 0);
    out << n << " " << c * size << " " << r * size << "\n";
  }
  return static_cast<bool>(out);
}

bool CityGenerator::write_users(const std::string& path, int count) {
  std::ofstream out(path);
  std::uniform_real_distribution<double> where(0, (cells - 1) * size);
  for (int n = 0; n < count; ++n) {
    double x, y;
    do {
      x = where(random);
      y = where(random);
    } while (built(static_cast<int>(std::lround(x / size)), static_cast<int>(std::lround(y / size))));
    char line[64];
    std::snprintf(line, sizeof line, "%d %.1f %.1f\n", n, x, y);
    out << line;
  }
  return static_cast<bool>(out);
}

double CityGenerator::busy(double x, double y) const {
  double extent = cells * size;
  if (y > 0.12 * extent && y < 0.18 * extent) return 0;  // river
  if (x > 0.65 * extent && x < 0.85 * extent && y > 0.6 * extent && y < 0.8 * extent) return 20;  // park
  double dx = x - 0.5 * extent, dy = y - 0.5 * extent;
  return 200 + 3000 * std::exp(-(dx * dx + dy * dy) / (0.05 * extent * extent));
}

bool CityGenerator::write_grid_distribution(const std::string& path) const {
  double extent = cells * size;
  int n = std::max(2, static_cast<int>(extent / 50));
  double cell = extent / n;
  std::ofstream out(path);
  out << "ncols " << n << "\nnrows " << n << "\nxllcorner " << cell / 2 << "\nyllcorner " << cell / 2
      << "\ncellsize " << cell << "\nNODATA_value -9999\n";
  // The first row written is the southern one.
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < n; ++i) out << (i ? " " : "") << static_cast<int>(busy((i + 0.5) * cell, (j + 0.5) * cell));
    out << "\n";
  }
  return static_cast<bool>(out);
}

bool CityGenerator::write_polygon_distribution(const std::string& path) const {
  double e = cells * size;
  struct district {
    double x0, y0, x1, y1;
    int users;
  };
  // Rectangles given anticlockwise: south-west, south-east, north-east, north-west.
  const district districts[] = {{0.35 * e, 0.35 * e, 0.65 * e, 0.65 * e, 30000},  // downtown
                                {0.0, 0.18 * e, 0.35 * e, 1.0 * e, 12000},
                                {0.65 * e, 0.18 * e, 1.0 * e, 0.6 * e, 10000},
                                {0.65 * e, 0.6 * e, 0.85 * e, 0.8 * e, 200},        // park
                                {0.0, 0.0, 1.0 * e, 0.12 * e, 6000}};               // south bank
  std::ofstream out(path);
  out << sizeof districts / sizeof districts[0] << "\n";
  for (const district& d : districts)
    out << "4 " << d.x0 << " " << d.y0 << " " << d.x1 << " " << d.y0 << " " << d.x1 << " " << d.y1 << " " << d.x0
        << " " << d.y1 << " " << d.users << "\n";
  return static_cast<bool>(out);
}

namespace {

// A number as the ".ent" files want it: digits and at most one point, no exponent.
std::string plain(double v) {
  char text[64];
  std::snprintf(text, sizeof text, "%.3f", v);
  std::string s = text;
  s.erase(s.find_last_not_of('0') + 1);
  if (s.back() == '.') s.pop_back();
  return s;
}

std::string list(const char* keyword, std::initializer_list<double> values) {
  std::string line = keyword;
  for (double v : values) line += plain(v) + ",";
  line.back() = '}';
  return line + "\n";
}

}  // namespace

bool CityGenerator::write_imt2000_traffic(const std::string& path) const {
  std::ofstream out(path);
  out << "DATOS IMT2000\n"
      << list("Occupancy={", {1, 1, 1, 0.8, 1, 0.5}) << list("Average_Call_Dur={", {53.3, 13.9, 30, 180, 156, 120})
      << list("BitRate_DL={", {2000, 384, 14, 128, 14, 16}) << list("F_Asym={", {0.005, 0.026, 1, 1, 1, 1})
      << "URBAN\n";
  struct environment {
    const char* name;
    std::initializer_list<double> lambda, penetration;
  };
  const environment environments[] = {
      {"Pedestrian", {0.06, 0.06, 0.03, 0.06, 0.03, 0.6}, {0.047, 0.077, 0.25, 0.005, 0.1, 0.6}},
      {"Vehiculos", {0.004, 0.004, 0.002, 0.004, 0.002, 0.6}, {0.047, 0.077, 0.25, 0.005, 0.1, 0.6}},
      {"Negocios", {0.12, 0.12, 0.06, 0.12, 0.06, 1.0}, {0.05, 0.08, 0.25, 0.01, 0.1, 0.6}},
      {"Domestico", {0.06, 0.06, 0.03, 0.06, 0.03, 0.13}, {0.047, 0.047, 0.25, 0.005, 0.1, 0.6}},
      {"SUBURBAN", {0.06, 0.06, 0.03, 0.06, 0.03, 0.13}, {0.047, 0.047, 0.25, 0.005, 0.1, 0.6}},
      {"RURAL", {0.004, 0.004, 0.002, 0.004, 0.002, 0.5}, {0.047, 0.047, 0.25, 0.005, 0.1, 0.6}}};
  for (const environment& e : environments)
    out << e.name << "\n" << list("Lambda={", e.lambda) << list("Penetration_Rate={", e.penetration);
  return static_cast<bool>(out);
}

bool CityGenerator::write_imt2000_users(const std::string& path) const {
  const double e = cells * size;
  struct district {
    double density;  // users per km2
    std::initializer_list<double> quien;
    std::vector<std::pair<double, double>> corners;  // fractions of the extent
  };
  const district districts[] = {
      {291160, {1, 1, 1, 1, 1}, {{0.35, 0.35}, {0.65, 0.35}, {0.65, 0.65}, {0.35, 0.65}}},  // downtown
      {40000, {2, 0, 0, 0, 0}, {{0.02, 0.2}, {0.3, 0.2}, {0.3, 0.95}, {0.02, 0.95}}},       // west side
      {8000, {3, 0, 0, 0, 0}, {{0.0, 0.0}, {1.0, 0.0}, {1.0, 0.11}, {0.0, 0.11}}},          // south bank
      {120000, {1, 1, 0, 1, 0}, {{0.7, 0.2}, {0.98, 0.2}, {0.98, 0.55}}}};                   // east side
  std::ofstream out(path);
  out << "DATOS\nEnlace=Uplink\n" << list("Rp={", {8, 64, 144, 384, 30.4, 60.8, 243.2})
      << list("Eb_NoUP_In={", {4.8, 2.3, 2.3, 2.3, 1.5, 1.5, 1.5})
      << list("Eb_NoDL_In={", {6.7, 1.9, 1.9, 1.9, 1.2, 1.2, 1.2})
      << list("Eb_NoUP_Out={", {5.8, 3.1, 2.48, 2.2, 2.65, 2.45, 1.4})
      << list("Eb_NoDL_Out={", {7.8, 2.8, 2.0, 2.15, 2.1, 1.78, 1.05})
      << list("Ep={", {1, 1, 1, 1, 0.9, 0.9, 0.9}) << "poligono=" << sizeof districts / sizeof districts[0] << "\n";
  for (const district& d : districts) {
    out << "densidad=" << plain(d.density) << "\n" << list("quien={", d.quien) << "vertices=" << d.corners.size()
        << "\n";
    for (const auto& c : d.corners) out << "(" << plain(c.first * e) << "," << plain(c.second * e) << ")\n";
  }
  return static_cast<bool>(out);
}
