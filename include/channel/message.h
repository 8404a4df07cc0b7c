// Making and reading messages, without a socket.
#pragma once

#include <zeph-message.pb.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "host/zeph-msg-listener.h"

namespace morvik {

/// A message with a fresh lower-case UUID as its id, and with `interactiveId` unless that is null.
std::unique_ptr<zeph::ZephMsg> newZephMsg(const char* interactiveId);

/// For the moment before the host waits for a server: makes the next message's id, where one has
/// been taken since the last time. Never in the launcher, or all its children had the same.
void makeIdAhead();

/// Reads a payload into an empty message. Of one that does not parse, the fields in front of the
/// failure that were read whole are kept; that it lacks required fields is no failure.
void parseZephMsg(std::span<const std::uint8_t> payload, zeph::ZephMsg& message);

/// The enum value's name, which is how scripts see it: nameOf(response.code()).
template <typename Enum>
const std::string& nameOf(Enum value) {
  return google::protobuf::GetEnumDescriptor<Enum>()
      ->FindValueByNumber(static_cast<int>(value))
      ->name();
}

}  // namespace morvik
