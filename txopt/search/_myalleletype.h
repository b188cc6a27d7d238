// _myalleletype: the gene of the genetic search, one per cell of the base station map.
// Held in 32 bits.
#pragma once

enum _myalleletype : int {
  no_tx = -1,     // the cell holds no base station
  tx_off = 0,     // a free base station, switched off
  tx_on = 1,      // a free base station, switched on
  tx_fixed = 2,   // a fixed base station, always on
};
