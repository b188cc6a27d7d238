#include "toolkit/directory.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace tk {

std::string to_native_path(const string& drive_path) {
  std::string p = drive_path.str();
  if (p.size() >= 2 && p[1] == ':') {
    p.erase(0, 2);
    if (p.empty() || p[0] != '\\') p.insert(p.begin(), '\\');
  }
  std::replace(p.begin(), p.end(), '\\', '/');
  return p;
}

string to_drive_path(const std::string& native_path) {
  std::string p = native_path;
  std::replace(p.begin(), p.end(), '/', '\\');
  if (!p.empty() && p[0] == '\\') p.insert(0, "C:");
  return string(p);
}

// Only drive C exists; any other drive letter names no directory.
static bool foreign_drive(const string& name) {
  const std::string& p = name.str();
  return p.size() >= 2 && p[1] == ':' && p[0] != 'C' && p[0] != 'c';
}

bool is_directory(const string& name) {
  if (name.length() == 0 || foreign_drive(name)) return false;
  std::error_code ec;
  return fs::is_directory(to_native_path(name), ec);
}

string get_directory() {
  std::error_code ec;
  std::string cwd = fs::current_path(ec).string();
  string result = to_drive_path(cwd);
  std::string text = result.str();
  while (text.size() > 2 && text.back() == '\\') text.pop_back();
  if (text == "C:\\") text = "C:";
  return string(text);
}

bool set_directory(const string& name) {
  if (!is_directory(name)) return false;
  // A bare drive names that drive's current directory, which stays where it is.
  if (name.length() == 2 && name[1] == ':') return true;
  std::error_code ec;
  fs::current_path(to_native_path(name), ec);
  return !ec;
}

bool matches_pattern(const std::string& name, const std::string& pattern) {
  // Classic glob with '*' only, by backtracking over the last star.
  size_t n = 0, p = 0, star = std::string::npos, mark = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      mark = n;
    } else if (p < pattern.size() && pattern[p] == name[n]) {
      ++p;
      ++n;
    } else if (star != std::string::npos) {
      p = star + 1;
      n = ++mark;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

static list<string> entries(const string& directory, bool want_directories, const std::string& pattern) {
  list<string> result;
  if (!is_directory(directory)) return result;
  std::error_code ec;
  if (want_directories) {
    result.append(string("."));
    result.append(string(".."));
  }
  for (fs::directory_iterator it(to_native_path(directory), ec), end; !ec && it != end; it.increment(ec)) {
    std::error_code type_ec;
    bool is_dir = it->is_directory(type_ec);
    if (type_ec || is_dir != want_directories) continue;
    std::string name = it->path().filename().string();
    if (!want_directories && !matches_pattern(name, pattern)) continue;
    result.append(string(name));
  }
  return result;
}

list<string> get_files(const string& directory) { return entries(directory, false, "*"); }

list<string> get_files(const string& directory, const string& pattern) {
  return entries(directory, false, pattern.str());
}

list<string> get_directories(const string& directory) { return entries(directory, true, ""); }

}  // namespace tk
