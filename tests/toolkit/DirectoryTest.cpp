#include <gtest/gtest.h>
#include "support/TestFolder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

#include "toolkit/directory.h"

namespace fs = std::filesystem;

namespace {

std::vector<std::string> sorted(const tk::list<tk::string>& l) {
  std::vector<std::string> v;
  for (const tk::string& s : l) v.push_back(s.str());
  std::sort(v.begin(), v.end());
  return v;
}

TEST(Directory, DriveMappingBothWays) {
  EXPECT_EQ(tk::to_native_path("C:\\home\\ana\\plan"), "/home/ana/plan");
  EXPECT_EQ(tk::to_native_path("C:"), "/");
  EXPECT_EQ(tk::to_native_path("data\\bs.dtx"), "data/bs.dtx");
  EXPECT_EQ(tk::to_drive_path("/home/ana/plan"), tk::string("C:\\home\\ana\\plan"));
  EXPECT_EQ(tk::to_drive_path("/"), tk::string("C:\\"));
  EXPECT_TRUE(tk::is_directory("C:"));
  EXPECT_TRUE(tk::is_directory("C:\\"));
  EXPECT_FALSE(tk::is_directory("A:"));
  EXPECT_FALSE(tk::is_directory("D:\\"));
}

TEST(Directory, ListsFilesByPatternAndDirectories) {
  fs::path dir = test_folder("celvane_directory_test");
  fs::remove_all(dir);
  fs::create_directories(dir / "sub");
  for (const char* name : {"a.dtx", "b.dtx", "c.drx", "dtx"}) std::ofstream(dir / name) << "x";
  tk::string where = tk::to_drive_path(dir.string());
  EXPECT_TRUE(tk::is_directory(where));
  EXPECT_EQ(sorted(tk::get_files(where, "*.dtx")), (std::vector<std::string>{"a.dtx", "b.dtx"}));
  EXPECT_EQ(sorted(tk::get_files(where)), (std::vector<std::string>{"a.dtx", "b.dtx", "c.drx", "dtx"}));
  EXPECT_EQ(sorted(tk::get_directories(where)), (std::vector<std::string>{".", "..", "sub"}));

  tk::string before = tk::get_directory();
  ASSERT_TRUE(tk::set_directory(where));
  EXPECT_EQ(tk::get_directory(), where);
  EXPECT_FALSE(tk::set_directory(where + "\\missing"));
  ASSERT_TRUE(tk::set_directory(before));
  fs::remove_all(dir);
}

TEST(Directory, PatternMatching) {
  EXPECT_TRUE(tk::matches_pattern("plan.map", "*.map"));
  EXPECT_FALSE(tk::matches_pattern("plan.map.bak", "*.map"));
  EXPECT_TRUE(tk::matches_pattern(".map", "*.map"));
  EXPECT_TRUE(tk::matches_pattern("anything", "*"));
  EXPECT_TRUE(tk::matches_pattern("a.b.map", "*.*map"));
}

}  // namespace
