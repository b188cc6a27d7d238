// The one funnel for violated conditions: toolkit bounds checks, preconditions and the
// program's own assertions all report here with a number and a message.
// Number 0 is a warning and returns; a negative number returns; a positive number ends
// the process under the default handler. Nothing throws or catches.
#pragma once

namespace tk {

typedef void (*error_handler_type)(int number, const char* message);

// Calls the current handler.
void error_handler(int number, const char* message);

// Installs a handler and returns the former one.
error_handler_type set_error_handler(error_handler_type handler);
error_handler_type get_error_handler();

// Writes an empty line, "TOOLKIT ERROR HANDLER" (or "TOOLKIT WARNING" for 0) and the
// message after a tab to standard error; aborts for a number above 0.
void default_error_handler(int number, const char* message);

// Reports "Assertion failed in file %s at line %d: %s" with number 999; the file is
// given without its folders and extension.
void assertion_failed(const char* file, int line, const char* text);

}  // namespace tk

#define TK_ASSERT(condition, text)                                      \
  do {                                                                  \
    if (!(condition)) ::tk::assertion_failed(__FILE__, __LINE__, text); \
  } while (0)
