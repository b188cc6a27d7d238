// tk::panel: a window built to be opened modally. open() shows it, waits for a button,
// writes the items' values back to their variables and returns the button's value.
// A panel without buttons gets "continue" (closing it) and "quit" (ending the process).
#pragma once

#include "toolkit/window.h"

namespace tk {

class panel : public window {
 public:
  panel();
  explicit panel(const char* title);
  explicit panel(const tk::string& title) : panel(title.cstring()) {}

  // Shows the panel at x, y (pixels or window::min/center/max) over parent and waits for a
  // button; returns that button's value after its handler, if any, has run.
  int open(int x = window::center, int y = window::center, window* parent = nullptr);
  int open(window& parent) { return open(window::center, window::center, &parent); }
  bool is_modal_open() const { return modal_open; }

  // What kind of box this panel is, for backends that report rather than show it.
  enum box_kind { ordinary, message_box, question_box };
  box_kind kind = ordinary;
  std::string box_text;  // the message or question of such a box
  void set_title(const tk::string& title) { label = title.str(); }

 private:
  bool modal_open = false;
  bool default_buttons = false;  // "continue" and "quit" were added at an opening
};

}  // namespace tk
