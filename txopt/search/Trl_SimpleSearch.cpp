#include "search/Trl_SimpleSearch.h"

#include <iostream>

#include "search/Trl_Assignment.h"
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
