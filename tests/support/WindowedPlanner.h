// Test support: a planner of its own with a main window shown on the installed backend, with
// x from x0 to x1 and y from y0. The planner leaves its window to the owner; this one frees it.
// CommandOnBar does the same for the program's one planner, whose window the stop poll asks.
#pragma once

#include <new>
#include <string>

#include <gtest/gtest.h>

#include "app/Trl_Planner.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_GaSearch.h"
#include "support/ScriptedWindows.h"
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

// The program's one planner with a bar of one command, which a script starts with
// "menu NAME". The planner and the genetic search's settings are made afresh before and
// after, as the program starts, so that no list, terrain, parameter or assignment of another
// test in the same process leaks in or out.
struct CommandOnBar {
  CommandOnBar(const char* name, void (*command)()) {
    restart_program();
    planner.create_window();
    planner.window->button(name, command);
    planner.window->make_menu_bar(2);
    planner.window->display();
    planner.window->init(-100, 2000, -500);
  }
  ~CommandOnBar() { restart_program(); }
  static void restart_program() {
    delete planner.window;
    planner.~Trl_Planner();
    new (&planner) Trl_Planner();
    ga_search = Trl_GaSearch();
  }
  // Takes the next scripted event, which runs the command; returns its standard output.
  std::string run() {
    testing::internal::CaptureStdout();
    next_event();
    return testing::internal::GetCapturedStdout();
  }
};
