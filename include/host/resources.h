// The files of an application's own folder, for its scripts.
#pragma once

#include <cstddef>
#include <span>

#include "host/script.h"

namespace morvik {

/// Room for a resource's path, its end mark included: longer ones are cut. It is more than
/// kStartPathSize, which holds for includes: a file deep in the folders can be read and written by
/// a script that cannot include it.
inline constexpr std::size_t kResourcePathSize = 512;

/// The script function `include`: runs a source file in the application's one context.
void include(const Args& args);

/// The functions of `file`.
std::span<const Binding> fileFunctions();

}  // namespace morvik
