// Test support: while an ErrorGuard lives, every call of the toolkit's error funnel
// is recorded and turned into a thrown ToolkitError, so a fatal path can be checked
// with an ordinary EXPECT_THROW instead of a death test. Warnings (number 0) and
// negative numbers are recorded and return, as in the program.
#pragma once

#include <string>
#include <vector>

#include "toolkit/error.h"

struct ToolkitError {
  int number;
  std::string message;
};

class ErrorGuard {
 public:
  ErrorGuard();
  ~ErrorGuard();
  ErrorGuard(const ErrorGuard&) = delete;
  ErrorGuard& operator=(const ErrorGuard&) = delete;

  // Every report seen while this guard is installed, warnings included.
  static const std::vector<ToolkitError>& reports();

 private:
  tk::error_handler_type former;
};

// Runs the statement and expects it to report the given number and exact message.
#define EXPECT_TK_ERROR(statement, expected_number, expected_message)          \
  do {                                                                          \
    ErrorGuard tk_error_guard_;                                                 \
    bool tk_error_seen_ = false;                                                \
    try {                                                                       \
      statement;                                                                \
    } catch (const ToolkitError& e) {                                           \
      tk_error_seen_ = true;                                                    \
      EXPECT_EQ(e.number, expected_number);                                     \
      EXPECT_EQ(e.message, std::string(expected_message));                      \
    }                                                                           \
    EXPECT_TRUE(tk_error_seen_) << "no toolkit error from: " #statement;       \
  } while (0)
