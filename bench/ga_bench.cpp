// One generation of the genetic search for each algorithm kind (0 steady state, 1 simple,
// 2 incremental) on 40 base stations by 2,000 users: solves per second, genomes evaluated per
// generation, and the share of the generation's time spent in the objective (the solver)
// against GAlib's own bookkeeping. Set-up, with the expert initialiser's bisection, is not
// timed. Compare solves_per_s with BM_SimpleSearch/40.
#include <benchmark/benchmark.h>

#include <ga/GABaseGA.h>

#include <chrono>
#include <cmath>

#include "lattice_city.h"
#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_Motorola.h"
#include "search/MyAlleleGenome.h"
#include "search/Trl_Assigner.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_GaContext.h"
#include "search/Trl_GaSearch.h"

namespace {

double objective_seconds = 0;
long objective_calls = 0;

float timed_objective(GAGenome& genome) {
  const auto start = std::chrono::steady_clock::now();
  const float score = MyAlleleGenome::Objective(genome);
  objective_seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  ++objective_calls;
  return score;
}

void BM_GaGeneration(benchmark::State& state) {
  static LatticeCity* city = new LatticeCity(40, 2000, 2.0);
  Trl_Assignment candidate(city->assigner, 0, city->tx);
  Trl_GaContext::Scope scope(candidate, true);
  Trl_GaSearch search;
  search.algorithm = static_cast<int>(state.range(0));
  search.mutation_probability = 1 / (1.5f * 40);
  Trl_GaSearch::fix_seed(1);
  GAGeneticAlgorithm* ga = nullptr;
  search.start(ga, city->tx);
  ga->objectiveFunction(timed_objective);
  objective_seconds = 0;
  objective_calls = 0;
  double total = 0;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    ga->step();
    total += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  const double generations = double(state.iterations() ? state.iterations() : 1);
  state.counters["solves_per_s"] = objective_calls / (objective_seconds > 0 ? objective_seconds : 1);
  state.counters["evaluated_per_generation"] = objective_calls / generations;
  state.counters["solver_share"] = total > 0 ? objective_seconds / total : 0;
  state.counters["galib_share"] = total > 0 ? 1 - objective_seconds / total : 0;
  delete ga;
}
BENCHMARK(BM_GaGeneration)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

}  // namespace
