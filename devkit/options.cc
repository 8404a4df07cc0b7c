// One use of GLib's option parser for all verbs.
#include "options.h"

#include <cstdio>

#include "verbs.h"

namespace morvik::devkit {
namespace {

// The help option is our own: GLib's prints through the locale's character set and ends the
// process.
GOptions parserOf(const VerbHelp& help, const GOptionEntry* entries, gboolean& helpAsked) {
  const GOptionEntry helpEntry[] = {
      {"help", 'h', 0, G_OPTION_ARG_NONE, &helpAsked, "Show this", nullptr}, {}};
  GOptions parser(g_option_context_new(help.arguments));
  g_option_context_set_help_enabled(parser.get(), FALSE);
  g_option_context_set_summary(parser.get(), help.summary);
  g_option_context_set_description(parser.get(), help.description);
  g_option_context_add_main_entries(parser.get(), entries, nullptr);
  g_option_context_add_main_entries(parser.get(), helpEntry, nullptr);
  return parser;
}

}  // namespace

std::optional<int> readOptions(const VerbHelp& help, const GOptionEntry* entries, int argc,
                               char** argv) {
  g_set_prgname((std::string("morvik-dev ") + help.name).c_str());
  gboolean helpAsked = FALSE;
  const GOptions parser = parserOf(help, entries, helpAsked);
  GErrorOwned error;
  if (g_option_context_parse(parser.get(), &argc, &argv, error.out()) == FALSE) {
    return refuseUsage(help.name, error.text());
  }
  if (helpAsked != FALSE) {
    std::fputs(GText(g_option_context_get_help(parser.get(), TRUE, nullptr)).get(), stdout);
    return 0;
  }
  if (argc > 1) return refuseUsage(help.name, std::string("takes no argument: ") + argv[1]);
  return std::nullopt;
}

int refuseUsage(const std::string& verb, const std::string& text) {
  std::fprintf(stderr, "morvik-dev %s: %s\nmorvik-dev %s --help tells what it takes.\n",
               verb.c_str(), text.c_str(), verb.c_str());
  return kUsageError;
}

}  // namespace morvik::devkit
