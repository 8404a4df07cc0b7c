// Applications by their process, from "running app: ..." to their last words.
#include "run/log-story.h"

#include <algorithm>
#include <charconv>

namespace morvik::devkit {
namespace {

constexpr std::string_view kRunning = "running app: ";
constexpr std::string_view kFolder = "params: ";
constexpr std::string_view kReaped = "end process: ";

bool isHostLine(const LogLine& line) {
  return line.kind == LineKind::kHost || line.kind == LineKind::kNoise;
}

// A launcher says it of an application that it has reaped: "end process: 12 nbChild 0".
pid_t reapedBy(const LogLine& line) {
  if (!isHostLine(line) || !line.text.starts_with(kReaped)) return 0;
  pid_t pid = 0;
  std::from_chars(line.text.data() + kReaped.size(), line.text.data() + line.text.size(), pid);
  return pid;
}

bool hasSaidLastWords(const Evidence& evidence) {
  return evidence.autokill || evidence.stopAutokill || evidence.startRefused ||
         !evidence.fatalText.empty();
}

// At the debug level the folder stands in front of the name.
std::string nameIn(std::string_view text, const std::string& folder) {
  if (!folder.empty() && text.starts_with(folder + '/')) text.remove_prefix(folder.size() + 1);
  const std::size_t slash = text.starts_with('/') ? text.rfind('/') : std::string_view::npos;
  return std::string(slash == std::string_view::npos ? text : text.substr(slash + 1));
}

}  // namespace

LogStory::Told LogStory::take(LogLine& line) {
  Told told;
  if (isHostLine(line) && line.text.starts_with(kFolder)) {
    folder_ = line.text.substr(kFolder.size());
  }
  told.started = begin(line);
  const auto found = apps_.find(line.pid);
  if (found != apps_.end()) {
    line.app = found->second.collector.evidence().app;
    found->second.collector.hear(line);
    if (hasSaidLastWords(found->second.collector.evidence())) told.end = endOf(line.pid, line);
  } else if (const pid_t reaped = reapedBy(line)) {
    told.end = endOf(reaped, line);
  }
  return told;
}

// An application says twice that it runs; a third time is another one with the same number.
bool LogStory::begin(const LogLine& line) {
  if (!isHostLine(line) || !line.text.starts_with(kRunning)) return false;
  const auto found = apps_.find(line.pid);
  if (found != apps_.end() && !std::exchange(found->second.runs, true)) return false;
  if (found != apps_.end()) apps_.erase(found);
  forgetOldest();
  Evidence& evidence = apps_[line.pid].collector.evidence();
  evidence.app = nameIn(std::string_view(line.text).substr(kRunning.size()), folder_);
  evidence.pid = line.pid;
  evidence.launchedAt = line.time;
  return true;
}

void LogStory::forgetOldest() {
  if (apps_.size() < kMostApps) return;
  apps_.erase(std::ranges::min_element(
      apps_, {}, [](const auto& entry) { return entry.second.collector.evidence().launchedAt; }));
}

std::optional<End> LogStory::endOf(pid_t pid, const LogLine& line) {
  const auto found = apps_.find(pid);
  if (found == apps_.end()) return std::nullopt;
  Evidence evidence = std::move(found->second.collector.evidence());
  apps_.erase(found);
  evidence.endedAt = line.time;
  return explain(evidence);
}

}  // namespace morvik::devkit
