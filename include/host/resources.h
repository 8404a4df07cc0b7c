// The files of an application's own folder, for its scripts.
#pragma once

#include <cstddef>
#include <span>

#include "host/script.h"

namespace morvik {

/// Room for a resource's path, its end mark included: longer ones are cut. That it is not
/// kStartPathSize is meant: a script reads and writes where it could not include.
inline constexpr std::size_t kResourcePathSize = 512;

/// The script function `include`: runs a source file in the application's one context.
void include(const Args& args);

/// The functions of `file`.
std::span<const Binding> fileFunctions();

}  // namespace morvik
