#include "toolkit/error.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace tk {

namespace {
error_handler_type current_handler = default_error_handler;
}

void error_handler(int number, const char* message) { current_handler(number, message); }

error_handler_type set_error_handler(error_handler_type handler) {
  error_handler_type former = current_handler;
  current_handler = handler ? handler : default_error_handler;
  return former;
}

error_handler_type get_error_handler() { return current_handler; }

void default_error_handler(int number, const char* message) {
  std::fputs("\n", stderr);
  std::fputs(number == 0 ? "TOOLKIT WARNING\n" : "TOOLKIT ERROR HANDLER\n", stderr);
  std::fprintf(stderr, "\t%s\n", message);
  if (number > 0) {
    std::fflush(stderr);
    std::abort();
  }
}

void assertion_failed(const char* file, int line, const char* text) {
  std::string source(file);
  std::string::size_type slash = source.find_last_of("/\\");
  if (slash != std::string::npos) source.erase(0, slash + 1);
  std::string::size_type dot = source.rfind('.');
  if (dot != std::string::npos && dot > 0) source.erase(dot);
  int size = std::snprintf(nullptr, 0, "Assertion failed in file %s at line %d: %s",
                           source.c_str(), line, text);
  std::string message(static_cast<size_t>(size) + 1, '\0');
  std::snprintf(&message[0], message.size(), "Assertion failed in file %s at line %d: %s",
                source.c_str(), line, text);
  message.resize(static_cast<size_t>(size));
  error_handler(999, message.c_str());
}

}  // namespace tk
