// The FLTK backend on a real display (run under a virtual X server): pictures read back from
// the backing store and from the screen, panels filled in through their widgets, the menu bar,
// the status line, and mouse events handed to the drawing area.
// GoogleTest comes before the X headers, whose macros would clash with its names.
#include <gtest/gtest.h>

#include <algorithm>

#include <FL/Fl.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Input_Choice.H>
#include <FL/Fl_Menu_Bar.H>
#include <FL/Fl_Menu_Button.H>
#include <FL/Fl_Window.H>
#include <FL/fl_draw.H>
#include <FL/x.H>

#include <functional>
#include <string>
#include <vector>

#include "toolkit/color.h"
#include "toolkit/fltk/fltk_backend.h"
#include "toolkit/fltk/fltk_canvas.h"
#include "toolkit/fltk/fltk_native_window.h"
#include "toolkit/fltk/fltk_text.h"
#include "toolkit/menu.h"
#include "toolkit/panel.h"
#include "toolkit/window.h"

namespace {

struct rgb {
  int r, g, b;
  bool operator==(const rgb& o) const { return r == o.r && g == o.g && b == o.b; }
};

std::ostream& operator<<(std::ostream& s, const rgb& c) { return s << "(" << c.r << "," << c.g << "," << c.b << ")"; }

rgb palette(int index) {
  rgb c{};
  tk::color(index).get_rgb(c.r, c.g, c.b);
  return c;
}

tk::fltk_backend& backend() {
  static tk::fltk_backend b;
  // Taking FLTK's lock once opens its wake-up pipe, so Fl::awake() can end a wait.
  static const bool locked = (Fl::lock(), true);
  (void)locked;
  return b;
}

// Lets the X server and FLTK deliver what is pending.
void settle() {
  for (int i = 0; i < 8; ++i) {
    Fl::flush();
    XSync(fl_display, False);
    Fl::wait(0.02);
  }
}

tk::fltk_canvas& area(tk::window& w) { return tk::fltk_native_window::find(w)->area(); }

rgb picture_at(tk::window& w, int x, int y) {
  unsigned char p[3];
  area(w).read(x, y, 1, 1, p);
  return {p[0], p[1], p[2]};
}

rgb screen_at(tk::window& w, int x, int y) {
  tk::fltk_native_window* n = tk::fltk_native_window::find(w);
  n->shell().make_current();
  unsigned char p[3];
  fl_read_image(p, n->area().x() + x, n->area().y() + y, 1, 1);
  return {p[0], p[1], p[2]};
}

// Hands the drawing area an event as FLTK would, at a pixel of the area.
void send(tk::window& w, int event, int px, int py, int button = 1) {
  tk::fltk_canvas& a = area(w);
  Fl::e_x = a.x() + px;
  Fl::e_y = a.y() + py;
  Fl::e_keysym = FL_Button + button;
  static_cast<Fl_Widget&>(a).handle(event);
}

// Runs a step inside the wait of an open panel.
std::function<void(Fl_Window&)> in_panel;
void run_in_panel(void*) {
  Fl_Window* dialog = Fl::modal();
  if (!dialog) {
    Fl::repeat_timeout(0.02, run_in_panel);
    return;
  }
  in_panel(*dialog);
}

template <class W>
std::vector<W*> widgets_of(Fl_Window& dialog) {
  std::vector<W*> found;
  for (int i = 0; i < dialog.children(); ++i)
    if (W* w = dynamic_cast<W*>(dialog.child(i))) found.push_back(w);
  return found;
}

Fl_Button* button_labelled(Fl_Window& dialog, const std::string& label) {
  for (Fl_Button* b : widgets_of<Fl_Button>(dialog))
    if (b->label() && label == b->label() && !dynamic_cast<Fl_Check_Button*>(b)) return b;
  return nullptr;
}

void press_key(Fl_Window& dialog, int key) {
  Fl::e_keysym = key;
  static char text[2] = {0, 0};
  text[0] = key == FL_Enter ? '\r' : key == FL_Escape ? '\033' : 0;
  Fl::e_text = text;
  Fl::e_length = 1;
  Fl::handle(FL_KEYBOARD, &dialog);
}

// A window shown at the screen's top left, one unit a pixel, y 0 at the bottom row.
struct ShownWindow : tk::window {
  ShownWindow(int width, int height, const char* title) : tk::window(width, height, title) {
    display(tk::window::min, tk::window::min);
    init(0, width, 0);
  }
};

class FltkBackend : public ::testing::Test {
 protected:
  void SetUp() override { tk::set_backend(&backend()); }
};

TEST_F(FltkBackend, PrimitivesPaintTheBackingPicture) {
  ShownWindow w(200, 100, "primitives");  // pixel row = 99 - y
  settle();
  EXPECT_EQ(picture_at(w, 0, 0), palette(tk::white));

  w.draw_filled_rectangle(10, 80, 19, 89, tk::red);  // rows 10..19
  EXPECT_EQ(picture_at(w, 10, 10), palette(tk::red));
  EXPECT_EQ(picture_at(w, 19, 19), palette(tk::red));
  EXPECT_EQ(picture_at(w, 20, 15), palette(tk::white));
  EXPECT_EQ(picture_at(w, 15, 9), palette(tk::white));

  w.draw_rectangle(tk::point(30, 60), tk::point(50, 80), tk::blue);  // rows 19..39
  EXPECT_EQ(picture_at(w, 30, 19), palette(tk::blue));
  EXPECT_EQ(picture_at(w, 50, 39), palette(tk::blue));
  EXPECT_EQ(picture_at(w, 40, 29), palette(tk::white));

  w.draw_segment(60, 49, 90, 49, tk::green);  // row 50
  EXPECT_EQ(picture_at(w, 75, 50), palette(tk::green));
  EXPECT_EQ(picture_at(w, 75, 51), palette(tk::white));

  w.draw_pixel(tk::point(120, 19), tk::violet);  // pixel (120, 80)
  EXPECT_EQ(picture_at(w, 120, 80), palette(tk::violet));
  EXPECT_EQ(picture_at(w, 121, 80), palette(tk::white));

  w.set_node_width(10);
  w.draw_node(tk::point(150, 49), tk::black);  // centre (150, 50), radius 5
  EXPECT_EQ(picture_at(w, 150, 50), palette(tk::black));
  EXPECT_EQ(picture_at(w, 153, 50), palette(tk::black));
  EXPECT_EQ(picture_at(w, 150, 58), palette(tk::white));

  tk::list<tk::point> corners;
  corners.append(tk::point(160, 90));
  corners.append(tk::point(199, 90));
  corners.append(tk::point(199, 60));
  w.draw_filled_polygon(tk::polygon(corners), tk::orange);  // right triangle, rows 9..39
  EXPECT_EQ(picture_at(w, 195, 15), palette(tk::orange));
  EXPECT_EQ(picture_at(w, 165, 35), palette(tk::white));

  static const char* const xpm[] = {"2 2 2 1", "a c #FF0000", "b c #0000FF", "ab", "ba"};
  w.draw_pixmap(100, 99, xpm);  // top left at pixel (100, 0)
  EXPECT_EQ(picture_at(w, 100, 0), palette(tk::red));
  EXPECT_EQ(picture_at(w, 101, 0), palette(tk::blue));
  EXPECT_EQ(picture_at(w, 100, 1), palette(tk::blue));

  w.clear(tk::yellow);
  EXPECT_EQ(picture_at(w, 199, 99), palette(tk::yellow));
}

TEST_F(FltkBackend, TextIsDrawnAndFormattedTextWraps) {
  ShownWindow w(300, 200, "text");
  w.draw_text(10, 189, "MMMM", tk::black);  // top left at pixel (10, 10)
  int dark = 0;
  for (int y = 10; y < 30; ++y)
    for (int x = 10; x < 40; ++x)
      if (picture_at(w, x, y).g < 128) ++dark;  // smoothed glyph edges are grey
  EXPECT_GT(dark, 20);
  EXPECT_EQ(picture_at(w, 5, 5), palette(tk::white));

  const int line = tk::fltk_text("").line_height();
  // Measuring only: two lines by the tag, and one empty text takes one line.
  EXPECT_DOUBLE_EQ(w.text_box(0, 300, 150, "\\bf first \\n \\rm second", false), w.pixel_to_y(49 + 2 * line));
  EXPECT_DOUBLE_EQ(w.text_box(0, 300, 150, "", false), w.pixel_to_y(49 + line));
  // Five words fit on one wide line, but not between two close edges.
  std::string words;
  for (int i = 0; i < 5; ++i) words += "word ";
  double wide = w.text_box(0, 290, 150, words, false);
  double narrow = w.text_box(0, 60, 150, words, false);
  EXPECT_DOUBLE_EQ(wide, w.pixel_to_y(49 + line));
  EXPECT_DOUBLE_EQ(narrow, w.pixel_to_y(49 + 5 * line));  // one word a line
  // Measuring draws nothing; drawing marks the picture in the text's colour.
  EXPECT_EQ(picture_at(w, 20, 60), palette(tk::white));
  w.text_box(0, 300, 150, "\\red XXXXXXXX", true);
  int red = 0;
  for (int y = 49; y < 49 + line; ++y)
    for (int x = 0; x < 80; ++x) {
      rgb c = picture_at(w, x, y);
      if (c.r > 200 && c.g < 128) ++red;
    }
  EXPECT_GT(red, 20);
}

TEST_F(FltkBackend, PlottedPixelsKeepTheirOrder) {
  ShownWindow w(120, 80, "plot");
  w.start_pixel_plotting();
  for (int y = 0; y < 80; ++y)
    for (int x = 0; x < 120; ++x) w.plot_pixel(x, y, (x + y) % 2 ? tk::blue : tk::cyan);
  w.plot_pixel(7, 7, tk::red);  // a later pixel over an earlier one wins
  w.plot_pixel(500, 7, tk::red);  // outside: ignored
  w.stop_pixel_plotting();
  EXPECT_EQ(picture_at(w, 0, 0), palette(tk::cyan));
  EXPECT_EQ(picture_at(w, 1, 0), palette(tk::blue));
  EXPECT_EQ(picture_at(w, 119, 79), palette(tk::cyan));
  EXPECT_EQ(picture_at(w, 7, 7), palette(tk::red));
  settle();
  EXPECT_EQ(screen_at(w, 1, 0), palette(tk::blue));
}

int redraws = 0;
void count_redraw(tk::window*) { ++redraws; }

TEST_F(FltkBackend, CoveringAndUncoveringNeedsNoRedrawFromTheProgram) {
  tk::window w(200, 200, "cover");
  w.set_redraw(count_redraw);
  w.display(100, 100);
  w.init(0, 200, 0);
  w.draw_filled_rectangle(50, 50, 150, 150, tk::green);
  settle();
  EXPECT_EQ(screen_at(w, 100, 100), palette(tk::green));
  redraws = 0;
  {
    Fl_Window cover(250, 250);
    cover.color(FL_BLACK);
    cover.position(80, 80);
    cover.show();
    settle();
    cover.hide();
  }
  settle();
  EXPECT_EQ(redraws, 0);
  EXPECT_EQ(screen_at(w, 100, 100), palette(tk::green));
  EXPECT_EQ(screen_at(w, 10, 10), palette(tk::white));
}

TEST_F(FltkBackend, BufferedDrawingWaitsForTheOutermostFlush) {
  ShownWindow w(100, 100, "buffer");
  settle();
  w.start_buffering();
  w.start_buffering();
  w.draw_filled_rectangle(0, 0, 99, 99, tk::blue);
  w.flush_buffer();  // nested: no copy
  settle();
  EXPECT_EQ(picture_at(w, 50, 50), palette(tk::blue));
  EXPECT_EQ(screen_at(w, 50, 50), palette(tk::white));
  w.stop_buffering();
  w.flush_buffer(0, 0, 49, 99);  // the left half only
  settle();
  EXPECT_EQ(screen_at(w, 10, 50), palette(tk::blue));
  EXPECT_EQ(screen_at(w, 90, 50), palette(tk::white));
  w.stop_buffering();
  settle();
  EXPECT_EQ(screen_at(w, 90, 50), palette(tk::blue));
}

TEST_F(FltkBackend, PanelItemsGoThroughRealWidgets) {
  tk::window parent(400, 300, "parent");
  parent.display(300, 200);
  settle();
  tk::string name("old"), file("a.map");
  int count = 3, model = 0;
  double factor = 1.5;
  bool flag = false;
  tk::list<tk::string> files;
  files.append("a.map");
  files.append("b.map");
  tk::list<tk::string> models;
  models.append("Xia-Bertoni");
  models.append("Simple");
  models.append("Wang");
  tk::panel p("Everything");
  p.text_item("\\bf\\blue A heading");
  p.string_item("Name: ", name, "a help text");
  p.string_item("File: ", file, files, 5);
  p.int_item("Count: ", count);
  p.double_item("Factor: ", factor);
  p.bool_item("Flag: ", flag);
  p.choice_item("Model: ", model, models);
  p.fbutton("Ok", 0);
  p.button("Cancel", 1);
  p.button("Reset", 2);

  int dialog_x = 0, dialog_y = 0, dialog_w = 0, dialog_h = 0;
  std::vector<std::string> choices_shown;
  in_panel = [&](Fl_Window& d) {
    dialog_x = d.x(), dialog_y = d.y(), dialog_w = d.w(), dialog_h = d.h();
    std::vector<Fl_Input*> inputs = widgets_of<Fl_Input>(d);
    ASSERT_EQ(inputs.size(), 3u);  // name, count, factor
    EXPECT_STREQ(inputs[0]->value(), "old");
    EXPECT_STREQ(inputs[0]->tooltip(), "a help text");
    EXPECT_STREQ(inputs[1]->value(), "3");
    EXPECT_STREQ(inputs[2]->value(), "1.5");
    inputs[0]->value("new");
    inputs[1]->value("42");
    inputs[2]->value("-2.25");
    Fl_Input_Choice* list = widgets_of<Fl_Input_Choice>(d).at(0);
    EXPECT_STREQ(list->value(), "a.map");
    for (int i = 0; i < list->menubutton()->size() - 1; ++i) choices_shown.push_back(list->menubutton()->text(i));
    list->value(1);
    widgets_of<Fl_Check_Button>(d).at(0)->value(1);
    widgets_of<Fl_Choice>(d).at(0)->value(2);
    Fl::focus(inputs[0]);
    press_key(d, FL_Enter);  // the default button, even from a text field
  };
  Fl::add_timeout(0.05, run_in_panel);
  EXPECT_EQ(p.open(parent), 0);
  EXPECT_EQ(name, "new");
  EXPECT_EQ(count, 42);
  EXPECT_DOUBLE_EQ(factor, -2.25);
  EXPECT_EQ(file, "b.map");
  EXPECT_TRUE(flag);
  EXPECT_EQ(model, 2);
  EXPECT_EQ(choices_shown, (std::vector<std::string>{"a.map", "b.map"}));
  // Centred over the parent's window.
  Fl_Double_Window& shell = tk::fltk_native_window::find(parent)->shell();
  EXPECT_NEAR(dialog_x + dialog_w / 2.0, shell.x() + shell.w() / 2.0, 1.0);
  EXPECT_NEAR(dialog_y + dialog_h / 2.0, shell.y() + shell.h() / 2.0, 1.0);

  // Escape is "Cancel"; like every button it writes the values back.
  in_panel = [&](Fl_Window& d) {
    widgets_of<Fl_Input>(d).at(0)->value("ignored");
    press_key(d, FL_Escape);
  };
  Fl::add_timeout(0.05, run_in_panel);
  EXPECT_EQ(p.open(parent), 1);
  EXPECT_EQ(name, "ignored");
}

TEST_F(FltkBackend, QuestionsWaitForAnAnswerAndDisabledItemsAreGrey) {
  tk::window w(100, 100, "asks");
  int shown_buttons = 0;
  bool closed_by_escape = true;
  in_panel = [&](Fl_Window& d) {
    shown_buttons = static_cast<int>(widgets_of<Fl_Button>(d).size());
    press_key(d, FL_Escape);  // no Cancel and two buttons: the question stays
    closed_by_escape = !d.shown();
    if (d.shown()) button_labelled(d, "NO")->do_callback();
  };
  Fl::add_timeout(0.05, run_in_panel);
  EXPECT_FALSE(w.confirm("Do you want to stop the search?"));
  EXPECT_EQ(shown_buttons, 2);
  EXPECT_FALSE(closed_by_escape);

  tk::panel p("Grey");
  int value = 5;
  int item = p.int_item("Value: ", value);
  p.items()[static_cast<size_t>(item)].enabled = false;
  p.button("Ok", 0);
  bool active = true;
  in_panel = [&](Fl_Window& d) {
    active = widgets_of<Fl_Input>(d).at(0)->active();
    button_labelled(d, "Ok")->do_callback();
  };
  Fl::add_timeout(0.05, run_in_panel);
  EXPECT_EQ(p.open(), 0);
  EXPECT_FALSE(active);
  EXPECT_EQ(value, 5);
}

tk::panel* changing_panel = nullptr;
int changing_item = -1;
std::string changed_to;
void list_changed(char* text) {
  changed_to = text;
  tk::list<tk::string> more;
  more.append("x");
  more.append("y");
  more.append("z");
  changing_panel->set_menu(changing_item, more);
}

TEST_F(FltkBackend, ChoiceListChangesWhileThePanelIsOpen) {
  tk::string dir("C:\\"), typed("kept");
  tk::list<tk::string> first;
  first.append("C:\\one\\");
  first.append("C:\\two\\");
  tk::panel p("Lists");
  changing_panel = &p;
  changing_item = p.string_item("Directory: ", dir, first, 10, "", list_changed);
  int other = p.string_item("File name: ", typed, first, 10);
  p.button("Go", 0);
  int entries_after = 0;
  std::string other_after;
  in_panel = [&](Fl_Window& d) {
    std::vector<Fl_Input_Choice*> lists = widgets_of<Fl_Input_Choice>(d);
    lists[1]->value("typed by hand");
    lists[0]->value(1);
    lists[0]->do_callback();  // as FLTK does when an entry is picked
    entries_after = lists[0]->menubutton()->size() - 1;
    p.set_menu(other, first);  // new choices keep what was typed
    other_after = lists[1]->value();
    button_labelled(d, "Go")->do_callback();
  };
  Fl::add_timeout(0.05, run_in_panel);
  EXPECT_EQ(p.open(), 0);
  EXPECT_EQ(changed_to, "C:\\two\\");
  EXPECT_EQ(entries_after, 3);
  EXPECT_EQ(other_after, "typed by hand");
  EXPECT_EQ(dir, "C:\\two\\");
  EXPECT_EQ(typed, "typed by hand");
}

int about_calls = 0;
void about() { ++about_calls; }
void nothing() {}

TEST_F(FltkBackend, MenuBarEntriesRunInsideTheEventWait) {
  tk::menu file, more;
  more.button("Deep", nothing);
  file.button("Load", nothing);
  file.separator();
  file.button("More", more);
  file.button("Exit", 7);
  tk::window w(600, 600, "Celvane");
  w.set_coordinate_handler(tk::show_mouse_position);
  w.button("About", about);
  w.button("File", file);
  w.make_menu_bar();
  w.display(tk::window::max, tk::window::min);
  w.init(0, 100, 0);
  settle();
  Fl_Double_Window& shell = tk::fltk_native_window::find(w)->shell();
  EXPECT_EQ(shell.w(), 600);
  EXPECT_EQ(shell.h(), 600 + tk::fltk_native_window::bar_height);
  Fl_Menu_Bar* bar = widgets_of<Fl_Menu_Bar>(shell).at(0);
  ASSERT_NE(bar->find_item("File/More/Deep"), nullptr);
  const Fl_Menu_Item* load = bar->find_item("File/Load");
  ASSERT_NE(load, nullptr);
  EXPECT_TRUE(load->flags & FL_MENU_DIVIDER);
  EXPECT_FALSE(bar->find_item("File/Exit")->flags & FL_MENU_DIVIDER);

  bar->picked(bar->find_item("About"));
  tk::window* from = nullptr;
  int value = -1;
  double x, y;
  EXPECT_EQ(tk::read_event(from, value, x, y), 4);
  EXPECT_EQ(about_calls, 1);
  EXPECT_EQ(from, &w);
  EXPECT_EQ(value, 0);
  bar->picked(bar->find_item("File/Exit"));  // an entry with a value and no command
  EXPECT_EQ(tk::read_event(from, value, x, y), 4);
  EXPECT_EQ(value, 7);

  // Placed at the top of the screen and at its right edge, with no room kept for a title bar.
  Window child;
  int root_x = -1, root_y = -1;
  XTranslateCoordinates(fl_display, fl_xid(&shell), RootWindow(fl_display, fl_screen), 0, 0, &root_x, &root_y, &child);
  EXPECT_EQ(root_y, 0);
  EXPECT_EQ(root_x + shell.w(), Fl::w());

  // While a command runs the bar's labels turn grey, and black again after.
  auto darkest_in_bar = [&] {
    settle();
    shell.make_current();
    std::vector<unsigned char> p(3 * bar->w() * bar->h());
    fl_read_image(p.data(), bar->x(), bar->y(), bar->w(), bar->h());
    return *std::min_element(p.begin(), p.end());
  };
  EXPECT_LT(darkest_in_bar(), 40);
  w.disable_panel();
  EXPECT_FALSE(bar->active());
  EXPECT_GT(darkest_in_bar(), 80);
  w.enable_panel();
  EXPECT_TRUE(bar->active());
  EXPECT_LT(darkest_in_bar(), 40);

  // The mouse position in plan coordinates, as the program's handler formats it.
  send(w, FL_MOVE, 300, 150);
  const Fl_Widget* shown = nullptr;
  for (int i = 0; i < shell.children(); ++i)
    if (shell.child(i)->label() && std::string(shell.child(i)->label()).find('.') != std::string::npos)
      shown = shell.child(i);
  ASSERT_NE(shown, nullptr);
  EXPECT_EQ(std::string(shown->label()), tk::string("%8.2f %8.2f", w.pixel_to_x(300), w.pixel_to_y(150)).str());
}

// A timeout runs at the start of FLTK's wait, which then sleeps until the next X event;
// the wake-up stands in for the event a real click would bring.
void click_later(void* data) {
  send(*static_cast<tk::window*>(data), FL_PUSH, 30, 40, 3);
  Fl::awake();
}

TEST_F(FltkBackend, MouseWaitsAndPolls) {
  ShownWindow w(200, 200, "mouse");
  settle();
  tk::point p;
  EXPECT_EQ(w.get_mouse(p), 0);
  send(w, FL_PUSH, 10, 20, 1);
  send(w, FL_RELEASE, 10, 20, 1);
  EXPECT_EQ(w.get_mouse(p), 1);
  EXPECT_DOUBLE_EQ(p.xcoord(), w.pixel_to_x(10));
  EXPECT_DOUBLE_EQ(p.ycoord(), w.pixel_to_y(20));
  EXPECT_EQ(w.get_mouse(p), 0);  // the press was taken

  send(w, FL_PUSH, 5, 5, 1);  // before the wait: not an answer
  Fl::add_timeout(0.05, click_later, &w);
  EXPECT_EQ(w.read_mouse(p), 3);
  EXPECT_DOUBLE_EQ(p.xcoord(), w.pixel_to_x(30));
  EXPECT_DOUBLE_EQ(p.ycoord(), w.pixel_to_y(40));

  // The window's own wait: a press comes back with its button and place, else no event.
  send(w, FL_PUSH, 50, 60, 2);
  int value = 0;
  double x = 0, y = 0;
  EXPECT_EQ(w.read_event(value, x, y), 2);
  EXPECT_EQ(value, 2);
  EXPECT_DOUBLE_EQ(x, w.pixel_to_x(50));
  w.close();
  EXPECT_EQ(w.read_event(value, x, y), tk::no_event);
}

TEST_F(FltkBackend, StatusLineLiesOverTheBottomRows) {
  ShownWindow w(300, 200, "status");
  w.clear(tk::green);
  settle();
  w.open_status_window(tk::status_grey, 17);
  w.set_status_string(" \\bf Reading ...");
  settle();
  EXPECT_EQ(screen_at(w, 295, 199), palette(tk::status_grey));
  EXPECT_EQ(screen_at(w, 295, 183), palette(tk::status_grey));
  EXPECT_EQ(screen_at(w, 295, 182), palette(tk::green));
  w.draw_filled_rectangle(0, 0, 299, 199, tk::blue);  // drawing stays under the line
  settle();
  EXPECT_EQ(screen_at(w, 295, 190), palette(tk::status_grey));
  w.close_status_window();
  settle();
  EXPECT_EQ(screen_at(w, 295, 190), palette(tk::blue));
}

}  // namespace
