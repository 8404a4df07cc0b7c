// What the host makes anew for each message.
#pragma once

namespace morvik::test {

/// The form of a fresh id, as a regular expression.
inline constexpr char kUuid[] = "[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}";

}  // namespace morvik::test
