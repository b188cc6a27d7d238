#include "search/Trl_BestSetSearch.h"

#include "app/Trl_Planner.h"
#include "network/Trl_Tx.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_SimpleSearch.h"

namespace {

// taken without the bits of result: empty when the result holds all of taken.
Trl_TxBitvector missing_from(const Trl_TxBitvector& taken, const Trl_TxBitvector& result) {
  Trl_TxBitvector t(taken);
  t.and_with(result);
  t.xor_with(taken);
  return t;
}

void clear(tk::array<int>& counts) {
  for (int k = 0; k < counts.size(); ++k) counts[k] = 0;
}

// Counts the bits of result that are not taken yet.
void count_new_bits(const Trl_TxBitvector& result, const Trl_TxBitvector& taken, tk::array<int>& counts) {
  for (int b = 0; b < result.length(); ++b)
    if (result.test(b) && !taken.test(b)) ++counts[b];
}

void move_front_to_back(tk::list<int>& from, tk::list<int>& to, int count) {
  for (int k = 0; k < count && !from.empty(); ++k) to.append(from.pop());
}

void move_back_to_front(tk::list<int>& from, tk::list<int>& to, int count) {
  for (int k = 0; k < count && !from.empty(); ++k) to.push(from.pop_back());
}

}  // namespace

int Trl_BestSetSearch::winner(const tk::array<int>& counts) {
  int best = -1, best_count = 0;
  for (int b = counts.size() - 1; b >= 0; --b)
    if (counts[b] > best_count) {
      best = b;
      best_count = counts[b];
    }
  return best;
}

int Trl_BestSetSearch::next_base_station(const tk::array<Trl_TxBitvector>& results, int count,
                                         tk::array<int>& counts, const Trl_TxBitvector& taken) {
  const int n = taken.length();
  // k = 0 asks for sets holding all of taken; each further round allows one more missing.
  for (int k = 0; k <= n; ++k) {
    clear(counts);
    for (int i = 0; i < count; ++i)
      if (missing_from(taken, results[i]).count() <= k) count_new_bits(results[i], taken, counts);
    const int i = winner(counts);
    if (i >= 0) return i;
  }
  return -1;
}

int Trl_BestSetSearch::rank_base_stations(const tk::array<Trl_TxBitvector>& results, int count,
                                          tk::list<int>& priority) {
  const int n = results[0].length();
  tk::array<int> counts(n);
  clear(counts);
  int total = 0;
  for (int i = 0; i < count; ++i) count_new_bits(results[i], Trl_TxBitvector(n, true), counts);
  int unused = 0;
  for (int b = 0; b < n; ++b) {
    total += counts[b];
    if (counts[b] == 0) ++unused;
  }
  const int average = (total + count - 1) / count;
  Trl_TxBitvector taken(n, true);
  priority.clear();
  while (priority.size() < n - unused) {
    const int i = next_base_station(results, count, counts, taken);
    if (i < 0) break;
    taken.set(i);
    priority.append(i);
  }
  return average;
}

tk::list<int> Trl_BestSetSearch::bisect(tk::list<int> priority, int average, const bisection_hooks& hooks) {
  tk::list<int> candidate_set, best_set;
  move_front_to_back(priority, candidate_set, average);
  int step = priority.size();
  bool grow = true;
  double best_ratio = 0;
  const auto yielded = [&] {
    hooks.message(tk::string(
        "Validation yielded %.2f%% with %d base stations. The average number of base stations in the search was %d.",
        best_ratio * 100, best_set.size(), average));
  };
  while (!hooks.stop()) {
    const double r = hooks.validate(candidate_set);
    if (r == 0) {
      grow = true;
    } else {
      best_set = candidate_set;
      best_ratio = r;
      grow = false;
    }
    // The second test weighs a count against a ratio; it holds only for one base station
    // passing every sample.
    if (!best_set.empty() && (step == 1 || static_cast<double>(average) == best_ratio)) {
      yielded();
      break;
    }
    step = (step + 1) / 2;
    if (grow)
      move_front_to_back(priority, candidate_set, step);
    else
      move_back_to_front(candidate_set, priority, step);
    if (priority.empty()) {
      hooks.message("Validation did not match requirements.");
      break;
    }
    if (best_set.size() == candidate_set.size()) {
      yielded();
      break;
    }
  }
  return best_set;
}

double Trl_BestSetSearch::validate(Trl_Planner& planner, const tk::list<int>& candidate_set) {
  tk::list<Trl_Tx> local;
  for (const Trl_Tx& tx : planner.tx_list) {
    if (tx.status == Trl_Tx::excluded) break;
    local.append(tx);
  }
  const int tries = planner.validation_tries;
  int remaining = tries, failures = 0;
  for (;;) {
    if (remaining == 0) {
      const double ratio = static_cast<double>(tries - failures) / tries;
      return ratio >= planner.validation_requirement ? ratio : 0;
    }
    --remaining;
    planner.generate_users();
    planner.prepare_assignment(local);
    planner.assignment->select(candidate_set);
    const int size = candidate_set.size();
    if (!planner.solve_current(nullptr)) {
      ++failures;
      planner.show_status(tk::string(" No assignment with all BS possible (%d,%d,%d).", size, remaining, failures));
    } else {
      planner.assignment->accumulate();
      planner.show_status(tk::string(" Assignment with all BS found (%d,%d,%d).", size, remaining, failures));
      planner.redraw();
    }
    if (static_cast<double>(failures) / tries > 1 - planner.validation_requirement) return 0;
  }
}

// The search tries, counted down; returns the try number v after them: -1 after all, the
// stopped try's otherwise.
int Trl_BestSetSearch::search_tries(Trl_Planner& planner, tk::list<Trl_Tx>& working, int fixed_count,
                                    tk::array<Trl_TxBitvector>& results, bool& stopped) {
  int v = planner.search_tries - 1;
  for (; v >= 0; --v) {
    if (planner.generate_users() == 0) {
      planner.show_status(" Empty mobile user list generated ?!.");
      continue;
    }
    planner.prepare_assignment(working);
    planner.assignment->select_all();
    planner.redraw();
    if (!planner.solve_current(nullptr)) {
      planner.show_status(" No assignment with all base stations possible.");
      continue;
    }
    planner.assignment->accumulate();
    planner.show_status(" Assignment with all base stations found.");
    planner.redraw();
    Trl_Assignment candidate(planner.assigner, planner.rx_objective, working);
    const int result = Trl_SimpleSearch::run_algorithm(planner, fixed_count, candidate, working, v);
    planner.redraw();
    if (result == Trl_SimpleSearch::stopped) {
      stopped = true;
      break;
    }
    const Trl_Assignment& best = *planner.assignment;
    for (int i = 0; i < best.selected.size(); ++i) {
      const int number = best.tx_numbers[i];
      if (best.selected[i] != 0 && number >= 0 && number < results[v].length()) results[v].set(number);
    }
  }
  return v;
}

void Trl_BestSetSearch::run(Trl_Planner& planner) {
  planner.begin_command();
  if (planner.tx_list.empty()) {
    planner.message("No base stations. Nothing to do?");
    planner.end_command();
    return;
  }
  tk::list<Trl_Tx> working;
  const int fixed_count = planner.working_list(working);
  if (fixed_count == working.size()) {
    planner.message("All base stations are fixed. Nothing to do?");
    planner.end_command();
    return;
  }
  const int n = working.size(), tries = planner.search_tries;
  tk::array<Trl_TxBitvector> results(tries);
  for (int v = 0; v < tries; ++v) results[v].resize(n, true);
  bool stopped = false;
  const int v = search_tries(planner, working, fixed_count, results, stopped);

  tk::list<int> priority;
  int average = 0;
  // After a stop the ranking reads the lowest entries, which the tries, filling from the top,
  // have not reached: it then rests on fewer and emptier sets.
  if (!(stopped && v == tries - 1)) average = rank_base_stations(results, tries - v - 1, priority);
  if (priority.empty()) {
    if (!stopped) planner.message("Cannot find better subset of base stations.");
  } else {
    bisection_hooks hooks{[&planner](const tk::list<int>& set) { return validate(planner, set); },
                          [] { return ::stop_requested(); },
                          [&planner](const tk::string& text) { planner.message(text); }};
    planner.mark_set(bisect(priority, average, hooks));
  }
  planner.drop_assignment();
  planner.redraw();
  planner.end_command();
}
