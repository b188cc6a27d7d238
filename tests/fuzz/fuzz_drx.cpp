// The ".drx" mobile user list through Trl_Rx::read_list, without a terrain and on one as the
// planner has it after "Load terrain"; byte 0 chooses which.
#include <cstdint>
#include <sstream>
#include <string>

#include "fuzz/fuzz_support.h"
#include "network/Trl_Rx.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static Trl_Terrain* terrain = fuzz::small_terrain();
  if (size == 0) return 0;
  const Trl_Terrain* on = (data[0] & 1) ? terrain : nullptr;
  std::istringstream in(std::string(reinterpret_cast<const char*>(data + 1), size - 1));
  const Trl_Rx templ(tk::d3_point(0, 0, 1.5), 1, 5, 5, 5, 0.125, 1e-6, 1, 1, 12.2, 12.2, 0);
  tk::list<Trl_Rx> list;
  tk::point low, high;
  int ignored = 0;
  if (!Trl_Rx::read_list(in, templ, on, list, low, high, ignored)) return 0;
  FUZZ_CHECK(ignored >= 0 && (on || ignored == 0));
  for (const Trl_Rx& rx : list) {
    FUZZ_CHECK(rx.position.zcoord() == 1.5);
    if (on) {
      // A user taken on a terrain has a cell of the height grid.
      FUZZ_CHECK(rx.cell_i >= 0 && rx.cell_j >= 0 && rx.cell_i < 30 && rx.cell_j < 30);
      (void)on->height(rx.cell_i, rx.cell_j);
    }
  }
  return 0;
}
