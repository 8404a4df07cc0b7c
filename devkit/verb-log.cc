// morvik-dev log: stands in for the system log, or reads a file of it. Without a system log, as in
// many containers, the C library writes each line of a program's log to the console, which may be
// the very terminal in use.
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "options.h"
#include "run/log-view.h"
#include "run/system-log.h"
#include "until-told.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

constexpr VerbHelp kHelp = {
    "log",
    "Stands in for the system log on a machine that has none, such as a container, and\n"
    "shows what MorvikVM logs there, debug lines included. Without a system log these\n"
    "lines go to the console, which may be the terminal that you are working in.\n"
    "With files of a system log it shows what stands there. Each line tells which\n"
    "application wrote it; starts and ends stand behind --, an end with its reason.",
    "Ctrl-C ends it and removes the socket. Making /dev/log takes the rights of root.\n"
    "Most files do not tell levels; lines whose level is not known are the least serious.\n\n"
    "Examples:\n"
    "  morvik-dev log --app=clock --level=message\n"
    "  morvik-dev log --grep='main.js:[0-9]+' /var/log/syslog"};

// Where the programs of a system write their log.
constexpr const char* kUsualSocket = "/dev/log";

// What stands on the command line, as the option parser leaves it.
struct Given {
  char* socket = nullptr;
  gboolean quiet = FALSE;
  char** apps = nullptr;
  char* level = nullptr;
  char* pattern = nullptr;
  char** files = nullptr;

  Given() = default;
  Given(const Given&) = delete;
  Given& operator=(const Given&) = delete;
  ~Given() {
    for (char* text : {socket, level, pattern}) g_free(text);
    for (char** texts : {apps, files}) g_strfreev(texts);
  }

  std::array<GOptionEntry, 7> entries() {
    return {
        {{"socket", 0, 0, G_OPTION_ARG_FILENAME, &socket, "Socket to listen on (/dev/log)", "PATH"},
         {"quiet", 'q', 0, G_OPTION_ARG_NONE, &quiet, "Take the lines and show none", nullptr},
         {"app", 'a', 0, G_OPTION_ARG_STRING_ARRAY, &apps,
          "Only this application; may be given again", "NAME"},
         {"level", 'l', 0, G_OPTION_ARG_STRING, &level,
          "Only from this level on: debug, info, message, warning, fatal", "LEVEL"},
         {"grep", 'g', 0, G_OPTION_ARG_STRING, &pattern, "Only lines that match", "REGEX"},
         {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &files, nullptr, "[FILE...]"},
         {}}};
  }
};

std::vector<std::string> textsOf(char** strings) {
  std::vector<std::string> texts;
  for (; strings != nullptr && *strings != nullptr; ++strings) texts.emplace_back(*strings);
  return texts;
}

int tellFailure(const std::string& text) {
  std::fprintf(stderr, "morvik-dev log: %s\n", text.c_str());
  return EXIT_FAILURE;
}

int serve(LogView& view, const std::string& socket) {
  SystemLog log([&view](std::string_view record) {
    view.takeDatagram(record, std::chrono::system_clock::now());
  });
  if (const auto reason = log.listen(socket)) {
    return tellFailure("cannot listen on " + socket + ": " + *reason);
  }
  UntilTold untilTold;
  std::printf("listening on %s\n", socket.c_str());
  untilTold.run();
  return EXIT_SUCCESS;
}

int readFiles(LogView& view, const std::vector<std::string>& names) {
  const TimePoint now = std::chrono::system_clock::now();
  for (const std::string& name : names) {
    std::ifstream file(name);
    for (std::string line; std::getline(file, line);) view.takeFileLine(line, now);
    view.finishFile();
    if (!file.eof()) return tellFailure("cannot read " + name + ": " + std::strerror(errno));
  }
  return EXIT_SUCCESS;
}

// Gives what is wrong with it.
std::optional<std::string> setFilter(LogFilter& filter, const Given& given) {
  if (given.level != nullptr) {
    if (auto trouble = filter.setLevel(given.level)) return trouble;
  }
  return given.pattern != nullptr ? filter.setPattern(given.pattern) : std::nullopt;
}

}  // namespace

int runLog(int argc, char** argv) {
  Given given;
  const auto status = readOptions(kHelp, given.entries().data(), argc, argv);
  if (status) return *status;
  LogFilter filter;
  filter.setApps(textsOf(given.apps));
  if (const auto trouble = setFilter(filter, given)) return refuseUsage(kHelp.name, *trouble);
  LogView view(std::move(filter), [quiet = given.quiet != FALSE](const std::string& line) {
    if (!quiet) std::puts(line.c_str());
  });
  const std::vector<std::string> files = textsOf(given.files);
  return files.empty() ? serve(view, given.socket != nullptr ? given.socket : kUsualSocket)
                       : readFiles(view, files);
}

}  // namespace morvik::devkit
