#include "search/Trl_SplitChoice.h"

bool Trl_SplitChoice::split_next() {
  ++choices;
  probing = cost[1] == 0 || cost[0] == 0 || choices % probe_every == 0;
  if (cost[1] == 0) return true;
  if (cost[0] == 0) return false;
  const bool cheaper = cost[1] <= cost[0];
  return probing ? !cheaper : cheaper;
}

void Trl_SplitChoice::record(bool split, double ns_per_gain) {
  double& c = cost[split ? 1 : 0];
  c = probing ? ns_per_gain : 0.75 * c + 0.25 * ns_per_gain;
}
