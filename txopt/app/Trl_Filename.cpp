#include "app/Trl_Filename.h"

#include <cctype>
#include <cstring>

#include "toolkit/directory.h"
#include "toolkit/list.h"
#include "toolkit/panel.h"

using tk::string;

namespace {

string current_directory_with_slash() {
  string cwd = tk::get_directory();
  if (cwd.length() == 0 || cwd[cwd.length() - 1] != '\\') cwd += "\\";
  return cwd;
}

string replace_until_gone(string path, const string& from, const string& to) {
  while (path.pos(from) >= 0) path = path.replace_all(from, to);
  return path;
}

bool allowed(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || (c != '\0' && std::strchr("$%@# :_./\\", c) != nullptr);
}

}  // namespace

bool normalize(string& path, bool is_directory) {
  int start = 0;
  while (start < path.length() && std::strchr(" \t\n\r", path[start])) ++start;
  string p = path(start, path.length() - 1);
  if (p.length() == 0) return false;
  for (int i = 0; i < p.length(); ++i)
    if (!allowed(p[i])) return false;
  p = p.replace_all("/", "\\");
  p = replace_until_gone(p, "\\.\\", "\\");
  if (p.pos(".\\") == 0) {
    p = tk::get_directory() + p(1, p.length() - 1);
  } else if (p.pos("..\\") == 0) {
    p = current_directory_with_slash() + p;
  }
  for (int at = p.pos("\\..\\"); at >= 0; at = p.pos("\\..\\")) {
    // Cut the component before "\..": back to a backslash not itself preceded by one.
    int cut = 0;
    for (int k = at - 1; k >= 0; --k)
      if (p[k] == '\\' && (k == 0 || p[k - 1] != '\\')) {
        cut = k;
        break;
      }
    p = p(0, cut - 1) + p(at + 3, p.length() - 1);
  }
  p = replace_until_gone(p, "\\\\", "\\");
  bool ends_in_backslash = p.length() > 0 && p[p.length() - 1] == '\\';
  if (!is_directory && ends_in_backslash) return false;
  if (is_directory && !ends_in_backslash) p += "\\";
  path = p;
  return true;
}

Trl_Filename::Trl_Filename(const string& drive_, const string& directory_, const string& name_,
                           const string& extension_)
    : drive(drive_), directory(directory_), name(name_), extension(extension_), valid(true) {
  if (directory.length() > 0 && directory[directory.length() - 1] != '\\') directory += "\\";
}

Trl_Filename::Trl_Filename(const string& path_, const string& default_name, bool is_directory) : valid(true) {
  string path = path_;
  if (!normalize(path, is_directory)) {
    path = current_directory_with_slash() + "unknown" + default_name;
    valid = false;
  }
  for (int round = 0; round < 2; ++round) {
    int colon = path.pos(":");
    int slash = path.pos("\\");
    bool absolute = (colon >= 0 && slash == colon + 1) || (colon < 0 && slash == 0);
    if (absolute) break;
    if (colon >= 0) {
      string drive_part = path(0, colon);
      if (tk::is_directory(drive_part)) tk::set_directory(drive_part);
      path = current_directory_with_slash() + path(colon + 1, path.length() - 1);
    } else {
      path = current_directory_with_slash() + path;
    }
  }
  split(path);
}

void Trl_Filename::split(const string& p) {
  int colon = p.pos(":");
  int last_slash = -1, last_dot = -1;
  for (int i = p.length() - 1; i >= 0 && (last_slash < 0 || last_dot < 0); --i) {
    if (p[i] == '\\' && last_slash < 0) last_slash = i;
    if (p[i] == '.' && last_dot < 0) last_dot = i;
  }
  if (last_dot < 0 || last_dot == last_slash + 1 || last_dot < last_slash) last_dot = p.length();
  drive = p(0, colon);
  directory = p(colon + 1, last_slash);
  name = p(last_slash + 1, last_dot - 1);
  extension = p(last_dot, p.length() - 1);
}

// ---- the file dialog

namespace {

// Shared by all dialogs; a panel is modal, so one set is enough.
tk::list<string> drive_list;
tk::list<string> directory_list;
tk::list<string> file_list;
Trl_Filename* open_filename = nullptr;
tk::panel* open_panel = nullptr;
int directory_item = -1;
int file_item = -1;
tk::window* message_window = nullptr;

void say(const string& text) {
  if (message_window) message_window->acknowledge(text);
}

int compare_strings(const string& a, const string& b) { return tk::compare(a, b); }

void fill_drives() {
  drive_list.clear();
  drive_list.append("A:");
  for (char letter = 'B'; letter <= 'Z'; ++letter) {
    string drive("%c:", letter);
    if (tk::is_directory(drive)) drive_list.append(drive);
  }
}

bool fill_directories(const string& d) {
  directory_list.clear();
  Trl_Filename tidy(d, "", true);
  string path = tidy.full_path();
  if (!tk::is_directory(path)) return false;
  for (const string& entry : tk::get_directories(path)) {
    if (entry == "." || entry == "..") continue;
    string full = path + entry + "\\";
    if (tk::is_directory(full)) directory_list.append(full);
  }
  directory_list.sort(compare_strings);
  return true;
}

void fill_files(string d) {
  file_list.clear();
  if (!tk::is_directory(d)) {
    say("Specified directory is not accessible. Using local directory for dialog instead. Check values in advanced settings.");
    d = current_directory_with_slash();
  }
  string pattern = string("*") + (open_filename ? open_filename->extension : string());
  for (const string& f : tk::get_files(d, pattern)) file_list.append(f);
  file_list.sort(compare_strings);
}

void refresh_menus() {
  if (!open_panel) return;
  open_panel->set_menu(directory_item, directory_list);
  open_panel->set_menu(file_item, file_list);
}

void directory_changed(char* text) {
  string d(text);
  if (d.length() > 0 && d[d.length() - 1] == '\\') {
    if (fill_directories(d) && !directory_list.empty()) fill_files(directory_list.head());
  }
  refresh_menus();
}

// Checks the drive and the directory as "Up" and the action button do; false after a message.
bool check_drive_and_directory(string& drive, string& directory) {
  if (drive.length() == 0 || drive[drive.length() - 1] != ':' || !tk::is_directory(drive)) {
    say("Drive name is not valid.");
    return false;
  }
  tk::set_directory(drive);
  if (!normalize(directory, true) || !tk::is_directory(directory)) {
    say("Directory name is not valid.");
    return false;
  }
  return true;
}

}  // namespace

bool Trl_Filename::dialog(const string& action, const string& title, tk::window* parent, string& result) {
  result = full_path();
  string work_drive = drive, work_directory = directory, work_file = name + extension;
  open_filename = this;
  message_window = parent;
  fill_drives();
  if (fill_directories(work_directory)) fill_files(work_directory);

  tk::panel p(action + " " + title);
  p.set_item_width(300);
  p.text_item(action + " " + title + " ... \n");
  p.text_item("--------------------------------------------\n");
  p.string_item("Drive: ", work_drive, drive_list, 5);
  directory_item = p.string_item("Directory: ", work_directory, directory_list, 10, "", directory_changed);
  file_item = p.string_item("File name: ", work_file, file_list, 10);
  const int up = 0, confirm = 1;
  p.button("Up", up);
  p.fbutton(action, confirm);
  p.button("Cancel", 2);
  open_panel = &p;
  if (!message_window) message_window = &p;

  bool confirmed = false;
  for (;;) {
    int pressed = parent ? p.open(tk::window::center, tk::window::center, parent) : p.open();
    if (pressed != up && pressed != confirm) break;
    if (!check_drive_and_directory(work_drive, work_directory)) continue;
    if (pressed == up) {
      int last = -1;
      for (int i = work_directory.length() - 2; i >= 0; --i)
        if (work_directory[i] == '\\') {
          last = i;
          break;
        }
      if (last >= 0) work_directory = work_directory(0, last);
      if (work_directory.length() == 0 || work_directory[work_directory.length() - 1] != '\\') work_directory += "\\";
      if (fill_directories(work_directory)) fill_files(work_directory);
      refresh_menus();
      continue;
    }
    int colon = work_file.pos(":");
    string path = (colon >= 0 && colon + 1 < work_file.length() && work_file[colon + 1] == '\\')
                      ? work_file
                      : work_drive + work_directory + work_file;
    if (!normalize(path, false)) {
      say("File name is not valid.");
      continue;
    }
    *this = Trl_Filename(path, extension, false);
    result = full_path();
    confirmed = true;
    break;
  }
  drive_list.clear();
  directory_list.clear();
  file_list.clear();
  open_filename = nullptr;
  open_panel = nullptr;
  message_window = nullptr;
  return confirmed;
}
