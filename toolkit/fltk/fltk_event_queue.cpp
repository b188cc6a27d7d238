#include "toolkit/fltk/fltk_event_queue.h"

#include <algorithm>

namespace tk {

fltk_event_queue& fltk_event_queue::instance() {
  static fltk_event_queue queue;
  return queue;
}

void fltk_event_queue::push(const fltk_event& e) {
  if (events.size() >= most) events.pop_front();
  events.push_back(e);
}

bool fltk_event_queue::pop(fltk_event& e) {
  if (events.empty()) return false;
  e = events.front();
  events.pop_front();
  return true;
}

bool fltk_event_queue::pop_for(const window* w, fltk_event& e) {
  auto found = std::find_if(events.begin(), events.end(), [w](const fltk_event& x) { return x.source == w; });
  if (found == events.end()) return false;
  e = *found;
  events.erase(found);
  return true;
}

bool fltk_event_queue::pop_press(const window* w, fltk_event& e) {
  auto found = std::find_if(events.begin(), events.end(), [w](const fltk_event& x) {
    return x.source == w && x.kind == button_press_event;
  });
  if (found == events.end()) return false;
  e = *found;
  ++found;
  events.erase(std::remove_if(events.begin(), found, [w](const fltk_event& x) { return x.source == w; }), found);
  return true;
}

void fltk_event_queue::forget(const window* w) {
  events.erase(std::remove_if(events.begin(), events.end(), [w](const fltk_event& x) { return x.source == w; }),
               events.end());
}

}  // namespace tk
