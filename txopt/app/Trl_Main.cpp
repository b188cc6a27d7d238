#include "app/Trl_Main.h"

#include "app/Trl_MenuTree.h"
#include "app/Trl_Planner.h"
#include "toolkit/window.h"

int run_planner_main() {
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
