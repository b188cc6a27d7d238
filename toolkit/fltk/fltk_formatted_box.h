// tk::fltk_formatted_box: a box that shows a formatted text on a plain background. Panels use
// it for their text lines, the main window for its status line.
#pragma once

#include <FL/Fl_Box.H>

#include <string>

namespace tk {

class fltk_formatted_box : public Fl_Box {
 public:
  fltk_formatted_box(int x, int y, int w, int h, Fl_Color background);
  void text(const std::string& formatted);
  const std::string& text() const { return formatted; }

 protected:
  void draw() override;

 private:
  std::string formatted;
};

}  // namespace tk
