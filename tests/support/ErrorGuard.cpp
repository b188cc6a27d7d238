#include "support/ErrorGuard.h"

namespace {
std::vector<ToolkitError> recorded;

void recording_handler(int number, const char* message) {
  recorded.push_back(ToolkitError{number, message ? message : ""});
  if (number > 0) throw ToolkitError{number, message ? message : ""};
}
}  // namespace

ErrorGuard::ErrorGuard() : former(tk::set_error_handler(recording_handler)) { recorded.clear(); }

ErrorGuard::~ErrorGuard() { tk::set_error_handler(former); }

const std::vector<ToolkitError>& ErrorGuard::reports() { return recorded; }
