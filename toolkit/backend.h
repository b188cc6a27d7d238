// tk::backend: the native side of the window layer. The fronts (window, panel, menu) keep
// coordinates, items, buttons, handlers and the buffering counter; a backend only shows
// windows, draws in pixels, runs modal panels and waits for events. The executable
// installs one backend at start-up: FLTK for the program, the scripted one for batch runs.
#pragma once

#include <string>

namespace tk {

class window;
class panel;

class backend {
 public:
  // A backend that goes while installed (a static one at the end of the process) leaves
  // no dangling backend behind for windows destroyed after it.
  virtual ~backend();

  // Life of a native window.
  virtual void create(window& w) = 0;
  virtual void display(window& w, int x, int y, window* parent) = 0;
  virtual void close(window& w) = 0;
  virtual void destroy(window& w) = 0;
  virtual void set_title(window& w, const std::string& title) = 0;
  virtual int screen_width() = 0;
  virtual int screen_height() = 0;

  // The bar of buttons and menus of the window has been built or changed.
  virtual void build_menu_bar(window& w) = 0;
  virtual void set_items_enabled(window& w, bool enabled) = 0;

  // Drawing, in pixels from the top left corner of the drawing area.
  virtual void clear(window& w, int colour) = 0;
  virtual void pixel(window& w, int x, int y, int colour) = 0;
  virtual void line(window& w, int x1, int y1, int x2, int y2, int colour) = 0;
  virtual void disc(window& w, int x, int y, int radius, int colour) = 0;
  virtual void polygon(window& w, const int* xy, int n, bool filled, int colour) = 0;
  virtual void rectangle(window& w, int x0, int y0, int x1, int y1, bool filled, int colour) = 0;
  virtual void text(window& w, int x, int y, const std::string& s, int colour) = 0;
  // Formatted text wrapped into [x0, x1] from y downwards; returns the y below it.
  virtual int text_box(window& w, int x0, int x1, int y, const std::string& formatted, bool draw) = 0;
  virtual void pixmap(window& w, int x, int y, const char* const* xpm) = 0;
  virtual void set_font(window& w, const std::string& name) = 0;
  virtual int set_cursor(window& w, int kind) = 0;

  // Buffering: drawing goes to a hidden picture until flushed.
  virtual void start_buffering(window& w) = 0;
  virtual void flush(window& w, int x0, int y0, int x1, int y1) = 0;
  virtual void stop_buffering(window& w) = 0;

  // Runs a modal panel: shows it, waits for a button, and returns that button's index in
  // the panel's button list. Item values are edited in place in the panel's items.
  virtual int run_panel(panel& p, int x, int y, window* parent) = 0;
  // The choices of a panel item changed while the panel is open.
  virtual void refresh_item(panel& p, int item) = 0;

  // Events. wait_event runs menu callbacks inside it; w is null when restricted is null
  // and the event belongs to no window of the program.
  virtual int wait_event(window* restricted, window*& w, int& value, int& px, int& py) = 0;
  virtual int wait_mouse(window& w, int& px, int& py) = 0;
  virtual int poll_mouse(window& w, int& px, int& py) = 0;

  // The status line at the bottom of a window.
  virtual void open_status(window& w, int background, int height) = 0;
  virtual void set_status(window& w, const std::string& formatted) = 0;
  virtual void close_status(window& w) = 0;
};

void set_backend(backend* b);
backend& current_backend();
bool has_backend();

}  // namespace tk
