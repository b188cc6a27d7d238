#include <gtest/gtest.h>

#include "support/ErrorGuard.h"
#include "toolkit/error.h"

namespace {

TEST(ErrorHandlerDeathTest, DefaultHandlerWritesHeadingAndMessageThenAborts) {
  EXPECT_DEATH(tk::error_handler(2, "array::entry index out of range"),
               "^\nTOOLKIT ERROR HANDLER\n\tarray::entry index out of range\n$");
}

TEST(ErrorHandler, WarningsAndNegativeNumbersReturn) {
  testing::internal::CaptureStderr();
  tk::error_handler(0, "just saying");
  tk::error_handler(-1, "quietly");
  std::string err = testing::internal::GetCapturedStderr();
  EXPECT_EQ(err, "\nTOOLKIT WARNING\n\tjust saying\n\nTOOLKIT ERROR HANDLER\n\tquietly\n");
}

void noop_handler(int, const char*) {}

TEST(ErrorHandler, SetReturnsTheFormerHandler) {
  tk::error_handler_type before = tk::get_error_handler();
  EXPECT_EQ(before, &tk::default_error_handler);
  EXPECT_EQ(tk::set_error_handler(noop_handler), before);
  EXPECT_EQ(tk::get_error_handler(), &noop_handler);
  tk::error_handler(5, "ignored by the no-op handler");
  EXPECT_EQ(tk::set_error_handler(before), &noop_handler);
}

TEST(ErrorHandler, AssertionNamesTheSourceWithoutFolderOrExtension) {
  int line = __LINE__ + 1;
  EXPECT_TK_ERROR(TK_ASSERT(1 == 2, "numbers differ"), 999,
                  "Assertion failed in file ErrorHandlerTest at line " + std::to_string(line) + ": numbers differ");
}

}  // namespace
