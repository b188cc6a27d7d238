// One solution of the power problem on the tables of a Trl_Assigner: the switched-on base
// stations, the serving row of every mobile user, and all powers in W. Orders solutions
// (fewer base stations first, then lower uplink power) and writes the report body.
#pragma once

#include <ostream>

#include "toolkit/array.h"
#include "toolkit/list.h"
#include "toolkit/vector.h"

class Trl_Assigner;
class Trl_Tx;
class Trl_RunningStats;

class Trl_Assignment {
 public:
  enum { power_sum = 0, max_power = 1 };  // objective kinds "PS" and "MP"

  Trl_Assigner& assigner;
  int tx_count;
  int rx_count;
  tk::array<int> serving;     // rx: row of the subset that serves the user
  tk::array<int> selected;    // tx: 1 when the base station at that position is on
  tk::array<int> tx_numbers;  // tx: `number` of the base station at each position
  tk::array<int> rows;        // row of the subset -> base station number
  tk::vector tx_uplink;       // W, by base station number
  tk::vector tx_downlink;     // W, by base station number
  tk::vector rx_uplink;       // W
  tk::vector rx_downlink;     // W
  double uplink_sum;          // W
  double uplink_max;          // W
  int used;                   // base stations switched on
  int objective_kind;         // power_sum or max_power

  Trl_Assignment(Trl_Assigner& assigner, int objective_kind, const tk::list<Trl_Tx>& tx_list);
  Trl_Assignment(const Trl_Assignment& other);
  // Copies the arrays, the vectors, the sums, `used` and the kind; keeps assigner and counts.
  Trl_Assignment& operator=(const Trl_Assignment& other);

  void select_all();
  // Switches on exactly the positions in the list.
  void select(const tk::list<int>& positions);
  void initial_servers();
  // Solves on the assigner with this assignment's fields.
  bool solve(bool validate, Trl_RunningStats* stats = nullptr);
  void accumulate();
  // 0 to 1: "PS" the uplink sum relative to the users' power limits, "MP" the largest
  // relative uplink power.
  double objective();
  // Fewer base stations win; between equal counts the lower uplink sum ("PS") or maximum
  // ("MP"); an equal value is no improvement.
  bool better_than(const Trl_Assignment& other, bool recompute_first);
  // The report body, line by line.
  void write(std::ostream& out) const;
};

std::ostream& operator<<(std::ostream& out, const Trl_Assignment& assignment);
