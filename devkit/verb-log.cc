// morvik-dev log: stands in for the system log. Without one, as in many containers, the C library
// writes each line of a program's log to the console, which may be the very terminal in use.
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

#include "device/text.h"
#include "options.h"
#include "system-log.h"
#include "until-told.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

constexpr VerbHelp kHelp = {
    "log",
    "Stands in for the system log on a machine that has none, such as a container, and\n"
    "shows what MorvikVM logs there, debug lines included. Without a system log these\n"
    "lines go to the console, which may be the terminal that you are working in.",
    "Ctrl-C ends it and removes the socket. Making /dev/log takes the rights of root."};

void showRecord(std::string_view record) {
  std::istringstream lines(readableRecord(record));
  for (std::string line; std::getline(lines, line);) std::puts(printable(line).c_str());
}

int serve(const std::string& path, bool quiet) {
  SystemLog log([quiet](std::string_view record) {
    if (!quiet) showRecord(record);
  });
  if (const auto reason = log.listen(path)) {
    std::fprintf(stderr, "morvik-dev log: cannot listen on %s: %s\n", path.c_str(),
                 reason->c_str());
    return EXIT_FAILURE;
  }
  UntilTold untilTold;
  std::printf("listening on %s\n", path.c_str());
  untilTold.run();
  return EXIT_SUCCESS;
}

}  // namespace

int runLog(int argc, char** argv) {
  char* socket = nullptr;
  gboolean quiet = FALSE;
  const GOptionEntry entries[] = {
      {"socket", 0, 0, G_OPTION_ARG_FILENAME, &socket, "Socket to listen on (/dev/log)", "PATH"},
      {"quiet", 'q', 0, G_OPTION_ARG_NONE, &quiet, "Take the lines and show none", nullptr},
      {}};
  const auto status = readOptions(kHelp, entries, argc, argv);
  const GText path(socket != nullptr ? socket : g_strdup("/dev/log"));
  return status ? *status : serve(path.get(), quiet != FALSE);
}

}  // namespace morvik::devkit
