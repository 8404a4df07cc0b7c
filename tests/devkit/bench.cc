// Messages to lines and back.
#include "bench.h"

#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "app-client.h"

namespace morvik::test {

using namespace devkit;

void HeldScheduler::pass(std::chrono::milliseconds time) {
  const std::chrono::milliseconds end = now_ + time;
  for (;;) {
    const auto next = std::min_element(held.begin(), held.end(),
                                       [](const Held& a, const Held& b) { return a.due < b.due; });
    if (next == held.end() || next->due > end) break;
    now_ = next->due;
    const std::function<void()> what = std::move(next->what);
    held.erase(next);
    what();
  }
  now_ = end;
}

std::vector<std::string> KeptEvents::notes() const {
  std::vector<std::string> texts;
  for (const Noted& note : of<Noted>()) texts.push_back(note.text);
  return texts;
}

Bench::Bench() {
  for (const AppNumber number : {1U, 2U}) {
    device.applicationCame(number);
    receive(device, number, startRequest("granted"));
  }
  outlet.sent.clear();
  device.events().add(events);
}

Lines Bench::command(const std::string& payload, AppNumber from) {
  zeph::ZephMsg message;
  EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString("id: \"x\" " + payload, &message))
      << payload;
  message.set_id(freshMessage().id());
  if (!message.has_interactiveid()) message.set_interactiveid("granted");
  lastIds_[from] = message.id();
  outlet.sent.clear();
  receive(device, from, message);
  return said();
}

Lines Bench::stimulus(const std::string& line) {
  const Outcome outcome = stimulate(device, line);
  EXPECT_TRUE(outcome.done) << line << ": " << outcome.text;
  EXPECT_EQ(outcome.text, "") << line;
  return said();
}

Lines Bench::noted(const std::string& line) {
  events.all.clear();
  stimulus(line);
  return events.notes();
}

std::string Bench::refused(const std::string& line) {
  const Outcome outcome = stimulate(device, line);
  EXPECT_FALSE(outcome.done) << line;
  EXPECT_TRUE(said().empty()) << line;
  return outcome.text;
}

Lines Bench::pass(std::chrono::milliseconds time) {
  scheduler.pass(time);
  return said();
}

Lines Bench::said() {
  Lines lines;
  for (auto& [to, message, delivery] : std::exchange(outlet.sent, {})) {
    EXPECT_TRUE(message.IsInitialized()) << message.InitializationErrorString();
    const std::string relation = !message.has_correlationid()              ? ""
                                 : message.correlationid() == lastIds_[to] ? "re "
                                                                           : "re? ";
    message.clear_id();
    message.clear_correlationid();
    lines.push_back(std::to_string(to) + ": " + relation + message.ShortDebugString());
  }
  return lines;
}

}  // namespace morvik::test
