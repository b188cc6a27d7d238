// Trl_Imt2000Command: the command "IMT2000 mobile users". It asks for the traffic file
// ("Entrada") and the bearer and polygon file ("Datos"), each until one reads or the planner
// cancels, draws one snapshot of active users from them, hands it to the planner and writes
// the diagnostic file "test.out" into the working directory.
#pragma once

#include "toolkit/string.h"

class Trl_Filename;
class Trl_Planner;
class Trl_Imt2000Traffic;

class Trl_Imt2000Command {
 public:
  static void run(Trl_Planner& planner);

 private:
  // One file dialog, repeated after a failed read; false when cancelled.
  static bool load(Trl_Planner& planner, Trl_Filename& file, const char* title,
                   int (Trl_Imt2000Traffic::*read)(const tk::string&));
};
