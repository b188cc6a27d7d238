// The large city: 2,000 by 2,000 cells of 5 m (10 km square), 144 base stations on a lattice
// and 30,000 users in the streets, made once by celvane-citygen into a folder of the
// benchmarks' own. Each stage beside its plain reference in the same run: the gain table of
// both models, one solve per strategy, a pass that only reads the gains (the memory limit of
// a sweep), one candidate of the simple search, one generation of the genetic search and one
// validation sample of the best-set search. peak_MB is the process's peak resident memory
// after the stage; ratio is a reference row's time over its optimised row's time in the same
// run (CPU time of the benchmark thread), shown when both ran.
#include <benchmark/benchmark.h>
#include <ga/GASStateGA.h>
#include <ga/garandom.h>

#include <chrono>
#include <fstream>
#include <map>
#include <string>
#include <thread>

#include "app/Trl_Planner.h"
#include "citygen_city.h"
#include "propagation/Trl_Motorola.h"
#include "reference_solver.h"
#include "search/MyAlleleGenome.h"
#include "search/Trl_Assigner.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_GaContext.h"
#include "search/Trl_GaSearch.h"
#include "search/Trl_RunningStats.h"
#include "search/Trl_UplinkKernels.h"
#include "timed_solve.h"
#include "toolkit/random_source.h"

namespace {

const int cells = 2000, stations = 144, users = 30000;

std::string large_city_folder() { return citygen_folder("celvane_bench_large_city", cells, 5, stations, users); }

CitygenCity& city() {
  static CitygenCity* c = new CitygenCity(large_city_folder());
  return *c;
}

void per_pair(benchmark::State& state, double pairs, std::chrono::steady_clock::duration spent) {
  const double seconds = std::chrono::duration<double>(spent).count() / static_cast<double>(state.iterations());
  state.counters["s_per_table"] = seconds;
  state.counters["ns_per_pair"] = seconds * 1e9 / pairs;
  state.counters["peak_MB"] = peak_megabytes();
}

// --------------------------------------------------------------------- gain tables

// The simple model's table; argument 1 lets two threads fill it. The timed fills reuse the
// storage, as the planner's one assigner does from its second table on; the first fill,
// which also takes the fresh pages from the system, is shown apart (first_ns_per_pair).
void BM_LargeSimpleTable(benchmark::State& state) {
  CitygenCity& c = city();
  Trl_Motorola model(32.2, 35.1);
  Trl_Assigner assigner;
  Trl_Assigner::parallel_fill = state.range(0) != 0;
  auto fill = [&]() {
    assigner.make_tables(c.tx, c.rx, Trl_Assigner::parameters());
    assigner.fill_path_gains(c.tx, c.rx, model);
    benchmark::DoNotOptimize(assigner.path_gain.row(0)[0]);
  };
  const auto first = std::chrono::steady_clock::now();
  fill();
  const std::chrono::duration<double> first_fill = std::chrono::steady_clock::now() - first;
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) fill();
  Trl_Assigner::parallel_fill = true;
  per_pair(state, c.pairs(), std::chrono::steady_clock::now() - start);
  state.counters["first_ns_per_pair"] = first_fill.count() * 1e9 / c.pairs();
}
BENCHMARK(BM_LargeSimpleTable)->Arg(0)->Arg(1)->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);

// The plain reference: the model's gain() per pair into a table of rows.
void BM_LargeSimpleTableReference(benchmark::State& state) {
  CitygenCity& c = city();
  Trl_Motorola model(32.2, 35.1);
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    std::vector<std::vector<double>> gain(c.tx.size(), std::vector<double>(c.rx.size()));
    int t = 0;
    for (const Trl_Tx& tx : c.tx) {
      for (const Trl_Rx& rx : c.rx) gain[t][rx.number] = model.gain(tx, rx);
      ++t;
    }
    benchmark::DoNotOptimize(gain[0].data());
  }
  per_pair(state, c.pairs(), std::chrono::steady_clock::now() - start);
}
BENCHMARK(BM_LargeSimpleTableReference)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

// The Xia-Bertoni table in angular order on the given number of threads (0: the machine's).
void BM_LargeXiaBertoniTable(benchmark::State& state) {
  CitygenCity& c = city();
  if (!c.terrain->loaded()) return state.SkipWithError("no large city");
  Trl_XiaBertoni m = c.urban();
  Trl_Assigner assigner;
  const int threads = static_cast<int>(state.range(0));
  Trl_Assigner::terrain_fill_threads = threads ? threads : static_cast<int>(std::thread::hardware_concurrency());
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    assigner.make_tables(c.tx, c.rx, Trl_Assigner::parameters());
    assigner.fill_path_gains_in_angular_order(c.tx, c.rx, m, *c.terrain, Trl_Assigner::status_function());
    benchmark::DoNotOptimize(assigner.path_gain.row(0)[0]);
  }
  Trl_Assigner::terrain_fill_threads = 1;
  per_pair(state, c.pairs(), std::chrono::steady_clock::now() - start);
}
BENCHMARK(BM_LargeXiaBertoniTable)->Arg(1)->Arg(2)->Arg(0)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

// The plain reference: the same model pair by pair, users in list order.
void BM_LargeXiaBertoniTableReference(benchmark::State& state) {
  CitygenCity& c = city();
  if (!c.terrain->loaded()) return state.SkipWithError("no large city");
  Trl_XiaBertoni m = c.urban();
  Trl_Assigner assigner;
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    assigner.make_tables(c.tx, c.rx, Trl_Assigner::parameters());
    assigner.fill_path_gains(c.tx, c.rx, m);
    benchmark::DoNotOptimize(assigner.path_gain.row(0)[0]);
  }
  per_pair(state, c.pairs(), std::chrono::steady_clock::now() - start);
}
BENCHMARK(BM_LargeXiaBertoniTableReference)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

// Two fills of the rows above taken in turn, five rounds, each with a new model as above and
// each going first in every other round: on a shared machine whose speed drifts from second
// to second, fills next to each other see the same machine. Fills: 0 the plain loop, 1 the
// angular order on one thread, 2 on the machine's threads. Reports the fastest of each (ms),
// the ratio of the fastest (`against` over `fill`), and the least and greatest ratio of one
// round.
void BM_LargeXiaBertoniSideBySide(benchmark::State& state) {
  CitygenCity& c = city();
  if (!c.terrain->loaded()) return state.SkipWithError("no large city");
  Trl_Assigner assigner;
  auto timed = [&](int way) {
    Trl_XiaBertoni m = c.urban();
    Trl_Assigner::terrain_fill_threads = way == 2 ? static_cast<int>(std::thread::hardware_concurrency()) : 1;
    const auto start = std::chrono::steady_clock::now();
    assigner.make_tables(c.tx, c.rx, Trl_Assigner::parameters());
    if (way > 0) assigner.fill_path_gains_in_angular_order(c.tx, c.rx, m, *c.terrain, Trl_Assigner::status_function());
    else assigner.fill_path_gains(c.tx, c.rx, m);
    benchmark::DoNotOptimize(assigner.path_gain.row(0)[0]);
    Trl_Assigner::terrain_fill_threads = 1;
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  };
  const int fill = static_cast<int>(state.range(0)), against = static_cast<int>(state.range(1));
  double fill_ms = 1e300, against_ms = 1e300, least = 1e300, greatest = 0;
  int round = 0;
  for (auto _ : state) {
    const bool against_first = round++ % 2 == 0;
    const double first = timed(against_first ? against : fill), second = timed(against_first ? fill : against);
    const double a = against_first ? first : second, f = against_first ? second : first;
    against_ms = std::min(against_ms, a);
    fill_ms = std::min(fill_ms, f);
    least = std::min(least, a / f);
    greatest = std::max(greatest, a / f);
  }
  state.counters["fill_ms"] = fill_ms;
  state.counters["against_ms"] = against_ms;
  state.counters["ratio"] = against_ms / fill_ms;
  state.counters["round_ratio_low"] = least;
  state.counters["round_ratio_high"] = greatest;
}
BENCHMARK(BM_LargeXiaBertoniSideBySide)
    ->ArgNames({"fill", "against"})
    ->Args({1, 0})
    ->Args({2, 1})
    ->Iterations(5)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

// --------------------------------------------------------------------- solve

// The solver on the simple model's table (prepared once, not timed).
Trl_Assigner& prepared(int strategy) {
  static Trl_Assigner* assigner = nullptr;
  if (!assigner) {
    assigner = new Trl_Assigner;
    Trl_Assigner::parameters p;
    p.validate_downlink = false;
    Trl_Motorola model(32.2, 35.1);
    assigner->prepare(city().tx, city().rx, p, model);
  }
  assigner->set_strategy(strategy);
  return *assigner;
}

void sweep_counters(benchmark::State& state, double sweeps, double rows, double n) {
  state.counters["sweeps"] = sweeps;
  state.counters["ns_per_user_row_sweep"] = benchmark::Counter(
      rows * n * sweeps / 1e9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  state.counters["peak_MB"] = peak_megabytes();
}

// One solve with every station on; argument 2 chooses the loops of the solver (Wide_loops).
void BM_LargeSolve(benchmark::State& state) {
  Trl_Assigner& assigner = prepared(static_cast<int>(state.range(0)));
  const Wide_loops loops(state.range(1));
  Trl_Assignment a(assigner, 0, city().tx);
  a.select_all();
  a.initial_servers();
  Trl_RunningStats stats;
  const bool ok = solve_each_iteration(state, a, stats);
  sweep_counters(state, ok ? stats.sum : assigner.max_iterations, assigner.tx_count, assigner.rx_count);
  if (!ok) state.SkipWithError("no solution");
}
BENCHMARK(BM_LargeSolve)
    ->Args({0, 2})->Args({0, 1})->Args({0, 0})->Args({1, 2})->Args({1, 1})->Args({2, 2})->Args({2, 0})->Args({3, 2})
    ->UseRealTime()->Unit(benchmark::kMillisecond);

// The obvious simultaneous iteration (the in-sequence one is quadratic in the users).
void BM_LargeSolveReference(benchmark::State& state) {
  Trl_Assigner& assigner = prepared(0);
  ReferenceSolver reference(assigner);
  int sweeps = 0;
  for (auto _ : state) {
    sweeps = reference.solve(false);
    benchmark::DoNotOptimize(sweeps);
  }
  sweep_counters(state, sweeps, assigner.tx_count, assigner.rx_count);
  if (sweeps < 0) state.SkipWithError("no solution");
}
BENCHMARK(BM_LargeSolveReference)->Iterations(1)->Unit(benchmark::kMillisecond);

// The memory limit of a sweep: one pass that only reads every gain of the table once, on one
// thread or, as the two-thread sweep does, on two with half the rows each.
void BM_LargeGainRead(benchmark::State& state) {
  Trl_Assigner& assigner = prepared(0);
  const int threads = static_cast<int>(state.range(0));
  auto read_rows = [&assigner](int first, int end) {
    double s[8] = {0, 0, 0, 0, 0, 0, 0, 0};  // independent sums, so that memory is the limit
    for (int t = first; t < end; ++t) {
      const double* g = assigner.path_gain.row(t);
      for (int r = 0; r + 8 <= assigner.rx_count; r += 8)
        for (int k = 0; k < 8; ++k) s[k] += g[r + k];
    }
    benchmark::DoNotOptimize(s);
  };
  const int half = assigner.tx_count / 2;
  for (auto _ : state) {
    if (threads == 1) {
      read_rows(0, assigner.tx_count);
    } else {
      std::thread other(read_rows, half, assigner.tx_count);
      read_rows(0, half);
      other.join();
    }
  }
  sweep_counters(state, 1, assigner.tx_count, assigner.rx_count);
}
BENCHMARK(BM_LargeGainRead)->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);

// --------------------------------------------------------------------- ratios

// Per-unit CPU seconds of each optimised row measured so far in this run, by stage.
std::map<std::string, double>& optimised_seconds() {
  static std::map<std::string, double> seconds;
  return seconds;
}

// The optimised row notes its time; a reference row gets its ratio to it, when it ran.
void note_optimised(benchmark::State& state, const std::string& stage, double seconds) {
  optimised_seconds()[stage] = seconds;
  state.counters["ratio"] = 1;
}
void ratio_counter(benchmark::State& state, const std::string& stage, double seconds) {
  const auto found = optimised_seconds().find(stage);
  if (found != optimised_seconds().end() && found->second > 0) state.counters["ratio"] = seconds / found->second;
}

// --------------------------------------------------------------------- simple search candidate

// A candidate of the simple search as its loop makes it: the walk's subset with the positions
// below `removed` switched off (1: all but one station; 72: half of them, the walk's first
// candidate), written into a candidate kept between subsets and solved with the downlink
// step off, strategy 0. Argument 2 is 0 for the plain loops of the solver. sweeps counts
// those to convergence, 0 for an infeasible candidate (which stops after the first sweep
// that leaves a user over its limit).
void BM_LargeCandidate(benchmark::State& state) {
  Trl_Assigner& assigner = prepared(0);
  const int removed = static_cast<int>(state.range(0));
  const bool wide = state.range(1) != 0;
  Trl_Assignment candidate(assigner, 0, city().tx);
  Trl_UplinkKernels::enabled = wide;
  Trl_RunningStats stats;
  bool ok = false;
  const double start = thread_seconds();
  for (auto _ : state) {
    // What Trl_HbbWalker::write makes of the removed positions 0 to removed - 1.
    for (int k = 0; k < candidate.tx_count; ++k) candidate.selected[k] = k >= removed;
    candidate.used = candidate.tx_count - removed;
    stats = Trl_RunningStats();
    ok = candidate.solve(false, &stats);
    benchmark::DoNotOptimize(candidate.rx_uplink[0]);
  }
  const double seconds = (thread_seconds() - start) / static_cast<double>(state.iterations());
  Trl_UplinkKernels::enabled = true;
  const std::string stage = "candidate/" + std::to_string(removed);
  if (wide) note_optimised(state, stage, seconds);
  else ratio_counter(state, stage, seconds);
  state.counters["ms_per_candidate"] = seconds * 1e3;
  state.counters["used"] = candidate.used;
  state.counters["feasible"] = ok;
  state.counters["sweeps"] = ok ? stats.sum : 0;
  state.counters["peak_MB"] = peak_megabytes();
}
BENCHMARK(BM_LargeCandidate)->Args({1, 1})->Args({1, 0})->Args({72, 1})->Args({72, 0})->Unit(benchmark::kMillisecond);

// The same candidate by the obvious simultaneous iteration.
void BM_LargeCandidateReference(benchmark::State& state) {
  Trl_Assigner& assigner = prepared(0);
  const int removed = static_cast<int>(state.range(0));
  ReferenceSolver reference(assigner);
  reference.rows.clear();
  for (int k = removed; k < assigner.tx_count; ++k) reference.rows.push_back(k);
  int sweeps = 0;
  const double start = thread_seconds();
  for (auto _ : state) {
    sweeps = reference.solve(false);
    benchmark::DoNotOptimize(sweeps);
  }
  const double seconds = (thread_seconds() - start) / static_cast<double>(state.iterations());
  ratio_counter(state, "candidate/" + std::to_string(removed), seconds);
  state.counters["ms_per_candidate"] = seconds * 1e3;
  state.counters["used"] = static_cast<double>(reference.rows.size());
  state.counters["feasible"] = sweeps > 0;
  state.counters["sweeps"] = sweeps > 0 ? sweeps : 0;
  state.counters["peak_MB"] = peak_megabytes();
}
BENCHMARK(BM_LargeCandidateReference)->Arg(1)->Arg(72)->Iterations(1)->Unit(benchmark::kMillisecond);

// --------------------------------------------------------------------- genetic generation

// Objective calls and their CPU seconds, for the solver's share of a generation.
double objective_seconds = 0;
long objective_calls = 0;

float timed_objective(GAGenome& genome) {
  const double start = thread_seconds();
  const float score = MyAlleleGenome::Objective(genome);
  objective_seconds += thread_seconds() - start;
  ++objective_calls;
  return score;
}

// The started algorithm with the counting objective: setting an objective marks every genome
// as not evaluated, so the population is evaluated again here (the same scores), and a step
// then evaluates only the genomes it makes.
struct CountedGa : GASteadyStateGA {
  explicit CountedGa(const GASteadyStateGA& started) : GASteadyStateGA(started) {
    objectiveFunction(timed_objective);
    pop->evaluate(gaTrue);
  }
};

// The genetic search on the large city after its start, as the command sets it up (steady
// state, 30 genomes, the expert initialiser, mutation 1 / (1.5 n)), strategy 0 and the
// downlink step off. The start (the initialiser's bisection and the first population) is not
// timed and is made once: each generation measured steps a copy of it with the library's
// generator reset, so that every row and every iteration steps the same generation.
struct GaStart {
  Trl_Assignment candidate;
  Trl_GaContext::Scope scope;
  Trl_GaSearch search;
  CountedGa* started = nullptr;
  GaStart() : candidate(prepared(0), 0, city().tx), scope(candidate, false) {
    search.mutation_probability = 1 / (1.5f * city().tx.size());
    Trl_GaSearch::fix_seed(1);
    GAGeneticAlgorithm* ga = nullptr;
    search.start(ga, city().tx);
    started = new CountedGa(*static_cast<GASteadyStateGA*>(ga));
    delete ga;
  }
};

// One generation; argument 0 is 1 for the wide loops, 0 for the plain ones.
void BM_LargeGaGeneration(benchmark::State& state) {
  prepared(0);
  static GaStart* start = new GaStart;
  const bool wide = state.range(0) != 0;
  GASteadyStateGA generation(*start->started);
  Trl_UplinkKernels::enabled = wide;
  double seconds = 0, solver = 0;
  long calls = 0, first_calls = -1;
  float best = 0;
  bool same = true;
  for (auto _ : state) {
    state.PauseTiming();
    generation.copy(*start->started);
    GAResetRNG(7);
    objective_seconds = 0;
    objective_calls = 0;
    state.ResumeTiming();
    const double begin = thread_seconds();
    generation.step();
    seconds += thread_seconds() - begin;
    solver += objective_seconds;
    // Every copy steps the same generation: the same evaluations and the same best.
    const float score = generation.statistics().bestIndividual().score();
    if (first_calls < 0) {
      best = score;
      first_calls = objective_calls;
    }
    same = same && score == best && objective_calls == first_calls;
    calls += objective_calls;
  }
  Trl_UplinkKernels::enabled = true;
  const double n = static_cast<double>(state.iterations());
  seconds /= n;
  if (wide) note_optimised(state, "generation", seconds);
  else ratio_counter(state, "generation", seconds);
  state.counters["ms_per_generation"] = seconds * 1e3;
  state.counters["solves_per_generation"] = calls / n;
  state.counters["solver_share"] = seconds > 0 ? solver / n / seconds : 0;
  state.counters["best_score"] = best;
  state.counters["peak_MB"] = peak_megabytes();
  if (!same) state.SkipWithError("the copies stepped different generations");
}
BENCHMARK(BM_LargeGaGeneration)->Arg(1)->Arg(0)->Iterations(5)->Unit(benchmark::kMillisecond);

// --------------------------------------------------------------------- best-set validation sample

// The planner as the best-set search leaves it for a validation: the large city's terrain and
// stations (read with the program's values and order), 30,000 users drawn uniformly in its
// streets, and the prefix of all stations to validate. With the program's user values no
// sample is served: at 12.2 kbit/s up the uplink fails for 30,000 users (about 210 per
// station), and with "Validate Downlink" on the downlink step fails with every station on
// already for samples of 400 users (two samples of 200 passed). So, as in every other
// large-city stage, users send 1.2 kbit/s up and the downlink step is off; then every sample
// is served.
struct SamplePlanner {
  Trl_Planner p;
  tk::list<Trl_Tx> local;
  tk::list<int> prefix;
  SamplePlanner() {
    p.terrain = city().terrain;
    p.terrain->add_reference();
    std::ifstream records(large_city_folder() + "/bs.dtx");
    tk::point low, high;
    Trl_Tx::read_list(records, p.tx_template(), p.tx_list, low, high);
    tk::list<Trl_Tx> working;
    p.working_list(working);
    for (const Trl_Tx& tx : p.tx_list) {
      if (tx.status == Trl_Tx::excluded) break;
      local.append(tx);
    }
    for (int k = 0; k < local.size(); ++k) prefix.append(k);
    const Trl_Grid& g = p.terrain->height_grid();
    p.rx_region = Trl_RandomRegion(g.x0, g.x1, g.y0, g.y1, users);
    p.only_in_street = true;
    p.rate_up = 1.2;
    p.validate_downlink = false;
  }
  // The users of sample k, the same in every row.
  void draw(int k) {
    p.rx_region.x_source = tk::random_source(1000 + k);
    p.rx_region.y_source = tk::random_source(2000 + k);
    p.generate_users();
  }
};

SamplePlanner& sample_planner() {
  static SamplePlanner* s = new SamplePlanner;
  return *s;
}

struct SampleClock {
  double cpu = 0, wall = 0, uplink = 0;
  int served = 0;
  // kind: 0 the optimised row, 1 a row compared with it, 2 neither (more than one thread).
  void counters(benchmark::State& state, const std::string& stage, int kind) {
    const double n = static_cast<double>(state.iterations());
    if (kind == 0) note_optimised(state, stage, cpu / n);
    else if (kind == 1) ratio_counter(state, stage, cpu / n);
    state.counters["ms_per_sample"] = wall / n * 1e3;
    state.counters["cpu_ms_per_sample"] = cpu / n * 1e3;
    state.counters["served"] = served / n;
    state.counters["uplink_W"] = served ? uplink / served : 0;
    state.counters["peak_MB"] = peak_megabytes();
  }
};

// One sample as the validation makes it: the table of the Xia-Bertoni model in angular order,
// the prefix selected, the power equations solved. Drawing the users is not timed. Arguments:
// fill threads (1 or 2) and 1 for the wide loops, 0 for the plain ones. ms_per_sample is the
// wall time, cpu_ms_per_sample the benchmark thread's; the ratio is on the latter.
void BM_LargeBestSetSample(benchmark::State& state) {
  SamplePlanner& s = sample_planner();
  Trl_Planner& p = s.p;
  const int threads = static_cast<int>(state.range(0));
  const bool wide = state.range(1) != 0;
  Trl_Assigner::terrain_fill_threads = threads;
  Trl_UplinkKernels::enabled = wide;
  SampleClock clock;
  int k = 0;
  for (auto _ : state) {
    state.PauseTiming();
    s.draw(k++);
    state.ResumeTiming();
    const double cpu = thread_seconds();
    const auto wall = std::chrono::steady_clock::now();
    p.prepare_assignment(s.local);
    p.assignment->select(s.prefix);
    const bool ok = p.solve_current(nullptr);
    clock.cpu += thread_seconds() - cpu;
    clock.wall += std::chrono::duration<double>(std::chrono::steady_clock::now() - wall).count();
    if (ok) {
      ++clock.served;
      p.assignment->accumulate();
      clock.uplink += p.assignment->uplink_sum;
    }
  }
  Trl_Assigner::terrain_fill_threads = 1;
  Trl_UplinkKernels::enabled = true;
  clock.counters(state, "sample", threads != 1 ? 2 : wide ? 0 : 1);
}
BENCHMARK(BM_LargeBestSetSample)->Args({1, 1})->Args({2, 1})->Args({1, 0})->Iterations(2)->UseRealTime()->Unit(benchmark::kMillisecond);

// The same samples the plain way: the model pair by pair with the users in list order, one
// thread, and the plain loops of the solver.
void BM_LargeBestSetSampleReference(benchmark::State& state) {
  SamplePlanner& s = sample_planner();
  Trl_Planner& p = s.p;
  Trl_Assigner assigner;
  Trl_Assigner::parameters settings;
  settings.tolerance = p.tolerance;
  settings.max_iterations = p.max_iterations;
  settings.validate_downlink = p.validate_downlink;
  settings.strategy = p.solver_strategy;
  settings.bandwidth = p.bandwidth;
  settings.temperature = p.temperature;
  tk::list<Trl_Tx> placed;  // the angular fill gives each station its cell; here by hand
  for (Trl_Tx tx : s.local) {
    tx.set_cell(p.terrain->height_grid());
    placed.append(tx);
  }
  Trl_UplinkKernels::enabled = false;
  SampleClock clock;
  int k = 0;
  for (auto _ : state) {
    state.PauseTiming();
    s.draw(k++);
    state.ResumeTiming();
    const double cpu = thread_seconds();
    const auto wall = std::chrono::steady_clock::now();
    p.choose_model();
    assigner.make_tables(placed, p.rx_list, settings);
    assigner.fill_path_gains(placed, p.rx_list, *p.model);
    assigner.fill_targets_and_noise(placed, p.rx_list, settings);
    Trl_Assignment a(assigner, p.rx_objective, placed);
    a.initial_servers();
    a.select(s.prefix);
    const bool ok = a.solve(p.validate_downlink);
    clock.cpu += thread_seconds() - cpu;
    clock.wall += std::chrono::duration<double>(std::chrono::steady_clock::now() - wall).count();
    if (ok) {
      ++clock.served;
      a.accumulate();
      clock.uplink += a.uplink_sum;
    }
  }
  Trl_UplinkKernels::enabled = true;
  clock.counters(state, "sample", 1);
}
BENCHMARK(BM_LargeBestSetSampleReference)->Iterations(2)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
