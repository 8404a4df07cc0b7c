// Where the files of an application are.
#pragma once

#include <cstddef>
#include <string>

namespace morvik {

class MorvikData;

/// Room for a path at an application's start, its end mark included: longer ones are cut.
inline constexpr std::size_t kStartPathSize = 255;

/// `file` in the application's folder, cut without a word to what fits `size` with its end mark.
std::string appPath(const MorvikData& instance, const char* file, std::size_t size);

}  // namespace morvik
