#include "raster/Trl_Heightfield.h"

#include <cfloat>
#include <sstream>

#include "toolkit/error.h"

Trl_Heightfield::Trl_Heightfield(const std::string& native_file_name)
    : refCount(1),
      legend(false, 14, 550, 20),
      grid(2, 2, 0, 0, 1, 1, 1),
      matrix(nullptr),
      minimum(DBL_MAX),
      maximum(-DBL_MAX),
      valid(false),
      view_x0(0),
      view_y0(0),
      view_x1(0),
      view_y1(0) {
  Trl_MappedMatrixT<short, double>* mapped = new Trl_MappedMatrixT<short, double>(native_file_name, 0, 0);
  if (!mapped->valid) {
    delete mapped;
    return;
  }
  std::istringstream tail(mapped->tail());
  static const char* const keywords[5] = {"xlc", "ylc", "gridsize", "minimum", "maximum"};
  double values[5] = {0, 0, 0, 0, 0};
  for (int k = 0; k < 5; ++k) {
    std::string word;
    tail >> word >> values[k];
    if (!tail || word != keywords[k]) {
      delete mapped;
      return;
    }
  }
  double low = values[3], high = values[4];
  if (!(low >= 0) || !(high >= low) || mapped->rows <= 1 || mapped->columns <= 1) {
    delete mapped;
    return;
  }
  grid = Trl_Grid::from_spacing(values[0], values[1], values[2], values[2], mapped->columns, mapped->rows, 1);
  legend = Trl_Legend(false, 14, low, (high - low) / 14);
  matrix = mapped;
  view_x1 = static_cast<int>(grid.nx) - 1 < 299 ? static_cast<int>(grid.nx) - 1 : 299;
  view_y1 = static_cast<int>(grid.ny) - 1 < 299 ? static_cast<int>(grid.ny) - 1 : 299;
  valid = true;
}

Trl_Heightfield::~Trl_Heightfield() { delete matrix; }

void Trl_Heightfield::release() {
  if (refCount == 0) tk::error_handler(999, "Assertion failed in file Trl_Heightfield at line 44: refCount!=0");
  if (--refCount == 0) delete this;
}

// Shifts the range a0..a1 inside 0..cells-1 keeping its length; a range longer than the
// raster becomes the whole raster.
void shift_into(int& a0, int& a1, int cells) {
  int w = a1 - a0;
  if (a0 < 0) {
    a0 = 0;
    a1 = w;
  }
  if (a1 > cells - 1) {
    a1 = cells - 1;
    a0 = a1 - w;
  }
  if (a0 < 0) a0 = 0;
}

void Trl_Heightfield::set_view(int x0, int y0, int x1, int y1) {
  if (!(x1 > x0)) tk::error_handler(999, "Assertion failed in file Trl_Heightfield at line 294: x1>x0");
  if (!(y1 > y0)) tk::error_handler(999, "Assertion failed in file Trl_Heightfield at line 295: y1>y0");
  shift_into(x0, x1, static_cast<int>(grid.nx));
  shift_into(y0, y1, static_cast<int>(grid.ny));
  view_x0 = x0;
  view_y0 = y0;
  view_x1 = x1;
  view_y1 = y1;
}
