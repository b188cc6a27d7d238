// Trl_GaContext: what GAlib's callbacks (objective, initialisers, operators) need and can't be
// handed through GAlib: the candidate assignment that evaluations write to, the allele sets
// of the map and the gene index of every base station position. One search at a time fills
// it; a Scope sets it at the start of a run and clears it at the end.
#pragma once

#include <memory>

#include "toolkit/array.h"

class MyAlleleSetArray;
class Trl_Assignment;

class Trl_GaContext {
 public:
  Trl_Assignment* assignment = nullptr;  // the candidate of the running search
  bool validate_downlink = false;        // "Validate Downlink" for every evaluation
  std::unique_ptr<MyAlleleSetArray> allele_sets;
  tk::array<int> tx_cells;  // base station position -> gene index

  static Trl_GaContext& current();
  void clear();

  // Installs a candidate for the life of the object and clears everything at its end.
  class Scope {
   public:
    Scope(Trl_Assignment& candidate, bool validate_downlink);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
  };
};
