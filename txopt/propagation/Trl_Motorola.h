// The simple propagation model ("Simple"): a logarithmic law of the spatial distance,
// loss = constant [dB] + factor [dB per decade of m] * log10(d), with no terrain and no
// cut-off at short range.
#pragma once

#include "propagation/Trl_PathLoss.h"

class Trl_Motorola : public Trl_PathLoss {
 public:
  double constant;  // dB
  double factor;    // dB per decade of metres

  Trl_Motorola(double constant, double factor);
  double gain(const Trl_Tx& tx, const Trl_Rx& rx) override;
  tk::string description() override;

  // The gains from one base station to n users given as columns (x, y, z in m, and the
  // natural log of each user's antenna gain), into out[0..n-1]. The same law as gain(),
  // written as exp(ln(tx gain) + ln(rx gain) - constant ln(10)/10 - factor/20 ln(d^2)) and
  // evaluated by the C library's vector exp and log: with AVX2 the logs of the whole row
  // four users at a time, then the exps eight (AVX-512) or four at a time; otherwise two at
  // a time. It agrees with gain() to a few units in the last place, and equal distances give
  // equal gains, whichever width and place computed them.
  void gain_row(const Trl_Tx& tx, const double* x, const double* y, const double* z,
                const double* log_rx_gain, int n, double* out) const;
  // Switches the eight-lane loop off, for comparisons.
  static bool eight_lanes;
};
