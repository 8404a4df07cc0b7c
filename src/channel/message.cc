// Fresh messages, and reading of payloads that may be damaged.
#include "channel/message.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>

#include <algorithm>
#include <climits>
#include <utility>

#include "host/uuid.h"

namespace morvik {
namespace {

using google::protobuf::internal::WireFormatLite;
using google::protobuf::io::CodedInputStream;

// The next message's id, made ahead. Only an application that has needed one gets another: libuuid
// seeds the C library's random numbers anew for each, and `morvik.random` is to go on from the seed
// of its start for as long as no message has gone out.
struct NextId {
  bool wanted = false;
  std::string text;
};

NextId& nextIdKeptForLife() {
  static auto& next = *new NextId;
  return next;
}

std::string takeId() {
  NextId& next = nextIdKeptForLife();
  next.wanted = true;
  return next.text.empty() ? newUuid() : std::exchange(next.text, {});
}

// Adds one field's bytes to the message. False when they do not parse; the message is then as
// before.
bool addField(std::span<const std::uint8_t> field, zeph::ZephMsg& message) {
  zeph::ZephMsg alone;
  if (!alone.ParsePartialFromArray(field.data(), static_cast<int>(field.size()))) return false;
  return message.MergePartialFromCodedStream(
      std::make_unique<CodedInputStream>(field.data(), static_cast<int>(field.size())).get());
}

// Walks the payload field by field for as long as they are whole.
void keepWholeFields(std::span<const std::uint8_t> payload, zeph::ZephMsg& message) {
  CodedInputStream stream(payload.data(), static_cast<int>(payload.size()));
  while (true) {
    const auto start = static_cast<std::size_t>(stream.CurrentPosition());
    const std::uint32_t tag = stream.ReadTag();
    if (tag == 0 || !WireFormatLite::SkipField(&stream, tag)) return;
    const auto end = static_cast<std::size_t>(stream.CurrentPosition());
    if (!addField(payload.subspan(start, end - start), message)) return;
  }
}

}  // namespace

std::unique_ptr<zeph::ZephMsg> newZephMsg(const char* interactiveId) {
  auto message = std::make_unique<zeph::ZephMsg>();
  message->set_id(takeId());
  if (interactiveId != nullptr) message->set_interactiveid(interactiveId);
  return message;
}

void makeIdAhead() {
  NextId& next = nextIdKeptForLife();
  if (!std::exchange(next.wanted, false) || !next.text.empty()) return;
  next.text = newUuid();
}

void parseZephMsg(std::span<const std::uint8_t> payload, zeph::ZephMsg& message) {
  // The message library counts in int; what lies beyond is cut off like any damaged end.
  payload = payload.first(std::min(payload.size(), static_cast<std::size_t>(INT_MAX)));
  if (message.ParsePartialFromArray(payload.data(), static_cast<int>(payload.size()))) return;
  message.Clear();
  keepWholeFields(payload, message);
}

}  // namespace morvik
