#include "app/Trl_Main.h"

#include <algorithm>
#include <thread>

#include "app/Trl_MenuTree.h"
#include "app/Trl_Planner.h"
#include "search/Trl_Assigner.h"
#include "search/Trl_GaSearch.h"
#include "toolkit/random_source.h"
#include "toolkit/window.h"

int run_planner_main() {
  // The urban gain table on every core: the table and the progress texts are those of one
  // thread (see docs/performance.md).
  Trl_Assigner::terrain_fill_threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  tk::window* main_window = planner.create_window();
  build_menu(*main_window);
  for (;;) {
    if (exit_flag) return 0;
    tk::window* w = nullptr;
    int value = 0;
    double x = 0, y = 0;
    tk::read_event(w, value, x, y);
    planner.idle();
  }
}

void fix_planner_seed(long seed) {
  tk::random_source::fix_seed(seed);
  Trl_GaSearch::fix_seed(seed);
  // The global planner's regions seeded themselves from the clock before main() ran.
  planner.rx_region.x_source = tk::random_source();
  planner.rx_region.y_source = tk::random_source();
  planner.tx_region.x_source = tk::random_source();
  planner.tx_region.y_source = tk::random_source();
}
