#include "raster/Trl_MappedMatrixT.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <vector>

template <class T, class S>
const char* const Trl_MappedMatrixT<T, S>::magic = "# memory mapped matrix, (C) 2001, Tarnwick Radio Labs";

template <class T, class S>
Trl_MappedMatrixT<T, S>::Trl_MappedMatrixT(const std::string& name, std::uint32_t rows, std::uint32_t columns)
    : file_name(name) {
  stream.open(name, std::ios::in | std::ios::binary);
  if (!stream.is_open()) {
    if (rows != 0 && columns != 0) valid = create(rows, columns);
    return;
  }
  valid = read_existing(rows, columns);
}

template <class T, class S>
Trl_MappedMatrixT<T, S>::~Trl_MappedMatrixT() {
  if (valid) {
    mapping.unmap();
    this->data = nullptr;
    mapping.close();
    if (delete_file) tk::file_mapping::remove(file_name);
  }
  this->data = nullptr;  // the base class must not free the view
  if (stream.is_open()) stream.close();
}

// Whether a matrix of this shape has a file size that the 32-bit header and entry indices
// can hold; larger shapes are refused before anything is mapped or written.
template <class T, class S>
bool Trl_MappedMatrixT<T, S>::fits(std::uint64_t rows, std::uint64_t columns) {
  if (rows > UINT32_MAX || columns > UINT32_MAX) return false;
  const std::uint64_t tiles = ((columns + 63) / 64) * ((rows + 31) / 32);
  return tiles * page_size + page_size <= UINT32_MAX;
}

template <class T, class S>
void Trl_MappedMatrixT<T, S>::set_shape(std::uint32_t rows, std::uint32_t columns) {
  this->rows = rows;
  this->columns = columns;
  this->size = rows * columns;
  tiles_across = (columns + 63) / 64;
  tiles_down = (rows + 31) / 32;
  file_size = tiles_down * 32 * tiles_across * 64 * 2 + page_size;
}

template <class T, class S>
bool Trl_MappedMatrixT<T, S>::read_existing(std::uint32_t wanted_rows, std::uint32_t wanted_columns) {
  char page[page_size + 1];
  stream.read(page, page_size);
  if (stream.gcount() != page_size) {
    stream.close();
    return false;
  }
  page[page_size] = '\0';
  if (std::memcmp(page, magic, 53) != 0) {
    stream.close();
    return false;
  }
  // Read wide so that a value past 32 bits is refused rather than cut to its low bits.
  unsigned long long stored_size = 0, page_value = 0, entry_size = 0, rows = 0, columns = 0;
  int fields = std::sscanf(page + 53, " %*10s %llu %*10s %llu %*10s %llu %*10s %llu %*10s %llu", &stored_size,
                           &page_value, &entry_size, &rows, &columns);
  if (fields != 5 || page_value != 4096 || entry_size != 2 || rows == 0 || columns == 0 ||
      stored_size > UINT32_MAX || !fits(rows, columns)) {
    stream.close();
    return false;
  }
  if ((wanted_rows != 0 || wanted_columns != 0) && (rows != wanted_rows || columns != wanted_columns)) {
    stream.close();
    return false;
  }
  if (page[54] == '\r' && page[55] == '\n') {
    std::cout << "Windows format\n";
    header_length = 53 + 112;
  } else {
    std::cout << "Unix format\n";
    header_length = 53 + 106;
  }
  set_shape(static_cast<std::uint32_t>(rows), static_cast<std::uint32_t>(columns));
  if (stored_size != 0 && stored_size != file_size) {
    stream.close();
    return false;
  }
  stream.close();
  if (!map_file()) return false;
  tail_length = 0;
  while (header_length + tail_length < page_size && base[header_length + tail_length] != '\0') ++tail_length;
  return true;
}

template <class T, class S>
bool Trl_MappedMatrixT<T, S>::map_file() {
  std::string native = file_name;
  if (!mapping.open_existing(native)) {
    std::cout << "cannot reopen file ...\n";
    return false;
  }
  void* view = mapping.map(file_size);
  if (!view) {
    std::cout << "cannot map file ...\n";
    mapping.close();
    return false;
  }
  base = static_cast<char*>(view);
  this->data = reinterpret_cast<T*>(base + page_size);
  return true;
}

template <class T, class S>
bool Trl_MappedMatrixT<T, S>::create(std::uint32_t rows, std::uint32_t columns) {
  stream.clear();
  if (!fits(rows, columns)) return false;
  // Refuse to overwrite a file that appeared in the meantime.
  if (std::FILE* existing = std::fopen(file_name.c_str(), "rb")) {
    std::fclose(existing);
    return false;
  }
  stream.open(file_name, std::ios::out | std::ios::binary);
  if (!stream.is_open()) return false;
  set_shape(rows, columns);
  std::vector<char> zeros(page_size, 0);
  std::uint32_t left = file_size;
  while (left >= static_cast<std::uint32_t>(page_size) && stream) {
    stream.write(zeros.data(), page_size);
    left -= page_size;
  }
  if (left && stream) stream.write(zeros.data(), left);
  if (!stream) {
    stream.close();
    return false;
  }
  stream.close();
  if (!map_file()) return false;
  header_length = std::snprintf(base, page_size,
                                "%s\nfilesize  %10u\npagesize  %10u\nentrysize %10u\nrows      %10u\ncolumns   %10u\n",
                                magic, file_size, 4096u, 2u, rows, columns);
  tail_length = 0;
  return true;
}

template <class T, class S>
std::string Trl_MappedMatrixT<T, S>::tail() const {
  if (!valid || !base) return std::string();
  return std::string(base + header_length, static_cast<size_t>(tail_length));
}

template class Trl_MappedMatrixT<short, double>;
