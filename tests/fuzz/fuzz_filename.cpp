// Typed file names through normalize and Trl_Filename as the file dialog takes them, and the
// drive paths of toolkit/directory. Byte 0 says whether a directory is asked for.
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "app/Trl_Filename.h"
#include "fuzz/fuzz_support.h"
#include "toolkit/directory.h"

namespace {

bool allowed(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         (c != '\0' && std::strchr("$%@# :_.\\", c) != nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static const std::string start = tk::to_native_path(tk::get_directory());
  if (size == 0) return 0;
  const bool is_directory = data[0] & 1;
  const tk::string typed(std::string(reinterpret_cast<const char*>(data + 1), size - 1));

  tk::string path = typed;
  if (normalize(path, is_directory)) {
    // A checked path keeps only the allowed characters, backslashes single, and ends in
    // one exactly when it names a directory.
    const std::string& p = path.str();
    FUZZ_CHECK(!p.empty());
    for (char c : p) FUZZ_CHECK(allowed(c));
    FUZZ_CHECK(p.find("\\\\") == std::string::npos);
    FUZZ_CHECK((p.back() == '\\') == is_directory);
  } else {
    FUZZ_CHECK(path.str() == typed.str());
  }

  Trl_Filename name(typed, ".map", is_directory);
  const tk::string whole = name.full_path();
  if (name.directory.length() > 0) FUZZ_CHECK(name.directory[name.directory.length() - 1] == '\\');
  // A native absolute path comes back from its drive path unchanged.
  const std::string native = "/" + typed.str();
  if (native.find('\\') == std::string::npos) FUZZ_CHECK(tk::to_native_path(tk::to_drive_path(native)) == native);
  (void)whole;
  // Taking a name may change the working directory; each input starts from the same one.
  if (chdir(start.c_str()) != 0) std::abort();
  return 0;
}
