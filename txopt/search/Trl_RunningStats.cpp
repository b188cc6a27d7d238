#include "search/Trl_RunningStats.h"

#include <limits>

Trl_RunningStats::Trl_RunningStats()
    : count(0),
      sum(0),
      sum_of_squares(0),
      minimum(std::numeric_limits<double>::max()),
      maximum(-std::numeric_limits<double>::max()) {}

void Trl_RunningStats::add(double x) {
  count += 1;
  sum += x;
  sum_of_squares += x * x;
  if (x < minimum) minimum = x;
  if (x > maximum) maximum = x;
}
