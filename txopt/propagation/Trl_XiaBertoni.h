// Trl_XiaBertoni: the urban propagation model. It walks the height and building rasters
// on the line from base station to mobile user, takes from them the mean roof height,
// building spacing and street width, and multiplies free space, the diffraction from the
// last roof down to the street, and the multi-screen loss over the roofs. Beyond the
// maximum cell radius a logarithmic law takes over; a user inside a building pays the
// indoor attenuation. All values are linear power ratios, heights and lengths in m.
#pragma once

#include "network/Trl_TxBitvector.h"
#include "propagation/Trl_PathLoss.h"
#include "toolkit/array.h"

class Trl_Terrain;

class Trl_XiaBertoni : public Trl_PathLoss {
 public:
  Trl_XiaBertoni(Trl_Terrain* terrain, double frequency_ghz, double max_radius, double tolerance, bool geometric,
                 double lmsd_linear, double lmsd_exponent, double far_constant, double far_factor,
                 double indoor_attenuation);
  ~Trl_XiaBertoni() override;
  Trl_XiaBertoni(const Trl_XiaBertoni&) = delete;
  Trl_XiaBertoni& operator=(const Trl_XiaBertoni&) = delete;

  double gain(const Trl_Tx& tx, const Trl_Rx& rx) override;
  tk::string description() override { return ""; }
  // The same on a profile fetched by the caller: n heights (m) and building bits.
  double gain_on_profile(const Trl_Tx& tx, const Trl_Rx& rx, const double* profile_heights,
                         const Trl_TxBitvector& profile_bits, int n);

  Trl_Terrain* terrain;
  unsigned profile_size;
  tk::array<double> heights;
  Trl_TxBitvector bits;
  double frequency;   // Hz
  double wavelength;  // m
  double max_radius;  // m
  // Scratch of the last call.
  double d, h_tx, h_rx, h_roof, spacing, street, dh_tx, dh_rx;
  double lmsd_linear, lmsd_exponent;
  double far_constant, far_factor;  // dB, dB per decade of m
  double indoor_factor;
  double tolerance;
  bool geometric;

  // The factors of the formula on the scratch fields.
  double far_loss() const;
  double free_space() const;
  double rooftop_to_street() const;
  double multi_screen() const;
  bool well_above() const { return h_tx > h_roof && h_roof / h_tx < tolerance; }
  bool well_below() const { return h_tx < h_roof && h_tx / h_roof < tolerance; }

 private:
  // Sets the scratch fields from the profile; true when the user is inside a building.
  bool analyse(const Trl_Tx& tx, const Trl_Rx& rx, const double* H, const Trl_TxBitvector& B, int n);
  double over_the_roofs(const Trl_Tx& tx, const Trl_Rx& rx, const double* H, const Trl_TxBitvector& B, int n);
};
