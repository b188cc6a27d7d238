// The drawing a window received, recorded in pixels, and its painting into a PNG picture
// with Cairo. The scripted backend keeps one per window for its snapshots.
#pragma once

#include <string>
#include <vector>

namespace tk {

struct drawing_op {
  enum kind_type { clear, pixel, line, disc, polygon, filled_polygon, rectangle, filled_rectangle, text, pixmap };
  kind_type kind;
  std::vector<int> xy;  // pixel coordinates, meaning by kind
  int colour = 1;
  std::string label;                    // text
  std::vector<std::string> xpm;         // pixmap lines
};

class script_painter {
 public:
  void record(const drawing_op& op);
  const std::vector<drawing_op>& operations() const { return ops; }
  // Paints the drawing since the last clear into a PNG of the given size; false on failure.
  bool paint_png(const std::string& file, int width, int height) const;

 private:
  std::vector<drawing_op> ops;
};

}  // namespace tk
