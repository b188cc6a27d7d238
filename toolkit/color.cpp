#include "toolkit/color.h"

namespace tk {

namespace {
const int palette[][3] = {
    {255, 255, 255},  // 0 white
    {0, 0, 0},        // 1 black
    {255, 0, 0},      // 2 red
    {0, 200, 0},      // 3 green
    {0, 0, 255},      // 4 blue
    {255, 255, 0},    // 5 yellow
    {160, 32, 240},   // 6 violet
    {255, 165, 0},    // 7 orange
    {0, 255, 255},    // 8 cyan
    {165, 42, 42},    // 9 brown
    {255, 160, 190},  // 10 pink
    {46, 139, 87},    // 11 green2
    {30, 144, 255},   // 12 blue2
    {210, 210, 210},  // 13 grey1
    {170, 170, 170},  // 14 grey2
    {120, 120, 120},  // 15 grey3
    {225, 225, 225},  // 16 status line
};
const int count = sizeof palette / sizeof palette[0];
}  // namespace

void color::get_rgb(int& r, int& g, int& b) const {
  if (number < 0 || number >= count) {
    r = g = b = 0;
    return;
  }
  r = palette[number][0];
  g = palette[number][1];
  b = palette[number][2];
}

int color::palette_size() { return count; }

}  // namespace tk
