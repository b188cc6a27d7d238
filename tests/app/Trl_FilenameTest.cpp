#include <gtest/gtest.h>
#include "support/TestFolder.h"

#include <filesystem>
#include <fstream>

#include "app/Trl_Filename.h"
#include "support/ScriptedWindows.h"
#include "toolkit/directory.h"

namespace fs = std::filesystem;

namespace {

tk::string normalized(const char* path, bool is_directory = false) {
  tk::string p(path);
  EXPECT_TRUE(normalize(p, is_directory)) << path;
  return p;
}

// Runs the test in a folder of its own: C:\...\celvane_filename\ with a few plan files.
class InPlanFolder : public testing::Test {
 protected:
  void SetUp() override {
    before = fs::current_path();
    root = test_folder("celvane_filename");
    fs::remove_all(root);
    fs::create_directories(root / "maps");
    fs::create_directories(root / "lists");
    std::ofstream(root / "bs.dtx") << "0 1 2\n";
    std::ofstream(root / "other.dtx") << "0 1 2\n";
    std::ofstream(root / "mu.drx") << "0 1 2\n";
    fs::current_path(root);
    here = tk::to_drive_path(root.string());
  }
  void TearDown() override {
    fs::current_path(before);
    fs::remove_all(root);
  }
  fs::path before, root;
  tk::string here;
};

TEST(Normalize, TidiesSeparatorsDotsAndDoubledBackslashes) {
  EXPECT_EQ(normalized("C:/data/./plan/../map.dtx"), tk::string("C:\\data\\map.dtx"));
  EXPECT_EQ(normalized("C:\\a\\\\b"), tk::string("C:\\a\\b"));
  EXPECT_EQ(normalized("  \t C:\\plan one.dtx  "), tk::string("C:\\plan one.dtx  "));  // trailing blanks stay
  EXPECT_EQ(normalized("C:\\data", true), tk::string("C:\\data\\"));
  EXPECT_EQ(normalized("C:\\a\\b\\..\\..\\c"), tk::string("C:\\c"));
  tk::string bad("plan-1.dtx");
  EXPECT_FALSE(normalize(bad, false));
  tk::string bracket("C:\\plan(1).dtx");
  EXPECT_FALSE(normalize(bracket, false));
  tk::string empty(" \r\n");
  EXPECT_FALSE(normalize(empty, false));
  tk::string folder("C:\\data\\");
  EXPECT_FALSE(normalize(folder, false));
}

TEST_F(InPlanFolder, RelativePathsResolveAgainstTheCurrentDirectory) {
  EXPECT_EQ(normalized(".\\bs.dtx"), here + "\\bs.dtx");
  EXPECT_EQ(normalized("..\\x.dtx"), tk::to_drive_path(root.parent_path().string()) + "\\x.dtx");
  Trl_Filename f("maps\\city.map", ".map", false);
  EXPECT_TRUE(f.valid);
  EXPECT_EQ(f.drive, tk::string("C:"));
  EXPECT_EQ(f.directory, here(2, here.length() - 1) + "\\maps\\");
  EXPECT_EQ(f.name, tk::string("city"));
  EXPECT_EQ(f.extension, tk::string(".map"));
  Trl_Filename drive_relative("C:bs.dtx", ".dtx", false);
  EXPECT_EQ(drive_relative.full_path(), here + "\\bs.dtx");
}

TEST_F(InPlanFolder, SplittingNamesAndBadPaths) {
  Trl_Filename hidden("C:\\x\\.hidden", "", false);
  EXPECT_EQ(hidden.name, tk::string(".hidden"));
  EXPECT_EQ(hidden.extension, tk::string(""));
  Trl_Filename dotted("C:\\a.b\\file", "", false);
  EXPECT_EQ(dotted.directory, tk::string("\\a.b\\"));
  EXPECT_EQ(dotted.name, tk::string("file"));
  EXPECT_EQ(dotted.extension, tk::string(""));
  Trl_Filename bad("plan-1.dtx", ".dtx", false);
  EXPECT_FALSE(bad.valid);
  EXPECT_EQ(bad.full_path(), here + "\\unknown.dtx");
  Trl_Filename four("C:", "\\data", "bs", ".dtx");
  EXPECT_EQ(four.full_path(), tk::string("C:\\data\\bs.dtx"));
  Trl_Filename folder("./", "", true);
  EXPECT_EQ(folder.full_path(), here + "\\");
}

TEST_F(InPlanFolder, DialogTakesTheOfferedName) {
  ScriptedWindows scripted("press Load\n");
  Trl_Filename f(here(0, 1), here(2, here.length() - 1), "bs", ".dtx");
  tk::string result;
  ASSERT_TRUE(f.dialog("Load", "Base station", nullptr, result));
  EXPECT_EQ(result, here + "\\bs.dtx");  // the panel's text is pinned by the file_dialog scenario
}

TEST_F(InPlanFolder, DialogRefusesABadNameAndCanBeCancelled) {
  ScriptedWindows scripted("set File name: = plan-1.dtx\npress Load\npress Cancel\n");
  Trl_Filename f(here(0, 1), here(2, here.length() - 1), "bs", ".dtx");
  tk::string result;
  EXPECT_FALSE(f.dialog("Load", "Base station", nullptr, result));
  EXPECT_EQ(f.name, tk::string("bs"));  // nothing taken
  std::string t = scripted.transcript();
  EXPECT_NE(t.find("message: File name is not valid.\npanel: Load Base station\n"), std::string::npos) << t;
  EXPECT_NE(t.find("  File name: [plan-1.dtx]\n"), std::string::npos) << t;  // the entry survives
}

TEST_F(InPlanFolder, UpWalksToTheParentAndATypedExtensionChangesTheKind) {
  tk::string maps_dir = here(2, here.length() - 1) + "\\maps\\";
  ScriptedWindows scripted("press Up\nset File name: = other.drx\npress Store\n");
  Trl_Filename f("C:", maps_dir, "bs", ".dtx");
  tk::string result;
  ASSERT_TRUE(f.dialog("Store", "Test", nullptr, result));
  EXPECT_EQ(result, here + "\\other.drx");
  EXPECT_EQ(f.extension, tk::string(".drx"));
  std::string t = scripted.transcript();
  // After "Up" the panel opens again on the parent folder.
  EXPECT_NE(t.find("  Directory: [" + here(2, here.length() - 1).str() + "\\]\n"), std::string::npos) << t;
}

TEST_F(InPlanFolder, ATypedFullPathOverridesDriveAndDirectory) {
  ScriptedWindows scripted("set File name: = " + here.str() + "\\lists\\users.drx\npress Load\n");
  Trl_Filename f("C:", "\\nowhere\\", "mu", ".drx");
  tk::string result;
  // The directory item must still name an existing directory.
  f.directory = here(2, here.length() - 1) + "\\";
  ASSERT_TRUE(f.dialog("Load", "Mobile user", nullptr, result));
  EXPECT_EQ(result, here + "\\lists\\users.drx");
}

TEST_F(InPlanFolder, UpAtTheRootKeepsTheRoot) {
  ScriptedWindows scripted("press Up\npress Cancel\n");
  Trl_Filename f("C:", "\\", "bs", ".dtx");
  tk::string result;
  EXPECT_FALSE(f.dialog("Load", "Base station", nullptr, result));
  std::string t = scripted.transcript();
  size_t second = t.find("panel: Load Base station", 1);
  ASSERT_NE(second, std::string::npos);
  EXPECT_NE(t.find("  Directory: [\\]\n", second), std::string::npos) << t;
}

}  // namespace
