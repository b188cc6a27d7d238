// Trl_Imt2000Snapshot: the active users of one IMT-2000 generation, as working arrays.
// Each user has two legs, uplink first and downlink second, with a bearer and a linear
// Eb/N0 each, and one position (x, y in m).
#pragma once

#include <ostream>
#include <vector>

class Trl_Imt2000Snapshot {
 public:
  std::vector<double> positions;  // x, y of each user, m
  std::vector<int> bearers;       // two per user: uplink leg, downlink leg
  std::vector<double> ebno;       // two per user, linear
  int n = 0;                      // entries of bearers and ebno: twice the users
  double rates[7] = {0, 0, 0, 0, 0, 0, 0};  // kbit/s per bearer, Rp * Ep; 0 beyond longit
  int longit = 0;                 // bearers of the link direction: 5 uplink, 7 downlink

  int users() const { return n / 2; }
  double x(int user) const { return positions[2 * user]; }
  double y(int user) const { return positions[2 * user + 1]; }

  // The lines of the diagnostic file "test.out", one per user.
  void write(std::ostream& out) const;
};
