#include "network/Trl_Rx.h"

#include <cmath>
#include <limits>

#include "network/Trl_Tx.h"
#include "network/Trl_RandomRegion.h"
#include "raster/Trl_Grid.h"
#include "raster/Trl_Terrain.h"

namespace {

const double zero_celsius = 273.18;
const double boltzmann = 1.380658e-23;

}  // namespace

int Trl_Rx::reference_i = 0;
int Trl_Rx::reference_j = 0;

Trl_Rx::Trl_Rx()
    : number(-1),
      index(-1),
      cell_i(0),
      cell_j(0),
      position(0, 0, 1.5),
      ebno_down(std::pow(10.0, 0.55)),
      ebno_up(std::pow(10.0, 1.0)),
      noise_factor(std::pow(10.0, 0.9)),
      max_power(std::pow(10.0, -0.9)),
      min_power(std::pow(10.0, -8.0)),
      gain(std::pow(10.0, -0.3)),
      activity(0.66),
      rate_down(12.2),
      rate_up(12.2),
      bearer(0) {}

Trl_Rx::Trl_Rx(const tk::d3_point& position, int number, double ebno_down, double ebno_up,
               double noise_factor, double max_power, double min_power, double gain,
               double activity, double rate_down, double rate_up, int bearer)
    : number(number),
      index(-1),
      cell_i(0),
      cell_j(0),
      position(position),
      ebno_down(ebno_down),
      ebno_up(ebno_up),
      noise_factor(noise_factor),
      max_power(max_power),
      min_power(min_power),
      gain(gain),
      activity(activity),
      rate_down(rate_down),
      rate_up(rate_up),
      bearer(bearer) {}

void Trl_Rx::set_cell(const Trl_Grid& grid) {
  const tk::point p(position.xcoord(), position.ycoord());
  cell_i = grid.column_of(p);
  cell_j = grid.row_of(p);
}

void Trl_Rx::set_cell(int i, int j) {
  cell_i = i;
  cell_j = j;
}

double Trl_Rx::noise(double temperature_celsius, double bandwidth) const {
  return (zero_celsius + temperature_celsius) * boltzmann * bandwidth * noise_factor;
}

double Trl_Rx::required_down(double x) const { return x * ebno_down * rate_down * 1000; }

double Trl_Rx::required_up(double x) const { return x * ebno_up * rate_up * 1000; }

bool Trl_Rx::read(std::istream& in) {
  int n;
  double x, y;
  if (!(in >> n)) return false;
  if (!(in >> x >> y)) return false;
  number = n;
  position = tk::d3_point(x, y, position.zcoord());
  return true;
}

void Trl_Rx::set_reference(const Trl_Tx& tx) {
  reference_i = tx.cell_i;
  reference_j = tx.cell_j;
}

int compare_rx_angle(const Trl_Rx& a, const Trl_Rx& b) {
  const double angle_a = std::atan2(a.cell_j - Trl_Rx::reference_j, a.cell_i - Trl_Rx::reference_i);
  const double angle_b = std::atan2(b.cell_j - Trl_Rx::reference_j, b.cell_i - Trl_Rx::reference_i);
  return angle_a < angle_b ? -1 : (angle_a > angle_b ? 1 : 0);
}

namespace {

// A user on the terrain gets its cell in the height grid; one off it is refused.
bool on_terrain(const Trl_Terrain& terrain, Trl_Rx& rx) {
  if (!terrain.contains(tk::point(rx.position.xcoord(), rx.position.ycoord()))) return false;
  rx.set_cell(terrain.height_grid());
  return true;
}

}  // namespace

bool Trl_Rx::read_list(std::istream& in, const Trl_Rx& templ, const Trl_Terrain* terrain,
                       tk::list<Trl_Rx>& list, tk::point& low, tk::point& high, int& ignored) {
  const double far = std::numeric_limits<double>::max();
  double xmin = far, ymin = far, xmax = -far, ymax = -far;
  ignored = 0;
  Trl_Rx record(templ);
  for (int counter = 0; record.read(in); ++counter) {
    record.number = counter;
    const double x = record.position.xcoord(), y = record.position.ycoord();
    if (!terrain) {
      list.append(record);
    } else if (on_terrain(*terrain, record)) {
      list.append(record);
    } else {
      ++ignored;
    }
    if (x < xmin) xmin = x;
    if (y < ymin) ymin = y;
    if (x > xmax) xmax = x;
    if (y > ymax) ymax = y;
  }
  if (!in.eof() && in.fail()) return false;
  low = tk::point(xmin, ymin);
  high = tk::point(xmax, ymax);
  return true;
}

namespace {

// One round of up to 100 draws: the first point on the terrain makes a user, taken unless
// streets_only asks for an open cell and the cell holds a building.
bool draw_on_terrain(Trl_RandomRegion& region, const Trl_Terrain& terrain, bool streets_only,
                     Trl_Rx& rx) {
  for (int draw = 0; draw < 100; ++draw) {
    const tk::point p = region.draw();
    if (!terrain.contains(p)) continue;
    rx.position = tk::d3_point(p.xcoord(), p.ycoord(), rx.position.zcoord());
    rx.set_cell(terrain.height_grid());
    // A cell outside the clutter raster counts as open rather than being read out of range.
    const bool open = !terrain.in_clutter(rx.cell_i, rx.cell_j) || terrain.is_open(rx.cell_i, rx.cell_j);
    return !streets_only || open;
  }
  return false;
}

}  // namespace

void Trl_Rx::generate(tk::list<Trl_Rx>& list, const Trl_Rx& templ, Trl_RandomRegion& region,
                      bool streets_only, const Trl_Terrain* terrain) {
  if (!terrain) {
    for (int k = 0; k < region.count; ++k) {
      Trl_Rx rx(templ);
      const tk::point p = region.draw();
      rx.position = tk::d3_point(p.xcoord(), p.ycoord(), templ.position.zcoord());
      rx.number = k;
      list.append(rx);
    }
    return;
  }
  if (!terrain->height_grid().overlaps(region.xmin, region.ymin, region.xmax, region.ymax)) return;
  for (int made = 0; made < region.count;) {
    Trl_Rx rx(templ);
    rx.number = made;
    if (draw_on_terrain(region, *terrain, streets_only, rx)) {
      list.append(rx);
      ++made;
    }
  }
}
