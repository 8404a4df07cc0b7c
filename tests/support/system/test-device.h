// A device server for tests: a plain TCP listener on the loopback interface that a test drives by
// hand. Everything that waits throws when patience ends.
#pragma once

#include <zeph-message.pb.h>

#include <optional>
#include <string>
#include <string_view>

#include "server/frame.h"
#include "support/device-message.h"
#include "support/waiting.h"

namespace morvik::test {

namespace zeph = net::quelta::zeph::message;

// The bytes of a message on the wire. For lengths that are not the message's there is frameHeader.
std::string frameOf(const zeph::ZephMsg& message);
using devkit::frameHeader;
using devkit::frameOf;

zeph::ZephMsg responseTo(const zeph::ZephMsg& request, std::string_view code);
zeph::ZephMsg eventFor(const zeph::ZephMsg& request, std::string_view code);
zeph::ZephMsg stopNotice();

// One application's connection, seen from the device.
class DeviceLink {
 public:
  DeviceLink() = default;
  explicit DeviceLink(Descriptor socket) : socket_(std::move(socket)) {}

  // The next message of the application.
  zeph::ZephMsg receive();
  // The next so many bytes as they come.
  std::string receiveBytes(std::size_t count);
  // Whether nothing has come that was not received.
  [[nodiscard]] bool quiet() const;

  void send(const zeph::ZephMsg& message);
  void sendBytes(std::string_view bytes);
  // One byte, then the next one when the application has read it.
  void sendByteByByte(std::string_view bytes);
  // Waits until the application has read all that was sent.
  void awaitRead() const;

  // Answers a request with a code by its name; tells its later result; grants a start request.
  void reply(const zeph::ZephMsg& request, std::string_view code);
  void event(const zeph::ZephMsg& request, std::string_view code);
  void grant(const zeph::ZephMsg& startRequest) { reply(startRequest, "OK"); }

  // Ends the sending direction; closes in order; breaks off.
  void finishSending();
  void close() { socket_.close(); }
  void reset();

 private:
  Descriptor socket_;
};

class TestDevice {
 public:
  TestDevice();

  [[nodiscard]] int port() const { return port_; }
  // The next application's connection.
  DeviceLink accept();
  // Whether no connection waits to be accepted.
  [[nodiscard]] bool quiet() const;

 protected:
  explicit TestDevice(int backlog);

 private:
  Descriptor socket_;
  int port_ = 0;
};

// A device that takes no further connection until it makes room.
class FullDevice : private TestDevice {
 public:
  FullDevice();

  using TestDevice::port;
  void makeRoom() { accept(); }

 private:
  Descriptor guest_;
};

// A port of the loopback interface where nothing listens.
int unusedPort();

}  // namespace morvik::test
