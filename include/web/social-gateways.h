// The gateways to the user's accounts: requests with a token that the script never sees.
#pragma once

#include <span>

#include "host/script.h"

namespace morvik {

/// The functions of `social.facebook` and `social.soundcloud`: they look the service's hidden token
/// up each time and send it to the service's own domain only.
std::span<const Binding> facebookFunctions();
std::span<const Binding> soundcloudFunctions();

}  // namespace morvik
