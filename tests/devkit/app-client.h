// An application as the device server meets it: a socket that sends bytes and hears messages.
#pragma once

#include <zeph-message.pb.h>

#include <cstdint>
#include <deque>
#include <string>

#include "device/when-readable.h"
#include "loop.h"
#include "server/frame.h"

namespace morvik::test {

namespace zeph = net::quelta::zeph::message;

class AppClient {
 public:
  // Connects to 127.0.0.1.
  AppClient(Loop& loop, std::uint16_t port);
  ~AppClient();
  AppClient(const AppClient&) = delete;
  AppClient& operator=(const AppClient&) = delete;

  void sendBytes(const std::string& bytes);
  void send(const zeph::ZephMsg& message);

  // The next message, in the order of arrival; a message without an id when none comes.
  zeph::ZephMsg receive();
  // Sends and gives the next message.
  zeph::ZephMsg ask(const zeph::ZephMsg& message);

  // Everything that has arrived is left in the socket from now on.
  void stopReading();
  // The server has ended the connection, or does so in time.
  bool sawEnd();
  void disconnect();

 private:
  bool take();

  Loop& loop_;
  int fd_;
  devkit::GSourceAttached source_;
  devkit::FrameReader frames_;
  std::deque<zeph::ZephMsg> messages_;
  bool ended_ = false;
};

// Messages as applications send them. Ids are "1", "2", "3", ...
zeph::ZephMsg freshMessage();
zeph::ZephMsg startRequest(const std::string& interactiveId);
zeph::ZephMsg stopRequest(const std::string& interactiveId);
zeph::ZephMsg pingRequest(const std::string& interactiveId);
zeph::ZephMsg infoRequest(const std::string& interactiveId);
zeph::ZephMsg lightRequest(const std::string& interactiveId, const std::string& color);
zeph::ZephMsg fadeRequest(const std::string& interactiveId, const std::string& color, int period);
zeph::ZephMsg pulseRequest(const std::string& interactiveId, const std::string& color, int period,
                           int pulses);

}  // namespace morvik::test
