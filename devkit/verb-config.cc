// morvik-dev config: makes config.bin of a text, shows it as one, and changes single fields.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "check/check.h"
#include "config/config-bytes.h"
#include "config/config-edit.h"
#include "config/config-text.h"
#include "device/owned.h"
#include "options.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

constexpr VerbHelp kHelp = {
    "config",
    "Makes an application's config.bin, which its script finds as params, and looks into it.\n\n"
    "  build TEXT                makes config.bin beside the text, or --output=FILE\n"
    "  show FILE                 writes the text of a config.bin, which build takes again\n"
    "  set FILE NAME=VALUE...    changes fields of a config.bin or of a text\n\n"
    "A text is in protobuf's text form, with # before comments, or JSON. A folder stands for\n"
    "the config.bin in it, and - for standard input and output.",
    "The exit status is 0 when all is well, 1 when something is found, and 2 when the command\n"
    "line makes no sense.\n\n"
    "Examples:\n"
    "  morvik-dev config build my-app/config.txt\n"
    "  morvik-dev config show my-app > config.txt\n"
    "  morvik-dev config set my-app author=Anna parameters.city=Paris\n"
    "  morvik-dev config set my-app configInstance.kitchen.params.volume=5",
    "build|show|set FILE [NAME=VALUE...]"};

struct Asked {
  gboolean json = FALSE;
  std::string output;
  std::string form;
  Words words;
};

constexpr const char* kStandard = "-";

// How a file is read, and what of it is told.
struct Source {
  fs::path path;
  std::string bytes;
  bool isText = false;
};

fs::path configPath(const std::string& word) {
  std::error_code error;
  return fs::is_directory(word, error) ? fs::path(word) / "config.bin" : fs::path(word);
}

int fail(const std::string& text) {
  std::fprintf(stderr, "morvik-dev config: %s\n", text.c_str());
  return kUsageError;
}

// The numbers and lengths of fields are bytes that no text holds: 18 stands before each version.
bool looksLikeText(const fs::path& path, const std::string& bytes) {
  if (path.extension() == ".bin") return false;
  const bool isPlain = g_utf8_validate_len(bytes.data(), bytes.size(), nullptr) != FALSE;
  return isPlain && bytes.find_first_of(std::string(
                        "\0\x01\x02\x03\x04\x05\x06\x07\x08\x0b\x0c\x12", 12)) == std::string::npos;
}

std::optional<std::string> readAll(const fs::path& path, std::string& trouble) {
  if (path == kStandard) {
    std::string bytes;
    char buffer[4096];
    for (std::size_t count = 0; (count = std::fread(buffer, 1, sizeof buffer, stdin)) > 0;)
      bytes.append(buffer, count);
    return bytes;
  }
  char* bytes = nullptr;
  gsize length = 0;
  GErrorOwned error;
  if (g_file_get_contents(path.c_str(), &bytes, &length, error.out()) == FALSE) {
    trouble = error.text();
    return std::nullopt;
  }
  const GText owned(bytes);
  return std::string(bytes, length);
}

std::optional<Source> openSource(const std::string& word, std::string& trouble) {
  Source source{configPath(word), ""};
  auto bytes = readAll(source.path, trouble);
  if (!bytes) return std::nullopt;
  source.bytes = std::move(*bytes);
  source.isText = looksLikeText(source.path, source.bytes);
  return source;
}

std::string shownName(const fs::path& path) {
  return path == kStandard ? "standard input" : path.filename().string();
}

ConfigRead understand(const Source& source, bool isText) {
  const std::string name = shownName(source.path);
  return isText ? readConfigText(name, source.bytes) : readConfigBytes(name, source.bytes);
}

// Gives the exit status. Text goes where it is in the way of nothing else.
int tell(const Source& source, const std::vector<FolderTrouble>& findings, bool json,
         FILE* textTo) {
  const fs::path folder = source.path.parent_path();
  if (json) std::printf("%s\n", asJson(folder.empty() ? "." : folder, findings).c_str());
  for (const FolderTrouble& finding : findings) {
    if (!json) std::fputs(asText(folder, finding).c_str(), textTo);
  }
  return findings.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

// A new file in the place of the old one, which stays until the new one is whole.
int replaceFile(const fs::path& path, const std::string& bytes) {
  std::error_code error;
  const fs::path target = fs::exists(path, error) ? fs::canonical(path, error) : path;
  const auto kept = fs::status(target, error).permissions();
  constexpr int kUsualMode = 0666;
  const mode_t mask = umask(0);
  umask(mask);
  const int mode = error ? static_cast<int>(kUsualMode & ~mask) : static_cast<int>(kept);
  GErrorOwned failure;
  const auto flags = static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT |
                                                        G_FILE_SET_CONTENTS_DURABLE);
  if (g_file_set_contents_full(target.c_str(), bytes.data(), static_cast<gssize>(bytes.size()),
                               flags, mode, failure.out()) != FALSE) {
    return EXIT_SUCCESS;
  }
  fail(failure.text());
  return EXIT_FAILURE;
}

int writeOut(const std::string& to, const std::string& bytes) {
  if (to != kStandard) return replaceFile(to, bytes);
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() &&
                       std::fflush(stdout) == 0;
  return written ? EXIT_SUCCESS : EXIT_FAILURE;
}

int build(const Asked& asked, const Source& source) {
  std::string to = asked.output;
  if (to.empty())
    to = source.path == kStandard ? kStandard : source.path.parent_path() / "config.bin";
  std::error_code error;
  if (fs::equivalent(source.path, to, error)) {
    return refuseUsage(kHelp.name, "build takes a text, and " + to + " is what it makes");
  }
  const ConfigRead read = understand(source, /*isText=*/true);
  const bool toScreen = to == kStandard;
  const int status =
      tell(source, read.findings, asked.json != FALSE && !toScreen, toScreen ? stderr : stdout);
  return status == EXIT_SUCCESS ? writeOut(to, read.config.SerializeAsString()) : status;
}

int show(const Asked& asked, const Source& source) {
  const ConfigRead read = understand(source, source.isText);
  if (asked.json == FALSE) {
    const auto form = asked.form == "json" ? ConfigForm::kJson : ConfigForm::kText;
    std::fputs(configAsText(read.config, form).c_str(), stdout);
  }
  return tell(source, read.findings, asked.json != FALSE, stderr);
}

// What the changes make of the file; nothing with a trouble.
std::optional<std::string> changed(const Source& source, ConfigRead read,
                                   const std::vector<ConfigChange>& changes, std::string& trouble) {
  const auto form = formOf(source.bytes);
  if (source.isText && form == ConfigForm::kText) return changeText(source.bytes, changes, trouble);
  if (auto reason = change(read.config, changes)) {
    trouble = *reason;
    return std::nullopt;
  }
  return source.isText ? configAsText(read.config, form) : read.config.SerializePartialAsString();
}

bool isHurdle(const FolderTrouble& finding) {
  return finding.kind != "config-incomplete" && finding.kind != "config-unknown";
}

int set(const Asked& asked, Source source) {
  std::vector<ConfigChange> changes;
  for (auto word = asked.words.begin() + 2; word != asked.words.end(); ++word) {
    const auto one = changeIn(*word);
    if (!one) return refuseUsage(kHelp.name, *word + " is no NAME=VALUE");
    changes.push_back(*one);
  }
  if (changes.empty()) return refuseUsage(kHelp.name, "set takes NAME=VALUE");
  ConfigRead read = understand(source, source.isText);
  const bool json = asked.json != FALSE;
  if (std::ranges::any_of(read.findings, isHurdle))
    return tell(source, read.findings, json, stdout);
  std::string trouble;
  auto bytes = changed(source, std::move(read), changes, trouble);
  if (!bytes) return refuseUsage(kHelp.name, trouble);
  source.bytes = std::move(*bytes);
  const std::vector<FolderTrouble> left = understand(source, source.isText).findings;
  const bool isWhole = std::ranges::none_of(
      left, [](const FolderTrouble& one) { return one.kind != "config-unknown"; });
  const int status = tell(source, left, json, stdout);
  return isWhole ? writeOut(source.path, source.bytes) : status;
}

int act(const Asked& asked) {
  if (asked.words.empty()) return refuseUsage(kHelp.name, "build, show or set?");
  const std::string& what = asked.words.front();
  if (what != "build" && what != "show" && what != "set")
    return refuseUsage(kHelp.name, "does build, show and set, not " + what);
  if (asked.words.size() < 2) return refuseUsage(kHelp.name, what + " takes a file");
  if (what != "set" && asked.words.size() > 2)
    return refuseUsage(kHelp.name, what + " takes one file");
  if (!asked.output.empty() && what != "build")
    return refuseUsage(kHelp.name, "--output is for build");
  if (!asked.form.empty() && asked.form != "text" && asked.form != "json")
    return refuseUsage(kHelp.name, "forms are text and json");
  std::string trouble;
  auto source = openSource(asked.words[1], trouble);
  if (!source) return fail(trouble);
  if (what == "build") return build(asked, *source);
  return what == "show" ? show(asked, *source) : set(asked, std::move(*source));
}

}  // namespace

int runConfig(int argc, char** argv) {
  Asked asked;
  char* output = nullptr;
  char* form = nullptr;
  char** words = nullptr;
  const GOptionEntry entries[] = {
      {"output", 'o', 0, G_OPTION_ARG_FILENAME, &output,
       "What build makes (config.bin beside the text)", "FILE"},
      {"form", 0, 0, G_OPTION_ARG_STRING, &form, "What show writes: text or json (text)", "FORM"},
      {"json", 'j', 0, G_OPTION_ARG_NONE, &asked.json, "Findings as JSON, and nothing else",
       nullptr},
      {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &words, nullptr, nullptr},
      {}};
  const auto status = readOptions(kHelp, entries, argc, argv);
  const GText outputOwned(output);
  const GText formOwned(form);
  const GTexts owned(words);
  if (status) return *status;
  asked.output = output != nullptr ? output : "";
  asked.form = form != nullptr ? form : "";
  for (char** word = words; word != nullptr && *word != nullptr; ++word)
    asked.words.emplace_back(*word);
  return act(asked);
}

}  // namespace morvik::devkit
