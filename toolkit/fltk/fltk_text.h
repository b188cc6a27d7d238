// tk::fltk_text: a formatted text (the backslash tags) set in FLTK fonts and colours. It lays
// the runs out line by line, wraps at blanks before a right edge, and draws or only measures.
// Positions and sizes are in pixels; the font size is in points as FLTK takes it.
#pragma once

#include <string>
#include <vector>

#include "toolkit/formatted_text.h"

namespace tk {

class fltk_text {
 public:
  explicit fltk_text(const std::string& formatted, int size = 13);

  // Lays the text out from the top y downwards, starting lines at x0 and wrapping words
  // that would pass x1 (no wrapping when x1 <= x0). Draws into the current FLTK surface when
  // draw is true. Returns the y just below the last line; an empty text takes one line.
  int layout(int x0, int x1, int y, bool draw) const;
  // The widest line and the number of lines, without wrapping.
  void measure(int& width, int& lines) const;
  int line_height() const { return size + 5; }

 private:
  std::vector<text_run> runs;
  int size;
};

}  // namespace tk
