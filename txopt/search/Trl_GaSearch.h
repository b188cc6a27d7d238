// Trl_GaSearch: the parameter record of the genetic search. One instance, `ga_search`, lives
// for the whole program; "Search parameters" edits its generations and population size, the
// other fields keep their defaults (the search sets the mutation probability at each start).
#pragma once

#include "toolkit/string.h"

namespace tk {
class window;
}

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
};

// The program's genetic search record.
extern Trl_GaSearch ga_search;
