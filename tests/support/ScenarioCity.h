// Test support: the small city of the batch scenarios (a terrain, six base stations and
// thirty users in tests/scenarios/data) put into a planner as the load commands put it.
#pragma once

#include <string>
#include <vector>

#include "toolkit/list.h"

class Trl_Planner;
class Trl_Tx;

// The folder that holds the city's files.
std::string scenario_city_folder();

// Loads terrain.map, bs.dtx and mu.drx from the folder into the planner, with the boxes the
// load commands keep for the plan view. Test failures on the way are reported.
void load_scenario_city(Trl_Planner& p, const std::string& folder = scenario_city_folder());

// Runs compute_all on the loaded planner (failures reported) and returns the path gains:
// gain[k][r] from the base station at working position k to user r. Without fixed base
// stations the working order is the list order, and positions are numbers.
std::vector<std::vector<double>> computed_gains(Trl_Planner& p, tk::list<Trl_Tx>& working);
