#include "toolkit/fltk/fltk_formatted_box.h"

#include <FL/fl_draw.H>

#include "toolkit/fltk/fltk_text.h"

namespace tk {

fltk_formatted_box::fltk_formatted_box(int x, int y, int w, int h, Fl_Color background) : Fl_Box(x, y, w, h) {
  box(FL_FLAT_BOX);
  color(background);
}

void fltk_formatted_box::text(const std::string& s) {
  formatted = s;
  redraw();
}

void fltk_formatted_box::draw() {
  fl_push_clip(x(), y(), w(), h());
  fl_color(color());
  fl_rectf(x(), y(), w(), h());
  fltk_text(formatted).layout(x() + 4, 0, y() - 1, true);
  fl_pop_clip();
}

}  // namespace tk
