// Trl_RxGridDistribution: a raster of user counts, read from the grid form of ".drd":
// "ncols N nrows M xllcorner X yllcorner Y cellsize S NODATA_value K" then N * M counts,
// the first row of the file being the southern row of the plan.
#pragma once

#include <istream>

#include "network/Trl_RxDistribution.h"
#include "raster/Trl_Grid.h"
#include "raster/Trl_MatrixT.h"

class Trl_RxGridDistribution : public Trl_RxDistribution {
 public:
  explicit Trl_RxGridDistribution(std::istream& in);
  ~Trl_RxGridDistribution() override;

  void draw(bool redraw_all, int x0, int y0, int x1, int y1) override;
  void draw_outline(tk::window& w, int colour) const override;
  void sample(tk::list<Trl_Rx>& users, const Trl_Terrain* terrain, double fraction, bool streets_only,
              const Trl_RxTemplate& values) override;
  tk::point min_corner() const override;
  tk::point max_corner() const override;

  Trl_Grid grid;
  Trl_MatrixT<unsigned short, double>* matrix;
  unsigned short high = 0;
  unsigned short low = 0;
  int total = 0;
  bool valid = false;
};
