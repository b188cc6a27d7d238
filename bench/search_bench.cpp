// The simple search: the subset walk alone (candidates per second, on a feasibility rule
// that costs nothing), and the whole search loop with the solver (solves per second) beside
// a plain loop that builds a fresh assignment for every subset. allocs_per_candidate counts
// heap allocations inside the candidate loop: 0 for the walk, and 0 for the search loop with
// "Validate Downlink" off (second argument 0); with it on, the solver's downlink step adds its
// own. An improvement allocates for its status text, a rare event.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <streambuf>
#include <new>

#include "lattice_city.h"
#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_Motorola.h"
#include "search/Trl_Assigner.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_HbbWalker.h"
#include "search/Trl_SimpleSearch.h"

// Every heap allocation of the benchmark program is counted, so that a loop can tell how
// many happened inside it.
namespace {
std::atomic<long> allocations{0};
}

// The replacements pair malloc with free, which the compiler can't see through.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t size) {
  ++allocations;
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

// -------------------------------------------------------------------------- walk alone

void BM_Walk(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const int S = static_cast<int>(state.range(1));
  tk::array<int> selected(n);
  long candidates = 0, allocated = 0;
  for (auto _ : state) {
    Trl_HbbWalker walker(n, S, 0);
    const long before = allocations;
    while (walker.next()) {
      int used = 0;
      walker.write(selected, used);
      // Feasible from a third of the positions on, with holes, so that both phases run.
      const bool ok = used >= n / 3 && (selected[used % n] + used) % 3 != 0;
      if (ok) walker.succeeded(); else walker.failed();
      ++candidates;
    }
    allocated += allocations - before;
    benchmark::DoNotOptimize(walker.best_size);
  }
  state.counters["candidates_per_s"] = benchmark::Counter(candidates, benchmark::Counter::kIsRate);
  state.counters["allocs_per_candidate"] = double(allocated) / double(candidates ? candidates : 1);
}
BENCHMARK(BM_Walk)->Args({20, 7})->Args({40, 7})->Args({12, 0})->Unit(benchmark::kMillisecond);

// -------------------------------------------------------------------------- search loop

// Swallows what is written to it, without storing anything.
struct NullBuffer : std::streambuf {
  int overflow(int c) override { return c; }
};

struct SearchBench {
  LatticeCity city;
  Trl_Assignment full;
  SearchBench(int stations, int users, double rate)
      : city(stations, users, rate), full(city.assigner, 0, city.tx) {
    full.select_all();
    full.initial_servers();
    full.solve(true);
    full.accumulate();
  }
};

void BM_SimpleSearch(benchmark::State& state) {
  static SearchBench* benches[2] = {nullptr, nullptr};
  const bool large = state.range(0) == 40;
  SearchBench*& b = benches[large];
  if (!b) b = large ? new SearchBench(40, 2000, 2.0) : new SearchBench(20, 400, 12.2);
  Trl_Assignment best(b->full);
  Trl_Assignment candidate(b->city.assigner, 0, b->city.tx);
  Trl_Assignment* current = &best;
  Trl_SimpleSearch search(&current, 7, state.range(1) != 0);
  long candidates = 0, allocated = 0, polls_base = 0, improvements = 0;
  long alloc_at_first_poll = 0;
  search.show_status = [&](const tk::string&) { ++improvements; };
  search.stop_requested = [&] {
    // Allocation between the first and the last poll of a run: the candidate loop itself.
    if (candidates == polls_base) alloc_at_first_poll = allocations;
    ++candidates;
    return false;
  };
  int result = 0;
  // The "power sum: " line of each improvement would flood the table.
  NullBuffer quiet;
  std::streambuf* former = std::cout.rdbuf(&quiet);
  for (auto _ : state) {
    best = b->full;
    candidate.select_all();  // the walk takes its n from the candidate's count
    polls_base = candidates;
    result = search.hbb_search(0, candidate, 0);
    allocated += allocations - alloc_at_first_poll;
  }
  std::cout.rdbuf(former);
  state.counters["solves_per_s"] = benchmark::Counter(candidates, benchmark::Counter::kIsRate);
  state.counters["candidates_per_run"] =
      double(candidates) / double(state.iterations() ? state.iterations() : 1);
  state.counters["allocs_per_candidate"] = double(allocated) / double(candidates ? candidates : 1);
  // What allocates is an improvement (its status text, the copy into the best), not a candidate.
  state.counters["allocs_per_improvement"] = double(allocated) / double(improvements ? improvements : 1);
  state.counters["best_used"] = best.used;
  state.counters["result"] = result;
}
BENCHMARK(BM_SimpleSearch)->Args({20, 1})->Args({20, 0})->Args({40, 1})->Args({40, 0})->Unit(benchmark::kMillisecond);

// The obvious way: a fresh assignment for every subset, switched on from a list.
void BM_SimpleSearchReference(benchmark::State& state) {
  static SearchBench* benches[2] = {nullptr, nullptr};
  const bool large = state.range(0) == 40;
  SearchBench*& b = benches[large];
  if (!b) b = large ? new SearchBench(40, 2000, 2.0) : new SearchBench(20, 400, 12.2);
  const int n = b->full.tx_count;
  long candidates = 0;
  for (auto _ : state) {
    Trl_Assignment best(b->full);
    Trl_HbbWalker walker(n, 7, 0);
    while (walker.next()) {
      Trl_Assignment fresh(b->city.assigner, 0, b->city.tx);
      tk::list<int> positions;
      for (int k = 0, r = 0; k < n; ++k) {
        if (r < static_cast<int>(walker.removed.size()) && walker.removed[r] == k) ++r;
        else positions.append(k);
      }
      fresh.select(positions);
      if (fresh.solve(best.used >= fresh.used)) {
        walker.succeeded();
        if (fresh.better_than(best, true)) best = fresh;
      } else {
        walker.failed();
      }
      ++candidates;
    }
    benchmark::DoNotOptimize(best.used);
  }
  state.counters["solves_per_s"] = benchmark::Counter(candidates, benchmark::Counter::kIsRate);
}
BENCHMARK(BM_SimpleSearchReference)->Arg(20)->Arg(40)->Unit(benchmark::kMillisecond);

}  // namespace
