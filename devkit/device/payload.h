// Which of its many possible payloads a message carries.
#pragma once

#include <zeph-message.pb.h>

#include <vector>

namespace morvik::devkit {

// Payloads begin here; the envelope's fields stand below.
inline constexpr int kFirstPayload = 100;

// The first payload of a message in the order of field numbers, or null when there is only the
// envelope.
inline const google::protobuf::FieldDescriptor* payloadOf(
    const net::quelta::zeph::message::ZephMsg& message) {
  std::vector<const google::protobuf::FieldDescriptor*> fields;
  message.GetReflection()->ListFields(message, &fields);
  for (const auto* field : fields) {
    if (field->number() >= kFirstPayload) return field;
  }
  return nullptr;
}

}  // namespace morvik::devkit
