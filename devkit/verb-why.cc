// morvik-dev why: the last ends of applications, and what was behind them.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "options.h"
#include "run/duration.h"
#include "run/end-history.h"
#include "run/log-text.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

constexpr VerbHelp kHelp = {
    "why",
    "Tells why applications ended: the last ten ends, the latest first, or those of one\n"
    "application. Each comes with its state, its status or signal, the likely reason, what\n"
    "to do, and the last lines of its log.",
    "The exit status is 0 when there is an end to show, and 1 when nothing is known.\n\n"
    "Examples:\n"
    "  morvik-dev why\n"
    "  morvik-dev why clock\n"
    "  morvik-dev why --json | jq -r '.ends[-1].sentence'"};

void show(const End& end) {
  std::printf("%s  %s\n  %s\n", isoTime(end.endedAt).c_str(), headlineOf(end).c_str(),
              end.sentence.c_str());
  if (!end.cure.empty()) std::printf("  %s\n", end.cure.c_str());
  if (!end.lastLines.empty()) std::puts("  Last lines:");
  for (const std::string& line : end.lastLines) {
    std::printf("    %s\n", withIndentedLines(line, "    | ").c_str());
  }
}

int nothingKnown(const char* app) {
  const std::string of = app != nullptr ? std::string(" of ") + app : "";
  std::fprintf(stderr, "morvik-dev why: no end%s is known.\n", of.c_str());
  return EXIT_FAILURE;
}

int tell(const char* app, bool json) {
  EndHistory::Content content = EndHistory(EndHistory::usualFolder()).read();
  if (!content.trouble.empty()) {
    std::fprintf(stderr, "morvik-dev why: %s\n", content.trouble.c_str());
  }
  if (app != nullptr) {
    std::erase_if(content.ends, [app](const End& end) { return end.app != app; });
  }
  if (json) std::fputs(toJson(content.ends).c_str(), stdout);
  if (content.ends.empty()) return nothingKnown(app);
  std::ranges::reverse(content.ends);
  for (const End& end : content.ends) {
    if (!json) show(end);
  }
  return EXIT_SUCCESS;
}

}  // namespace

int runWhy(int argc, char** argv) {
  gboolean json = FALSE;
  char** names = nullptr;
  const GOptionEntry entries[] = {
      {"json", 'j', 0, G_OPTION_ARG_NONE, &json, "As JSON, the latest last", nullptr},
      {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &names, nullptr, "[APP]"},
      {}};
  const auto status = readOptions(kHelp, entries, argc, argv);
  const GTexts apps(names);
  if (status) return *status;
  if (apps && g_strv_length(apps.get()) > 1) {
    return refuseUsage(kHelp.name, "takes one application at most");
  }
  return tell(apps ? apps.get()[0] : nullptr, json != FALSE);
}

}  // namespace morvik::devkit
