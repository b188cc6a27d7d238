// tk::fltk_native_window: the FLTK side of one window of the program. An Fl_Double_Window
// holds, when the window has a menu bar, the bar and the mouse position display along the top,
// then the drawing area of the window's size in pixels, and over the area's lowest rows the
// status line while it is open. Windows keep their size: the program draws for a fixed one.
#pragma once

#include <FL/Fl_Double_Window.H>

#include <cstddef>
#include <deque>
#include <string>

class Fl_Box;
class Fl_Menu_Bar;

namespace tk {

class fltk_canvas;
class fltk_formatted_box;
class window;

class fltk_native_window {
 public:
  static const int bar_height = 25;

  // The native side of a window, made on first use (remade once the window gains a bar).
  static fltk_native_window& of(window& w);
  // The native side if there is one, else null.
  static fltk_native_window* find(const window& w);
  static void release(window& w);

  Fl_Double_Window& shell() { return *shell_window; }
  fltk_canvas& area() { return *canvas; }
  void build_menu_bar();
  void enable_menu_bar(bool on);
  void open_status(int background, int height);
  void set_status(const std::string& formatted);
  void close_status();
  // Sets the mouse cursor (an FLTK cursor number) and returns the one before.
  int set_cursor(int kind);

 private:
  // A menu entry: the button index in the window or menu that holds it.
  struct menu_entry {
    window* front;
    const window* holder;
    std::size_t index;
  };

  explicit fltk_native_window(window& w);
  ~fltk_native_window();
  fltk_native_window(const fltk_native_window&) = delete;
  fltk_native_window& operator=(const fltk_native_window&) = delete;
  void add_entries(const std::string& prefix, const window& holder);
  static void entry_chosen(Fl_Widget*, void* data);
  static void close_pressed(Fl_Widget*, void* data);

  window& front;
  Fl_Double_Window* shell_window = nullptr;
  Fl_Menu_Bar* bar = nullptr;
  Fl_Box* coordinates = nullptr;
  fltk_canvas* canvas = nullptr;
  fltk_formatted_box* status = nullptr;
  std::deque<menu_entry> entries;
  int cursor = 0;
};

}  // namespace tk
