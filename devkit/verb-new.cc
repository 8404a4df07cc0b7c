// morvik-dev new: a folder to begin with.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "device/owned.h"
#include "options.h"
#include "scaffold/scaffold.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

constexpr VerbHelp kHelp = {
    "new",
    "Makes the folder of a new application out of a sample, with typings for editors and a test.",
    "Nothing that is there is replaced. The exit status is 0 when the folder was made, 1 when it\n"
    "could not be, and 2 when the command line makes no sense.\n\n"
    "Examples:\n"
    "  morvik-dev new my-app\n"
    "  morvik-dev new my-game --template=button-game\n"
    "  morvik-dev new --templates",
    "NAME"};

int listTemplates() {
  for (const AppTemplate& one : appTemplates()) {
    std::printf("%-16s  %s\n", one.name.c_str(), one.about.c_str());
  }
  return EXIT_SUCCESS;
}

bool isTemplate(const std::string& name) {
  for (const AppTemplate& one : appTemplates()) {
    if (one.name == name) return true;
  }
  return false;
}

int make(const std::string& folder, const std::string& templateName) {
  if (const auto trouble = makeApplication(folder, templateName)) {
    std::fprintf(stderr, "morvik-dev new: %s\n", trouble->c_str());
    return EXIT_FAILURE;
  }
  std::printf(
      "%s is made. What to do with it:\n"
      "  morvik-dev run %s     runs it on a virtual device, and again with each save\n"
      "  morvik-dev check %s   tells what is wrong with it\n"
      "  morvik-dev test %s    runs its test\n",
      folder.c_str(), folder.c_str(), folder.c_str(), folder.c_str());
  return EXIT_SUCCESS;
}

}  // namespace

int runNew(int argc, char** argv) {
  gboolean list = FALSE;
  char* chosen = nullptr;
  char** names = nullptr;
  const GOptionEntry entries[] = {
      {"template", 't', 0, G_OPTION_ARG_STRING, &chosen, "The sample to begin with (hello)",
       "NAME"},
      {"templates", 0, 0, G_OPTION_ARG_NONE, &list, "List the samples", nullptr},
      {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &names, nullptr, nullptr},
      {}};
  const auto status = readOptions(kHelp, entries, argc, argv);
  const GText chosenOwned(chosen);
  const GTexts folders(names);
  if (status) return *status;
  if (list != FALSE) return listTemplates();
  if (!folders || g_strv_length(folders.get()) != 1)
    return refuseUsage(kHelp.name, "takes one name");
  const std::string from = chosen != nullptr ? chosen : appTemplates().front().name;
  if (!isTemplate(from))
    return refuseUsage(kHelp.name, "there is no template " + from + "; --templates lists them");
  return make(folders.get()[0], from);
}

}  // namespace morvik::devkit
