// celvane: the planning program on the screen, with the FLTK window backend.
#include "app/Trl_Main.h"
#include "toolkit/fltk/fltk_backend.h"

int main() {
  tk::fltk_backend backend;
  tk::set_backend(&backend);
  return run_planner_main();
}
