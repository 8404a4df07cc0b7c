// morvik-dev device: the virtual device on a port of this machine, until it is told to stop.
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "control/control-server.h"
#include "device/requests.h"
#include "device/stimuli.h"
#include "options.h"
#include "page/device-source.h"
#include "page/page.h"
#include "replay/recorder.h"
#include "replay/replay-server.h"
#include "server/device-server.h"
#include "server/shadow.h"
#include "state-folder.h"
#include "terminal/display.h"
#include "terminal/event-lines.h"
#include "terminal/line-reader.h"
#include "until-told.h"
#include "verbs.h"

namespace morvik::devkit {
namespace {

constexpr int kUsualPort = 7410;
constexpr int kHighestPort = std::numeric_limits<std::uint16_t>::max();
constexpr const char* kLoopback = "127.0.0.1";

struct Ports {
  int device = kUsualPort;
  std::optional<int> page;  // nothing when no page is wanted
};

constexpr VerbHelp kHelp = {
    "device",
    "Runs a virtual device on a port of this machine. Any number of applications may\n"
    "connect to it. It shows a line for each thing that happens:\n\n"
    "  12:00:01.123 app 1 ->  led light red  #3f2a\n"
    "  12:00:01.124 app 1 <-  response OK  #3f2a\n\n"
    "-> is a message from the application, <- one to it. Equal marks (#3f2a) belong together.\n"
    "What goes to every application stands once, for \"all\". ?? marks what a real device may\n"
    "not do.\n"
    "Lines on standard input tell what the world does to it, \"help\" which there are; \"apps\"\n"
    "and \"state\" tell how things stand.\n"
    "The user's messages, contacts and credentials stay in the state folder.\n"
    "With --page a browser shows it, at the address that is told; the address is a secret.\n"
    "With --events=json every line, in and out, is for programs; docs/device-json.md tells.\n"
    "With --replay it answers as the device of a recording did; docs/recording.md tells.",
    "Ctrl-C ends it, with status 1 when applications have left the recording that is replayed.\n"
    " Colours are shown on a terminal, unless NO_COLOR is set.\n\n"
    "Examples:\n"
    "  morvik-dev device\n"
    "  morvik-dev device --port=0 | tee device.log\n"
    "  morvik-dev device --replay=kitchen.jsonl"};

void printLine(const std::string& line) { std::puts(line.c_str()); }

Display::Colors colorsFor(FILE* output) {
  const char* refused = std::getenv("NO_COLOR");
  const bool wanted = isatty(fileno(output)) == 1 && (refused == nullptr || *refused == '\0');
  return wanted ? Display::Colors::kOn : Display::Colors::kOff;
}

int tellFailure(bool isPortBusy, int port, const std::string& text, const char* who,
                const char* instead) {
  if (isPortBusy) {
    std::fprintf(stderr,
                 "morvik-dev device: port %d is in use, perhaps by another %s.\n"
                 "End that one, or choose another port: %s takes any free one.\n",
                 port, who, instead);
  } else {
    std::fprintf(stderr, "morvik-dev device: cannot listen on %s:%d: %s\n", kLoopback, port,
                 text.c_str());
  }
  return EXIT_FAILURE;
}

int tellFailure(DeviceServer::Failure failure, int port, const std::string& text) {
  return tellFailure(failure == DeviceServer::Failure::kPortBusy, port, text, "virtual device",
                     "--port=0");
}

int tellFailure(PageServer::Failure failure, int port, const std::string& text) {
  return tellFailure(failure == PageServer::Failure::kPortBusy, port, text, "page", "--page");
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
  void (*tellPage)(const Device& device, const std::string& address);
  void (*obey)(const RequestWays& ways, std::string_view line);
};

Manner forPeople() {
  return {std::make_unique<Display>(printLine, colorsFor(stdout)),
          [](const Device& /*device*/, int port) {
            std::printf("listening on %s:%d\n", kLoopback, port);
          },
          [](const Device& /*device*/, const std::string& address) {
            std::printf("page: %s\n", address.c_str());
          },
          [](const RequestWays& ways, std::string_view line) {
            std::fputs(ways.stimulate(line).text.c_str(), stdout);
          }};
}

Manner forPrograms() {
  return {std::make_unique<EventLines>(printLine),
          [](const Device& device, int port) { printLine(greeting(device, kLoopback, port)); },
          [](const Device& device, const std::string& address) {
            printLine(pageGreeting(device, address));
          },
          [](const RequestWays& ways, std::string_view line) { printLine(answerTo(ways, line)); }};
}

// The device's page, and what it is fed by.
struct DevicePage {
  DevicePage(Device& device, const std::string& folder)
      : source(device), page(source, folder), feed(device, page) {}

  DeviceSource source;
  Page page;
  DeviceFeed feed;
};

// The exit status when it cannot listen.
template <class Listener>
std::optional<int> listenOn(Listener& listener, int port) {
  std::string text;
  const auto failure = listener.listen(static_cast<std::uint16_t>(port), text);
  return failure ? std::optional(tellFailure(*failure, port, text)) : std::nullopt;
}

// Where what passes comes from and goes to.
struct Tape {
  std::string record;  // a file to be made; empty for none
  std::string replay;  // one to be played in the place of the device
};

// Null with a reason, or where nothing is to be recorded.
std::unique_ptr<Recorder> recorderFor(const Tape& tape, std::chrono::milliseconds now,
                                      Events& events, std::string& trouble) {
  if (tape.record.empty()) return nullptr;
  return Recorder::begin(tape.record, {.began = now, .isReal = false}, events, trouble);
}

int tellTrouble(const std::string& trouble) {
  std::fprintf(stderr, "morvik-dev device: %s\n", trouble.c_str());
  return EXIT_FAILURE;
}

// Until Ctrl-C, under the hands of standard input and of other processes.
void attend(const std::string& title, Events& events, const RequestWays& ways, const Manner& manner,
            UntilTold& untilTold) {
  std::string text;
  const auto control = offerControl(
      {title, events, [&ways](std::string_view line) { return answerTo(ways, line); }}, text);
  std::fputs(text.c_str(), stderr);
  // A device in the background of a terminal goes on without commands, rather than stop when it
  // wants to read them.
  std::signal(SIGTTIN, SIG_IGN);
  const LineReader commands(STDIN_FILENO, [&](std::string_view line) { manner.obey(ways, line); });
  untilTold.run();
}

int serve(const Ports& ports, const std::string& folder, const Tape& tape, const Manner& manner) {
  std::string trouble;
  auto store = Store::open(folder, trouble);
  if (!store) return tellStoreFailure(trouble);
  DeviceServer server(std::move(store));
  Device& device = server.device();
  const Observation observation(device.events(), *manner.observer);
  const auto recorder = recorderFor(tape, device.now(), device.events(), trouble);
  if (!trouble.empty()) return tellTrouble(trouble);
  if (const auto status = listenOn(server, ports.device)) return *status;
  std::optional<DevicePage> shown;
  if (ports.page) {
    shown.emplace(device, folder);
    if (const auto status = listenOn(shown->page, *ports.page)) return *status;
  }
  UntilTold untilTold;
  manner.greet(device, server.port());
  if (shown) manner.tellPage(device, shown->page.address());
  attend("device on port " + std::to_string(server.port()), device.events(), waysTo(device), manner,
         untilTold);
  return EXIT_SUCCESS;
}

// What happens stands in the recording; what can be known of the device is known from what passes.
RequestWays waysToReplay(Device& shadow) {
  const auto refusal = [] { return refused("a recording is replayed: what happens stands in it"); };
  return {[&shadow] { return shadow.now(); }, [&shadow] { return viewOf(shadow); },
          [&shadow, refusal](std::string_view line) {
            return isQuestion(line) ? stimulate(shadow, line) : refusal();
          },
          [refusal](const Json& /*stimulus*/) { return refusal(); }};
}

int replay(int port, const Tape& tape, const Manner& manner) {
  std::string trouble;
  auto recording = Recording::read(tape.replay, trouble);
  if (!recording) return tellTrouble(trouble);
  if (!recording->warning.empty()) tellTrouble(recording->warning);
  ReplayServer server(std::move(*recording));
  Replay& played = server.replay();
  Shadow shadow(played.events());
  const Observation observation(played.events(), *manner.observer);
  const auto recorder = recorderFor(tape, played.now(), played.events(), trouble);
  if (!trouble.empty()) return tellTrouble(trouble);
  if (const auto status = listenOn(server, port)) return *status;
  UntilTold untilTold;
  manner.greet(shadow.device(), server.port());
  attend("replay of " + tape.replay + " on port " + std::to_string(server.port()), played.events(),
         waysToReplay(shadow.device()), manner, untilTold);
  return played.departures() > 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}

// Nothing when it is no port.
std::optional<int> portFrom(const std::string& text) {
  guint64 port = 0;
  const bool isPort =
      g_ascii_string_to_unsigned(text.c_str(), 10, 0, kHighestPort, &port, nullptr) != FALSE;
  return isPort ? std::optional(static_cast<int>(port)) : std::nullopt;
}

int refusePort() { return refuseUsage(kHelp.name, "a port is a number from 0 to 65535"); }

// What --page was given, the empty text for nothing. GLib's parser has no place in a caller's hands
// for an option that may have a value or none.
std::optional<std::string> pageAsked;

gboolean takePage(const char* /*name*/, const char* value, gpointer /*data*/, GError** /*error*/) {
  pageAsked = value != nullptr ? value : "";
  return TRUE;
}

// Where GLib's options leave their values.
struct DeviceWishes {
  DeviceWishes() = default;
  ~DeviceWishes() {
    for (char* value : {state, events, record, replay}) g_free(value);
  }
  DeviceWishes(const DeviceWishes&) = delete;
  DeviceWishes& operator=(const DeviceWishes&) = delete;

  Ports ports;
  char* state = nullptr;
  char* events = nullptr;
  char* record = nullptr;
  char* replay = nullptr;
};

std::string textOf(const char* value) { return value != nullptr ? value : ""; }

int serveAsAsked(DeviceWishes& wishes) {
  Ports& ports = wishes.ports;
  if (ports.device < 0 || ports.device > kHighestPort) return refusePort();
  if (pageAsked) {
    ports.page = portFrom(pageAsked->empty() ? "0" : *pageAsked);
    if (!ports.page) return refusePort();
  }
  const Tape tape{textOf(wishes.record), textOf(wishes.replay)};
  if (!tape.replay.empty() && ports.page)
    return refuseUsage(kHelp.name, "a replay has no page: morvik-dev run has one, with --device");
  const std::string form = wishes.events != nullptr ? wishes.events : "text";
  if (form != "text" && form != "json") {
    return refuseUsage(kHelp.name, "events are shown as text or as json");
  }
  const Manner manner = form == "json" ? forPrograms() : forPeople();
  if (!tape.replay.empty()) return replay(ports.device, tape, manner);
  return serve(ports, wishes.state != nullptr ? wishes.state : usualStateFolder(), tape, manner);
}

}  // namespace

int runDevice(int argc, char** argv) {
  DeviceWishes wishes;
  const GOptionEntry entries[] = {
      {"port", 'p', 0, G_OPTION_ARG_INT, &wishes.ports.device,
       "Port to listen on (7410); 0 takes a free one", "N"},
      {"state", 0, 0, G_OPTION_ARG_FILENAME, &wishes.state,
       "Where to keep what outlives the device ($XDG_STATE_HOME/morvik-dev)", "FOLDER"},
      {"events", 0, 0, G_OPTION_ARG_STRING, &wishes.events,
       "How to show what happens: text for people, json for programs (text)", "FORM"},
      {"page", 0, G_OPTION_FLAG_OPTIONAL_ARG, G_OPTION_ARG_CALLBACK,
       reinterpret_cast<gpointer>(takePage),
       "Show the device in the browser, on a free port of this machine or on this one", "PORT"},
      {"record", 0, 0, G_OPTION_ARG_FILENAME, &wishes.record,
       "Keep everything that passes in a new file, without credentials", "FILE"},
      {"replay", 0, 0, G_OPTION_ARG_FILENAME, &wishes.replay,
       "Answer as the device of a recording did, and tell where applications leave it", "FILE"},
      {}};
  const auto status = readOptions(kHelp, entries, argc, argv);
  return status ? *status : serveAsAsked(wishes);
}

}  // namespace morvik::devkit
