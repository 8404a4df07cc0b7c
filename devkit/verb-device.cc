// morvik-dev device: the virtual device on a port of this machine, until it is told to stop.
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "device/requests.h"
#include "device/stimuli.h"
#include "options.h"
#include "server/device-server.h"
#include "state-folder.h"
#include "terminal/display.h"
#include "terminal/event-lines.h"
#include "terminal/line-reader.h"
#include "until-told.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

constexpr int kUsualPort = 7410;
constexpr const char* kLoopback = "127.0.0.1";

constexpr VerbHelp kHelp = {
    "device",
    "Runs a virtual device on a port of this machine. Any number of applications may\n"
    "connect to it. It shows a line for each thing that happens:\n\n"
    "  12:00:01.123 app 1 ->  led light red  #3f2a\n"
    "  12:00:01.124 app 1 <-  response OK  #3f2a\n\n"
    "-> is a message from the application, <- one to it. Equal marks (#3f2a) belong together.\n"
    "Lines on standard input tell what the world does to it, \"help\" which there are.\n"
    "The user's messages, contacts and credentials stay in the state folder.\n"
    "With --events=json every line, in and out, is for programs; docs/device-json.md tells.",
    "Ctrl-C ends it. Colours are shown on a terminal, unless NO_COLOR is set.\n\n"
    "Examples:\n"
    "  morvik-dev device\n"
    "  morvik-dev device --port=0 | tee device.log"};

void printLine(const std::string& line) { std::puts(line.c_str()); }

Display::Colors colorsFor(FILE* output) {
  const char* refused = std::getenv("NO_COLOR");
  const bool wanted = isatty(fileno(output)) == 1 && (refused == nullptr || *refused == '\0');
  return wanted ? Display::Colors::kOn : Display::Colors::kOff;
}

int tellFailure(DeviceServer::Failure failure, int port, const std::string& text) {
  if (failure == DeviceServer::Failure::kPortBusy) {
    std::fprintf(stderr,
                 "morvik-dev device: port %d is in use, perhaps by another virtual device.\n"
                 "End that one, or choose another port: --port=0 takes any free one.\n",
                 port);
  } else {
    std::fprintf(stderr, "morvik-dev device: cannot listen on 127.0.0.1:%d: %s\n", port,
                 text.c_str());
  }
  return EXIT_FAILURE;
}

int tellStoreFailure(const std::string& trouble) {
  std::fprintf(stderr,
               "morvik-dev device: cannot keep anything in %s\n"
               "Nothing was changed. Choose another folder: --state=FOLDER.\n",
               trouble.c_str());
  return EXIT_FAILURE;
}

// How the device speaks on standard output, and what it answers a line of standard input.
struct Manner {
  std::unique_ptr<Observer> observer;
  void (*greet)(const Device& device, int port);
  void (*obey)(Device& device, std::string_view line);
};

Manner forPeople() {
  return {std::make_unique<Display>(printLine, colorsFor(stdout)),
          [](const Device& /*device*/, int port) {
            std::printf("listening on %s:%d\n", kLoopback, port);
          },
          [](Device& device, std::string_view line) {
            std::fputs(stimulate(device, line).text.c_str(), stdout);
          }};
}

Manner forPrograms() {
  return {std::make_unique<EventLines>(printLine),
          [](const Device& device, int port) { printLine(greeting(device, kLoopback, port)); },
          [](Device& device, std::string_view line) { printLine(answerTo(device, line)); }};
}

int serve(int port, const std::string& folder, const Manner& manner) {
  std::string trouble;
  auto store = Store::open(folder, trouble);
  if (!store) return tellStoreFailure(trouble);
  DeviceServer server(std::move(store));
  const Observation observation(server.device().events(), *manner.observer);
  std::string text;
  if (const auto failure = server.listen(static_cast<std::uint16_t>(port), text)) {
    return tellFailure(*failure, port, text);
  }
  UntilTold untilTold;
  manner.greet(server.device(), server.port());
  // A device in the background of a terminal goes on without commands, rather than stop when it
  // wants to read them.
  std::signal(SIGTTIN, SIG_IGN);
  const LineReader commands(STDIN_FILENO,
                            [&](std::string_view line) { manner.obey(server.device(), line); });
  untilTold.run();
  return EXIT_SUCCESS;
}

}  // namespace

int runDevice(int argc, char** argv) {
  int port = kUsualPort;
  char* state = nullptr;
  char* events = nullptr;
  const GOptionEntry entries[] = {
      {"port", 'p', 0, G_OPTION_ARG_INT, &port, "Port to listen on (7410); 0 takes a free one",
       "N"},
      {"state", 0, 0, G_OPTION_ARG_FILENAME, &state,
       "Where to keep what outlives the device ($XDG_STATE_HOME/morvik-dev)", "FOLDER"},
      {"events", 0, 0, G_OPTION_ARG_STRING, &events,
       "How to show what happens: text for people, json for programs (text)", "FORM"},
      {}};
  const auto status = readOptions(kHelp, entries, argc, argv);
  const GText asked(state);
  const std::string form = GText(events != nullptr ? events : g_strdup("text")).get();
  if (status) return *status;
  if (port < 0 || port > std::numeric_limits<std::uint16_t>::max()) {
    return refuseUsage(kHelp.name, "a port is a number from 0 to 65535");
  }
  if (form != "text" && form != "json") {
    return refuseUsage(kHelp.name, "events are shown as text or as json");
  }
  return serve(port, asked ? asked.get() : usualStateFolder(),
               form == "json" ? forPrograms() : forPeople());
}

}  // namespace morvik::devkit
