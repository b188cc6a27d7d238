// The parameter dialogs of the "Set" menu, answered by the scripted backend: where each test
// draws its line (strict or not), what the conversions store, and that an "Ok" without a
// change leaves every field where it was, up to the last digits of a dB round trip.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "app/Trl_Planner.h"
#include "search/Trl_GaSearch.h"
#include "support/ScriptedWindows.h"
#include "support/WindowedPlanner.h"

namespace {

using Dialog = void (Trl_Planner::*)();
const Dialog heights = &Trl_Planner::set_heights, umts = &Trl_Planner::set_umts_parameters,
             xia = &Trl_Planner::set_xia_bertoni, search = &Trl_Planner::set_search_parameters;

// Fills one item, presses "Ok", and cancels the panel if it opens again.
std::string answer(Dialog dialog, const std::string& label, const std::string& value, bool refused) {
  ScriptedWindows scripted("set \"" + label + "\" = " + value + "\npress Ok\n" + (refused ? "press Cancel\n" : ""));
  WindowedPlanner w;
  (w.p.*dialog)();
  return scripted.transcript();
}

}  // namespace

TEST(ParameterDialogs, EachTestDrawsItsLineWhereItMust) {
  struct Case {
    Dialog dialog;
    const char* label;
    const char* value;
    const char* refusal;  // null: accepted
  };
  const Case cases[] = {
      {umts, "Tx pilot power [W]: ", "0", nullptr},
      {umts, "Tx pilot power [W]: ", "-1", "Tx pilot power must be positive."},
      {umts, "Tx pilot power [W]: ", "20", "Tx max. power minus tx pilot power must be positive."},
      {umts, "Tx max. power [W]: ", "0", "Tx max. power must be greater than 0."},
      {umts, "Tx max. channel power [W]: ", "0", "Tx max. channel power must be positive."},
      {umts, "Rx activity factor [%]: ", "100", nullptr},
      {umts, "Rx activity factor [%]: ", "0", "Activity factor must be percentage greater than 0."},
      {umts, "Rx activity factor [%]: ", "100.5", "Activity factor must be percentage greater than 0."},
      {umts, "Orthogonality factor [%]: ", "100", nullptr},
      {umts, "Orthogonality factor [%]: ", "0", "Orthogonality factor must be percentage greater than 0."},
      {umts, "Temperature [°C]: ", "-273.18", nullptr},
      {umts, "Temperature [°C]: ", "-273.19", "Temperature must be valid."},
      {umts, "Frequency [GHz]: ", "0", "Tx frequency must be greater than 0."},
      {umts, "Uplink bit rate [Kbit/s]: ", "0", "UL bit rate must be greater than 0."},
      {umts, "Downlink bit rate [Kbit/s]: ", "0", "DL bit rate must be positive."},
      {umts, "UMTS bandwidth [MHz]: ", "0", "UMTS bandwidth must be greater than 0."},
      {umts, "Eb/N0 uplink [dB]: ", "-300", nullptr},
      {search, "Max. stagnation: ", "0", nullptr},
      {search, "Max. stagnation: ", "31", nullptr},
      {search, "Max. stagnation: ", "32", "Max. stagnation number must be positive and less than 32."},
      {search, "Max. stagnation: ", "-1", "Max. stagnation number must be positive and less than 32."},
      {search, "Max. iterations: ", "0", "Max. iteration number must be greater than 0."},
      {search, "Population size: ", "1", nullptr},
      {heights, "Visualization radius [.]: ", "1", nullptr},
      {heights, "Base station height over building [m]: ", "0",
       "Base station height over building must be greater than 0."},
      {xia, "Tolerance for height [%]: ", "0", nullptr},
      {xia, "Tolerance for height [%]: ", "1", nullptr},
      {xia, "Tolerance for height [%]: ", "-0.01", "Tolerance must be value in [0..1]."},
      {xia, "Exponent constant Lmsd: ", "-5", nullptr},
      {xia, "Maximum cell radius [m]: ", "0", "Maximum cell radius must be greater than 0."},
  };
  for (const Case& c : cases) {
    const std::string t = answer(c.dialog, c.label, c.value, c.refusal != nullptr);
    const std::string what = std::string(c.label) + " = " + c.value;
    if (c.refusal) {
      EXPECT_EQ(occurrences(t, "message: "), 1) << what << "\n" << t;
      EXPECT_NE(t.find(std::string("message: ") + c.refusal + "\n"), std::string::npos) << what << "\n" << t;
    } else {
      EXPECT_EQ(occurrences(t, "message: "), 0) << what << "\n" << t;
    }
  }
}

TEST(ParameterDialogs, EntriesAreStoredInTheFieldsUnits) {
  ScriptedWindows scripted(
      "set Rx activity factor [%] = 100\nset Rx max. power [dBmW] = 30\nset Eb/N0 uplink [dB] = 3\n"
      "set Orthogonality factor [%] = 25\npress Ok\n"
      "set Indoor attenuation [dB] = 20\nset Tolerance for height [%] = 0.5\nset Averaging method = avg\npress Ok\n"
      "set Tolerance [dB] = 1\nset Validate Downlink = no\nset Population size = 7\nset Algorithm = GA\npress Ok\n");
  WindowedPlanner w;
  Trl_Planner& p = w.p;
  p.spare_count = 9;
  p.set_umts_parameters();
  p.set_xia_bertoni();
  const int population = ga_search.population_size;
  p.set_search_parameters();
  EXPECT_EQ(p.rx_activity, 1.0);
  EXPECT_NEAR(p.rx_max_power, 1.0, 1e-15);
  EXPECT_NEAR(p.ebno_up, std::pow(10.0, 0.3), 1e-14);
  EXPECT_EQ(p.orthogonality, 0.25);
  EXPECT_NEAR(p.indoor_attenuation, 100.0, 1e-12);
  EXPECT_EQ(p.height_tolerance, 0.5);
  EXPECT_FALSE(p.geometric_average);
  EXPECT_NEAR(p.tolerance, std::pow(10.0, 0.1), 1e-15);
  EXPECT_FALSE(p.validate_downlink);
  EXPECT_EQ(ga_search.population_size, 7);
  EXPECT_EQ(p.algorithm, 1);
  EXPECT_EQ(p.spare_count, 9);  // carried through unseen
  ga_search.population_size = population;
}

TEST(ParameterDialogs, OkWithoutAChangeKeepsEveryFieldWithinItsLastDigits) {
  ScriptedWindows scripted("press Ok\npress Ok\npress Ok\npress Ok\n");
  WindowedPlanner w;
  Trl_Planner& p = w.p;
  const Trl_Planner before;
  p.set_umts_parameters();
  p.set_xia_bertoni();
  p.set_search_parameters();
  p.set_heights();
  const double Trl_Planner::*fields[] = {
      &Trl_Planner::ebno_down, &Trl_Planner::ebno_up, &Trl_Planner::tx_gain, &Trl_Planner::tx_noise_factor,
      &Trl_Planner::rx_gain, &Trl_Planner::rx_noise_factor, &Trl_Planner::rx_max_power, &Trl_Planner::rx_min_power,
      &Trl_Planner::rx_activity, &Trl_Planner::orthogonality, &Trl_Planner::indoor_attenuation,
      &Trl_Planner::tolerance, &Trl_Planner::temperature, &Trl_Planner::rx_height};
  for (auto field : fields) EXPECT_NEAR(p.*field / before.*field, 1.0, 1e-12);
  EXPECT_EQ(p.spare_count, 5);
  EXPECT_EQ(p.visualization_radius, 150);
  EXPECT_EQ(scripted.transcript().find("message:"), std::string::npos);
}
