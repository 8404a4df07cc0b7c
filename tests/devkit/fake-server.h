// A device server that does what a test wants with the connection that came last.
#pragma once

#include <zeph-message.pb.h>

#include <cstdint>
#include <functional>
#include <string>

#include "device/when-readable.h"
#include "server/frame.h"
#include "support/device-message.h"

namespace morvik::test {

namespace zeph = net::quelta::zeph::message;

// Works on the thread-default main context.
class FakeServer {
 public:
  // Called when an application has connected, and for each message that it sends.
  using Came = std::function<void(FakeServer&)>;
  using Received = std::function<void(FakeServer&, const zeph::ZephMsg&)>;

  FakeServer(Came came, Received received);
  ~FakeServer();
  FakeServer(const FakeServer&) = delete;
  FakeServer& operator=(const FakeServer&) = delete;

  int port() const { return port_; }

  void send(const zeph::ZephMsg& message);
  void sendBytes(const std::string& bytes);
  // Answers with a response that holds the code.
  void answer(const zeph::ZephMsg& request, zeph::VReturnCode code);
  // Ends the connection in order.
  void close();
  // Breaks it off, so that the application meets an error.
  void reset();

 private:
  bool accept();
  bool take();

  Came came_;
  Received received_;
  int listening_;
  int port_ = 0;
  int connection_ = -1;
  devkit::GSourceAttached accepting_;
  devkit::GSourceAttached reading_;
  devkit::FrameReader frames_;
};

}  // namespace morvik::test
