// Trl_GaSearch: the parameter record of the genetic search and the search itself. One
// instance, `ga_search`, lives for the whole program; "Search parameters" edits its
// generations and population size, the other fields keep their defaults (the search command
// sets the mutation probability before each run). start() sets up a GAlib algorithm on the
// compacted base station map; run() steps it generation by generation and offers the best
// genome to the application's best assignment.
#pragma once

#include "toolkit/list.h"
#include "toolkit/string.h"

namespace tk {
class window;
}
class GAGeneticAlgorithm;
class GAPopulation;
class Trl_Assignment;
class Trl_SimpleSearch;
class Trl_Tx;

class Trl_GaSearch {
 public:
  int algorithm = 0;  // 0 steady state, 1 simple, 2 incremental
  float mutation_probability = 0.05f;
  int mutator = 1;
  float crossover_probability = 0.9f;
  int crossover = 4;
  int population_size = 30;  // "Population size: "
  int initializer = 1;       // 0 uniform, 1 expert
  int termination = 0;
  int generations = 100;  // "Number of generations: "
  float convergence_percentage = 0.95f;
  int convergence_generations = 1;
  int scaling = 1;
  int selection = 1;
  bool record_statistics = false;
  tk::string score_filename = "statistics.ga";
  int flush_frequency = 10;
  int best_genomes = 1;
  bool record_diversity = false;
  int offspring = 2;    // children per step of the incremental algorithm
  int replacement = 0;  // incremental: 0 worst, 1 random, 2 parent, 3 best
  bool elitist = true;  // simple algorithm
  int replacement_mode = 1;  // steady state: 0 by number, otherwise by percentage
  int replacements = 10;
  float replacement_percentage = 0.1f;
  tk::window* trace_window = nullptr;  // where the parameter lines go; none by default

  // Builds the map of the working list, the population and the algorithm, and initialises it
  // (which evaluates the first population). The caller owns the algorithm. Needs the
  // candidate installed by Trl_GaContext::Scope.
  void start(GAGeneticAlgorithm*& algorithm, const tk::list<Trl_Tx>& tx_list);
  // The search on the planner: returns 2 when the algorithm is done, 4 when stopped.
  int run(Trl_Assignment& candidate, const tk::list<Trl_Tx>& tx_list, int try_number);
  // The same with the best assignment, redraw, status line and stop poll of `frame`.
  int run(const Trl_SimpleSearch& frame, Trl_Assignment& candidate,
          const tk::list<Trl_Tx>& tx_list, int try_number);

  // " Best assignment: %d Tx, %e [W] (%d generations).", with "(%d) " in front for a try.
  static tk::string best_status(int try_number, int used, double uplink_sum, int generation);
  // Fixes the library's random generator, for repeatable runs.
  static void fix_seed(long seed);

 private:
  void offer_best(const Trl_SimpleSearch& frame, const GAGeneticAlgorithm& algorithm,
                  Trl_Assignment& candidate, int generation, int try_number) const;
  GAGeneticAlgorithm* make_algorithm(const GAPopulation& population) const;
  void set_parameters(GAGeneticAlgorithm& algorithm) const;
  void set_schemes(GAGeneticAlgorithm& algorithm) const;
  void set_termination(GAGeneticAlgorithm& algorithm) const;
  void print_parameters();
  void trace(const tk::string& text);

  int trace_lines = 0;  // lines written to the trace window so far
};

// The program's genetic search record.
extern Trl_GaSearch ga_search;
