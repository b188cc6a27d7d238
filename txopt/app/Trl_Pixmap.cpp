#include "app/Trl_Pixmap.h"

#include <cstdio>
#include <cstring>

namespace {

// The symbols step their last character through ".", "#", "a".."z", "A".."Z", "0".."9"
// and carry into the character before after "9".
const char cycle[] = ".#abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

void next_symbol(char* symbol, int length) {
  for (int k = length - 1; k >= 0; --k) {
    const char* at = std::strchr(cycle, symbol[k]);
    int position = at ? static_cast<int>(at - cycle) : 0;
    if (position + 1 < 64) {
      symbol[k] = cycle[position + 1];
      return;
    }
    symbol[k] = cycle[0];
  }
}

}  // namespace

Trl_Pixmap::Trl_Pixmap(int width_, int height_, int colours_)
    : chars_per_pixel(colours_ < 65 ? 1 : 2), width(width_), height(height_), colours(colours_) {
  colour_line_size = chars_per_pixel + 11;
  size = 33 + static_cast<std::size_t>(colours) * colour_line_size +
         static_cast<std::size_t>(height) * (static_cast<std::size_t>(width) * chars_per_pixel + 1) + 1;
  text = new char[size]();
  std::snprintf(text, 33, "%8d%8d%8d%8d", width, height, colours, chars_per_pixel);
  colour_text = text + 33;
  pixel_text = colour_text + static_cast<std::size_t>(colours) * colour_line_size;
  lines = new char*[1 + colours + height];
  lines[0] = text;
  char symbol[3] = {'.', '.', '\0'};
  symbol[chars_per_pixel] = '\0';
  for (int k = 0; k < colours; ++k) {
    char* line = colour_text + static_cast<std::size_t>(k) * colour_line_size;
    std::snprintf(line, static_cast<std::size_t>(colour_line_size), "%s c #%02x%02x%02x", symbol, 0, 0, 0);
    lines[1 + k] = line;
    next_symbol(symbol, chars_per_pixel);
  }
  for (int r = 0; r < height; ++r)
    lines[1 + colours + r] = pixel_text + static_cast<std::size_t>(r) * (static_cast<std::size_t>(width) * chars_per_pixel + 1);
}

Trl_Pixmap::~Trl_Pixmap() {
  delete[] lines;
  delete[] text;
}

void Trl_Pixmap::set_colour(int k, int r, int g, int b) {
  char* digits = colour_text + static_cast<std::size_t>(k) * colour_line_size + chars_per_pixel + 4;
  std::snprintf(digits, 7, "%02x%02x%02x", r & 0xff, g & 0xff, b & 0xff);
}

void Trl_Pixmap::set_pixel(int column, int row, int k) {
  char* cell = lines[1 + colours + row] + static_cast<std::size_t>(column) * chars_per_pixel;
  std::memcpy(cell, lines[1 + k], static_cast<std::size_t>(chars_per_pixel));
}
