// What a message carries: its payload, the fields that are set.
#pragma once

#include <zeph-message.pb.h>

#include <string>
#include <vector>

namespace morvik::devkit {

/// Payloads begin here; the envelope's fields stand below.
inline constexpr int kFirstPayload = 100;

/// The first payload of a message in the order of field numbers, or null when there is only the
/// envelope.
inline const google::protobuf::FieldDescriptor* payloadOf(
    const net::quelta::zeph::message::ZephMsg& message) {
  std::vector<const google::protobuf::FieldDescriptor*> fields;
  message.GetReflection()->ListFields(message, &fields);
  for (const auto* field : fields) {
    if (field->number() >= kFirstPayload) return field;
  }
  return nullptr;
}

/// The names of the fields that are set, in the order of their numbers.
inline std::vector<std::string> namesOfFields(const google::protobuf::Message& message) {
  std::vector<const google::protobuf::FieldDescriptor*> fields;
  message.GetReflection()->ListFields(message, &fields);
  std::vector<std::string> names;
  names.reserve(fields.size());
  for (const auto* field : fields) names.push_back(field->name());
  return names;
}

}  // namespace morvik::devkit
