#include "propagation/Trl_XiaBertoni.h"

#include <algorithm>
#include <cmath>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "raster/Trl_Terrain.h"

namespace {
const double pi = 3.14159265358979323846;
const double two_pi_squared = 19.739208802178716;

unsigned profile_cells(const Trl_Terrain* terrain) {
  if (!terrain || !terrain->loaded()) return 0;
  const Trl_Grid& g = terrain->height_grid();
  return std::max(g.nx, g.ny);
}
}  // namespace

Trl_XiaBertoni::Trl_XiaBertoni(Trl_Terrain* terrain_, double frequency_ghz, double max_radius_, double tolerance_,
                               bool geometric_, double lmsd_linear_, double lmsd_exponent_, double far_constant_,
                               double far_factor_, double indoor_attenuation)
    : terrain(terrain_ && terrain_->loaded() ? terrain_ : nullptr),
      profile_size(profile_cells(terrain_)),
      heights(static_cast<int>(profile_cells(terrain_))),
      bits(static_cast<int>(profile_cells(terrain_)), true),
      frequency(frequency_ghz * 1e9),
      wavelength(299792458.0 / (frequency_ghz * 1e9)),
      max_radius(max_radius_),
      d(0), h_tx(0), h_rx(0), h_roof(0), spacing(0), street(0), dh_tx(0), dh_rx(0),
      lmsd_linear(lmsd_linear_),
      lmsd_exponent(lmsd_exponent_),
      far_constant(far_constant_),
      far_factor(far_factor_),
      indoor_factor(1.0 / indoor_attenuation),
      tolerance(tolerance_),
      geometric(geometric_) {
  if (terrain) terrain->add_reference();
}

Trl_XiaBertoni::~Trl_XiaBertoni() {
  if (terrain) terrain->release();
}

double Trl_XiaBertoni::far_loss() const {
  return 1.0 / std::pow(10.0, (far_constant + far_factor * std::log10(d)) * 0.1);
}

double Trl_XiaBertoni::free_space() const {
  double f = wavelength / (4 * pi * d);
  return well_above() ? f * f : 2 * f * f;
}

double Trl_XiaBertoni::rooftop_to_street() const {
  double r = std::sqrt(dh_rx * dh_rx + 0.25 * street * street);
  double theta = std::atan(2 * dh_rx / street);
  if (theta < 0.01) theta = 0.01;
  double t = 1 / theta - 1 / (theta + 2 * pi);
  return wavelength / (two_pi_squared * r) * t * t;
}

double Trl_XiaBertoni::multi_screen() const {
  if (well_above()) {
    double x = (dh_tx / d) * std::sqrt(spacing / wavelength);
    return lmsd_linear * std::pow(x, lmsd_exponent);
  }
  if (well_below()) {
    double q = spacing / (2 * pi * (d - spacing));
    double r = std::sqrt(dh_tx * dh_tx + spacing * spacing);
    double phi = -std::atan2(dh_tx, spacing);
    double t = 1 / phi - 1 / (phi + 2 * pi);
    return q * q * wavelength / r * t * t;
  }
  return spacing * spacing / (d * d);
}

bool Trl_XiaBertoni::analyse(const Trl_Tx& tx, const Trl_Rx& rx, const double* H, const Trl_TxBitvector& B, int n) {
  // The ground at both ends: the first and the last open cell.
  double A = H[0], Z = H[n - 1];
  for (int i = 0; i < n; ++i)
    if (!B.test(i)) {
      A = H[i];
      break;
    }
  for (int i = n - 1; i >= 0; --i)
    if (!B.test(i)) {
      Z = H[i];
      break;
    }
  bool indoor = B.test(n - 1) && rx.position.zcoord() <= H[n - 1] - Z;
  double slope = (Z - A) / static_cast<double>(n - 1);
  h_tx = (H[0] - A) + tx.position.zcoord();
  h_rx = rx.position.zcoord();

  bool in_building = B.test(0);
  int streets = B.test(0) ? 0 : 1;
  double gap_product = 1.0, height_sum = 0, roof_sum = 0;
  int gap = 0, street_cells = 0, building_cells = 0, buildings = 0;
  for (int i = 0; i < n; ++i) {
    double over = std::max(0.0, H[i] - i * slope - A);
    bool built = B.test(i);
    if (!in_building) {
      if (!built) {
        ++gap;
        ++street_cells;
      } else {
        in_building = true;
        height_sum += over;
        ++building_cells;
        if (geometric) gap_product *= gap;
        gap = 0;
      }
    } else if (built) {
      height_sum += over;
      ++building_cells;
    } else if (height_sum <= 0) {
      // A building no higher than the ground line is street.
      in_building = false;
      gap += 1 + building_cells;
      street_cells += 1 + building_cells;
      building_cells = 0;
    } else {
      in_building = false;
      roof_sum += height_sum / building_cells;
      height_sum = 0;
      building_cells = 0;
      ++buildings;
      ++gap;
      ++street_cells;
      ++streets;
    }
  }
  h_roof = buildings ? roof_sum / buildings : 0;
  spacing = buildings ? d / buildings : d;
  if (streets == 0)
    street = 0;
  else if (!geometric)
    street = street_cells * d / (n * static_cast<double>(streets));
  else
    street = (d / n) * std::pow(gap_product, 1.0 / streets);
  dh_tx = std::fabs(h_tx - h_roof);
  dh_rx = std::fabs(h_rx - h_roof);
  return indoor;
}

double Trl_XiaBertoni::over_the_roofs(const Trl_Tx& tx, const Trl_Rx& rx, const double* H, const Trl_TxBitvector& B,
                                      int n) {
  bool indoor = analyse(tx, rx, H, B, n);
  double L = (street == 0 || spacing == d) ? free_space() : free_space() * rooftop_to_street() * multi_screen();
  if (indoor) L *= indoor_factor;
  return tx.gain * rx.gain * L;
}

double Trl_XiaBertoni::gain(const Trl_Tx& tx, const Trl_Rx& rx) {
  d = tx.position.to_point().distance(rx.position.to_point());
  // Beyond the radius no raster is touched, and the indoor rule does not apply.
  if (d > max_radius) return tx.gain * rx.gain * far_loss();
  if (!terrain) {
    h_roof = 0;
    h_tx = tx.position.zcoord();
    return tx.gain * rx.gain * free_space();
  }
  int n = 0;
  terrain->height_profile(tx.cell_i, tx.cell_j, rx.cell_i, rx.cell_j, d, n, heights.data());
  terrain->clutter_profile(tx.cell_i, tx.cell_j, rx.cell_i, rx.cell_j, n, bits);
  return over_the_roofs(tx, rx, heights.data(), bits, n);
}

double Trl_XiaBertoni::gain_on_profile(const Trl_Tx& tx, const Trl_Rx& rx, const double* profile_heights,
                                       const Trl_TxBitvector& profile_bits, int n) {
  d = tx.position.to_point().distance(rx.position.to_point());
  if (d > max_radius) return tx.gain * rx.gain * far_loss();
  return over_the_roofs(tx, rx, profile_heights, profile_bits, n);
}
