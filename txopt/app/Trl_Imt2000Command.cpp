#include "app/Trl_Imt2000Command.h"

#include <fstream>

#include "app/Trl_Filename.h"
#include "app/Trl_Planner.h"
#include "network/Trl_Imt2000Generator.h"
#include "network/Trl_Imt2000Traffic.h"

void Trl_Imt2000Command::run(Trl_Planner& planner) {
  if (!planner.window) return;
  // The two names live as long as the program, so each dialog opens where it was left.
  static Trl_Filename entrada(planner.start_dir.drive, planner.start_dir.directory, "Entrada", ".ent");
  static Trl_Filename datos(planner.start_dir.drive, planner.start_dir.directory, "Datos", ".ent");
  if (!load(planner, entrada, "IMT-2000 parameters", &Trl_Imt2000Traffic::read_entrada)) return;
  if (!load(planner, datos, "User parameters", &Trl_Imt2000Traffic::read_datos)) return;
  const Trl_Imt2000Snapshot users = Trl_Imt2000Generator(Trl_Imt2000Traffic::instance(), planner.terrain).run();
  planner.install_rx(users);
  std::ofstream out("test.out", std::ios::out | std::ios::trunc);
  users.write(out);
}

bool Trl_Imt2000Command::load(Trl_Planner& planner, Trl_Filename& file, const char* title,
                              int (Trl_Imt2000Traffic::*read)(const tk::string&)) {
  Trl_Imt2000Traffic& traffic = Trl_Imt2000Traffic::instance();
  for (;;) {
    tk::string path;
    if (!file.dialog("Load", title, planner.window, path)) return false;
    if ((traffic.*read)(path) == 0) return true;
    planner.message(traffic.error);
  }
}
