// Test support: installs a scripted window backend playing the given script for the life of
// the object, with the transcript kept in memory. Windows made meanwhile draw into it.
#pragma once

#include <sstream>
#include <string>

#include "support/ErrorGuard.h"
#include "toolkit/backend.h"
#include "toolkit/script/script_backend.h"

class ScriptedWindows {
 public:
  explicit ScriptedWindows(const std::string& script) : backend(script, out) { tk::set_backend(&backend); }
  ~ScriptedWindows() { tk::set_backend(nullptr); }
  std::string transcript() const { return out.str(); }
  tk::script_backend& scripted() { return backend; }

 private:
  // Windows made in tests must not install the error panel for the rest of the run.
  ErrorGuard guard;
  std::ostringstream out;
  tk::script_backend backend;
};
