// The simple search: the command "Simple search algorithm" and its driving loop hbb_search,
// which offers the subsets of Trl_HbbWalker to the solver one by one and keeps the best
// assignment in the application. Powers in W.
#pragma once

#include <functional>

#include "toolkit/string.h"

class Trl_Assignment;
class Trl_Planner;
class Trl_Tx;
namespace tk {
template <class T>
class list;
}

class Trl_SimpleSearch {
 public:
  // The result scale shared by all searches.
  enum { proved_optimal = 1, improved_or_finished = 2, no_improvement = 3, stopped = 4 };

  // What the loop reaches back to the application for. for_planner() ties them to the
  // planner; a tool or a test may tie them to anything else.
  Trl_Assignment** best;    // the application's current assignment, the best so far
  int max_stagnation;       // "Max. stagnation", 0 to 31
  bool validate_downlink;   // "Validate Downlink"
  std::function<void()> redraw;
  std::function<void(const tk::string&)> show_status;
  std::function<bool()> stop_requested;

  Trl_SimpleSearch(Trl_Assignment** best, int max_stagnation, bool validate_downlink);
  static Trl_SimpleSearch for_planner(Trl_Planner& planner);

  // Walks the subsets of the `used` positions of the candidate (the full count), positions
  // below fixed_count kept, and returns 1 (the walk ran out: proved optimal), 2 (ended by
  // stagnation after an improvement), 3 (by stagnation without one) or 4 (stopped).
  // try_number is 0 for the simple command, the try of the best-set search otherwise.
  int hbb_search(int fixed_count, Trl_Assignment& candidate, int try_number);

  // The command "Simple search algorithm" on the planner, bracketed by begin_command and
  // end_command.
  static void run(Trl_Planner& planner);

  // The algorithm that "Algorithm" names on the candidate, with the planner's best as the
  // best so far; a result of the scale above.
  static int run_algorithm(Trl_Planner& planner, int fixed_count, Trl_Assignment& candidate,
                           const tk::list<Trl_Tx>& working, int try_number);

  // " Best assignment: %d BS, %g [W].", with "(%d) " in front for a non-zero try.
  static tk::string best_status(int try_number, int used, double uplink_sum);
  // The three lines of the final panel for a result of the scale above.
  static tk::string result_text(int result, int used, double uplink_sum);

 private:
  void offer(Trl_Assignment& candidate, int try_number, bool& improved);
};
