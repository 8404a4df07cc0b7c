// The serial ports: any name is a port. What comes in on one is told by the world.
#include "device/exchange.h"
#include "device/features/features.h"
#include "device/owned.h"
#include "device/stimulation.h"
#include "device/text.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

// The ports and their lines.

template <class How>
void changePort(Device& device, const std::string& name, How how) {
  device.change("ports", [&](DeviceState& state) { how(state.ports[name]); });
}

void keepLine(Device& device, const std::string& name, const SerialPort::Line& line) {
  changePort(device, name, [&](SerialPort& port) {
    port.lines.push_back(line);
    if (port.lines.size() > kKeptLines) port.lines.pop_front();
  });
}

bool isOpen(const DeviceState& state, const std::string& name) {
  const auto found = state.ports.find(name);
  return found != state.ports.end() && found->second.open;
}

std::string baseOf(const DeviceState& state, const std::string& name) {
  const auto found = state.ports.find(name);
  return found != state.ports.end() ? found->second.base : "";
}

// What applications ask of them.

// Numbers above 31 are possible and nowhere to be found.
bool isDeviceFile(const std::string& name) {
  constexpr char kPattern[] = "^/dev/(tty[A-Za-z]+([12]?[0-9]|3[01])|serial/.+)$";
  return g_regex_match_simple(kPattern, name.c_str(),
                              static_cast<GRegexCompileFlags>(G_REGEX_RAW | G_REGEX_DOLLAR_ENDONLY),
                              G_REGEX_MATCH_DEFAULT) != FALSE;
}

void doubtPort(const Exchange& exchange, const std::string& name) {
  if (isDeviceFile(name)) return;
  exchange.doubt(Doubt::About::kPort, name,
                 "no device has a serial port " + cited(name) +
                     ": write the whole path of one, such as /dev/ttyS1");
}

void openPort(const Exchange& exchange, const zeph::Serial::Open& open) {
  doubtPort(exchange, open.port());
  changePort(exchange.device(), open.port(), [&](SerialPort& port) {
    port.open = true;
    port.baud = open.baud();
  });
  exchange.respond(zeph::OK);
}

void writeTo(const Exchange& exchange, const zeph::Serial::Write& write) {
  if (!isOpen(exchange.state(), write.port())) {
    exchange.respond(zeph::ERROR, write.port() + " is not open");
    return;
  }
  keepLine(exchange.device(), write.port(), {true, write.data()});
  exchange.respond(zeph::OK);
}

// A close without a name closes everything.
void closePort(const Exchange& exchange, const zeph::Serial::Close& close) {
  exchange.device().change("ports", [&](DeviceState& state) {
    for (auto& [name, port] : state.ports) {
      if (!close.has_port() || close.port() == name) port.open = false;
    }
  });
  exchange.respond(zeph::OK);
}

void answer(const Exchange& exchange) {
  const zeph::Serial& serial = exchange.request().serial();
  if (serial.has_open()) {
    openPort(exchange, serial.open());
  } else if (serial.has_write()) {
    writeTo(exchange, serial.write());
  } else if (serial.has_close()) {
    closePort(exchange, serial.close());
  } else {
    exchange.respond(zeph::ERROR, "a serial port can be opened, written to and closed");
  }
}

// An application that listens on a port asks for the base in which its lines are to be told.
void answerListener(const Exchange& exchange) {
  const zeph::SerialCallback& asked = exchange.request().serialcallback();
  if (!asked.has_readline()) {
    exchange.respond(zeph::ERROR, "there is no port to listen on");
    return;
  }
  doubtPort(exchange, asked.readline().port());
  changePort(exchange.device(), asked.readline().port(),
             [&](SerialPort& port) { port.base = asked.readline().base(); });
  exchange.respond(zeph::OK);
}

void letLineIn(Stimulation& stimulation) {
  zeph::ZephMsg message;
  auto* line = message.mutable_serialcallback()->mutable_readline();
  line->set_port(stimulation.text("port"));
  line->set_data(stimulation.text("text"));
  const std::string base = baseOf(stimulation.state(), line->port());
  if (stimulation.has("base")) {
    line->set_base(stimulation.text("base"));
  } else if (!base.empty()) {
    line->set_base(base);
  }
  if (!stimulation.understood()) return;
  keepLine(stimulation.device(), line->port(), {false, line->data()});
  stimulation.send(message);
}

void showLine(const SerialPort::Line& line, JsonObject shown) {
  shown.text("direction", line.written ? "written" : "read").text("text", line.text);
}

std::string atAGlance(const DeviceView& view) {
  std::string open;
  for (const auto& [name, port] : view.state.ports) {
    if (!port.open) continue;
    open += (open.empty() ? "" : ", ") + cited(name) + " at " + std::to_string(port.baud) + " baud";
  }
  return open;
}

void show(const DeviceView& view, JsonObject& whole) {
  whole.list("ports");
  for (const auto& [name, port] : view.state.ports) {
    JsonObject shown = whole.added("ports");
    shown.text("name", name).flag("open", port.open);
    if (port.baud != 0) shown.number("baud", port.baud);
    if (!port.base.empty()) shown.text("base", port.base);
    shown.list("lines");
    for (const SerialPort::Line& line : port.lines) showLine(line, shown.added("lines"));
  }
}

constexpr Argument kLine[] = {
    {.name = "port", .usage = "PORT"},
    {.name = "text", .usage = "TEXT"},
    {.name = "base", .usage = "BASE", .needed = false},
};

constexpr Command kCommands[] = {
    {zeph::ZephMsg::kSerialFieldNumber, Command::Needs::kGrant, answer},
    // An application may listen to a port before it has interactive mode.
    {zeph::ZephMsg::kSerialCallbackFieldNumber, Command::Needs::kNothing, answerListener},
};
constexpr Stimulus kStimuli[] = {{"serial", Stimulus::Group::kAround, Stimulus::For::kApplications,
                                  kLine, "let a line come in on a serial port", letLineIn}};
constexpr Glance kGlances[] = {{"serial", atAGlance}};

}  // namespace

constinit const Feature kSerialFeature = {
    .commands = kCommands, .stimuli = kStimuli, .glances = kGlances, .show = show};

}  // namespace morvik::devkit
