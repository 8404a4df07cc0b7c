// Identifiers of messages and of interactive mode.
#pragma once

#include <string>

namespace morvik {

/// A fresh UUID (RFC 9562) as 36 lower-case characters.
std::string newUuid();

}  // namespace morvik
