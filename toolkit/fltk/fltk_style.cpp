#include "toolkit/fltk/fltk_style.h"

#include "toolkit/color.h"
#include "toolkit/window.h"

namespace tk {

Fl_Color fltk_colour(int index) {
  int r, g, b;
  color(index).get_rgb(r, g, b);
  return fl_rgb_color(static_cast<uchar>(r), static_cast<uchar>(g), static_cast<uchar>(b));
}

Fl_Font fltk_font(const text_run& run) {
  Fl_Font base = run.fixed ? FL_COURIER : FL_HELVETICA;
  if (run.bold) base += FL_BOLD;
  if (run.italic) base += FL_ITALIC;
  return base;
}

std::string fltk_literal_label(const std::string& label) {
  std::string shown;
  for (char c : label) {
    if (c == '&' || c == '@') shown += c;
    shown += c;
  }
  return shown;
}

std::string fltk_menu_step(const std::string& label) {
  std::string step;
  for (char c : label) {
    if (c == '/' || c == '\\') step += '\\';
    step += c;
  }
  return step;
}

int fltk_place(int wanted, int size, int origin, int room) {
  switch (wanted) {
    case window::min:
      return origin;
    case window::center:
      return origin + (room - size) / 2;
    case window::max:
      return origin + room - size;
    default:
      return origin + wanted;
  }
}

}  // namespace tk
