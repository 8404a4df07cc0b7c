// The protocol's frames.
#include "debug-client.h"

#include <gtest/gtest.h>

namespace morvik::test {

using namespace devkit;

void DebugClient::post(const std::string& method, const Json& parameters) {
  send({{"id", ++lastCall_}, {"method", method}, {"params", parameters}});
}

Json DebugClient::answerTo(const std::string& method, const Json& parameters) {
  post(method, parameters);
  const std::string beginning = "{\"id\":" + std::to_string(lastCall_) + ",";
  for (;;) {
    std::string frame = receiveText();
    if (frame.empty()) return {};
    if (frame.starts_with(beginning)) return Json::parse(frame);
    events_.push_back(std::move(frame));
  }
}

Json DebugClient::call(const std::string& method, const Json& parameters) {
  Json answer = answerTo(method, parameters);
  EXPECT_TRUE(answer.contains("result")) << method << ": " << answer;
  return answer.value("result", Json());
}

Json DebugClient::waitFor(const std::string& event) {
  const std::string beginning = "{\"method\":\"" + event + "\"";
  for (;;) {
    const std::string frame = nextEvent();
    if (frame.empty()) return {};
    if (frame.starts_with(beginning)) return Json::parse(frame)["params"];
  }
}

std::string DebugClient::nextEvent() {
  if (events_.empty()) return receiveText();
  std::string frame = std::move(events_.front());
  events_.pop_front();
  return frame;
}

Json DebugClient::evaluate(const std::string& expression) {
  return call("Runtime.evaluate", {{"expression", expression}, {"returnByValue", true}})["result"]
      .value("value", Json());
}

void DebugClient::enable() {
  call("Runtime.enable");
  call("Debugger.enable");
}

Json DebugClient::local(const Json& frame, const std::string& name) {
  const Json scope = frame["scopeChain"][0]["object"]["objectId"];
  const Json held =
      call("Runtime.getProperties", {{"objectId", scope}, {"ownProperties", true}})["result"];
  for (const Json& property : held) {
    if (property["name"] == name) return property["value"].value("value", Json());
  }
  return nullptr;
}

}  // namespace morvik::test
