// Who is there, and how the device stands: the view in a few lines.
#include "device/questions.h"

#include <algorithm>
#include <vector>

#include "device/features/features.h"
#include "device/stimulation.h"
#include "device/text.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

std::string counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string callInWords(const Call& call) {
  constexpr const char* kStates[] = {"", ", calls ", ", is called by ", ", talks to "};
  const std::string state = kStates[static_cast<std::size_t>(call.state)];
  return state.empty() ? "" : state + cited(call.correspondant);
}

std::string inWords(const Application& application, std::chrono::milliseconds now) {
  const auto here = std::chrono::duration_cast<std::chrono::seconds>(now - application.came);
  const std::size_t doubts = application.doubts.size();
  return appName(application.number) + "  " +
         (application.interactiveId.empty() ? "connected" : "interactive") + ", here for " +
         std::to_string(here.count()) + " s" + callInWords(application.call) +
         (doubts > 0 ? ", " + counted(doubts, "doubt") : "");
}

void tellApplications(Stimulation& stimulation) {
  if (!stimulation.understood()) return;
  const Device& device = stimulation.device();
  for (const auto& [number, application] : device.applications()) {
    stimulation.tell(inWords(application, device.now()) + '\n');
  }
  if (device.applications().empty()) stimulation.tellNobodyHears();
}

struct StateLine {
  std::string label;
  std::string text;
};

std::vector<StateLine> linesOf(const DeviceView& view) {
  std::vector<StateLine> lines;
  for (const Feature* feature : features()) {
    for (const Glance& glance : feature->glances) {
      std::string text = glance.of(view);
      if (!text.empty()) lines.push_back({glance.label, shortened(text)});
    }
  }
  if (!view.trouble.empty()) lines.push_back({"trouble", shortened(view.trouble)});
  return lines;
}

void tellState(Stimulation& stimulation) {
  if (!stimulation.understood()) return;
  const std::vector<StateLine> lines = linesOf(viewOf(stimulation.device()));
  std::size_t width = 0;
  for (const StateLine& line : lines) width = std::max(width, line.label.size());
  for (const auto& [label, text] : lines) {
    std::string line = label;
    line.resize(width + 2, ' ');
    stimulation.tell(line.append(text) + '\n');
  }
}

constexpr Stimulus kQuestions[] = {
    {"apps",
     Stimulus::Group::kHelp,
     Stimulus::For::kDevice,
     {},
     "list the applications: since when they are here, interactive mode, calls, doubts",
     tellApplications},
    {"state",
     Stimulus::Group::kHelp,
     Stimulus::For::kDevice,
     {},
     "tell how the device stands, in a few lines",
     tellState},
};

}  // namespace

std::span<const Stimulus> questions() { return kQuestions; }

}  // namespace morvik::devkit
