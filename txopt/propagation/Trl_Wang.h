// A lossless link: every pair has gain 1. Selectable only by the planner's model field 2;
// its three parameters are kept and read by nothing.
#pragma once

#include "propagation/Trl_PathLoss.h"

class Trl_Wang : public Trl_PathLoss {
 public:
  double a;
  double b;
  double c;

  Trl_Wang(double a, double b, double c);
  double gain(const Trl_Tx& tx, const Trl_Rx& rx) override;
  tk::string description() override;
};
