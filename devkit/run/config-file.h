// An application's config.bin, as far as an explanation needs it.
#pragma once

#include <string>

#include "run/hints.h"

namespace morvik::devkit {

/// Whether there is a file at the path that holds no configuration, or cannot be read. The host
/// says nothing of that: `params` then holds what it could make out.
bool configIsBroken(const std::string& path);

Hint brokenConfigHint(const std::string& app);

}  // namespace morvik::devkit
