// What applications ask of the device.
#pragma once

#include <zeph-message.pb.h>

#include <vector>

#include "device/device.h"

namespace morvik::devkit {

/// Takes one message of an application, and answers it, unless the application is gone. Only the
/// first payload of a message counts. Answers go to the outlet, before this returns or later.
void receive(Device& device, AppNumber from, zeph::ZephMsg request);

/// The payloads that the device answers, as fields of a message.
std::vector<const google::protobuf::FieldDescriptor*> commands();

}  // namespace morvik::devkit
