// Test support: a planner of its own with a main window shown on the installed backend, with
// x from x0 to x1 and y from y0. The planner leaves its window to the owner; this one frees it.
#pragma once

#include "app/Trl_Planner.h"
#include "toolkit/window.h"

struct WindowedPlanner {
  Trl_Planner p;
  explicit WindowedPlanner(double x0 = -100, double x1 = 2000, double y0 = -500) {
    p.create_window();
    p.window->button("Exit", 0);
    p.window->make_menu_bar(2);
    p.window->display();
    p.window->init(x0, x1, y0);
  }
  ~WindowedPlanner() {
    delete p.window;
    p.window = nullptr;
  }
};
