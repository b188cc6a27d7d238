#include "geo/AssignmentReport.h"

#include <cstdio>
#include <map>
#include <vector>

// The report's three tables follow their heading lines: users ("# rx number, ..."), base
// station powers ("# tx number, ...") and the number/label table.
bool AssignmentReport::read(std::istream& in, std::string& error) {
  struct UserLine {
    int number, tx;
    double up, down;
  };
  std::vector<UserLine> user_lines;
  std::map<int, double> downlink_w;
  std::map<int, std::string> labels;
  enum { none, user_table, tx_table, label_table } table = none;
  std::string line;
  while (std::getline(in, line)) {
    if (line.rfind("# rx number", 0) == 0) table = user_table;
    else if (line.rfind("# tx number", 0) == 0) table = tx_table;
    else if (line.rfind("# base station number/label", 0) == 0) table = label_table;
    if (line.empty() || line[0] == '#') continue;
    UserLine u{};
    int number = 0;
    double up = 0, down = 0;
    char label[256];
    if (table == user_table && std::sscanf(line.c_str(), "%d, %d, %lf, %lf", &u.number, &u.tx, &u.up, &u.down) == 4)
      user_lines.push_back(u);
    else if (table == tx_table && std::sscanf(line.c_str(), "%d, %lf, %lf", &number, &up, &down) == 3)
      downlink_w[number] = down;
    else if (table == label_table && std::sscanf(line.c_str(), "%d : %255s", &number, label) == 2)
      labels[number] = label;
    else {
      error = "a line of the report cannot be read: " + line;
      return false;
    }
  }
  if (labels.empty()) {
    error = "the report has no base station table";
    return false;
  }
  for (const UserLine& u : user_lines) {
    if (!labels.count(u.tx)) {
      error = "the report names base station " + std::to_string(u.tx) + ", which its table lacks";
      return false;
    }
    users[u.number] = {labels[u.tx], u.up, u.down};
  }
  // A base station in use sends at least its pilot.
  for (const auto& [number, power] : downlink_w)
    if (power > 0 && labels.count(number)) in_use.insert(labels[number]);
  return true;
}
