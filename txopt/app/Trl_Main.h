// The program's entry point after a window backend is installed: makes the main window,
// builds the menu, and runs the event loop until "Exit" sets the exit flag.
#pragma once

int run_planner_main();

// Makes every random draw of the run repeatable from the seed: the program's sources, the
// genetic library, and the two regions the planner was built with before the seed was known.
void fix_planner_seed(long seed);
