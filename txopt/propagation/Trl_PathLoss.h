// The interface of a propagation model: the gain of the link between one base station and
// one mobile user as a linear power ratio, both antenna gains included (10*log10 gives dB).
// The assignment works on these numbers alone.
#pragma once

#include "toolkit/string.h"

class Trl_Tx;
class Trl_Rx;

class Trl_PathLoss {
 public:
  virtual ~Trl_PathLoss() {}
  virtual double gain(const Trl_Tx& tx, const Trl_Rx& rx) = 0;
  virtual tk::string description() = 0;
};
