// Whether the next large sweep is shared out between two threads, from the wall time that
// sweeps of either way have cost lately. Two threads pay only while the second core is free
// and near: on a loaded or virtual machine it may be neither for a while, and then the shared
// sweep waits on the other thread and can take twice as long as one thread alone. The choice
// changes only the time: both ways give the same results to the bit.
#pragma once

class Trl_SplitChoice {
 public:
  // The other way is tried once in this many choices, so that its cost stays current.
  static const int probe_every = 32;

  // The way of the next sweep: true to share it. Each way is tried first until it has a cost.
  bool split_next();
  // What the sweep of the last choice cost, in ns per gain. The way in use keeps a running
  // average that gives the latest sweep a quarter of the weight; a way tried once takes its
  // latest cost as it is, so that a core that is free again is noticed at the first try.
  void record(bool split, double ns_per_gain);

 private:
  double cost[2] = {0, 0};  // alone, shared; 0 until measured
  int choices = 0;
  bool probing = false;     // the last choice tried the other way, or a way without a cost
};
