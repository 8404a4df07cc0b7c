// The events are the lines of its output, each read when somebody waits for it.
#include "support/system/virtual-device.h"

#include <google/protobuf/util/json_util.h>

#include <stdexcept>

#include "support/text-message.h"

namespace morvik::test {
namespace {

// The message of an event, without what no two runs have alike.
std::string payloadOf(const nlohmann::json& event) {
  const std::string json = event.at("message").dump();
  zeph::ZephMsg message;
  if (!google::protobuf::util::JsonStringToMessage(json, &message).ok())
    throw std::runtime_error("not a message: " + json);
  message.clear_id();
  message.clear_correlationid();
  message.clear_interactiveid();
  return message.ShortDebugString();
}

}  // namespace

VirtualDevice::VirtualDevice()
    : program_({MORVIK_DEV, "device", "--port=0", "--state=" + state_.path().string(),
                "--events=json"}) {
  const Json& listening = next("listening", answered_);
  address_ = listening.at("host").get<std::string>() + ':' + listening.at("port").dump();
}

void VirtualDevice::happens(const std::string& stimulus) {
  program_.say(stimulus + '\n');
  const Json& outcome = next("outcome", answered_);
  if (!outcome.at("done")) throw std::runtime_error(stimulus + ": " + outcome.at("text").dump());
}

void VirtualDevice::awaitMessage(const std::string& event, const std::string& message) {
  const std::string awaited = zephMsg(message).ShortDebugString();
  const auto deadline = Clock::now() + kPatience;  // other messages may come for ever
  while (payloadOf(next(event, awaited_)) != awaited)
    if (Clock::now() > deadline) throw std::runtime_error("never " + event + ": " + message);
}

const VirtualDevice::Json& VirtualDevice::next(const std::string& kind, std::size_t& from) {
  while (event(from++).at("event") != kind) {
  }
  return events_[from - 1];
}

const VirtualDevice::Json& VirtualDevice::event(std::size_t index) {
  if (index == events_.size()) {
    const std::string line = program_.waitForLine(readBytes_);
    readBytes_ += line.size() + 1;
    events_.push_back(Json::parse(line));
  }
  return events_[index];
}

}  // namespace morvik::test
