// "Load mobile users" over a loaded terrain, played through the menus by the scripted
// window backend in a child process: users off the terrain are counted and left out.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "app/Trl_Main.h"
#include "raster/RasterFiles.h"
#include "toolkit/backend.h"
#include "toolkit/directory.h"
#include "toolkit/script/script_backend.h"

namespace fs = std::filesystem;

TEST(Trl_LoadUsers, UsersOffTheTerrainAreIgnoredAndCounted) {
  const fs::path dir = fs::path(testing::TempDir()) / ("celvane_radio_load_" + std::to_string(getpid()));
  fs::remove_all(dir);
  fs::create_directories(dir);
  // 100 m by 100 m: 10 by 10 cells of 10 m, nodes 0 to 90 m, the cells reach -5 to 95 m.
  raster_files::write_map((dir / "city.map").string(), 10, 10,
                          [](unsigned, unsigned) { return static_cast<short>(20); },
                          "xlc 0 ylc 0 gridsize 10 minimum 0 maximum 999");
  std::ostringstream urb;
  urb << "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n0 0 10\n10 10\n0 10\n";
  for (int r = 1; r < 10; ++r) urb << "2\n";
  raster_files::write_text((dir / "city.urb").string(), urb.str());
  // Five users, the second and the fourth outside.
  raster_files::write_text((dir / "five.drx").string(),
                           "1 10 10\n2 -20 50\n3 50 50\n4 50 130\n5 94 94\n");
  const std::string at = tk::to_drive_path(dir.string()).str();
  const std::string script = "menu File/Load terrain\n  file " + at + "\\city.map\n" +
                             "menu File/Load mobile users\n  file " + at + "\\five.drx\n" +
                             "menu Run/Compute Assignment\n" + "menu Exit\n";
  const std::string transcript_path = (dir / "transcript.txt").string();
  EXPECT_EXIT(
      {
        std::ofstream transcript(transcript_path);
        tk::script_backend backend(script, transcript);
        tk::set_backend(&backend);
        backend.capture_stdout();
        std::exit(run_planner_main());
      },
      ::testing::ExitedWithCode(0), "");
  std::ifstream in(transcript_path);
  std::stringstream text;
  text << in.rdbuf();
  const std::string t = text.str();
  EXPECT_NE(t.find("message: 2 users being not on terrain ignored.\n"), std::string::npos) << t;
  // Three users and no base station: the computation refuses.
  EXPECT_NE(t.find("message: No base stations or mobile users. Nothing to do?\n"), std::string::npos)
      << t;
  fs::remove_all(dir);
}
