// Trl_MappedMatrixT<T, S>: a matrix whose elements live in a memory-mapped ".map" file: a
// text header in the first page of 4096 bytes, then tiles of 32 rows by 64 columns, one
// page each, so that a walk in any direction touches few pages. Element (c, r) is entry
// ((r/32) * tiles_across + c/64) * 2048 + (r%32) * 64 + c%64 behind the first page.
// The result of the constructor is read from `valid`.
#pragma once

#include <fstream>
#include <string>

#include "raster/Trl_MatrixT.h"
#include "toolkit/file_mapping.h"

template <class T, class S>
class Trl_MappedMatrixT : public Trl_MatrixT<T, S> {
 public:
  static const char* const magic;  // the first 53 bytes of the file
  static const int page_size = 4096;

  // Opens an existing file; with rows and columns both non-zero it also demands exactly
  // that shape, and creates the file when it does not exist.
  Trl_MappedMatrixT(const std::string& file_name, std::uint32_t rows, std::uint32_t columns);
  ~Trl_MappedMatrixT() override;

  void resize(std::uint32_t, std::uint32_t, bool) override {}
  Trl_MatrixT<T, S>* clear() override { return this; }
  T get(std::uint32_t c, std::uint32_t r) const override { return this->data[entry(c, r)]; }
  T& ref(std::uint32_t c, std::uint32_t r) override { return this->data[entry(c, r)]; }
  T get(std::uint32_t i) const override { return get(i % this->columns, i / this->columns); }
  T& ref(std::uint32_t i) override { return ref(i % this->columns, i / this->columns); }

  // The entry index of (c, r) counted from the first tile: shifts and masks, no division.
  std::uint32_t entry(std::uint32_t c, std::uint32_t r) const {
    return (((r >> tile_row_bits) * tiles_across + (c >> tile_column_bits)) << page_bits) +
           ((r & tile_row_mask) << tile_column_bits) + (c & tile_column_mask);
  }
  // The free text behind the header in the first page.
  std::string tail() const;

  tk::file_mapping mapping;
  std::fstream stream;
  char* base = nullptr;
  int header_length = 0;
  int tail_length = 0;
  std::uint32_t file_size = 0;
  std::string file_name;
  bool delete_file = false;
  bool valid = false;
  int page_bits = 11;
  int page_entries = 2048;
  int tile_row_bits = 5;
  int tile_rows = 32;
  int tile_row_mask = 31;
  int tile_column_bits = 6;
  int tile_columns = 64;
  int tile_column_mask = 63;
  std::uint32_t tiles_across = 0;
  std::uint32_t tiles_down = 0;
  int page_shift = 12;

 private:
  bool read_existing(std::uint32_t wanted_rows, std::uint32_t wanted_columns);
  bool create(std::uint32_t wanted_rows, std::uint32_t wanted_columns);
  static bool fits(std::uint64_t rows, std::uint64_t columns);
  void set_shape(std::uint32_t rows, std::uint32_t columns);
  bool map_file();
};
