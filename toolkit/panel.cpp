#include "toolkit/panel.h"

#include <cstdlib>

#include "toolkit/backend.h"

namespace tk {

panel::panel() : window(0, 0, "") {}

panel::panel(const char* title) : window(0, 0, title) {}

int panel::open(int x, int y, window* parent) {
  if (button_list.empty()) {
    button("continue", 0);
    button("quit", 1);
    default_buttons = true;
  }
  read_variables();
  modal_open = true;
  int index = current_backend().run_panel(*this, x, y, parent);
  modal_open = false;
  if (index < 0 || index >= static_cast<int>(button_list.size())) index = 0;
  // A copy: the button's handler may change this panel's buttons.
  panel_button pressed = button_list[static_cast<size_t>(index)];
  if (default_buttons && pressed.label == "quit") std::exit(0);
  write_variables();
  if (pressed.action) pressed.action();
  return pressed.value;
}

}  // namespace tk
