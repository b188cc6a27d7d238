// Trl_Pixmap: an image held as text in the layout of the X PixMap format, which the
// window layer turns into a picture: a header line "width height colours chars", one line
// per colour ("SYMBOL c #rrggbb"), then one line per row of symbols. One block of memory
// holds all the text; `lines` points to each line in that order.
#pragma once

#include <cstddef>

class Trl_Pixmap {
 public:
  Trl_Pixmap(int width, int height, int colours);
  ~Trl_Pixmap();
  Trl_Pixmap(const Trl_Pixmap&) = delete;
  Trl_Pixmap& operator=(const Trl_Pixmap&) = delete;

  // Sets colour k to the given red, green and blue (0 to 255).
  void set_colour(int k, int r, int g, int b);
  // Paints pixel (column, row) with colour k; rows count from the top.
  void set_pixel(int column, int row, int k);
  const char* const* xpm() const { return lines; }

  std::size_t size;
  int chars_per_pixel;
  int colour_line_size;
  int width;
  int height;
  int colours;
  char* text;
  char* colour_text;
  char* pixel_text;
  char** lines;
};
