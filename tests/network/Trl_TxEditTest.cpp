// The base station property dialog, driven by a small backend that answers each panel from
// a list of edits and a button. Each case runs in a child process, so that the windows it
// makes leave no trace (backend, error panel) in the rest of the test program.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "network/Trl_Tx.h"
#include "toolkit/backend.h"
#include "toolkit/panel.h"
#include "toolkit/window.h"

namespace {

struct Answer {
  std::vector<std::pair<std::string, std::string>> edits;  // item label, new value
  std::string button;
};

class AnsweringBackend : public tk::backend {
 public:
  std::deque<Answer> answers;
  std::vector<std::string> messages;
  std::vector<std::string> shown_heights;  // "Height [m]: " as each dialog opened

  int run_panel(tk::panel& p, int, int, tk::window*) override {
    if (p.kind == tk::panel::message_box) {
      messages.push_back(p.box_text);
      return 0;
    }
    if (answers.empty()) std::exit(70);
    Answer a = answers.front();
    answers.pop_front();
    for (tk::panel_item& item : p.items())
      if (item.label == "Height [m]: ") shown_heights.push_back(item.value);
    for (auto& edit : a.edits) {
      bool found = false;
      for (tk::panel_item& item : p.items())
        if (item.label == edit.first) {
          item.value = edit.second;
          found = true;
        }
      if (!found) std::exit(71);
    }
    const auto& buttons = p.buttons();
    for (size_t k = 0; k < buttons.size(); ++k)
      if (buttons[k].label == a.button) return static_cast<int>(k);
    std::exit(72);
  }

  void create(tk::window&) override {}
  void display(tk::window&, int, int, tk::window*) override {}
  void close(tk::window&) override {}
  void destroy(tk::window&) override {}
  void set_title(tk::window&, const std::string&) override {}
  int screen_width() override { return 1000; }
  int screen_height() override { return 1000; }
  void build_menu_bar(tk::window&) override {}
  void set_items_enabled(tk::window&, bool) override {}
  void clear(tk::window&, int) override {}
  void pixel(tk::window&, int, int, int) override {}
  void line(tk::window&, int, int, int, int, int) override {}
  void disc(tk::window&, int, int, int, int) override {}
  void polygon(tk::window&, const int*, int, bool, int) override {}
  void rectangle(tk::window&, int, int, int, int, bool, int) override {}
  void text(tk::window&, int, int, const std::string&, int) override {}
  int text_box(tk::window&, int, int, int y, const std::string&, bool) override { return y; }
  void pixmap(tk::window&, int, int, const char* const*) override {}
  void set_font(tk::window&, const std::string&) override {}
  int set_cursor(tk::window&, int kind) override { return kind; }
  void start_buffering(tk::window&) override {}
  void flush(tk::window&, int, int, int, int) override {}
  void stop_buffering(tk::window&) override {}
  void refresh_item(tk::panel&, int) override {}
  int wait_event(tk::window*, tk::window*& w, int&, int&, int&) override {
    w = nullptr;
    return tk::no_event;
  }
  int wait_mouse(tk::window&, int&, int&) override { return 0; }
  int poll_mouse(tk::window&, int&, int&) override { return tk::no_event; }
  void open_status(tk::window&, int, int) override {}
  void set_status(tk::window&, const std::string&) override {}
  void close_status(tk::window&) override {}
};

Trl_Tx sample() {
  Trl_Tx tx(tk::d3_point(100, 200, 30), tk::string("BS0001"), 1, 20, 2, 1, std::pow(10.0, 0.9),
            std::pow(10.0, 0.5), 0.4, Trl_Tx::unused);
  tx.cell_i = 7;
  return tx;
}

// Runs the dialog with the answers; the child's exit code carries the verdict of `check`.
void run_case(std::deque<Answer> answers,
              std::function<bool(bool, const Trl_Tx&, const AnsweringBackend&)> check) {
  EXPECT_EXIT(
      {
        AnsweringBackend backend;
        backend.answers = answers;
        tk::set_backend(&backend);
        tk::window main(600, 600, "Celvane");
        Trl_Tx tx = sample();
        const bool confirmed = tx.edit(main);
        std::exit(check(confirmed, tx, backend) && backend.answers.empty() ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace

TEST(Trl_TxEdit, ChecksInOrderAndKeepsThePlannersEntries) {
  run_case({{{{"Height [m]: ", "0"}, {"Pilot power [W]: ", "-1"}}, "Ok"},
            {{}, "Ok"},
            {{{"Height [m]: ", "12.5"}}, "Ok"},
            {{{"Pilot power [W]: ", "0"}, {"Orthogonality factor [1]: ", "1.01"}}, "Ok"},
            {{{"Orthogonality factor [1]: ", "1"}, {"Effectiv gain [dB]: ", "12"}}, "Ok"}},
           [](bool confirmed, const Trl_Tx& tx, const AnsweringBackend& b) {
             const std::vector<std::string> expected = {
                 "Height must be greater than 0.", "Height must be greater than 0.",
                 "Powers must be greater than 0.", "Orthogonality factor must in [0,1]."};
             return confirmed && b.messages == expected &&
                    // the panel opens again with the planner's entry, not the record's
                    std::atof(b.shown_heights.at(1).c_str()) == 0 &&
                    tx.position.zcoord() == 12.5 && tx.pilot_power == 0 &&
                    tx.orthogonality == 1 && std::fabs(tx.gain - std::pow(10.0, 1.2)) < 1e-9 &&
                    tx.status == Trl_Tx::usable &&  // 2 shows as "usable" and comes back 0
                    tx.cell_i == 7 && tx.position.xcoord() == 100;
           });
}

TEST(Trl_TxEdit, ResetAndCancelLeaveTheRecord) {
  run_case({{{{"Height [m]: ", "-3"}, {"Label: ", "X"}}, "Reset"},
            {{{"Max. power [W]: ", "40"}}, "Cancel"}},
           [](bool confirmed, const Trl_Tx& tx, const AnsweringBackend& b) {
             return !confirmed && b.messages.empty() &&
                    std::atof(b.shown_heights.at(1).c_str()) == 30 &&  // reset to the record
                    tx.max_power == 20 && tx.status == Trl_Tx::unused &&
                    std::string(tx.label.cstring()) == "BS0001";
           });
}

TEST(Trl_TxEdit, StatusChoices) {
  run_case({{{{"Status: ", "1"}, {"Label: ", "Roof"}, {"X-coordinate [m]: ", "5"}}, "Ok"}},
           [](bool confirmed, const Trl_Tx& tx, const AnsweringBackend&) {
             return confirmed && tx.status == Trl_Tx::fixed &&
                    std::string(tx.label.cstring()) == "Roof" && tx.position.xcoord() == 5;
           });
  run_case({{{{"Status: ", "2"}}, "Ok"}},
           [](bool confirmed, const Trl_Tx& tx, const AnsweringBackend&) {
             return confirmed && tx.status == Trl_Tx::excluded;
           });
}
