// tk::fltk_event_queue: the events of the program's windows as FLTK delivers them, kept until
// read_event, read_mouse or get_mouse asks. Positions are pixels of the window's drawing area.
// The queue is bounded, so events nobody reads during a long command do not pile up.
#pragma once

#include <deque>

namespace tk {

class window;

// Event numbers; only no_event (10) has a fixed meaning for the program.
enum fltk_event_kind {
  key_press_event = 0,
  key_release_event = 1,
  button_press_event = 2,
  button_release_event = 3,
  panel_press_event = 4,
  configure_event = 5,
  exposure_event = 6,
  motion_event = 7,
  destroy_event = 8,
  timer_event = 9
};

struct fltk_event {
  window* source = nullptr;
  int kind = 0;
  int value = 0;  // the mouse button 1..3, the key, or the value of a menu entry
  int x = 0, y = 0;
};

class fltk_event_queue {
 public:
  static fltk_event_queue& instance();

  void push(const fltk_event& e);
  // The oldest event of any window, or of the given window only.
  bool pop(fltk_event& e);
  bool pop_for(const window* w, fltk_event& e);
  // The oldest button press of the window; that window's events before it go with it.
  bool pop_press(const window* w, fltk_event& e);
  // Drops every event of the window: it goes away, or a wait wants only fresh ones.
  void forget(const window* w);
  bool empty() const { return events.empty(); }

 private:
  std::deque<fltk_event> events;
  static const unsigned most = 256;
};

}  // namespace tk
