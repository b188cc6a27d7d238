// celvane-batch [--seed N] [--transcript FILE] SCRIPT
// Runs Celvane without a screen: the plan script answers every menu, panel and question,
// and the transcript records what the planner would have seen.
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "app/Trl_Main.h"
#include "toolkit/script/script_backend.h"

namespace {
int usage() {
  std::cerr << "usage: celvane-batch [--seed N] [--transcript FILE] SCRIPT\n";
  return 2;
}
}  // namespace

int main(int argc, char** argv) {
  std::string script_path, transcript_path;
  bool seeded = false;
  long seed = 0;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "--seed" && i + 1 < argc) {
      seeded = true;
      seed = std::atol(argv[++i]);
    } else if (arg == "--transcript" && i + 1 < argc) {
      transcript_path = argv[++i];
    } else if (!arg.empty() && arg[0] != '-' && script_path.empty()) {
      script_path = arg;
    } else {
      return usage();
    }
  }
  if (script_path.empty()) return usage();
  std::ifstream script_file(script_path);
  if (!script_file) {
    std::cerr << "celvane-batch: cannot read " << script_path << "\n";
    return 2;
  }
  std::stringstream text;
  text << script_file.rdbuf();

  std::ofstream transcript_file;
  std::ostream* transcript = &std::cout;
  if (!transcript_path.empty()) {
    transcript_file.open(transcript_path);
    if (!transcript_file) {
      std::cerr << "celvane-batch: cannot write " << transcript_path << "\n";
      return 2;
    }
    transcript = &transcript_file;
  }
  if (seeded) fix_planner_seed(seed);

  tk::script_backend backend(text.str(), *transcript);
  if (!backend.ok()) {
    std::cerr << "celvane-batch: " << script_path << ": " << backend.error_text() << "\n";
    return 2;
  }
  tk::set_backend(&backend);
  backend.capture_stdout();
  int status = run_planner_main();
  backend.release_stdout();
  // The global menus outlive this backend; they must not reach it at process end.
  tk::set_backend(nullptr);
  return status;
}
