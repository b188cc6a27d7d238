// The choice between shared and lone sweeps on a made-up machine whose costs change: each way
// is tried first, the cheaper one is kept, the other is tried once every probe_every choices,
// and a change of cost turns the choice within a few sweeps.
#include <gtest/gtest.h>

#include "search/Trl_SplitChoice.h"

TEST(Trl_SplitChoice, KeepsTheCheaperWayAndProbesTheOther) {
  Trl_SplitChoice choice;
  EXPECT_TRUE(choice.split_next());
  choice.record(true, 0.45);
  EXPECT_FALSE(choice.split_next());
  choice.record(false, 0.55);

  // Phases of 2 * probe_every choices (choices 3 to 66, 67 to 130, 131 to 194; the probes
  // at the multiples of 32): the cost of a shared and of a lone sweep, and how many sweeps
  // were shared. First both probes go alone. Then the second core slows down (a shared sweep
  // takes twice one thread's time): after one costly shared sweep the lone way wins, and only
  // the probes share. Then the core is free again: the probe at 160 brings the shared way
  // back, and the one at 192 goes alone.
  struct Phase {
    double shared, alone;
    int shared_sweeps;
  } phases[] = {
      {0.45, 0.55, 2 * Trl_SplitChoice::probe_every - 2},
      {1.10, 0.55, 3},
      {0.45, 0.55, 34},
  };
  for (const Phase& phase : phases) {
    int shared = 0;
    for (int k = 0; k < 2 * Trl_SplitChoice::probe_every; ++k) {
      const bool split = choice.split_next();
      shared += split;
      choice.record(split, split ? phase.shared : phase.alone);
    }
    EXPECT_EQ(shared, phase.shared_sweeps) << phase.shared;
  }
}
