// The menu bar of the main window: the tree of menus and the small callbacks behind its
// entries. Each callback brackets one action of the planner with begin_command and
// end_command, and refits and repaints the plan after the commands that change its extent.
#pragma once

namespace tk {
class window;
class menu;
}

void build_menu(tk::window& w);

// The texts of "About" and "Help".
extern const char* const about_text;
extern const char* const help_text;

// The seven menus of the tree.
extern tk::menu file_menu, set_menu, run_menu;
extern tk::menu load_distribution_menu, remove_menu, user_distribution_menu, propagation_menu;
