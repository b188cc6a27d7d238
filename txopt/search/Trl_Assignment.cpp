#include "search/Trl_Assignment.h"

#include <cmath>
#include <limits>

#include "network/Trl_Tx.h"
#include "search/Trl_Assigner.h"

namespace {

double dbm(double watt) { return 10 * std::log10(watt) + 30; }

const char* const separator = "# -----------------------------------";

}  // namespace

Trl_Assignment::Trl_Assignment(Trl_Assigner& assigner, int objective_kind,
                               const tk::list<Trl_Tx>& tx_list)
    : assigner(assigner),
      tx_count(tx_list.size()),
      rx_count(assigner.rx_count),
      serving(rx_count),
      selected(tx_count),
      tx_numbers(tx_count),
      rows(tx_count),
      tx_uplink(tx_count),
      tx_downlink(tx_count),
      rx_uplink(rx_count),
      rx_downlink(rx_count),
      uplink_sum(0),
      uplink_max(0),
      used(tx_count),
      objective_kind(objective_kind) {
  for (int r = 0; r < rx_count; ++r) serving[r] = 0;
  int k = 0;
  for (const Trl_Tx& tx : tx_list) {
    selected[k] = 0;
    tx_numbers[k] = tx.number;
    rows[k] = tx.number;
    ++k;
  }
}

Trl_Assignment::Trl_Assignment(const Trl_Assignment& other)
    : assigner(other.assigner),
      tx_count(other.tx_count),
      rx_count(other.rx_count),
      serving(other.serving),
      selected(other.selected),
      tx_numbers(other.tx_numbers),
      rows(other.rows),
      tx_uplink(other.tx_uplink),
      tx_downlink(other.tx_downlink),
      rx_uplink(other.rx_uplink),
      rx_downlink(other.rx_downlink),
      uplink_sum(other.uplink_sum),
      uplink_max(other.uplink_max),
      used(other.used),
      objective_kind(other.objective_kind) {}

Trl_Assignment& Trl_Assignment::operator=(const Trl_Assignment& other) {
  if (this == &other) return *this;
  serving = other.serving;
  selected = other.selected;
  tx_numbers = other.tx_numbers;
  rows = other.rows;
  tx_uplink = other.tx_uplink;
  tx_downlink = other.tx_downlink;
  rx_uplink = other.rx_uplink;
  rx_downlink = other.rx_downlink;
  uplink_sum = other.uplink_sum;
  uplink_max = other.uplink_max;
  used = other.used;
  objective_kind = other.objective_kind;
  return *this;
}

void Trl_Assignment::select_all() {
  used = tx_count;
  for (int k = 0; k < tx_count; ++k) selected[k] = 1;
}

void Trl_Assignment::select(const tk::list<int>& positions) {
  used = positions.size();
  for (int k = 0; k < tx_count; ++k) selected[k] = 0;
  for (int k : positions) selected[k] = 1;
}

void Trl_Assignment::initial_servers() { assigner.strongest_server(serving); }

bool Trl_Assignment::solve(bool validate, Trl_RunningStats* stats) {
  return assigner.solve(used, rx_downlink, rx_uplink, tx_downlink, serving, rows, selected,
                        tx_numbers, validate, stats);
}

void Trl_Assignment::accumulate() {
  for (int k = 0; k < tx_count; ++k) tx_uplink[k] = 0;
  uplink_sum = 0;
  uplink_max = -std::numeric_limits<double>::max();
  for (int r = rx_count - 1; r >= 0; --r) {
    const double p = rx_uplink[r];
    tx_uplink[rows[serving[r]]] += p;
    uplink_sum += p;
    if (p > uplink_max) uplink_max = p;
  }
}

double Trl_Assignment::objective() {
  accumulate();
  double value = 0;
  if (objective_kind == power_sum) {
    value = uplink_sum / assigner.rx_max_power_sum;
  } else if (objective_kind == max_power) {
    for (int r = 0; r < rx_count; ++r) {
      const double share = rx_uplink[r] / assigner.rx_max_power[r];
      if (share > value) value = share;
    }
  }
  return value > 1 ? 1 : value;
}

bool Trl_Assignment::better_than(const Trl_Assignment& other, bool recompute_first) {
  if (recompute_first) accumulate();
  if (used > other.used) return false;
  if (used < other.used) return true;
  if (!recompute_first) accumulate();
  if (objective_kind == power_sum) return uplink_sum < other.uplink_sum;
  if (objective_kind == max_power) return uplink_max < other.uplink_max;
  return false;
}

void Trl_Assignment::write(std::ostream& out) const {
  double up_max = -std::numeric_limits<double>::max();
  double up_min = std::numeric_limits<double>::max();
  double down_max = up_max, down_min = up_min, down_sum = 0;
  for (int r = 0; r < rx_count; ++r) {
    const double up = rx_uplink[r], down = rx_downlink[r];
    if (up > up_max) up_max = up;
    if (up < up_min) up_min = up;
    if (down > down_max) down_max = down;
    if (down < down_min) down_min = down;
    down_sum += down;
  }
  out << "# number of rx in input               : " << rx_count << '\n';
  out << "# number of tx in input               : " << tx_count << '\n';
  out << "# number of tx used in assignation    : " << used << '\n';
  out << "# maximum rx uplink power             : " << dbm(up_max) << " [dBm]\n";
  out << "# minimum rx uplink power             : " << dbm(up_min) << " [dBm]\n";
  out << "# total transmitted rx uplink power   : " << uplink_sum << " [W]\n";
  out << "# maximum rx downlink power           : " << dbm(down_max) << " [dBm]\n";
  out << "# minimum rx downlink power           : " << dbm(down_min) << " [dBm]\n";
  out << "# total transmitted rx downlink power : " << down_sum << " [W]\n";
  out << separator << '\n';
  out << "# rx number, tx assigned, rx uplink power [dBm], rx downlink power [dBm]\n";
  for (int r = 0; r < rx_count; ++r)
    out << r << ", " << serving[r] << ", " << dbm(rx_uplink[r]) << ", " << dbm(rx_downlink[r])
        << '\n';
  out << separator << '\n';
  out << "# tx number, tx uplink power [W], tx downlink power [W]\n";
  for (int k = 0; k < tx_count; ++k)
    out << k << ", " << tx_uplink[k] << ", " << tx_downlink[k] << '\n';
}

std::ostream& operator<<(std::ostream& out, const Trl_Assignment& assignment) {
  assignment.write(out);
  return out;
}
