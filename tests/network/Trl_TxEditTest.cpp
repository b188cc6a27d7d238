// The base station property dialog, answered by a plan script through the scripted window
// backend: the transcript shows each opening of the dialog with the values it showed.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "network/Trl_Tx.h"
#include "support/ScriptedWindows.h"
#include "toolkit/window.h"

namespace {

Trl_Tx sample() {
  Trl_Tx tx(tk::d3_point(100, 200, 30), tk::string("BS0001"), 1, 20, 2, 1, std::pow(10.0, 0.9),
            std::pow(10.0, 0.5), 0.4, Trl_Tx::unused);
  tx.cell_i = 7;
  return tx;
}

// Opens the dialog on the sample over a main window; the transcript of the answers.
std::string edit(const std::string& script, Trl_Tx& tx, bool& confirmed) {
  ScriptedWindows scripted(script);
  tk::window main(600, 600, "Celvane");
  tx = sample();
  confirmed = tx.edit(main);
  return scripted.transcript();
}

size_t count(const std::string& text, const std::string& part) {
  size_t n = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
  return n;
}

}  // namespace

TEST(Trl_TxEdit, ChecksInOrderAndKeepsThePlannersEntries) {
  Trl_Tx tx;
  bool confirmed = false;
  const std::string t = edit(
      "set Height [m]: = 0\nset Pilot power [W]: = -1\npress Ok\n"
      "press Ok\n"
      "set Height [m]: = 12.5\npress Ok\n"
      "set Pilot power [W]: = 0\nset Orthogonality factor [1]: = 1.01\npress Ok\n"
      "set Orthogonality factor [1]: = 1\nset Effectiv gain [dB]: = 12\npress Ok\n",
      tx, confirmed);
  EXPECT_TRUE(confirmed);
  // The checks in their order, each once its predecessors pass.
  EXPECT_EQ(count(t, "message: Height must be greater than 0.\n"), 2u) << t;
  EXPECT_EQ(count(t, "message: Powers must be greater than 0.\n"), 1u) << t;
  EXPECT_EQ(count(t, "message: Orthogonality factor must in [0,1].\n"), 1u) << t;
  EXPECT_LT(t.find("Height must"), t.find("Powers must")) << t;
  EXPECT_LT(t.find("Powers must"), t.find("Orthogonality factor must")) << t;
  // The dialog opens again with the planner's entry, not the record's.
  EXPECT_EQ(count(t, "  Height [m]: [0]\n"), 2u) << t;
  EXPECT_EQ(tx.position.zcoord(), 12.5);
  EXPECT_EQ(tx.pilot_power, 0);
  EXPECT_EQ(tx.orthogonality, 1);
  EXPECT_NEAR(tx.gain, std::pow(10.0, 1.2), 1e-9);
  EXPECT_EQ(tx.status, Trl_Tx::usable);  // 2 shows as "usable" and comes back 0
  EXPECT_EQ(tx.cell_i, 7);
  EXPECT_EQ(tx.position.xcoord(), 100);
}

TEST(Trl_TxEdit, ResetAndCancelLeaveTheRecord) {
  Trl_Tx tx;
  bool confirmed = true;
  const std::string t =
      edit("set Height [m]: = -3\nset Label: = X\npress Reset\nset Max. power [W]: = 40\npress Cancel\n", tx, confirmed);
  EXPECT_FALSE(confirmed);
  EXPECT_EQ(t.find("message:"), std::string::npos) << t;
  EXPECT_EQ(count(t, "  Height [m]: [30]\n"), 2u) << t;  // reset to the record
  EXPECT_EQ(tx.max_power, 20);
  EXPECT_EQ(tx.status, Trl_Tx::unused);
  EXPECT_EQ(std::string(tx.label.cstring()), "BS0001");
}

TEST(Trl_TxEdit, StatusChoices) {
  Trl_Tx tx;
  bool confirmed = false;
  edit("set Status: = fixed\nset Label: = Roof\nset X-coordinate [m]: = 5\npress Ok\n", tx, confirmed);
  EXPECT_TRUE(confirmed);
  EXPECT_EQ(tx.status, Trl_Tx::fixed);
  EXPECT_EQ(std::string(tx.label.cstring()), "Roof");
  EXPECT_EQ(tx.position.xcoord(), 5);
  edit("set Status: = 2\npress Ok\n", tx, confirmed);
  EXPECT_TRUE(confirmed);
  EXPECT_EQ(tx.status, Trl_Tx::excluded);
}
