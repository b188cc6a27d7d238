// Directory queries and the working directory, in the program's path form: a drive plus
// backslash paths. On this system the root "/" is shown as drive "C:", so
// "C:\home\ana\plan" is "/home/ana/plan"; no other drive exists. This is the one place
// that translates between the two forms.
#pragma once

#include <string>

#include "toolkit/list.h"
#include "toolkit/string.h"

namespace tk {

// "C:\a\b" -> "/a/b"; a path without a drive keeps its place ("a\b" -> "a/b").
std::string to_native_path(const string& drive_path);
// "/a/b" -> "C:\a\b"; a relative path only changes its separators.
string to_drive_path(const std::string& native_path);

bool is_directory(const string& name);
// The working directory without a trailing backslash ("C:" at the root).
string get_directory();
bool set_directory(const string& name);
// Names of the plain files of a directory, all or those matching a pattern with "*".
list<string> get_files(const string& directory);
list<string> get_files(const string& directory, const string& pattern);
// Names of the directories in a directory, "." and ".." included.
list<string> get_directories(const string& directory);

// Whether a file name matches a pattern in which "*" stands for any run of characters.
bool matches_pattern(const std::string& name, const std::string& pattern);

}  // namespace tk
