// Trl_Filename: a file name taken apart into drive ("C:"), directory ("\data\", from the
// first backslash after the drive through the last), name and extension (".map"), with
// the rules for checking and tidying a typed path, and the program's own file dialog.
// Each kind of file the planner reads or writes keeps one, so each remembers its folder.
#pragma once

#include "toolkit/string.h"

namespace tk {
class window;
}

class Trl_Filename {
 public:
  Trl_Filename(const tk::string& drive, const tk::string& directory, const tk::string& name,
               const tk::string& extension);
  // Checks and splits a path; a bad path gives "unknown" + default_name in the current
  // directory, with valid false.
  Trl_Filename(const tk::string& path, const tk::string& default_name, bool is_directory);
  virtual ~Trl_Filename() {}

  tk::string full_path() const { return drive + directory + name + extension; }
  // The file dialog. True when the planner confirmed a name; this object has taken it then.
  bool dialog(const tk::string& action, const tk::string& title, tk::window* parent, tk::string& result);

  tk::string drive;
  tk::string directory;
  tk::string name;
  tk::string extension;
  bool valid;

 private:
  void split(const tk::string& absolute_path);
};

// Checks a path and rewrites it in place: forward slashes become backslashes, "." and ".."
// components are resolved against the current directory, doubled backslashes are merged.
// False for an empty path or a character outside letters, digits and "$%@# :_./\".
bool normalize(tk::string& path, bool is_directory);
