// tk::script_backend: a window backend without a screen. It plays a plan script (menu
// choices, panel answers, yes/no, clicks, stop requests, window events, snapshots) and
// writes a transcript of everything the planner would have seen. A panel the script does
// not answer ends the run with exit status 2 and a message naming the panel; it never waits.
// The script language is described in docs/batch.md.
#pragma once

#include <iosfwd>
#include <map>
#include <memory>
#include <streambuf>
#include <string>
#include <vector>

#include "toolkit/backend.h"
#include "toolkit/script/plan_script.h"
#include "toolkit/script/script_painter.h"

namespace tk {

class script_backend : public backend {
 public:
  // Reads the script text; an error in it is reported by error_text() and ok() false.
  script_backend(const std::string& script_text, std::ostream& transcript);
  ~script_backend() override;

  bool ok() const { return parse_error.empty(); }
  const std::string& error_text() const { return parse_error; }

  // The program's diagnostic lines on std::cout become "stdout: " lines of the transcript,
  // in their place among the other lines, until release_stdout(). This works whether the
  // transcript is a file or std::cout itself. C stdio (printf) is not captured.
  void capture_stdout();
  void release_stdout();
  // One line the program wrote on its standard output, for callers that pass it by hand.
  void note_stdout(const std::string& line);

  // Exit status of a run the script could not drive: an unanswered panel, question or
  // pick, an unknown entry, item or button, a step in the wrong place.
  static const int unanswered_status = 2;
  // Exit status of a run whose script ended while the program waited for a command.
  static const int script_ended_status = 3;
  // Size of the screen the scripted windows are placed on, in pixels.
  static const int screen_pixels_x = 1280;
  static const int screen_pixels_y = 1024;
  // Fixed text metrics of text_box, in pixels, so that measured layouts are repeatable.
  static const int char_width = 7;
  static const int line_height = 14;

  void create(window& w) override;
  void display(window& w, int x, int y, window* parent) override;
  void close(window& w) override;
  void destroy(window& w) override;
  void set_title(window&, const std::string&) override {}
  int screen_width() override { return screen_pixels_x; }
  int screen_height() override { return screen_pixels_y; }
  void build_menu_bar(window& w) override;
  void set_items_enabled(window&, bool) override {}
  void clear(window& w, int colour) override;
  void pixel(window& w, int x, int y, int colour) override;
  void line(window& w, int x1, int y1, int x2, int y2, int colour) override;
  void disc(window& w, int x, int y, int radius, int colour) override;
  void polygon(window& w, const int* xy, int n, bool filled, int colour) override;
  void rectangle(window& w, int x0, int y0, int x1, int y1, bool filled, int colour) override;
  void text(window& w, int x, int y, const std::string& s, int colour) override;
  int text_box(window& w, int x0, int x1, int y, const std::string& formatted, bool draw) override;
  void pixmap(window& w, int x, int y, const char* const* xpm) override;
  void set_font(window&, const std::string&) override {}
  int set_cursor(window& w, int kind) override;
  void start_buffering(window&) override {}
  void flush(window&, int, int, int, int) override {}
  void stop_buffering(window&) override {}
  int run_panel(panel& p, int x, int y, window* parent) override;
  void refresh_item(panel&, int) override {}
  int wait_event(window* restricted, window*& w, int& value, int& px, int& py) override;
  int wait_mouse(window& w, int& px, int& py) override;
  int poll_mouse(window& w, int& px, int& py) override;
  void open_status(window&, int, int) override {}
  void set_status(window& w, const std::string& formatted) override;
  void close_status(window&) override {}

  // The recorded drawing of a window, for tests.
  const script_painter* drawing_of(const window& w) const;
  void write_line(const std::string& text);

 private:
  bool next_step(script_step& step);
  bool peek_step(const char* verb) const;
  [[noreturn]] void fail(int status, const std::string& text);
  [[noreturn]] void fail_at(const script_step& step, const std::string& text);
  void do_menu(const script_step& step);
  void do_snapshot(const script_step& step);
  window* event_window(const script_step& step, window*& w, int& px, int& py);
  window& named_window(const script_step& step);
  void describe_panel(panel& p);
  int answer_panel(panel& p);
  int answer_question(panel& p);
  void set_item(panel& p, const script_step& step);
  int answer_file_dialog(panel& p, const script_step& step);
  int find_button(panel& p, const script_step& step);
  int press(panel& p, const script_step& step);
  script_painter& painter(window& w);

  std::vector<script_step> steps;
  size_t next = 0;
  std::string parse_error;
  std::ostream& out;
  std::ostream* sink;  // where transcript lines go: out, or the saved std::cout buffer
  std::unique_ptr<std::ostream> direct_out;
  std::map<const window*, script_painter> drawings;
  std::map<const window*, int> cursors;
  std::vector<window*> windows;  // displayed windows, in the order they appeared
  window* main_window = nullptr;
  long stop_countdown = 0;
  window* pointer_window = nullptr;       // the window whose pointer handler runs for a point step
  std::vector<std::string> pointer_texts;  // the texts that handler drew
  std::streambuf* saved_stdout = nullptr;
  std::unique_ptr<std::streambuf> stdout_lines;
};

}  // namespace tk
