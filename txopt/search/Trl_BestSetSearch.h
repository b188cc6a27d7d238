// Trl_BestSetSearch: the command "Best-set search algorithm". Several searches on fresh user
// samples each leave a winning set of base stations; the base stations are ranked greedily by
// how often they win together; then a bisection on the length of a prefix of that ranking,
// each prefix validated on new user samples, finds the smallest prefix that meets the
// validation requirement. The result is marked on the plan.
#pragma once

#include <functional>

#include "network/Trl_TxBitvector.h"
#include "toolkit/array.h"
#include "toolkit/list.h"
#include "toolkit/string.h"

class Trl_Planner;
class Trl_Tx;

class Trl_BestSetSearch {
 public:
  // The command, bracketed by begin_command and end_command.
  static void run(Trl_Planner& planner);

  // The ranking of the winning sets results[0] to results[count - 1] (bits = base station
  // numbers, all of one length n) into priority; returns the mean set size, rounded up.
  static int rank_base_stations(const tk::array<Trl_TxBitvector>& results, int count, tk::list<int>& priority);
  // One greedy step: the base station that most often wins together with all of `taken`
  // (relaxed to sets missing 1, 2, ... of them when none holds all), ties to the highest
  // number; -1 when there is none. counts is scratch of length n.
  static int next_base_station(const tk::array<Trl_TxBitvector>& results, int count, tk::array<int>& counts,
                               const Trl_TxBitvector& taken);

  // The bisection on prefixes of the ranking, with the planner's parts as hooks: validate
  // returns the success ratio of a prefix or 0, stop polls the planner, message tells the end.
  struct bisection_hooks {
    std::function<double(const tk::list<int>&)> validate;
    std::function<bool()> stop;
    std::function<void(const tk::string&)> message;
  };
  // Returns the last prefix that passed (empty when none did).
  static tk::list<int> bisect(tk::list<int> priority, int average, const bisection_hooks& hooks);

  // The success ratio of the prefix over "Number of validation tries" fresh samples when it
  // meets the requirement, else 0; ends as soon as the failures exceed what is allowed.
  static double validate(Trl_Planner& planner, const tk::list<int>& candidate_set);

 private:
  static int winner(const tk::array<int>& counts);
  static int search_tries(Trl_Planner& planner, tk::list<Trl_Tx>& working, int fixed_count,
                          tk::array<Trl_TxBitvector>& results, bool& stopped);
};
