// What the virtual device takes from an application though a real one would not.
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace morvik::devkit {

/// Answered as if nothing were wrong, and told to whoever writes the application.
struct Doubt {
  enum class About { kColor, kFade, kEar, kSound, kPort };

  About about = About::kColor;
  std::string value;  ///< what the application asked for: "rde", "left 20"
  std::string text;   ///< one sentence: what is doubted, why, and what to do instead
};

/// As programs read them, in the order of `Doubt::About`.
inline constexpr std::array kDoubtNames = {"color", "fade", "ear", "sound", "port"};
inline const char* nameOf(Doubt::About about) {
  return kDoubtNames[static_cast<std::size_t>(about)];
}

/// So many are told of one application about each thing, each fact once: one that plays a thousand
/// files that are not there hides nothing else.
inline constexpr std::size_t kMostDoubts = 10;

}  // namespace morvik::devkit
