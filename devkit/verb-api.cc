// morvik-dev api: what a script can call, out of the one table of it.
#include <cstdio>
#include <cstdlib>
#include <string>

#include <nlohmann/json.hpp>

#include "api/reference.h"
#include "api/table.h"
#include "api/toolbox-files.h"
#include "api/typings.h"
#include "options.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

constexpr VerbHelp kHelp = {
    "api",
    "Tells what a script can call: all functions, or one with its arguments, what it throws, and\n"
    "an example.",
    "Examples:\n"
    "  morvik-dev api\n"
    "  morvik-dev api morvik.led.fade\n"
    "  morvik-dev api --typings > morvik.d.ts\n"
    "  morvik-dev api --json | jq '.objects[].name'",
    "[FUNCTION]"};

struct AskedOfApi {
  gboolean typings = FALSE;
  gboolean json = FALSE;
  char* document = nullptr;
  char** names = nullptr;
};

int listAll() {
  for (const Json& object : apiTable()["objects"]) {
    const std::string prefix = object["name"];
    for (const Json& function : object["functions"]) {
      std::printf("%s%s\n", (prefix.empty() ? "" : prefix + '.').c_str(),
                  signatureOf(function).c_str());
    }
  }
  return EXIT_SUCCESS;
}

int show(const std::string& path) {
  const std::string help = helpOn(path);
  if (help.empty()) {
    std::fprintf(stderr, "morvik-dev api: there is no function %s. morvik-dev api lists them.\n",
                 path.c_str());
    return EXIT_FAILURE;
  }
  std::fputs(help.c_str(), stdout);
  return EXIT_SUCCESS;
}

int print(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  return EXIT_SUCCESS;
}

int printDocument(const char* path) {
  char* content = nullptr;
  GErrorOwned error;
  if (g_file_get_contents(path, &content, nullptr, error.out()) == FALSE) {
    std::fprintf(stderr, "morvik-dev api: %s\n", error.text());
    return EXIT_FAILURE;
  }
  return print(withReference(GText(content).get()));
}

}  // namespace

int runApi(int argc, char** argv) {
  AskedOfApi asked;
  const GOptionEntry entries[] = {
      {"typings", 0, 0, G_OPTION_ARG_NONE, &asked.typings,
       "As TypeScript declarations, for editors", nullptr},
      {"json", 'j', 0, G_OPTION_ARG_NONE, &asked.json, "The table as it is", nullptr},
      {"reference", 0, 0, G_OPTION_ARG_FILENAME, &asked.document,
       "A Markdown document with its generated parts made anew", "FILE"},
      {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_STRING_ARRAY, &asked.names, nullptr, nullptr},
      {}};
  const auto status = readOptions(kHelp, entries, argc, argv);
  const GTexts names(asked.names);
  const GText document(asked.document);
  if (status) return *status;
  if (names && g_strv_length(names.get()) > 1)
    return refuseUsage(kHelp.name, "takes one function at most");
  if (asked.typings != FALSE) return print(typings());
  if (asked.json != FALSE) return print(toolboxFile("api/script-api.json"));
  if (document) return printDocument(document.get());
  return names ? show(names.get()[0]) : listAll();
}

}  // namespace morvik::devkit
