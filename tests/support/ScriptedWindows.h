// Test support: installs a scripted window backend playing the given script for the life of
// the object, with the transcript kept in memory. Windows made meanwhile draw into it.
#pragma once

#include <sstream>
#include <string>

#include "support/ErrorGuard.h"
#include "toolkit/backend.h"
#include "toolkit/script/script_backend.h"
#include "toolkit/window.h"

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

// One wait for the next event of any window, as the program's main loop waits; its results
// are left aside.
inline void next_event() {
  tk::window* from = nullptr;
  int value = 0;
  double x = 0, y = 0;
  tk::read_event(from, value, x, y);
}

// How often `what` stands in `text`, overlaps counted.
inline int occurrences(const std::string& text, const std::string& what) {
  int n = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}
