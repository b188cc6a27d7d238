// AssignmentReport: what the export needs of a stored assignment report: per user (by its
// number) the label of its server and its powers, and the base stations in use.
#pragma once

#include <istream>
#include <map>
#include <set>
#include <string>

struct AssignmentReport {
  struct Link {
    std::string server;  // label of the serving base station
    double uplink_dbm = 0, downlink_dbm = 0;
  };
  std::map<int, Link> users;
  std::set<std::string> in_use;  // labels of the base stations that send

  // False with a reason when the report's tables are missing or broken.
  bool read(std::istream& in, std::string& error);
};
