#include "search/Trl_SimpleSearch.h"

#include <iostream>

#include "app/Trl_Planner.h"
#include "network/Trl_Tx.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_GaSearch.h"
#include "search/Trl_HbbWalker.h"
#include "toolkit/error.h"

Trl_SimpleSearch::Trl_SimpleSearch(Trl_Assignment** best, int max_stagnation,
                                   bool validate_downlink)
    : best(best),
      max_stagnation(max_stagnation),
      validate_downlink(validate_downlink),
      redraw([] {}),
      show_status([](const tk::string&) {}),
      stop_requested([] { return false; }) {}

Trl_SimpleSearch Trl_SimpleSearch::for_planner(Trl_Planner& planner) {
  Trl_SimpleSearch search(&planner.assignment, planner.max_stagnation, planner.validate_downlink);
  search.redraw = [&planner] { planner.redraw(); };
  search.show_status = [&planner](const tk::string& text) { planner.show_status(text); };
  search.stop_requested = [] { return ::stop_requested(); };
  return search;
}

namespace {

// The frame's ways out before a search: the message, and for all but the first a redraw.
void end_early(Trl_Planner& planner, const char* text, bool redraw) {
  planner.message(text);
  if (redraw) planner.redraw();
  planner.end_command();
}

}  // namespace

void Trl_SimpleSearch::run(Trl_Planner& planner) {
  planner.begin_command();
  if (planner.tx_list.empty() || planner.rx_list.empty())
    return end_early(planner, "No base stations or mobile users. Nothing to do?", false);
  tk::list<Trl_Tx> working;
  int fixed_count = 0;
  if (!planner.compute_all(working, fixed_count, nullptr))
    return end_early(planner, "No assignment with all base stations possible.", true);
  // The full set with its powers is the first best solution.
  planner.show_status(" Assignment with all base stations found.");
  planner.redraw();
  if (fixed_count == working.size())
    return end_early(planner, "All base stations are fixed. Nothing to do?", true);
  Trl_Assignment candidate(planner.assigner, planner.rx_objective, working);
  const int result = run_algorithm(planner, fixed_count, candidate, working, 0);
  planner.mark_used();
  planner.redraw();
  const Trl_Assignment& best = *planner.assignment;
  planner.message(result_text(result, best.used, best.uplink_sum));
  planner.redraw();
  planner.end_command();
}

int Trl_SimpleSearch::run_algorithm(Trl_Planner& planner, int fixed_count, Trl_Assignment& candidate,
                                    const tk::list<Trl_Tx>& working, int try_number) {
  if (planner.algorithm == 0) return for_planner(planner).hbb_search(fixed_count, candidate, try_number);
  ga_search.mutation_probability = 1 / (1.5f * working.size());
  return ga_search.run(for_planner(planner), candidate, working, try_number);
}

int Trl_SimpleSearch::hbb_search(int fixed_count, Trl_Assignment& candidate, int try_number) {
  TK_ASSERT(best != nullptr && *best != nullptr, "hbb_search without a current assignment");
  Trl_HbbWalker walker(candidate.used, max_stagnation, fixed_count);
  int result = no_improvement;
  bool improved = false;
  while (walker.next()) {
    walker.write(candidate.selected, candidate.used);
    // A candidate larger than the best can't win, so its downlink isn't worth a matrix
    // solution.
    const bool validate = validate_downlink && (*best)->used >= candidate.used;
    if (candidate.solve(validate)) {
      walker.succeeded();
      offer(candidate, try_number, improved);
    } else {
      walker.failed();
    }
    if (stop_requested()) {
      result = stopped;
      break;
    }
  }
  if (result == no_improvement) {
    if (improved) result = improved_or_finished;
    if (walker.exhausted) result = proved_optimal;
  }
  return result;
}

// A feasible candidate replaces the best when it is better; an equal one is no improvement.
void Trl_SimpleSearch::offer(Trl_Assignment& candidate, int try_number, bool& improved) {
  Trl_Assignment& current = **best;
  if (!candidate.better_than(current, true)) return;
  improved = true;
  current = candidate;
  std::cout << "power sum: " << current.uplink_sum << std::endl;
  redraw();
  show_status(best_status(try_number, current.used, current.uplink_sum));
}

tk::string Trl_SimpleSearch::best_status(int try_number, int used, double uplink_sum) {
  if (try_number != 0)
    return tk::string(" (%d) Best assignment: %d BS, %g [W].", try_number, used, uplink_sum);
  return tk::string(" Best assignment: %d BS, %g [W].", used, uplink_sum);
}

// The panel's mark-up joins the three lines with its new-line tag.
tk::string Trl_SimpleSearch::result_text(int result, int used, double uplink_sum) {
  const bool optimal = result == proved_optimal;
  tk::string text(optimal ? "Optimum found: " : "Best solution found so far: ");
  text += "\\n";
  text += tk::string("\\red %d \\blue base stations and ", used);
  text += tk::string("\\red %e \\blue [W] uplink power sum.", uplink_sum);
  text += "\\n";
  text += optimal ? " For more details store and see the assignment file."
                  : " For more details store and examine the assignment file.";
  return text;
}
