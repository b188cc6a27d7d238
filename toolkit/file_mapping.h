// tk::file_mapping: a file mapped into memory, shared with the file so that writes reach
// it. The life steps are those the program expects: open an existing file for reading
// and writing, map a view of it, unmap, close, and delete the file. Each step reports
// failure by its result, never by a crash; a view is refused when the file is shorter
// than the bytes asked for, so no access can fall past the file's end.
#pragma once

#include <cstddef>
#include <string>

namespace tk {

class file_mapping {
 public:
  file_mapping() {}
  ~file_mapping();
  file_mapping(const file_mapping&) = delete;
  file_mapping& operator=(const file_mapping&) = delete;

  bool open_existing(const std::string& native_path);
  // The first `bytes` of the file, readable and writable; null on failure.
  void* map(std::size_t bytes);
  void unmap();
  void close();
  static bool remove(const std::string& native_path);

  void* view() const { return base; }
  std::size_t mapped_bytes() const { return length; }

 private:
  int descriptor = -1;
  void* base = nullptr;
  std::size_t length = 0;
};

}  // namespace tk
