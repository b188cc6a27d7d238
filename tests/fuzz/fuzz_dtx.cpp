// The ".dtx" base station list through Trl_Tx::read_list, as the planner loads it.
#include <cstdint>
#include <sstream>
#include <string>

#include "fuzz/fuzz_support.h"
#include "network/Trl_Tx.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  const Trl_Tx templ(tk::d3_point(0, 0, 30), tk::string(""), -1, 20, 2, 5, 10, 3, 0.5, Trl_Tx::usable);
  tk::list<Trl_Tx> list;
  tk::point low, high;
  if (!Trl_Tx::read_list(in, templ, list, low, high)) return 0;
  int counter = 0;
  for (const Trl_Tx& tx : list) {
    // Numbered in file order, usable, standing at z = 0 until given a height.
    FUZZ_CHECK(tx.number == counter++);
    FUZZ_CHECK(tx.position.zcoord() == 0 && tx.status == Trl_Tx::usable && tx.max_power == 20);
    FUZZ_CHECK(low.xcoord() <= tx.position.xcoord() && tx.position.xcoord() <= high.xcoord());
    FUZZ_CHECK(low.ycoord() <= tx.position.ycoord() && tx.position.ycoord() <= high.ycoord());
  }
  return 0;
}
