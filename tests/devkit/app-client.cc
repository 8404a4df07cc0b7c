// An application's socket, driven by the test's loop.
#include "app-client.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

namespace morvik::test {

using namespace devkit;

AppClient::AppClient(Loop& loop, std::uint16_t port)
    : loop_(loop), fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  EXPECT_EQ(connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  source_ = whenReadable(fd_, [this] { return take(); });
}

AppClient::~AppClient() { disconnect(); }

void AppClient::disconnect() {
  stopReading();
  if (fd_ >= 0) close(fd_);
  fd_ = -1;
}

void AppClient::stopReading() { source_.reset(); }

void AppClient::sendBytes(const std::string& bytes) {
  EXPECT_EQ(::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL),
            static_cast<ssize_t>(bytes.size()));
}

void AppClient::send(const zeph::ZephMsg& message) {
  sendBytes(frameOf(message.SerializeAsString()));
}

zeph::ZephMsg AppClient::receive() {
  const bool arrived = loop_.runUntil([this] { return !messages_.empty(); });
  EXPECT_TRUE(arrived) << "no message came";
  if (!arrived) return {};
  zeph::ZephMsg message = messages_.front();
  messages_.pop_front();
  return message;
}

zeph::ZephMsg AppClient::ask(const zeph::ZephMsg& message) {
  send(message);
  return receive();
}

bool AppClient::sawEnd() {
  return loop_.runUntil([this] { return ended_; });
}

bool AppClient::take() {
  std::array<char, 65536> bytes{};
  const ssize_t count = recv(fd_, bytes.data(), bytes.size(), 0);
  ended_ = count <= 0;
  if (ended_) return false;
  frames_.feed(std::string_view(bytes.data(), static_cast<std::size_t>(count)));
  while (const auto payload = frames_.next()) {
    EXPECT_TRUE(messages_.emplace_back().ParseFromString(*payload));
  }
  return true;
}

zeph::ZephMsg freshMessage() {
  static int lastId = 0;
  zeph::ZephMsg message;
  message.set_id(std::to_string(++lastId));
  return message;
}

namespace {

zeph::ZephMsg command(const std::string& interactiveId) {
  zeph::ZephMsg message = freshMessage();
  message.set_interactiveid(interactiveId);
  return message;
}

}  // namespace

zeph::ZephMsg startRequest(const std::string& interactiveId) {
  zeph::ZephMsg message = freshMessage();
  message.mutable_interactivemode()->set_interactiveid(interactiveId);
  message.mutable_interactivemode()->set_action(zeph::InteractiveMode::START);
  return message;
}

zeph::ZephMsg stopRequest(const std::string& interactiveId) {
  zeph::ZephMsg message = command(interactiveId);
  message.mutable_interactivemode()->set_action(zeph::InteractiveMode::STOP);
  return message;
}

zeph::ZephMsg pingRequest(const std::string& interactiveId) {
  zeph::ZephMsg message = command(interactiveId);
  message.mutable_ping();
  return message;
}

zeph::ZephMsg infoRequest(const std::string& interactiveId) {
  zeph::ZephMsg message = command(interactiveId);
  message.mutable_morvikinfo_query();
  return message;
}

zeph::ZephMsg lightRequest(const std::string& interactiveId, const std::string& color) {
  zeph::ZephMsg message = command(interactiveId);
  message.mutable_led()->mutable_light()->set_color(color);
  return message;
}

zeph::ZephMsg fadeRequest(const std::string& interactiveId, const std::string& color, int period) {
  zeph::ZephMsg message = command(interactiveId);
  auto* fade = message.mutable_led()->mutable_fade();
  fade->set_color(color);
  fade->set_period(period);
  return message;
}

zeph::ZephMsg pulseRequest(const std::string& interactiveId, const std::string& color, int period,
                           int pulses) {
  zeph::ZephMsg message = command(interactiveId);
  auto* pulse = message.mutable_led()->mutable_pulse();
  pulse->set_color(color);
  pulse->set_period(period);
  pulse->set_pulse(pulses);
  return message;
}

}  // namespace morvik::test
