// What nobody who reads along may see: passwords, tokens and keys.
#pragma once

#include <zeph-message.pb.h>

namespace morvik::devkit {

/// What stands in the place of a secret.
inline constexpr const char* kSecret = "(secret)";

/// The message with every secret replaced, wherever it stands: all of Social, and the passwords,
/// tokens and keys of the other messages. That there was one stays visible.
net::quelta::zeph::message::ZephMsg withoutSecrets(
    const net::quelta::zeph::message::ZephMsg& message);

/// Whether the texts of this field are secret.
bool isSecret(const google::protobuf::FieldDescriptor& field);

}  // namespace morvik::devkit
