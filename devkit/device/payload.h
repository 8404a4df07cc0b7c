// Which of its many possible payloads a message carries.
#pragma once

#include <zeph-message.pb.h>

#include <string>
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

// The payload of a name, spelled as in the schema, or null.
inline const google::protobuf::FieldDescriptor* payloadNamed(const std::string& name) {
  const auto* field = net::quelta::zeph::message::ZephMsg::descriptor()->FindFieldByName(name);
  return field != nullptr && field->number() >= kFirstPayload ? field : nullptr;
}

}  // namespace morvik::devkit
