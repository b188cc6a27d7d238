#include "toolkit/file_mapping.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace tk {

file_mapping::~file_mapping() {
  unmap();
  close();
}

bool file_mapping::open_existing(const std::string& native_path) {
  close();
  descriptor = ::open(native_path.c_str(), O_RDWR);
  return descriptor >= 0;
}

void* file_mapping::map(std::size_t bytes) {
  unmap();
  if (descriptor < 0 || bytes == 0) return nullptr;
  struct stat info;
  if (fstat(descriptor, &info) != 0 || static_cast<std::size_t>(info.st_size) < bytes) return nullptr;
  void* view = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  if (view == MAP_FAILED) return nullptr;
  base = view;
  length = bytes;
  return base;
}

void file_mapping::unmap() {
  if (base) munmap(base, length);
  base = nullptr;
  length = 0;
}

void file_mapping::close() {
  if (descriptor >= 0) ::close(descriptor);
  descriptor = -1;
}

bool file_mapping::remove(const std::string& native_path) { return std::remove(native_path.c_str()) == 0; }

}  // namespace tk
