// tk::fltk_backend: the window backend of the program on a real screen, with FLTK. Every
// window draws into a backing picture that is copied to the screen, so covering and
// uncovering a window repaints it without asking the program. Panels are modal FLTK dialogs
// with real input widgets; menu callbacks run inside the event wait. The program installs it
// at start-up:   tk::fltk_backend backend;  tk::set_backend(&backend);
// and lets it go (tk::set_backend(nullptr)) before the backend object ends.
#pragma once

#include "toolkit/backend.h"

namespace tk {

class fltk_backend : public backend {
 public:
  // Opens the display; FLTK reports and ends the process when there is none.
  fltk_backend();
  ~fltk_backend() override;
  fltk_backend(const fltk_backend&) = delete;
  fltk_backend& operator=(const fltk_backend&) = delete;

  void create(window& w) override;
  void display(window& w, int x, int y, window* parent) override;
  void close(window& w) override;
  void destroy(window& w) override;
  void set_title(window& w, const std::string& title) override;
  int screen_width() override;
  int screen_height() override;
  void build_menu_bar(window& w) override;
  void set_items_enabled(window& w, bool enabled) override;
  void clear(window& w, int colour) override;
  void pixel(window& w, int x, int y, int colour) override;
  void line(window& w, int x1, int y1, int x2, int y2, int colour) override;
  void disc(window& w, int x, int y, int radius, int colour) override;
  void polygon(window& w, const int* xy, int n, bool filled, int colour) override;
  void rectangle(window& w, int x0, int y0, int x1, int y1, bool filled, int colour) override;
  void text(window& w, int x, int y, const std::string& s, int colour) override;
  int text_box(window& w, int x0, int x1, int y, const std::string& formatted, bool draw) override;
  void pixmap(window& w, int x, int y, const char* const* xpm) override;
  void set_font(window& w, const std::string& name) override;
  int set_cursor(window& w, int kind) override;
  void start_buffering(window& w) override;
  void flush(window& w, int x0, int y0, int x1, int y1) override;
  void stop_buffering(window& w) override;
  int run_panel(panel& p, int x, int y, window* parent) override;
  void refresh_item(panel& p, int item) override;
  int wait_event(window* restricted, window*& w, int& value, int& px, int& py) override;
  int wait_mouse(window& w, int& px, int& py) override;
  int poll_mouse(window& w, int& px, int& py) override;
  void open_status(window& w, int background, int height) override;
  void set_status(window& w, const std::string& formatted) override;
  void close_status(window& w) override;
};

}  // namespace tk
