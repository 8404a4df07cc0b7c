// Messages of the schema out of JSON.
#pragma once

#include <google/protobuf/message.h>

#include <optional>
#include <string>

namespace morvik::devkit {

/// Reads a message from a JSON text that names its fields as the schema does. Required fields may
/// be missing: ask `IsInitialized`. Gives what is wrong in protobuf's words; the message then holds
/// what could be made out.
std::optional<std::string> readJson(const std::string& text, google::protobuf::Message& message);

}  // namespace morvik::devkit
