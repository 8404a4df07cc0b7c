// The user's credentials in words that keep them secret.
#pragma once

#include <zeph-message.pb.h>

#include <string>

namespace morvik::devkit {

// The names of those that are there, never a value: "twitterToken facebookToken", or "none".
std::string credentialNames(const net::quelta::zeph::message::Social& credentials);

}  // namespace morvik::devkit
