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
};
