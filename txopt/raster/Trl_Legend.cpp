#include "raster/Trl_Legend.h"

#include <cfloat>
#include <cmath>

namespace {
const int colour_table[14] = {15, 14, 13, 16, 6, 10, 8, 11, 12, 4, 9, 7, 5, 3};
}

Trl_Legend_item::Trl_Legend_item(double v, int c) : value(v), colour(c) {
  if (v != DBL_MAX) label = tk::string("%g", v);
}

Trl_Legend::Trl_Legend(bool irregular_, int count, double lowest_, double step)
    : irregular(irregular_), lowest(lowest_), items(count + 2 > 30 ? count + 2 : 30) {
  highest = (count - 1) * step + lowest;
  scale = (count - 1) / (highest - lowest);
  last = count + 1;
  items[0] = Trl_Legend_item(lowest, 1);
  for (int k = 1; k <= count; ++k) items[k] = Trl_Legend_item(k * step + lowest, colour_table[(k - 1) % 14]);
  items[count + 1] = Trl_Legend_item(DBL_MAX, 2);
}

int Trl_Legend::index_of(double v) const {
  if (!irregular) {
    if (v < lowest) return 0;
    if (v >= highest) return last;
    return static_cast<int>(std::floor((v - lowest) * scale)) + 1;
  }
  for (int k = 0; k <= last; ++k)
    if (items[k].value > v) return k;
  return last;
}
