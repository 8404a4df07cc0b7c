// morvik-dev types: the files that editors read, cut to what an application may use.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "api/editor-files.h"
#include "check/descriptor.h"
#include "options.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;

constexpr VerbHelp kHelp = {
    "types",
    "Writes typings into an application's folder, from which an editor knows what its scripts can\n"
    "call: what descriptor.xml grants and no more, so that a call which is not granted shows red.",
    "morvik.d.ts and morvik-test.d.ts are made anew each time, jsconfig.json only when there is\n"
    "none.\n\n"
    "Examples:\n"
    "  morvik-dev types my-app\n"
    "  morvik-dev types --all my-folder",
    "FOLDER"};

using Granted = std::optional<std::set<std::string>>;

// False when the descriptor cannot be read.
bool readGrants(const fs::path& folder, Granted& granted) {
  std::vector<FolderTrouble> findings;
  const Grants grants = checkGrants(folder, findings);
  if (!grants.known) {
    std::fprintf(stderr, "morvik-dev types: %s cannot be read. morvik-dev check tells more.\n",
                 (folder / "descriptor.xml").c_str());
    return false;
  }
  granted.emplace();
  for (const auto& [name, place] : grants.granted) granted->insert(name);
  return true;
}

std::string contentOf(const fs::path& file) {
  std::ifstream input(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(input), {}};
}

bool failFor(const fs::path& file, const char* why) {
  std::fprintf(stderr, "morvik-dev types: %s: %s\n", file.c_str(), why);
  return false;
}

// What somebody else wrote stays.
bool writeOne(const fs::path& file, const std::string& content) {
  std::error_code error;
  const bool isThere = fs::exists(file, error);
  if (isThere && file.filename() == "jsconfig.json") return true;
  if (isThere && !isOwnEditorFile(contentOf(file)))
    return failFor(file, "was not made by morvik-dev types, and stays as it is");
  GErrorOwned failure;
  if (g_file_set_contents(file.c_str(), content.data(), static_cast<gssize>(content.size()),
                          failure.out()) == FALSE) {
    return failFor(file, failure.text());
  }
  std::printf("%s\n", file.c_str());
  return true;
}

int writeTypes(const fs::path& folder, bool all) {
  Granted granted;
  if (!all && !readGrants(folder, granted)) return EXIT_FAILURE;
  bool written = true;
  for (const auto& [name, content] : editorFiles(granted)) {
    written = writeOne(folder / name, content) && written;
  }
  return written ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int runTypes(int argc, char** argv) {
  gboolean all = FALSE;
  char** words = nullptr;
  const GOptionEntry entries[] = {
      {"all", 0, 0, G_OPTION_ARG_NONE, &all, "With everything, as if all were granted", nullptr},
      {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &words, nullptr, nullptr},
      {}};
  const auto status = readOptions(kHelp, entries, argc, argv);
  const GTexts folders(words);
  if (status) return *status;
  if (!folders || g_strv_length(folders.get()) != 1)
    return refuseUsage(kHelp.name, "takes one folder");
  std::error_code error;
  const fs::path folder = folders.get()[0];
  if (!fs::is_directory(folder, error))
    return refuseUsage(kHelp.name, folder.string() + " is no folder");
  return writeTypes(folder, all != FALSE);
}

}  // namespace morvik::devkit
