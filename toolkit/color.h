// tk::color: an index into the toolkit's palette. The program draws by these numbers:
// 0 white, 1 black, 2 red, 3 green, 4 blue, 5 yellow, 6 violet, 7 orange, 8 cyan,
// 9 brown, 10 pink, 11 green2, 12 blue2, 13..15 three greys, 16 the status line's grey.
#pragma once

namespace tk {

class color {
 public:
  color(int index = 1) : number(index) {}
  operator int() const { return number; }
  int index() const { return number; }
  // The palette's red, green and blue, 0 to 255; unknown indices give black.
  void get_rgb(int& r, int& g, int& b) const;
  static int palette_size();

 private:
  int number;
};

enum color_name {
  white = 0, black = 1, red = 2, green = 3, blue = 4, yellow = 5, violet = 6, orange = 7,
  cyan = 8, brown = 9, pink = 10, green2 = 11, blue2 = 12, grey1 = 13, grey2 = 14, grey3 = 15,
  status_grey = 16
};

}  // namespace tk
