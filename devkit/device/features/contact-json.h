// A contact in JSON, wherever one stands.
#pragma once

#include <zeph-message.pb.h>

#include "device/json.h"

namespace morvik::devkit {

void showContact(const net::quelta::zeph::message::Contact& contact, JsonObject shown);

}  // namespace morvik::devkit
