// tk::fltk_panel_dialog: a panel opened modally as an FLTK dialog with real input widgets:
// formatted text lines, text inputs (with a list of choices where the item has one), whole and
// real number inputs, check boxes, choices, and a row of buttons where Return presses the
// default one. Values go from the items into the widgets at the opening and back at a button.
#pragma once

#include <FL/Fl_Double_Window.H>

#include <memory>
#include <string>
#include <vector>

namespace tk {

class panel;
class window;
struct panel_item;

class fltk_panel_dialog {
 public:
  explicit fltk_panel_dialog(panel& p);
  ~fltk_panel_dialog();
  fltk_panel_dialog(const fltk_panel_dialog&) = delete;
  fltk_panel_dialog& operator=(const fltk_panel_dialog&) = delete;

  // Shows the dialog centred over the parent (or at x, y on the screen), waits for a button
  // and returns its index in the panel's button list.
  int run(int x, int y, window* parent);
  // The open dialog of a panel, or null.
  static fltk_panel_dialog* open_for(const panel& p);
  // Puts the item's new choices (and for a plain input its value) into its widget.
  void refresh(int item);

 private:
  void measure();
  void add_item(panel_item& item, int& top);
  void add_buttons(int top);
  void place(int x, int y, window* parent);
  void read_back();
  int pressed_on_close() const;
  static void button_pressed(Fl_Widget* w, void* index);
  static void choice_changed(Fl_Widget* w, void* index);
  static void close_pressed(Fl_Widget* w, void* data);

  panel& front;
  std::unique_ptr<Fl_Double_Window> dialog;
  std::vector<Fl_Widget*> widgets;  // one per item, in item order
  std::vector<std::string> synced;  // each item's value as its widget last took or gave it
  int label_width = 0, field_width = 0, width = 0, height = 0;
  int pressed = -1;
};

}  // namespace tk
