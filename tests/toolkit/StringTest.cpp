#include <gtest/gtest.h>

#include <sstream>

#include "toolkit/string.h"

namespace {

TEST(String, SubstringsAreClipped) {
  tk::string s("abc");
  EXPECT_EQ(s(1, 99), tk::string("bc"));
  EXPECT_EQ(s(2, 1), tk::string(""));
  EXPECT_EQ(s(-5, 0), tk::string("a"));
  EXPECT_EQ(s(0, 2), s);
}

TEST(String, PositionSearch) {
  tk::string s("abcabc");
  EXPECT_EQ(s.pos("", 0), -1);
  EXPECT_EQ(s.pos("bc", 0), 1);
  EXPECT_EQ(s.pos("bc", 2), 4);
  EXPECT_EQ(s.pos("bc", 5), -1);
  EXPECT_EQ(s.pos("x"), -1);
}

TEST(String, EditingJoinsThePartsAnew) {
  tk::string s("C:\\a\\.\\b");
  EXPECT_EQ(s.replace_all("\\.\\", "\\"), tk::string("C:\\a\\b"));
  EXPECT_EQ(tk::string("hello").del(1, 3), tk::string("ho"));
  EXPECT_EQ(tk::string("hello").replace(0, 0, "J"), tk::string("Jello"));
  tk::string t = tk::string("%d of %d done.", 3, 40);
  EXPECT_EQ(t, tk::string("3 of 40 done."));
  EXPECT_EQ(tk::string("%8.2f", 1.5), tk::string("    1.50"));
  tk::string u("a");
  u += "b";
  EXPECT_EQ(u + tk::string('c'), tk::string("abc"));
  EXPECT_TRUE(tk::string("B") < tk::string("a"));  // byte-wise, case-sensitive
}

TEST(String, ReadingLinesAndWords) {
  std::string longline(100000, 'x');
  std::istringstream in(longline + "\nsecond line\n  word1   word2");
  tk::string s;
  s.read(in, '\n');
  EXPECT_EQ(s.length(), 100000);
  s.read(in, '\n');
  EXPECT_EQ(s, tk::string("second line"));
  in >> s;
  EXPECT_EQ(s, tk::string("word1"));
  in >> s;
  EXPECT_EQ(s, tk::string("word2"));
  std::ostringstream out;
  out << s;
  EXPECT_EQ(out.str(), "word2");
}

}  // namespace
