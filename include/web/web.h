// The web features' script functions, one line for each feature. Each is the last function of its
// source: message-box.cc, contacts.cc, social.cc, http-client.cc.
#pragma once

#include <span>

#include "host/script.h"

namespace morvik {

std::span<const Binding> messageFunctions();
std::span<const Binding> contactFunctions();
std::span<const Binding> socialFunctions();
std::span<const Binding> httpFunctions();

}  // namespace morvik
