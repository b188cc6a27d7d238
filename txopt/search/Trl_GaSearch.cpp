#include "search/Trl_GaSearch.h"

#include <ga/GAIncGA.h>
#include <ga/GASStateGA.h>
#include <ga/GAScaling.h>
#include <ga/GASelector.h>
#include <ga/GASimpleGA.h>
#include <ga/garandom.h>

#include <iostream>

#include "app/Trl_Planner.h"
#include "network/Trl_Tx.h"
#include "search/MyAlleleGenome.h"
#include "search/MyOperators.h"
#include "search/MyPopulation.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_GaContext.h"
#include "search/Trl_SimpleSearch.h"
#include "search/Trl_TxMap.h"
#include "toolkit/window.h"

Trl_GaSearch ga_search;

namespace {

GABoolean never_done(GAGeneticAlgorithm&) { return gaFalse; }

const char* const algorithm_lines[3] = {"\n Steady State Genetic Algorithm\n",
                                        "\n Simple Genetic Algorithm",
                                        "\n Incremental Genetic Algorithm"};
const char* const replacement_names[4] = {"Worst", "Random", "Parent", "Best"};
const GAIncrementalGA::ReplacementScheme replacement_schemes[4] = {
    GAIncrementalGA::WORST, GAIncrementalGA::RANDOM, GAIncrementalGA::PARENT,
    GAIncrementalGA::BEST};
const char* const scaling_names[5] = {"None", "Linear", "Sigma truncation", "Power law",
                                      "Sharing"};
const char* const selection_names[6] = {"Rank",
                                        "Roulette wheel",
                                        "Tournament",
                                        "Deterministic sampling",
                                        "Stochastic remainder sampling",
                                        "Stochastic uniform sampling"};

const char* name_of(const char* const* names, int count, int number) {
  return number >= 0 && number < count ? names[number] : "";
}

}  // namespace

void Trl_GaSearch::fix_seed(long seed) {
  // The library reads a seed of 0 as "from the clock", so 0 is handed on as 1.
  GARandomSeed(seed == 0 ? 1u : static_cast<unsigned int>(seed));
}

void Trl_GaSearch::start(GAGeneticAlgorithm*& algorithm_out, const tk::list<Trl_Tx>& tx_list) {
  trace("\n Searching map ...\n");
  Trl_TxMap map(tx_list, nullptr);
  map.build(false);
  // With the expert initialiser the genomes keep the uniform one, which the population's
  // initialiser never calls.
  GAGenome::Initializer genome_initializer =
      initializer == 0 ? MyAlleleGenome::UniformInitializer : nullptr;
  MyPopulation population(map.cells, map.tx_cells(), population_size, genome_initializer,
                          MyOperators::crossover(crossover), MyOperators::mutator(mutator));
  population.order(GAPopulation::LOW_IS_BEST);
  if (initializer == 1) population.initializer(MyAlleleGenome::ExpertInitializer);
  algorithm_out = make_algorithm(population);
  set_parameters(*algorithm_out);
  set_schemes(*algorithm_out);
  set_termination(*algorithm_out);
  algorithm_out->minimize();
  print_parameters();
  trace("Initalizing population...");
  // Seed 0 leaves the generator as it is once seeded: from the clock in the program, fixed
  // by fix_seed in batch runs and tests.
  algorithm_out->initialize(0);
}

GAGeneticAlgorithm* Trl_GaSearch::make_algorithm(const GAPopulation& population) const {
  if (algorithm == 1) {
    GASimpleGA* simple = new GASimpleGA(population);
    simple->set(gaNelitism, static_cast<int>(elitist ? gaTrue : gaFalse));
    return simple;
  }
  if (algorithm == 2) {
    GAIncrementalGA* incremental = new GAIncrementalGA(population);
    incremental->nOffspring(offspring);
    if (replacement >= 0 && replacement < 4) incremental->replacement(replacement_schemes[replacement]);
    return incremental;
  }
  GASteadyStateGA* steady = new GASteadyStateGA(population);
  if (replacement_mode == 0)
    steady->nReplacement(replacements);
  else
    steady->pReplacement(replacement_percentage);
  return steady;
}

// The parameter names of GAlib 2.4.7 are those of 2.4.5 for everything set here.
void Trl_GaSearch::set_parameters(GAGeneticAlgorithm& ga) const {
  ga.set(gaNpMutation, static_cast<double>(mutation_probability));
  ga.set(gaNpCrossover, static_cast<double>(crossover_probability));
  ga.set(gaNscoreFilename, score_filename.cstring());
  ga.set(gaNscoreFrequency, 1);
  if (!record_statistics) {
    ga.set(gaNflushFrequency, 0);  // no statistics file
    return;
  }
  ga.set(gaNflushFrequency, flush_frequency);
  ga.nBestGenomes(best_genomes);
  ga.set(gaNselectScores, static_cast<int>(GAStatistics::AllScores));
  if (record_diversity) ga.set(gaNrecordDiversity, 1);
}

void Trl_GaSearch::set_schemes(GAGeneticAlgorithm& ga) const {
  switch (scaling) {
    case 0: ga.scaling(GANoScaling()); break;
    case 1: ga.scaling(GALinearScaling(1.2f)); break;
    case 2: ga.scaling(GASigmaTruncationScaling(2.0f)); break;
    case 3: ga.scaling(GAPowerLawScaling(1.0005f)); break;
    case 4: ga.scaling(GASharing(MyAlleleGenome::Comparator, 1.0f, 1.0f)); break;
    default: break;
  }
  switch (selection) {
    case 0: ga.selector(GARankSelector()); break;
    case 1: ga.selector(GARouletteWheelSelector()); break;
    case 2: ga.selector(GATournamentSelector()); break;
    case 3: ga.selector(GADSSelector()); break;
    case 4: ga.selector(GASRSSelector()); break;
    case 5: ga.selector(GAUniformSelector()); break;
    default: break;
  }
}

void Trl_GaSearch::set_termination(GAGeneticAlgorithm& ga) const {
  switch (termination) {
    case 0:
      ga.terminator(GAGeneticAlgorithm::TerminateUponGeneration);
      ga.set(gaNnGenerations, generations);
      break;
    case 1:
      ga.terminator(GAGeneticAlgorithm::TerminateUponConvergence);
      ga.set(gaNpConvergence, static_cast<double>(convergence_percentage));
      ga.set(gaNnConvergence, convergence_generations + 1);
      break;
    case 2:
      ga.terminator(GAGeneticAlgorithm::TerminateUponPopConvergence);
      ga.set(gaNpConvergence, static_cast<double>(convergence_percentage));
      break;
    default:
      ga.terminator(never_done);
      break;
  }
}

void Trl_GaSearch::print_parameters() {
  if (!trace_window) return;
  trace(name_of(algorithm_lines, 3, algorithm));
  if (algorithm == 1)
    trace(elitist ? "  elitist = true" : "  elitist = false");
  else if (algorithm == 2)
    trace(tk::string("  replacement strategy = %s", name_of(replacement_names, 4, replacement)));
  else if (replacement_mode == 0)
    trace(tk::string("  replacements number = %d\n", replacements));
  else
    trace(tk::string("  replacement percentage = %g\n", replacement_percentage));
  trace(initializer == 0 ? "  initializer = UniformInitializer" : "  initializer = ExpertInitializer");
  trace(tk::string("  crossover = %s", name_of(MyOperators::crossover_names, 6, crossover)));
  trace(tk::string("  mutator = %s", name_of(MyOperators::mutator_names, 3, mutator)));
  trace(tk::string("  initial population size = %d", population_size));
  trace(tk::string("  crossover probability = %g", crossover_probability));
  trace(tk::string("  mutation probability = %g", mutation_probability));
  trace(tk::string("  scaling scheme = %s", name_of(scaling_names, 5, scaling)));
  trace(tk::string("  selection scheme = %s", name_of(selection_names, 6, selection)));
  if (termination == 0)
    trace(tk::string("  termination criterium = Upon generation %d", generations));
  else if (termination == 1)
    trace(tk::string("  termination criterium =  Upon convergence %g", convergence_percentage));
  else if (termination == 2)
    trace(tk::string("  termination criterium = Upon population convergence %g",
                     convergence_percentage));
  else
    trace("  termination criterium = None");
}

// Each line of the text below the last, from the top left of the trace window.
void Trl_GaSearch::trace(const tk::string& text) {
  if (!trace_window) return;
  const std::string all(text.cstring());
  const double line_height = 14 / trace_window->pixels_per_unit();
  size_t from = 0;
  for (;;) {
    const size_t end = all.find('\n', from);
    const std::string line = all.substr(from, end == std::string::npos ? end : end - from);
    ++trace_lines;
    trace_window->draw_text(trace_window->xmin(), trace_window->ymax() - trace_lines * line_height,
                            tk::string(line.c_str()));
    if (end == std::string::npos) break;
    from = end + 1;
  }
}

int Trl_GaSearch::run(Trl_Assignment& candidate, const tk::list<Trl_Tx>& tx_list,
                      int try_number) {
  return run(Trl_SimpleSearch::for_planner(planner), candidate, tx_list, try_number);
}

int Trl_GaSearch::run(const Trl_SimpleSearch& frame, Trl_Assignment& candidate,
                      const tk::list<Trl_Tx>& tx_list, int try_number) {
  Trl_GaContext::Scope scope(candidate, frame.validate_downlink);
  GAGeneticAlgorithm* ga = nullptr;
  start(ga, tx_list);
  int result = Trl_SimpleSearch::improved_or_finished;
  // At least one step, whatever the termination says.
  for (int generation = 0; generation == 0 || !ga->done();) {
    if (frame.stop_requested()) {
      result = Trl_SimpleSearch::stopped;
      break;
    }
    ga->step();
    ++generation;
    offer_best(frame, *ga, candidate, generation, try_number);
  }
  delete ga;
  return result;
}

// The best genome so far is solved only when it could match the best assignment's size.
void Trl_GaSearch::offer_best(const Trl_SimpleSearch& frame, const GAGeneticAlgorithm& ga,
                              Trl_Assignment& candidate, int generation, int try_number) const {
  const MyAlleleGenome& genome =
      static_cast<const MyAlleleGenome&>(ga.statistics().bestIndividual());
  int count = 0;
  genome.decode_into(candidate.selected, count);
  Trl_Assignment& best = **frame.best;
  if (count <= 0 || count > best.used) return;
  candidate.used = count;
  if (candidate.solve(frame.validate_downlink) && candidate.better_than(best, true)) {
    best = candidate;
    std::cout << "power sum: " << best.uplink_sum << std::endl;
    frame.redraw();
  }
  frame.show_status(best_status(try_number, best.used, best.uplink_sum, generation));
}

tk::string Trl_GaSearch::best_status(int try_number, int used, double uplink_sum,
                                     int generation) {
  if (try_number != 0)
    return tk::string(" (%d) Best assignment: %d Tx, %e [W] (%d generations).", try_number, used,
                      uplink_sum, generation);
  return tk::string(" Best assignment: %d Tx, %e [W] (%d generations).", used, uplink_sum,
                    generation);
}
