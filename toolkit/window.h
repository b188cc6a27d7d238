// tk::window: a top-level window that is at once a drawing surface in user coordinates and
// a panel of items with buttons. init(x0, x1, y0) maps x0..x1 across the width, y0 at the
// bottom edge, with the same scale in both directions. Panels and menus derive from it.
#pragma once

#include <string>
#include <vector>

#include "toolkit/color.h"
#include "toolkit/list.h"
#include "toolkit/point.h"
#include "toolkit/polygon.h"
#include "toolkit/string.h"

namespace tk {

class menu;
class window;

typedef void (*redraw_handler)(window*);
typedef void (*redraw_part_handler)(window*, double, double, double, double);
typedef void (*delete_handler)(window*);
typedef void (*action_handler)();
typedef void (*string_change_handler)(char*);
typedef void (*coordinate_handler)(window*, double, double);

const int no_event = 10;

// One item of a panel; the variable is read at the opening and written back at a button.
struct panel_item {
  enum kind_type { text, string_input, string_menu, int_input, double_input, bool_input, choice };
  kind_type kind = text;
  std::string label;
  std::string help;
  std::string value;                 // the value as the planner sees and edits it
  std::string opened_value;          // the value as the panel opened
  std::vector<std::string> choices;  // menu entries or choice labels
  int rows = 0;
  bool enabled = true;
  tk::string* string_var = nullptr;
  int* int_var = nullptr;
  double* double_var = nullptr;
  bool* bool_var = nullptr;
  string_change_handler on_change = nullptr;
};

struct panel_button {
  std::string label;
  std::string help;
  int value = 0;
  action_handler action = nullptr;
  menu* submenu = nullptr;
  bool is_default = false;
  bool separator = false;
};

class window {
 public:
  static constexpr int min = 0x10000;
  static constexpr int center = 0x20000;
  static constexpr int max = 0x30000;

  window(int width, int height, const char* label = "");
  window();
  virtual ~window();
  window(const window&) = delete;
  window& operator=(const window&) = delete;

  // Placing.
  void display(int x = center, int y = center, window* parent = nullptr);
  void display(window& parent, int x, int y) { display(x, y, &parent); }
  void init(double x0, double x1, double y0);
  void close();
  int screen_width() const;
  int screen_height() const;
  bool is_open() const { return opened; }

  // Items, added before the window opens.
  int text_item(const tk::string& s);
  int string_item(const tk::string& label, tk::string& var, const tk::string& help = "");
  int string_item(const tk::string& label, tk::string& var, const tk::list<tk::string>& choices, int rows,
                  const tk::string& help = "", string_change_handler on_change = nullptr);
  int int_item(const tk::string& label, int& var, const tk::string& help = "");
  int double_item(const tk::string& label, double& var, const tk::string& help = "");
  int bool_item(const tk::string& label, bool& var, const tk::string& help = "");
  int choice_item(const tk::string& label, int& var, const char* s1, const char* s2);
  int choice_item(const tk::string& label, int& var, const char* s1, const char* s2, const char* s3);
  int choice_item(const tk::string& label, int& var, const tk::list<tk::string>& choices,
                  const tk::string& help = "");
  int button(const tk::string& label, const tk::string& help = "");
  int button(const tk::string& label, int value, const tk::string& help = "");
  int button(const tk::string& label, action_handler action, const tk::string& help = "");
  int button(const tk::string& label, menu& submenu, const tk::string& help = "");
  int fbutton(const tk::string& label, const tk::string& help = "");
  int fbutton(const tk::string& label, int value, const tk::string& help = "");
  void separator();
  void make_menu_bar(int kind = 2);
  void set_item_width(int pixels) { item_width = pixels; }
  // New choices for a string item with a menu, also while the panel is open.
  void set_menu(int item, const tk::list<tk::string>& choices);
  void set_item_value(int item, const tk::string& value);
  void disable_panel(bool with_menu_bar = true);
  void enable_panel();

  // Drawing in user coordinates.
  void clear(int colour = -1);
  void draw_pixel(const tk::point& p, int colour = black);
  void draw_segment(double x1, double y1, double x2, double y2, int colour = black);
  void draw_segment(const tk::point& p, const tk::point& q, int colour = black);
  void draw_node(const tk::point& p, int colour = black);
  void draw_filled_node(const tk::point& p, int colour = black) { draw_node(p, colour); }
  int set_node_width(int n);
  int get_node_width() const { return node_width; }
  void draw_polygon(const tk::polygon& p, int colour = black);
  void draw_filled_polygon(const tk::polygon& p, int colour = black);
  void draw_rectangle(const tk::point& p, const tk::point& q, int colour = black);
  void draw_filled_rectangle(const tk::point& p, const tk::point& q, int colour = black);
  void draw_filled_rectangle(double x0, double y0, double x1, double y1, int colour = black);
  void draw_text(double x, double y, const tk::string& s, int colour = black);
  double text_box(double x0, double x1, double y, const tk::string& s, bool draw = true);
  void set_font(const tk::string& name);
  int set_cursor(int kind);
  // An image in the XPM text layout with its top left corner at (x, y).
  void draw_pixmap(double x, double y, const char* const* xpm);

  // Plotting rasters pixel by pixel, in pixel coordinates, between the two mode calls.
  void start_pixel_plotting();
  void plot_pixel(int px, int py, int colour);
  void stop_pixel_plotting();

  // Buffering; calls nest, and only the outermost level copies to the screen.
  void start_buffering();
  void flush_buffer();
  void flush_buffer(double x0, double y0, double x1, double y1);
  void stop_buffering();
  int buffering_level() const { return buffer_depth; }

  // Handlers.
  void set_redraw(redraw_handler h);
  void set_redraw(redraw_part_handler h);
  void set_window_delete_handler(delete_handler h) { on_delete = h; }
  void set_coordinate_handler(coordinate_handler h) { on_coordinates = h; }
  void set_fg_color(int c) { foreground = c; }
  void set_bg_color(int c) { background = c; }

  // Events.
  int read_event(int& value, double& x, double& y);
  int read_mouse(tk::point& p);
  int get_mouse(tk::point& p);

  // Messages, modal and centred on the screen.
  void acknowledge(const tk::string& s);
  bool confirm(const tk::string& s);

  // The status line.
  void open_status_window(int background = status_grey, int height = 17);
  void set_status_string(const tk::string& s);
  void close_status_window();
  bool status_open() const { return status_is_open; }

  // The coordinate mapping.
  int width() const { return pixel_width; }
  int height() const { return pixel_height; }
  double xmin() const { return user_x0; }
  double xmax() const { return user_x1; }
  double ymin() const { return user_y0; }
  double ymax() const { return user_y0 + pixel_height / scale; }
  double pixels_per_unit() const { return scale; }
  int x_to_pixel(double x) const;
  int y_to_pixel(double y) const;
  double pixel_to_x(int px) const;
  double pixel_to_y(int py) const;
  // The backend reports a new size of the drawing area.
  void resized(int width, int height);

  // What backends read.
  const std::string& title() const { return label; }
  std::vector<panel_item>& items() { return item_list; }
  const std::vector<panel_button>& buttons() const { return button_list; }
  bool has_menu_bar() const { return menu_bar; }
  bool panel_enabled() const { return enabled; }
  int get_item_width() const { return item_width; }
  int background_colour() const { return background; }
  void* native = nullptr;  // the backend's own data for this window
  std::string coordinate_text;  // the mouse position as the coordinate handler formatted it
  // Called by backends: a repaint of everything or of a part (pixels) is wanted.
  void request_redraw();
  void request_redraw(int px0, int py0, int px1, int py1);
  void user_deleted();
  void show_coordinates(int px, int py);
  bool wants_coordinates() const { return on_coordinates != nullptr; }

 protected:
  void read_variables();
  void write_variables();
  int add_button(panel_button b);

  std::string label;
  std::vector<panel_item> item_list;
  std::vector<panel_button> button_list;
  int next_button_value = 0;
  int item_width = 200;
  bool menu_bar = false;
  bool enabled = true;
  bool opened = false;

 private:
  int pixel_width, pixel_height;
  double user_x0 = 0, user_x1 = 100, user_y0 = 0, scale = 1;
  int node_width = 2;
  int foreground = black, background = white;
  int buffer_depth = 0;
  bool status_is_open = false;
  redraw_handler on_redraw = nullptr;
  redraw_part_handler on_redraw_part = nullptr;
  delete_handler on_delete = nullptr;
  coordinate_handler on_coordinates = nullptr;

  friend class panel;
};

// Waits for the next event of any window; menu callbacks run inside it.
int read_event(window*& w, int& value, double& x, double& y);

// The coordinate display the program uses: the mouse position as "%8.2f %8.2f".
void show_mouse_position(window* w, double x, double y);

}  // namespace tk
