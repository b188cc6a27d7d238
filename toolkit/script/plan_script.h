// A plan script read into steps: one step a line, "#" comments, labels and values either
// written plainly or in double quotes. The scripted backend plays the steps in order;
// this class only reads and checks their form, with the line number of each.
#pragma once

#include <string>
#include <vector>

namespace tk {

struct script_step {
  int line = 0;          // line number in the script, from 1
  std::string verb;      // menu, file, set, press, yes, no, ok, click, stop, snapshot, close, redraw, resize, point
  std::string text;      // what follows the verb, as written (for the transcript)
  std::string argument;  // menu path, file path, item or button label, snapshot file
  bool exact = false;    // the argument was quoted: it is matched character for character
  std::string value;     // set: the value
  std::string title;     // the window a step names; empty for the main window
  double x = 0, y = 0;   // click, point: user coordinates; resize: width and height in pixels
  int button = 1;        // click: 1 left, 2 middle, 3 right
  long count = 0;        // stop after: the number of polls
};

class plan_script {
 public:
  explicit plan_script(const std::string& text);

  bool ok() const { return error.empty(); }
  // "line N: what is wrong", for the first faulty line.
  const std::string& error_text() const { return error; }
  const std::vector<script_step>& steps() const { return list; }

 private:
  bool read_line(const std::string& line, int number, script_step& step);

  std::vector<script_step> list;
  std::string error;
};

}  // namespace tk
