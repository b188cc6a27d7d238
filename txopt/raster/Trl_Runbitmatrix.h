// Trl_Runbitmatrix: a raster of one bit a cell (building or not), run-length coded by rows.
// A row keeps the column just behind each run; runs alternate in value from `first`.
// Neighbouring rows that are equal share one array. Rows are limited to 65535 columns.
#pragma once

#include <cstdint>
#include <istream>

class Trl_Runbitrow {
 public:
  Trl_Runbitrow() {}
  ~Trl_Runbitrow();
  Trl_Runbitrow(const Trl_Runbitrow&) = delete;
  Trl_Runbitrow& operator=(const Trl_Runbitrow&) = delete;

  // Reads one row: a code (0 first run clear, 2 same as the row before, other first run
  // set) and run lengths until they reach the columns.
  void read(std::istream& in, std::uint16_t columns);
  bool get(std::uint16_t x) const;
  // Sets or clears the bits of columns 0 to columns - 1 in `words` (bit c & 63 of word
  // c >> 6) to what get() answers, a run at a time.
  void decode(std::uint64_t* words, int columns) const;
  bool operator==(const Trl_Runbitrow& other) const;
  void share(const Trl_Runbitrow& other);
  bool has_runs() const { return ends != nullptr && ends[last] != 0; }

  std::uint16_t* ends = nullptr;
  std::uint16_t capacity = 0;
  std::uint16_t last = 0;
  bool first = false;
  bool owns = true;

 private:
  bool value(int p) const { return (p % 2 == 0) ? first : !first; }
};

class Trl_Runbitmatrix {
 public:
  Trl_Runbitmatrix() {}
  virtual ~Trl_Runbitmatrix();
  Trl_Runbitmatrix(const Trl_Runbitmatrix&) = delete;
  Trl_Runbitmatrix& operator=(const Trl_Runbitmatrix&) = delete;

  void read(std::istream& in);
  bool get(std::uint16_t column, std::uint32_t row) const { return row_array[row].get(column); }

  void* pool = nullptr;
  Trl_Runbitrow* row_array = nullptr;
  std::uint32_t rows = 0;
  std::uint32_t columns = 0;
  bool owns_pool = false;

 private:
  void free_rows();
};
