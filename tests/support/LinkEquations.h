// Test support: a stored assignment report read back, and the up- and downlink equations
// checked on it with gains that the test works out on its own. The constants are the
// planner's defaults worked by hand.
#pragma once

#include <istream>
#include <string>
#include <vector>

struct StoredReport {
  std::vector<std::string> header;     // the "# " lines before the user table, separators left out
  std::vector<std::string> labels;     // the lines of the number/label table
  int tx_used = -1;
  double uplink_sum = 0;               // W, as printed in the head
  std::vector<int> server;             // per user: the row of the subset that serves it
  std::vector<double> up, down;        // per user, W
  std::vector<double> tx_up, tx_down;  // per base station number, W
};

StoredReport parse_report(std::istream& in);

// The numbers of the base stations in use, in row order: those with downlink power (every
// station in use sends its pilot).
std::vector<int> stations_in_use(const StoredReport& report);

// gain[k][r]: the path gain from base station number k to user r. Checks that every user's
// uplink power just meets its target at its server, that no other station in use would need
// clearly less, that the station sums match, and that every downlink channel just meets its
// target against noise and the other powers; every check within the six printed digits.
void expect_link_equations(const StoredReport& report, const std::vector<std::vector<double>>& gain,
                           double rx_max_power, double tx_max_power, double tx_max_channel_power);
