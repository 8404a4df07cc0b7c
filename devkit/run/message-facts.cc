// Facts of a message, line by line.
#include "run/message-facts.h"

#include <algorithm>

namespace morvik::devkit {
namespace {

constexpr std::string_view kSending = "Sending MSG\n";
constexpr std::string_view kReceived = "Received MSG\n";

std::string unquoted(std::string_view value) {
  if (value.size() >= 2 && value.front() == '"') value = value.substr(1, value.size() - 2);
  return std::string(value);
}

// "  code: OK" within a payload.
void takeInnerLine(MessageFacts& facts, std::string_view line) {
  constexpr std::string_view kCode = "  code: ";
  constexpr std::string_view kAction = "  action: ";
  const std::string& payload = facts.payloads.back();
  if (line.starts_with(kCode) && (payload == "response" || payload == "event")) {
    facts.code = line.substr(kCode.size());
  } else if (line.starts_with(kAction) && payload == "interactiveMode") {
    facts.action = line.substr(kAction.size());
  }
}

void takeOuterLine(MessageFacts& facts, std::string_view line) {
  const std::size_t colon = line.find(": ");
  if (line.ends_with(" {")) {
    facts.payloads.emplace_back(line.substr(0, line.size() - 2));
  } else if (line.starts_with("id: ")) {
    facts.id = unquoted(line.substr(colon + 2));
  } else if (line.starts_with("correlationId: ")) {
    facts.correlationId = unquoted(line.substr(colon + 2));
  }
}

void takeLine(MessageFacts& facts, std::string_view line) {
  if (line.empty() || line == "}") return;
  if (line.front() != ' ') return takeOuterLine(facts, line);
  if (!facts.payloads.empty()) takeInnerLine(facts, line);
}

}  // namespace

bool MessageFacts::has(std::string_view payload) const {
  return std::ranges::find(payloads, payload) != payloads.end();
}

std::optional<MessageFacts> factsOfDump(std::string_view text) {
  const bool sending = text.starts_with(kSending);
  if (!sending && !text.starts_with(kReceived)) return std::nullopt;
  MessageFacts facts;
  facts.direction = sending ? Direction::kFromApplication : Direction::kToApplication;
  text.remove_prefix(sending ? kSending.size() : kReceived.size());
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    takeLine(facts, line);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return facts;
}

}  // namespace morvik::devkit
