#include <gtest/gtest.h>

#include <sstream>

#include "toolkit/error.h"
#include "toolkit/script/script_backend.h"
#include "toolkit/window.h"

namespace {

// The first window made with a backend installs the error panel; each case runs in a fresh
// process so that it sees the default handler first.
void make_first_window_and_fail(const char* script, int number) {
  static std::ostringstream out;
  static tk::script_backend backend(script, out);
  tk::set_backend(&backend);
  tk::window w(100, 100, "plan");
  tk::error_handler(number, "array::entry index out of range");
  std::fprintf(stderr, "handler returned\n");
  std::exit(7);
}

class ErrorPanelDeathTest : public testing::Test {
 protected:
  void SetUp() override { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

// "exit" ends normally, "abort" abnormally; "ignore", and "continue" on a warning, return.
TEST_F(ErrorPanelDeathTest, EachButtonEndsOrReturnsAsItSays) {
  EXPECT_EXIT(make_first_window_and_fail("press exit\n", 2), testing::ExitedWithCode(0), "");
  EXPECT_DEATH(make_first_window_and_fail("press abort\n", 2), "");
  EXPECT_EXIT(make_first_window_and_fail("press ignore\n", 2), testing::ExitedWithCode(7), "handler returned");
  EXPECT_EXIT(make_first_window_and_fail("press continue\n", 0), testing::ExitedWithCode(7), "handler returned");
}

TEST_F(ErrorPanelDeathTest, ThePanelNamesTheErrorAndItsMessage) {
  // Without an answer the run stops and names the panel and its buttons.
  EXPECT_EXIT(make_first_window_and_fail("", 2), testing::ExitedWithCode(2),
              "panel \"TOOLKIT EXCEPTION HANDLER\" with items \\(none\\) and buttons \"exit\" \"abort\" \"ignore\"");
}

}  // namespace
