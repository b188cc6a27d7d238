// The benchmarks' main: Google Benchmark's console table, then a table of the speed targets
// whose rows ran, each figure beside its target, so that one run says which are met.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

struct target {
  const char* what;
  const char* row;      // the benchmark's full name
  const char* counter;  // the figure
  const char* unit;
  bool at_most;         // the figure must not exceed the bound (else not fall below it)
  double bound;
};

const target targets[] = {
    {"uplink sweep, 40 x 10,000, two threads allowed", "BM_Solve/0/10000/2/real_time", "ns_per_user_row_sweep",
     "ns per user, row and sweep", true, 0.5},
    {"uplink sweep, large city, two threads allowed", "BM_LargeSolve/0/2/real_time", "ns_per_user_row_sweep",
     "ns per user, row and sweep", true, 0.5},
    {"simple model, 40 x 10,000, two threads", "BM_PrepareSimple/1/real_time", "ns_per_pair", "ns per pair", true,
     2.0},
    {"simple model, large city, two threads", "BM_LargeSimpleTable/1/iterations:3/real_time", "ns_per_pair",
     "ns per pair", true, 2.0},
    {"Xia-Bertoni, large city: angular over plain, one thread",
     "BM_LargeXiaBertoniSideBySide/fill:1/against:0/iterations:5/real_time", "ratio", "times", false, 1.3},
    {"Xia-Bertoni, large city: two threads over one",
     "BM_LargeXiaBertoniSideBySide/fill:2/against:1/iterations:5/real_time", "ratio", "times", false, 1.8},
};

// The console table as usual, noting the counters of every row on the way.
class TargetReporter : public benchmark::ConsoleReporter {
 public:
  explicit TargetReporter(OutputOptions options) : ConsoleReporter(options) {}
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs)
      for (const auto& counter : run.counters) figures[run.benchmark_name()][counter.first] = counter.second.value;
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, std::map<std::string, double>> figures;
};

}  // namespace

int main(int argc, char** argv) {
  bool tabular = false;
  for (int k = 1; k < argc; ++k) tabular = tabular || std::strcmp(argv[k], "--benchmark_counters_tabular=true") == 0;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  int options = tabular ? benchmark::ConsoleReporter::OO_Tabular : benchmark::ConsoleReporter::OO_None;
  if (isatty(STDOUT_FILENO)) options |= benchmark::ConsoleReporter::OO_Color;
  TargetReporter reporter(static_cast<benchmark::ConsoleReporter::OutputOptions>(options));
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();

  bool header = false;
  for (const target& t : targets) {
    const auto row = reporter.figures.find(t.row);
    if (row == reporter.figures.end() || !row->second.count(t.counter)) continue;
    if (!header) std::printf("\nTargets\n");
    header = true;
    const double figure = row->second.at(t.counter);
    const bool met = t.at_most ? figure <= t.bound : figure >= t.bound;
    std::printf("  %-58s %7.3f %-27s %s %4.2f  %s\n", t.what, figure, t.unit, t.at_most ? "at most" : "at least",
                t.bound, met ? "met" : "NOT MET");
  }
  return 0;
}
