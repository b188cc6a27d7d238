#include "search/Trl_TxMap.h"

#include <ga/garandom.h>

#include <algorithm>
#include <vector>

#include "app/Trl_Planner.h"
#include "toolkit/window.h"

namespace {

const double margin = 3;  // m, beyond the outermost base stations

// Puts each position in front of the first entry whose coordinate is not less than its own,
// so that among equal coordinates the later base station comes first.
tk::list<int> order_by(const std::vector<double>& coordinate) {
  std::vector<int> order;
  for (int i = 0; i < static_cast<int>(coordinate.size()); ++i) {
    auto at = std::find_if(order.begin(), order.end(),
                           [&](int j) { return coordinate[j] >= coordinate[i]; });
    order.insert(at, i);
  }
  tk::list<int> result;
  for (int i : order) result.append(i);
  return result;
}

// Boundaries of the lines of an order: outer margins and the mid-points between neighbours.
tk::list<double> bounds_of(const tk::list<int>& order, const std::vector<double>& coordinate) {
  tk::list<double> bounds;
  bounds.append(coordinate[order.head()] - margin);
  double previous = coordinate[order.head()];
  bool first = true;
  for (int i : order) {
    if (!first) bounds.append((previous + coordinate[i]) / 2);
    previous = coordinate[i];
    first = false;
  }
  bounds.append(coordinate[order.tail()] + margin);
  return bounds;
}

// Place of every position in an order.
std::vector<int> places(const tk::list<int>& order) {
  std::vector<int> place(order.size());
  int p = 0;
  for (int i : order) place[i] = p++;
  return place;
}

// Drops line k from a candidate list: entries equal to k go, greater ones move down by one.
void remove_line(tk::list<int>& candidates, int k) {
  candidates.remove(k);
  for (int& v : candidates)
    if (v > k) --v;
}

void drop_entry(tk::list<double>& bounds, int k) { bounds.del_item(bounds.get_item(k)); }

// x (or y) of every base station, in list order, m.
std::vector<double> coordinates(const tk::list<Trl_Tx>& list, bool x) {
  std::vector<double> values;
  for (const Trl_Tx& tx : list) values.push_back(x ? tx.position.xcoord() : tx.position.ycoord());
  return values;
}

}  // namespace

Trl_TxMap::Trl_TxMap(const tk::list<Trl_Tx>& list, tk::window* window)
    : tk::list<Trl_Tx>(list), cells(list.size(), list.size()), window(window), filled(false) {}

void Trl_TxMap::build(bool show) {
  if (empty()) return;
  sort_orders();
  make_bounds();
  fill();
  for (int k = 1; k < size(); ++k) {
    mergeable_columns.append(k);
    mergeable_rows.append(k);
  }
  reduce(show);
  if (show && window)
    window->draw_text(window->xmin(), window->ymax(),
                      tk::string("Final map dimensions: %dx%d", row_count(), column_count()));
  by_y.clear();
  by_x.clear();
  x_bounds.clear();
  y_bounds.clear();
  mergeable_columns.clear();
  mergeable_rows.clear();
  filled = false;
}

void Trl_TxMap::sort_orders() {
  by_y = order_by(coordinates(*this, false));
  by_x = order_by(coordinates(*this, true));
}

void Trl_TxMap::make_bounds() {
  y_bounds = bounds_of(by_y, coordinates(*this, false));
  x_bounds = bounds_of(by_x, coordinates(*this, true));
}

void Trl_TxMap::fill() {
  const std::vector<int> row = places(by_y), column = places(by_x);
  int i = 0;
  for (const Trl_Tx& tx : *this) {
    cells(row[i], column[i]) = tx.status == 3 ? -(i + 1) : i + 1;
    ++i;
  }
  filled = true;
}

// Merges random neighbouring lines while any pair is still allowed to merge.
void Trl_TxMap::reduce(bool show) {
  while (!mergeable_columns.empty() || !mergeable_rows.empty()) {
    bool column = mergeable_rows.empty();
    if (!mergeable_columns.empty() && !mergeable_rows.empty()) column = GARandomFloat() <= 0.5;
    tk::list<int>& candidates = column ? mergeable_columns : mergeable_rows;
    const int place = std::min(static_cast<int>(GARandomFloat() * candidates.size()),
                               candidates.size() - 1);
    const int k = candidates[candidates.get_item(place)];
    if (column)
      merge_column(k);
    else
      merge_row(k);
    if (show && window) {
      draw();
      if (stop_requested()) {
        mergeable_columns.clear();
        mergeable_rows.clear();
      }
    }
  }
}

// Columns k - 1 and k become one; an empty cell of column k leaves column k - 1 as it was.
void Trl_TxMap::merge_column(int k) {
  const int rows = row_count(), columns = column_count();
  tk::array2<int> merged(rows, columns - 1);
  for (int r = 0; r < rows; ++r)
    for (int c = 0; c < columns; ++c) {
      if (c < k)
        merged(r, c) = cells(r, c);
      else if (c > k || cells(r, c) != 0)
        merged(r, c - 1) = cells(r, c);
    }
  remove_line(mergeable_columns, k);
  drop_entry(x_bounds, k);
  cells = merged;
  prune_after_column_merge(k - 1);
}

void Trl_TxMap::merge_row(int k) {
  const int rows = row_count(), columns = column_count();
  tk::array2<int> merged(rows - 1, columns);
  for (int r = 0; r < rows; ++r)
    for (int c = 0; c < columns; ++c) {
      if (r < k)
        merged(r, c) = cells(r, c);
      else if (r > k || cells(r, c) != 0)
        merged(r - 1, c) = cells(r, c);
    }
  remove_line(mergeable_rows, k);
  drop_entry(y_bounds, k);
  cells = merged;
  prune_after_row_merge(k - 1);
}

// The merged column m may now collide with its neighbours, and rows may collide in it.
void Trl_TxMap::prune_after_column_merge(int m) {
  const int last_row = row_count() - 1, last_column = column_count() - 1;
  for (int i = 0; i <= last_row; ++i) {
    if (i < last_row && cells(i, m) != 0 && cells(i + 1, m) != 0) mergeable_rows.remove(i + 1);
    if (m > 0 && cells(i, m - 1) != 0 && cells(i, m) != 0) mergeable_columns.remove(m);
    if (m < last_column && cells(i, m) != 0 && cells(i, m + 1) != 0)
      mergeable_columns.remove(m + 1);
  }
}

void Trl_TxMap::prune_after_row_merge(int m) {
  const int last_row = row_count() - 1, last_column = column_count() - 1;
  for (int j = 0; j <= last_column; ++j) {
    if (j < last_column && cells(m, j) != 0 && cells(m, j + 1) != 0)
      mergeable_columns.remove(j + 1);
    if (m > 0 && cells(m - 1, j) != 0 && cells(m, j) != 0) mergeable_rows.remove(m);
    if (m < last_row && cells(m, j) != 0 && cells(m + 1, j) != 0) mergeable_rows.remove(m + 1);
  }
}

tk::array<int> Trl_TxMap::tx_cells() const {
  tk::array<int> index(size());
  const int columns = column_count();
  for (int r = 0; r < row_count(); ++r)
    for (int c = 0; c < columns; ++c) {
      const int cell = cells(r, c);
      if (cell != 0) index[(cell > 0 ? cell : -cell) - 1] = r * columns + c;
    }
  return index;
}

// The grid lines of the rows and columns, and the base stations, fixed ones in red.
void Trl_TxMap::draw() const {
  window->clear();
  for (double x : x_bounds)
    window->draw_segment(x, y_bounds.head(), x, y_bounds.tail(), tk::grey2);
  for (double y : y_bounds)
    window->draw_segment(x_bounds.head(), y, x_bounds.tail(), y, tk::grey2);
  for (const Trl_Tx& tx : *this)
    window->draw_filled_node(tk::point(tx.position.xcoord(), tx.position.ycoord()),
                             tx.status == 3 ? tk::red : tk::black);
}
