#include "network/Trl_Tx.h"

#include <cmath>
#include <limits>

#include "network/Trl_RandomRegion.h"
#include "network/Trl_Rx.h"
#include "toolkit/panel.h"
#include "raster/Trl_Grid.h"
#include "raster/Trl_Terrain.h"

namespace {

// The system's own zero point of the Celsius scale and Boltzmann's constant (J/K).
const double zero_celsius = 273.18;
const double boltzmann = 1.380658e-23;

}  // namespace

Trl_Tx::Trl_Tx()
    : label("none"),
      number(-1),
      cell_i(0),
      cell_j(0),
      position(0, 0, 30),
      spare(0),
      status(usable),
      max_power(20),
      pilot_power(2),
      max_channel_power(2),
      gain(std::pow(10.0, 0.9)),
      noise_factor(std::pow(10.0, 0.5)),
      orthogonality(0.4) {}

Trl_Tx::Trl_Tx(const tk::d3_point& position, const tk::string& label, int number,
               double max_power, double pilot_power, double max_channel_power, double gain,
               double noise_factor, double orthogonality, int status)
    : label(label),
      number(number),
      cell_i(0),
      cell_j(0),
      position(position),
      spare(0),
      status(status),
      max_power(max_power),
      pilot_power(pilot_power),
      max_channel_power(max_channel_power),
      gain(gain),
      noise_factor(noise_factor),
      orthogonality(orthogonality) {}

void Trl_Tx::set_xy(const tk::point& p) {
  position = tk::d3_point(p.xcoord(), p.ycoord(), position.zcoord());
}

void Trl_Tx::set_cell(const Trl_Grid& grid) {
  const tk::point p(position.xcoord(), position.ycoord());
  cell_i = grid.column_of(p);
  cell_j = grid.row_of(p);
}

double Trl_Tx::noise(double temperature_celsius, double bandwidth) const {
  return (zero_celsius + temperature_celsius) * boltzmann * bandwidth * noise_factor;
}

double Trl_Tx::distance(const Trl_Rx& rx) const {
  const double dz = position.zcoord() - rx.position.zcoord();
  const double dx = position.xcoord() - rx.position.xcoord();
  const double dy = position.ycoord() - rx.position.ycoord();
  return std::sqrt(dz * dz + (dx * dx + dy * dy));
}

bool Trl_Tx::read(std::istream& in, double z) {
  int n;
  double x, y;
  if (!(in >> n)) return false;
  if (!(in >> x >> y)) return false;
  label = tk::string("BS%04d", n);
  number = -1;
  cell_i = cell_j = 0;
  position = tk::d3_point(x, y, z);
  spare = -1;
  status = usable;
  return true;
}

tk::list_item Trl_Tx::nearest(const tk::list<Trl_Tx>& list, const tk::point& p) {
  if (list.size() == 1) return list.first();
  tk::list_item best = nullptr;
  double best_distance = std::numeric_limits<double>::max();
  for (tk::list_item it = list.first(); it; it = list.succ(it)) {
    const Trl_Tx& tx = list[it];
    const double d = tk::point(tx.position.xcoord(), tx.position.ycoord()).distance(p);
    if (d < best_distance) {
      best_distance = d;
      best = it;
    }
  }
  return best;
}

int compare_tx_x(const Trl_Tx& a, const Trl_Tx& b) {
  const double x = a.position.xcoord(), y = b.position.xcoord();
  return x < y ? -1 : (x > y ? 1 : 0);
}

int compare_tx_y(const Trl_Tx& a, const Trl_Tx& b) {
  const double x = a.position.ycoord(), y = b.position.ycoord();
  return x < y ? -1 : (x > y ? 1 : 0);
}

bool Trl_Tx::read_list(std::istream& in, const Trl_Tx& templ, tk::list<Trl_Tx>& list,
                       tk::point& low, tk::point& high) {
  const double far = std::numeric_limits<double>::max();
  double xmin = far, ymin = far, xmax = -far, ymax = -far;
  Trl_Tx record(templ);
  for (int counter = 0; record.read(in, 0); ++counter) {
    record.number = counter;
    list.append(record);
    const double x = record.position.xcoord(), y = record.position.ycoord();
    if (x < xmin) xmin = x;
    if (y < ymin) ymin = y;
    if (x > xmax) xmax = x;
    if (y > ymax) ymax = y;
  }
  // The end of the file ends every good read, also one cut off in a record; a failure
  // before it means a token that is no number.
  if (!in.eof() && in.fail()) return false;
  low = tk::point(xmin, ymin);
  high = tk::point(xmax, ymax);
  return true;
}

void Trl_Tx::generate(tk::list<Trl_Tx>& list, const Trl_Tx& templ, Trl_RandomRegion& region) {
  for (int k = 0; k < region.count; ++k) {
    Trl_Tx tx(templ);
    tx.set_xy(region.draw());
    tx.label = tk::string("BS%04d", k);
    tx.number = k;
    list.append(tx);
  }
}

namespace {

// The values of the property dialog, with the ratios in dB and the status as a choice.
struct Properties {
  tk::string label;
  double x, y, height, max_power, pilot_power, max_channel_power, gain_db, noise_db,
      orthogonality;
  int status_choice;  // 0 "usable", 1 "fixed", 2 "excluded"

  explicit Properties(const Trl_Tx& tx)
      : label(tx.label),
        x(tx.position.xcoord()),
        y(tx.position.ycoord()),
        height(tx.position.zcoord()),
        max_power(tx.max_power),
        pilot_power(tx.pilot_power),
        max_channel_power(tx.max_channel_power),
        gain_db(10 * std::log10(tx.gain)),
        noise_db(10 * std::log10(tx.noise_factor)),
        orthogonality(tx.orthogonality),
        status_choice(tx.status == Trl_Tx::fixed ? 1 : tx.status == Trl_Tx::excluded ? 2 : 0) {}

  // The first failed test's message, or null.
  const char* failure() const {
    if (!(height > 0)) return "Height must be greater than 0.";
    if (!(max_power > 0 && pilot_power >= 0 && max_channel_power > 0))
      return "Powers must be greater than 0.";
    if (!(orthogonality >= 0 && orthogonality <= 1)) return "Orthogonality factor must in [0,1].";
    return nullptr;
  }

  void store(Trl_Tx& tx) const {
    tx.label = label;
    tx.position = tk::d3_point(x, y, height);
    tx.max_power = max_power;
    tx.pilot_power = pilot_power;
    tx.max_channel_power = max_channel_power;
    tx.gain = std::pow(10.0, 0.1 * gain_db);
    tx.noise_factor = std::pow(10.0, 0.1 * noise_db);
    tx.orthogonality = orthogonality;
    const int statuses[] = {Trl_Tx::usable, Trl_Tx::fixed, Trl_Tx::excluded};
    tx.status = statuses[status_choice < 0 || status_choice > 2 ? 0 : status_choice];
  }
};

}  // namespace

bool Trl_Tx::edit(tk::window& parent) {
  enum { ok = 0, cancel = 1, reset = 2 };
  Properties values(*this);
  tk::panel dialog("Base station");
  dialog.string_item("Label: ", values.label);
  dialog.double_item("X-coordinate [m]: ", values.x);
  dialog.double_item("Y-coordinate [m]: ", values.y);
  dialog.double_item("Height [m]: ", values.height);
  dialog.double_item("Max. power [W]: ", values.max_power);
  dialog.double_item("Pilot power [W]: ", values.pilot_power);
  dialog.double_item("Max. channel power [W]: ", values.max_channel_power);
  dialog.double_item("Effectiv gain [dB]: ", values.gain_db);
  dialog.double_item("Noise figure [dB]: ", values.noise_db);
  dialog.double_item("Orthogonality factor [1]: ", values.orthogonality);
  dialog.choice_item("Status: ", values.status_choice, "usable", "fixed", "excluded");
  dialog.button("Ok", ok);
  dialog.button("Cancel", cancel);
  dialog.button("Reset", reset);
  for (;;) {
    const int answer = dialog.open(parent);
    if (answer == reset) {
      values = Properties(*this);
      continue;
    }
    if (answer != ok) return false;
    if (const char* failure = values.failure()) {
      parent.acknowledge(failure);
      continue;
    }
    Trl_Tx edited(*this);
    values.store(edited);
    *this = edited;
    return true;
  }
}

void Trl_Tx::generate(tk::list<Trl_Tx>& list, const Trl_Tx& templ, Trl_RandomRegion& region,
                      const Trl_Terrain& terrain, bool only_on_building,
                      double height_over_building) {
  for (int number = 0; number < region.count;) {
    const tk::point p = region.draw();
    if (!terrain.contains(p)) continue;
    Trl_Tx tx(templ);
    tx.set_xy(p);
    tx.label = tk::string("BS%04d", number);
    tx.number = number;
    tx.set_cell(terrain.height_grid());
    // A cell outside the clutter raster counts as open rather than being read out of range.
    const bool building =
        terrain.in_clutter(tx.cell_i, tx.cell_j) && !terrain.is_open(tx.cell_i, tx.cell_j);
    if (only_on_building && !building) continue;
    if (building)
      tx.position = tk::d3_point(p.xcoord(), p.ycoord(),
                                 terrain.height(tx.cell_i, tx.cell_j) + height_over_building);
    list.append(tx);
    ++number;
  }
}
