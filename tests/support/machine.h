// What a machine must give for some tests, and an ordinary container does not.
#pragma once

#include <optional>
#include <string>

namespace morvik::test {

/// Enters a mount namespace of the calling process's own, in which it may mount. Null, or the name
/// of the step that failed; errno tells why. Allocates nothing, for use between fork and exec.
const char* enterMountNamespace();

/// Why no test can have a mount namespace here, for GTEST_SKIP; nothing where one can.
const std::optional<std::string>& lackOfMountNamespaces();

}  // namespace morvik::test
