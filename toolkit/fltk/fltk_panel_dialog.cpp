#include "toolkit/fltk/fltk_panel_dialog.h"

#include <FL/Fl.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Float_Input.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Input_Choice.H>
#include <FL/Fl_Int_Input.H>
#include <FL/Fl_Menu_Button.H>
#include <FL/Fl_Return_Button.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "toolkit/fltk/fltk_formatted_box.h"
#include "toolkit/fltk/fltk_native_window.h"
#include "toolkit/fltk/fltk_style.h"
#include "toolkit/fltk/fltk_text.h"
#include "toolkit/panel.h"

namespace tk {

namespace {

const int margin = 10;
const int row = 28;         // one input item, with the gap below it
const int field_height = 24;
const int button_height = 26;
const int button_gap = 8;
const int label_size = 14;  // FLTK's label size

std::vector<fltk_panel_dialog*>& open_dialogs() {
  static std::vector<fltk_panel_dialog*> dialogs;
  return dialogs;
}

int label_width_of(const std::string& label) {
  fl_font(FL_HELVETICA, label_size);
  return static_cast<int>(fl_width(fltk_literal_label(label).c_str()) + 0.5);
}

int button_width_of(const panel_button& b) { return std::max(70, label_width_of(b.label) + 24); }

void* as_data(std::size_t index) { return reinterpret_cast<void*>(static_cast<std::intptr_t>(index)); }
std::size_t as_index(void* data) { return static_cast<std::size_t>(reinterpret_cast<std::intptr_t>(data)); }

// The choices of a text input with a list; the typed text stays as it is.
void fill_choices(Fl_Input_Choice& input, const panel_item& item) {
  input.clear();
  for (const std::string& c : item.choices) input.menubutton()->add(fltk_menu_step(c).c_str(), 0, nullptr, nullptr, 0);
}

}  // namespace

fltk_panel_dialog::fltk_panel_dialog(panel& p) : front(p) {
  measure();
  dialog.reset(new Fl_Double_Window(width, height));
  dialog->copy_label(front.title().c_str());
  dialog->callback(close_pressed, this);
  int top = margin;
  for (panel_item& item : front.items()) add_item(item, top);
  add_buttons(top + margin);
  dialog->end();
}

fltk_panel_dialog::~fltk_panel_dialog() {
  std::vector<fltk_panel_dialog*>& dialogs = open_dialogs();
  dialogs.erase(std::remove(dialogs.begin(), dialogs.end(), this), dialogs.end());
}

// Width of the label column, the fields, the text lines and the button row; the height of all.
void fltk_panel_dialog::measure() {
  field_width = std::max(60, front.get_item_width());
  int content = 0;
  height = 2 * margin + button_height + margin;
  for (const panel_item& item : front.items()) {
    if (item.kind == panel_item::text) {
      fltk_text text(item.value);
      int text_width = 0, lines = 1;
      text.measure(text_width, lines);
      content = std::max(content, text_width + 8);
      height += lines * text.line_height();
    } else {
      label_width = std::max(label_width, label_width_of(item.label) + 10);
      height += row;
    }
  }
  content = std::max(content, label_width + field_width);
  int buttons = 0;
  for (const panel_button& b : front.buttons())
    if (!b.separator) buttons += button_width_of(b) + button_gap;
  width = 2 * margin + std::max(content, buttons - button_gap);
}

void fltk_panel_dialog::add_item(panel_item& item, int& top) {
  const int x = margin + label_width;
  Fl_Widget* widget = nullptr;
  switch (item.kind) {
    case panel_item::text: {
      fltk_text text(item.value);
      int text_width = 0, lines = 1;
      text.measure(text_width, lines);
      fltk_formatted_box* box = new fltk_formatted_box(margin, top, width - 2 * margin, lines * text.line_height(),
                                                       FL_BACKGROUND_COLOR);
      box->text(item.value);
      widget = box;
      top += lines * text.line_height();
      break;
    }
    case panel_item::string_input:
    case panel_item::int_input:
    case panel_item::double_input: {
      Fl_Input* input = item.kind == panel_item::int_input      ? new Fl_Int_Input(x, top, field_width, field_height)
                        : item.kind == panel_item::double_input ? new Fl_Float_Input(x, top, field_width, field_height)
                                                                : new Fl_Input(x, top, field_width, field_height);
      input->value(item.value.c_str());
      widget = input;
      break;
    }
    case panel_item::string_menu: {
      Fl_Input_Choice* input = new Fl_Input_Choice(x, top, field_width, field_height);
      fill_choices(*input, item);
      input->value(item.value.c_str());
      if (item.on_change) {
        input->callback(choice_changed, as_data(widgets.size()));
        input->when(FL_WHEN_CHANGED);
      }
      widget = input;
      break;
    }
    case panel_item::bool_input: {
      Fl_Check_Button* check = new Fl_Check_Button(x, top, field_width, field_height);
      check->value(item.value == "1");
      widget = check;
      break;
    }
    case panel_item::choice: {
      Fl_Choice* choice = new Fl_Choice(x, top, field_width, field_height);
      for (const std::string& c : item.choices)
        choice->add(fltk_menu_step(fltk_literal_label(c)).c_str(), 0, nullptr, nullptr, 0);
      choice->value(std::atoi(item.value.c_str()));
      widget = choice;
      break;
    }
  }
  if (item.kind != panel_item::text) {
    widget->copy_label(fltk_literal_label(item.label).c_str());
    widget->align(FL_ALIGN_LEFT);
    top += row;
  }
  if (!item.help.empty()) widget->copy_tooltip(item.help.c_str());
  if (!item.enabled) widget->deactivate();
  widgets.push_back(widget);
  synced.push_back(item.value);
}

// One centred row; the default button answers Return.
void fltk_panel_dialog::add_buttons(int top) {
  const std::vector<panel_button>& buttons = front.buttons();
  int total = 0;
  for (const panel_button& b : buttons)
    if (!b.separator) total += button_width_of(b) + button_gap;
  int x = (width - (total - button_gap)) / 2;
  for (std::size_t i = 0; i < buttons.size(); ++i) {
    const panel_button& b = buttons[i];
    if (b.separator) continue;
    const int w = button_width_of(b);
    Fl_Button* button = b.is_default ? new Fl_Return_Button(x, top, w, button_height)
                                     : new Fl_Button(x, top, w, button_height);
    button->copy_label(fltk_literal_label(b.label).c_str());
    button->callback(button_pressed, as_data(i));
    if (!b.help.empty()) button->copy_tooltip(b.help.c_str());
    x += w + button_gap;
  }
}

int fltk_panel_dialog::run(int x, int y, window* parent) {
  open_dialogs().push_back(this);
  place(x, y, parent);
  dialog->set_modal();
  dialog->show();
  while (dialog->shown()) Fl::wait();
  read_back();
  if (pressed < 0) pressed = std::max(0, pressed_on_close());
  return pressed;
}

// Over a parent on the screen the place counts from its corner; else from the screen's.
void fltk_panel_dialog::place(int x, int y, window* parent) {
  fltk_native_window* n = parent ? fltk_native_window::find(*parent) : nullptr;
  int px, py;
  if (n && n->shell().shown()) {
    Fl_Double_Window& over = n->shell();
    px = fltk_place(x, width, over.x(), over.w());
    py = fltk_place(y, height, over.y(), over.h());
  } else {
    px = fltk_place(x, width, Fl::x(), Fl::w());
    py = fltk_place(y, height, Fl::y(), Fl::h());
  }
  px = std::max(Fl::x(), std::min(px, Fl::x() + Fl::w() - width));
  py = std::max(Fl::y(), std::min(py, Fl::y() + Fl::h() - height));
  dialog->position(px, py);
}

void fltk_panel_dialog::read_back() {
  std::vector<panel_item>& items = front.items();
  for (std::size_t k = 0; k < items.size() && k < widgets.size(); ++k) {
    panel_item& item = items[k];
    Fl_Widget* widget = widgets[k];
    switch (item.kind) {
      case panel_item::string_input:
      case panel_item::int_input:
      case panel_item::double_input:
        item.value = static_cast<Fl_Input*>(widget)->value();
        break;
      case panel_item::string_menu: {
        const char* text = static_cast<Fl_Input_Choice*>(widget)->value();
        item.value = text ? text : "";
        break;
      }
      case panel_item::bool_input:
        item.value = static_cast<Fl_Check_Button*>(widget)->value() ? "1" : "0";
        break;
      case panel_item::choice:
        item.value = std::to_string(static_cast<Fl_Choice*>(widget)->value());
        break;
      case panel_item::text:
        break;
    }
  }
}

// Closing the dialog by the window manager or Escape means "Cancel" where there is one,
// the only button of a message, and nothing otherwise: the panel waits for a button.
int fltk_panel_dialog::pressed_on_close() const {
  const std::vector<panel_button>& buttons = front.buttons();
  int only = -1, count = 0;
  for (std::size_t i = 0; i < buttons.size(); ++i) {
    if (buttons[i].separator) continue;
    if (buttons[i].label == "Cancel") return static_cast<int>(i);
    only = static_cast<int>(i);
    ++count;
  }
  return count == 1 ? only : -1;
}

fltk_panel_dialog* fltk_panel_dialog::open_for(const panel& p) {
  for (fltk_panel_dialog* d : open_dialogs())
    if (&d->front == &p) return d;
  return nullptr;
}

void fltk_panel_dialog::refresh(int item) {
  std::vector<panel_item>& items = front.items();
  if (item < 0 || item >= static_cast<int>(widgets.size())) return;
  const std::size_t k = static_cast<std::size_t>(item);
  const panel_item& entry = items[k];
  // Only a value the program set replaces what the planner has typed.
  const bool new_value = entry.value != synced[k];
  synced[k] = entry.value;
  if (entry.kind == panel_item::string_menu) {
    Fl_Input_Choice* input = static_cast<Fl_Input_Choice*>(widgets[k]);
    fill_choices(*input, entry);
    if (new_value) input->value(entry.value.c_str());
    input->redraw();
  } else if (entry.kind == panel_item::string_input && new_value) {
    static_cast<Fl_Input*>(widgets[k])->value(entry.value.c_str());
  }
}

void fltk_panel_dialog::button_pressed(Fl_Widget* w, void* index) {
  fltk_panel_dialog* d = static_cast<fltk_panel_dialog*>(w->window()->user_data());
  d->pressed = static_cast<int>(as_index(index));
  d->dialog->hide();
}

// A text input with a list and a change handler: the handler sees every change at once.
void fltk_panel_dialog::choice_changed(Fl_Widget* w, void* index) {
  fltk_panel_dialog* d = static_cast<fltk_panel_dialog*>(w->window()->user_data());
  panel_item& item = d->front.items()[as_index(index)];
  const char* text = static_cast<Fl_Input_Choice*>(w)->value();
  item.value = text ? text : "";
  d->synced[as_index(index)] = item.value;
  if (!item.on_change) return;
  std::vector<char> buffer(item.value.begin(), item.value.end());
  buffer.push_back('\0');
  item.on_change(buffer.data());
}

void fltk_panel_dialog::close_pressed(Fl_Widget*, void* data) {
  fltk_panel_dialog* d = static_cast<fltk_panel_dialog*>(data);
  int index = d->pressed_on_close();
  if (index < 0) return;
  d->pressed = index;
  d->dialog->hide();
}

}  // namespace tk
