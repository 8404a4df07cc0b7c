// morvik-dev check: what is wrong with applications, without running them.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "check/check.h"
#include "options.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;

constexpr VerbHelp kHelp = {
    "check",
    "Looks at the applications in these folders and tells what is wrong with them, each mistake\n"
    "with its place and a cure. Nothing of them is run.",
    "The exit status is 0 when nothing is found, 1 when something is, and 2 when a folder is "
    "none.\n\n"
    "Examples:\n"
    "  morvik-dev check my-app\n"
    "  morvik-dev check apps/*\n"
    "  morvik-dev check --json my-app | jq '.findings[].kind'",
    "FOLDER..."};

bool isFolder(const char* folder) {
  std::error_code error;
  if (fs::is_directory(folder, error)) return true;
  std::fprintf(stderr, "morvik-dev check: %s is no folder\n", folder);
  return false;
}

// Gives whether nothing was found.
bool checkOne(const fs::path& folder, bool json) {
  const std::vector<FolderTrouble> findings = checkApplication(folder);
  if (json) std::printf("%s\n", asJson(folder, findings).c_str());
  for (const FolderTrouble& finding : findings) {
    if (!json) std::fputs(asText(folder, finding).c_str(), stdout);
  }
  return findings.empty();
}

int checkAll(char** folders, bool json) {
  int status = EXIT_SUCCESS;
  for (char** folder = folders; *folder != nullptr; ++folder) {
    if (!isFolder(*folder)) {
      status = kUsageError;
    } else if (!checkOne(*folder, json) && status == EXIT_SUCCESS) {
      status = EXIT_FAILURE;
    }
  }
  return status;
}

}  // namespace

int runCheck(int argc, char** argv) {
  gboolean json = FALSE;
  char** folders = nullptr;
  const GOptionEntry entries[] = {
      {"json", 'j', 0, G_OPTION_ARG_NONE, &json, "As JSON, a line for each folder", nullptr},
      {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &folders, nullptr, nullptr},
      {}};
  const auto status = readOptions(kHelp, entries, argc, argv);
  const GTexts owned(folders);
  if (status) return *status;
  if (!owned) return refuseUsage(kHelp.name, "which folder?");
  return checkAll(owned.get(), json != FALSE);
}

}  // namespace morvik::devkit
