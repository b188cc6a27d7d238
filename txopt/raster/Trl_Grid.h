// Trl_Grid: the regular lattice that places every raster in the plan, in metres. Cell
// (i, j) is centred on the node at x = i*dx + x0, y = j*dy + y0; columns grow with x and
// rows with y. Three nested walks: every cell, a straight line, and a rectangle's border.
#pragma once

#include <cstdint>

#include "toolkit/point.h"

class Trl_Grid {
 public:
  // From counts and extents; a single column takes the whole width as its spacing.
  Trl_Grid(std::uint32_t nx, std::uint32_t ny, double x0, double y0, double x1, double y1, double dz);
  // From origin and spacing.
  static Trl_Grid from_spacing(double x0, double y0, double dx, double dy, std::uint32_t nx,
                               std::uint32_t ny, double dz);
  // The grid of a raster that is not loaded yet.
  Trl_Grid();
  virtual ~Trl_Grid() {}

  // The column nearest to the point's x; points outside land on the edge.
  int column_of(const tk::point& p) const;
  int row_of(const tk::point& p) const;
  // True when the rectangle overlaps or touches the grid.
  bool overlaps(double xmin, double ymin, double xmax, double ymax) const;
  // The common part of two grids of the same spacing.
  bool intersect(const Trl_Grid& other, Trl_Grid& result) const;
  // Cell (i, j) of this grid is cell (i + di, j + dj) of other; false for other spacings.
  bool offset_to(const Trl_Grid& other, int& di, int& dj) const;

  double x0, x1, y0, y1;  // m, centres of the first and last column and row
  double dx, dy;          // m, spacing
  double dz;              // carried and copied only
  std::uint32_t nx, ny;   // columns, rows
  std::uint32_t cells;    // nx * ny

  // Walks every cell row by row to the last cell of the grid.
  class iterator {
   public:
    explicit iterator(const Trl_Grid& grid);
    iterator(const Trl_Grid& grid, int col, int row);
    virtual ~iterator() {}
    virtual bool operator==(const iterator& other) const { return index == other.index; }
    virtual bool operator!=(const iterator& other) const { return index != other.index; }
    virtual std::uint32_t cell_index() const { return index; }
    virtual bool at_end() const { return index >= grid->cells; }
    virtual std::uint32_t advance();

    const Trl_Grid* grid;
    std::uint32_t index;  // steps taken
    int col, row;         // the current cell
  };

  // The integer Bresenham walk from a start cell to an end cell, both delivered. The
  // direction matters: a walk and its reverse may deliver different cells.
  class iterator_line : public iterator {
   public:
    iterator_line(const Trl_Grid& grid, int start_col, int start_row, int end_col, int end_row);
    std::uint32_t cell_index() const override { return grid->nx * row + col; }
    bool at_end() const override { return index >= static_cast<std::uint32_t>(length); }
    std::uint32_t advance() override;
    virtual bool same_walk(const iterator_line& other) const;
    virtual bool other_walk(const iterator_line& other) const { return !same_walk(other); }

    int start_col, start_row, end_col, end_row;
    int length;               // cells of the walk
    int step_col, step_row;   // +1 or -1
    int inc_diagonal, inc_straight, decision;
    int column_major;         // 1 when every step advances one column
  };

  // The border of a rectangle of cells, counter-clockwise from (start_col, start_row).
  class iterator_border : public iterator {
   public:
    iterator_border(const Trl_Grid& grid, int start_col, int start_row, int end_col, int end_row);
    std::uint32_t cell_index() const override { return grid->nx * row + col; }
    bool at_end() const override { return static_cast<int>(index) >= total; }
    std::uint32_t advance() override;
    virtual bool same_walk(const iterator_border& other) const;
    virtual bool other_walk(const iterator_border& other) const { return !same_walk(other); }

    int start_col, start_row, end_col, end_row;
    int width, height, total;
    int heading;  // 1 right, 0 up, 3 left, 2 down
  };
};
