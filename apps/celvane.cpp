// celvane: the planning program on the screen, with the FLTK window backend.
#include "app/Trl_Main.h"
#include "toolkit/fltk/fltk_backend.h"

int main() {
  tk::fltk_backend backend;
  tk::set_backend(&backend);
  int status = run_planner_main();
  // The global menus outlive this backend; they must not reach it at process end.
  tk::set_backend(nullptr);
  return status;
}
