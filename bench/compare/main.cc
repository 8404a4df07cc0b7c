// Measures MorvikVM side by side with what a user would pick instead. script/bench prepares the
// peers and calls this.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>

#include "compare/measures.h"
#include "compare/report.h"

namespace {

using namespace morvik::bench;  // NOLINT(google-build-using-namespace)

constexpr const char* kUsage = R"(Usage: bench-compare [OPTION...]

Measures MorvikVM beside Node.js, gjs and a program without a script engine, and prints a table.

  --quick          less of everything
  --tiny           least of everything: shows that it works
  --only=NAME,...  these measures alone
  --with=NAME,...  these contestants alone
  --peers=FOLDER   where script/bench has prepared the peers
  --out=FOLDER     where results.json, results.md and results.dat go
  --help           show this
)";

struct Options {
  const Sizes* sizes = &kFull;
  std::vector<std::string> only;
  std::vector<std::string> with;
  std::string peers;
  std::string out;
};

std::vector<std::string> wordsOf(const std::string& list) {
  std::vector<std::string> words;
  std::istringstream stream(list);
  for (std::string word; std::getline(stream, word, ',');) words.push_back(word);
  return words;
}

// The text behind "--name=".
std::optional<std::string> valueOf(const std::string& argument, const std::string& name) {
  const std::string start = "--" + name + "=";
  if (!argument.starts_with(start)) return std::nullopt;
  return argument.substr(start.size());
}

bool take(Options& options, const std::string& argument) {
  if (argument == "--quick") return options.sizes = &kQuick, true;
  if (argument == "--tiny") return options.sizes = &kTiny, true;
  if (const auto only = valueOf(argument, "only")) return options.only = wordsOf(*only), true;
  if (const auto with = valueOf(argument, "with")) return options.with = wordsOf(*with), true;
  if (const auto peers = valueOf(argument, "peers")) return options.peers = *peers, true;
  if (const auto out = valueOf(argument, "out")) return options.out = *out, true;
  return false;
}

bool wants(const std::vector<std::string>& names, const std::string& name) {
  return names.empty() || std::ranges::find(names, name) != names.end();
}

// A line that stays in its place on a terminal.
class Progress {
 public:
  explicit Progress(std::size_t steps) : steps_(steps) {}
  ~Progress() {
    if (terminal_) std::fputs("\r\033[K", stderr);
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void step(const Measure& measure, const Contestant& contestant, int run) {
    std::fprintf(stderr, "%s[%zu/%zu] %s: %s, run %d%s", terminal_ ? "\r\033[K" : "", ++done_,
                 steps_, measure.name, contestant.label().c_str(), run, terminal_ ? "" : "\n");
  }

 private:
  bool terminal_ = isatty(STDERR_FILENO) == 1;
  std::size_t steps_;
  std::size_t done_ = 0;
};

struct Step {
  const Measure* measure;
  Contestant* contestant;
  int run;
};

using Contestants = std::vector<std::unique_ptr<Contestant>>;

std::vector<Step> stepsOf(const Options& options, const Contestants& all) {
  std::vector<Step> steps;
  for (const Measure& measure : measures()) {
    if (!wants(options.only, measure.name)) continue;
    for (int run = 1; run <= (measure.once ? 1 : options.sizes->runs); ++run)
      for (const auto& contestant : all)
        if (!measure.hostOnly || contestant->name() == kHost)
          steps.push_back({&measure, contestant.get(), run});
  }
  return steps;
}

// Those that are wanted and can be had.
Contestants present(const Options& options, Contestants all) {
  std::erase_if(all, [&](const auto& contestant) {
    if (!wants(options.with, contestant->name())) return true;
    if (contestant->installed()) return false;
    std::fprintf(stderr, "%s is not installed and left out\n", contestant->label().c_str());
    return true;
  });
  return all;
}

void writeFile(const std::string& path, const Report& report,
               void (*write)(std::ostream&, const Report&)) {
  std::ofstream file(path);
  write(file, report);
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

void tell(const Options& options, const Field& field, const Contestants& all) {
  Report report{field.results, {}, machineFacts(), options.sizes != &kFull};
  for (const auto& contestant : all)
    report.columns.push_back({contestant->name(), contestant->label()});
  writeTable(std::cout, report);
  if (options.out.empty()) return;
  writeFile(options.out + "/results.md", report, writeTable);
  writeFile(options.out + "/results.json", report, writeJson);
  writeFile(options.out + "/results.dat", report, writePictureData);
}

// What fails leaves a gap in the table, and the rest is measured. False when anything did.
bool measureAll(Field& field, const std::vector<Step>& steps) {
  bool whole = true;
  Progress progress(steps.size());
  for (const Step& step : steps) {
    progress.step(*step.measure, *step.contestant, step.run);
    try {
      step.measure->run(field, *step.contestant);
    } catch (const std::exception& failure) {
      whole = false;
      std::fprintf(stderr, "\nbench-compare: %s, %s: %s\n", step.measure->name,
                   step.contestant->label().c_str(), failure.what());
    }
  }
  return whole;
}

// False when not all could be measured.
bool run(const Options& options) {
  const Places places{MORVIKVM,    BENCH_FLOOR, BENCH_LOG_DAEMON,
                      BENCH_PROBE, BENCH_PEERS, options.peers};
  const SystemLog log(places.daemon);
  const Contestants all = present(options, contestants(places, log));
  Field field{*options.sizes, places, log, {}, {}};
  const auto steps = stepsOf(options, all);
  if (steps.empty()) throw std::runtime_error("nothing to measure: no such measure or contestant");
  const bool whole = measureAll(field, steps);
  tell(options, field, all);
  return whole;
}

int listed() {
  std::fputs(kUsage, stdout);
  std::puts("\nMeasures:");
  for (const Measure& measure : measures()) std::printf("  %-14s %s\n", measure.name, measure.what);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--help") == 0) return listed();
    if (!take(options, argv[i])) {
      std::fprintf(stderr, "bench-compare: what is %s? --help tells.\n", argv[i]);
      return 2;
    }
  }
  try {
    return run(options) ? 0 : 1;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "bench-compare: %s\n", failure.what());
    return 1;
  }
}
