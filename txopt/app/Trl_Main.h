// The program's entry point after a window backend is installed: makes the main window,
// builds the menu, and runs the event loop until "Exit" sets the exit flag.
#pragma once

int run_planner_main();
