// The lines of morvikvm-debug.
#include "run/debugger-pause.h"

namespace morvik::devkit {
namespace {

constexpr std::string_view kPaused = "debugger: paused ";
constexpr std::string_view kGoesOn = "debugger: goes on after ";

}  // namespace

std::optional<std::chrono::system_clock::duration> DebuggerPause::take(const LogLine& line) {
  if (line.kind != LineKind::kHost) return std::nullopt;
  if (line.text.starts_with(kPaused)) {
    place_ = line.text.substr(kPaused.size());
    since_ = line.time;
  }
  if (!line.text.starts_with(kGoesOn) || place_.empty()) return std::nullopt;
  place_.clear();
  return line.time - since_;
}

}  // namespace morvik::devkit
