// The serial ports: any name is a port. What comes in on one is told by the command input.
#include "device/handlers.h"

namespace morvik::devkit {
namespace {

void openPort(const Exchange& exchange, const zeph::Serial::Open& open) {
  SerialPort& port = exchange.state().ports[open.port()];
  port.open = true;
  port.baud = open.baud();
  exchange.respond(zeph::OK);
}

void writeTo(const Exchange& exchange, const zeph::Serial::Write& write) {
  const auto found = exchange.state().ports.find(write.port());
  if (found == exchange.state().ports.end() || !found->second.open) {
    exchange.respond(zeph::ERROR, write.port() + " is not open");
    return;
  }
  found->second.written = write.data();
  exchange.respond(zeph::OK);
}

// A close without a name closes everything.
void closePort(const Exchange& exchange, const zeph::Serial::Close& close) {
  for (auto& [name, port] : exchange.state().ports) {
    if (!close.has_port() || close.port() == name) port.open = false;
  }
  exchange.respond(zeph::OK);
}

}  // namespace

void answerSerial(const Exchange& exchange) {
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
void answerSerialListener(const Exchange& exchange) {
  const zeph::SerialCallback& asked = exchange.request().serialcallback();
  if (!asked.has_readline()) {
    exchange.respond(zeph::ERROR, "there is no port to listen on");
    return;
  }
  exchange.state().ports[asked.readline().port()].base = asked.readline().base();
  exchange.respond(zeph::OK);
}

void readFromPort(Stimulation& stimulation) {
  zeph::ZephMsg message;
  auto* line = message.mutable_serialcallback()->mutable_readline();
  line->set_port(stimulation.text("PORT"));
  line->set_data(stimulation.text("TEXT"));
  const auto found = stimulation.state().ports.find(line->port());
  if (stimulation.hasMore()) {
    line->set_base(stimulation.text("BASE"));
  } else if (found != stimulation.state().ports.end() && !found->second.base.empty()) {
    line->set_base(found->second.base);
  }
  if (stimulation.understood()) stimulation.send(message);
}

}  // namespace morvik::devkit
