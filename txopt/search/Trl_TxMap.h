// Trl_TxMap: the base stations laid out on a small integer grid, for the two-dimensional genome
// of the genetic search. Each base station owns one cell; rows keep the order by y and columns
// the order by x, so that base stations close on the plan are close in the genome. Starts as
// an n by n permutation matrix and is compacted by random merges of neighbouring rows and
// columns until none can merge without putting two base stations in a cell.
#pragma once

#include "network/Trl_Tx.h"
#include "toolkit/array.h"
#include "toolkit/array2.h"
#include "toolkit/list.h"

namespace tk {
class window;
}

class Trl_TxMap : public tk::list<Trl_Tx> {
 public:
  // [row][column]: 0 empty, i + 1 for base station i of the list, -(i + 1) when it is fixed.
  tk::array2<int> cells;
  tk::list<int> by_y;  // list positions by y ascending
  tk::list<int> by_x;  // list positions by x ascending
  tk::list<double> x_bounds;  // column boundaries on the plan, m
  tk::list<double> y_bounds;  // row boundaries on the plan, m
  tk::list<int> mergeable_columns;  // columns k that may still merge into column k - 1
  tk::list<int> mergeable_rows;     // rows k that may still merge into row k - 1
  tk::window* window;  // where the map is shown while it is built; none for the search
  bool filled;

  Trl_TxMap(const tk::list<Trl_Tx>& list, tk::window* window);

  // Sorts, fills the permutation matrix and compacts it. With `show` and a window every merge
  // is drawn and a stop may be asked for.
  void build(bool show);
  // Gene index of each base station: row * column count + column.
  tk::array<int> tx_cells() const;

  int row_count() const { return cells.high1() + 1; }
  int column_count() const { return cells.high2() + 1; }

 private:
  void sort_orders();
  void make_bounds();
  void fill();
  void reduce(bool show);
  void merge_column(int k);
  void merge_row(int k);
  void prune_after_column_merge(int m);
  void prune_after_row_merge(int m);
  void draw() const;
};
