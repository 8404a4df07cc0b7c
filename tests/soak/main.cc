// soak: the real host over a real socket, in numbers that a year brings, and whether its memory
// stays what it is.
//
//   soak [--share=PART] [--plot=FILE]
//
// PART of the full numbers, 1 unless said otherwise. Ends with 1 when memory grows where it must
// not.
#include <charconv>
#include <cstdio>
#include <exception>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "soak/phases.h"

namespace {

using namespace morvik::test;  // NOLINT(google-build-using-namespace)

constexpr long kMessages = 10'000'000;
constexpr long kRequests = 1'000'000;
constexpr long kTimers = 1'000'000;
constexpr long kObjects = 100'000;
constexpr long kAwaited = 20'000;
constexpr long kStarts = 10'000;

// What the highest point of a phase may lie above that of its first half, in MiB.
constexpr double kMostRise = 4;

struct Options {
  double share = 1;
  std::string plot;
};

bool parse(std::string_view argument, Options& options) {
  constexpr std::string_view kShare = "--share=";
  constexpr std::string_view kPlot = "--plot=";
  if (argument.starts_with(kPlot)) {
    options.plot = argument.substr(kPlot.size());
    return !options.plot.empty();
  }
  if (!argument.starts_with(kShare)) return false;
  argument.remove_prefix(kShare.size());
  const auto [end, error] =
      std::from_chars(argument.data(), argument.data() + argument.size(), options.share);
  return error == std::errc() && end == argument.data() + argument.size() && options.share > 0;
}

void showProgress(const Curve& curve, long all) {
  const Curve::Point& last = curve.points().back();
  std::printf("\r%-16s %9ld of %9ld  %8.2f MiB", curve.what().c_str(), last.done, all,
              last.memory.own);
  std::fflush(stdout);
}

void print(const Curve& curve) {
  const Memory& first = curve.points().front().memory;
  const Memory& last = curve.points().back().memory;
  std::printf("\r%-16s %9ld  %6.2f %6.2f  %6.2f %6.2f  %6.2f %6.2f  %6.2f %6.2f  %9.3f %7.2f\n",
              curve.what().c_str(), curve.points().back().done, first.resident, last.resident,
              first.proportional, last.proportional, first.own, last.own, first.engine, last.engine,
              curve.slope(), curve.rise());
  std::fflush(stdout);
}

std::vector<Curve> live(double share) {
  const auto of = [&](long full) { return static_cast<long>(static_cast<double>(full) * share); };
  LongLife life(showProgress);
  std::vector<Curve> curves;
  const auto done = [&](Curve curve) {
    print(curve);
    curves.push_back(std::move(curve));
  };
  done(life.messagesIn(of(kMessages)));
  done(life.requestsOut(of(kRequests)));
  done(life.timers(of(kTimers)));
  done(life.objects(of(kObjects)));
  done(startsAndEnds(of(kStarts), showProgress));
  done(life.awaitedAnswers(of(kAwaited)));
  return curves;
}

// All but the last one, which rises as told.
bool isFlat(const std::vector<Curve>& curves) {
  bool flat = true;
  for (std::size_t i = 0; i + 1 < curves.size(); ++i) {
    if (curves[i].rise() <= kMostRise) continue;
    std::printf("soak: %s: %.2f MiB more\n", curves[i].what().c_str(), curves[i].rise());
    flat = false;
  }
  return flat;
}

}  // namespace

int main(int argc, char** argv) try {
  Options options;
  for (int i = 1; i < argc; ++i) {
    if (parse(argv[i], options)) continue;
    std::fprintf(stderr, "usage: soak [--share=PART] [--plot=FILE]\n");
    return 2;
  }
  std::printf("%-16s %9s  %13s  %13s  %13s  %13s  %9s %7s\n", "MiB, first last", "count",
              "resident", "proportional", "own", "engine's heap", "B each", "rise");
  const std::vector<Curve> curves = live(options.share);
  if (!options.plot.empty()) std::ofstream(options.plot) << picture(curves);
  return isFlat(curves) ? 0 : 1;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "\nsoak: %s\n", failure.what());
  return 1;
}
