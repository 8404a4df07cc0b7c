// Applications, lines and events in the page's form.
#include "run-page.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "device/event-json.h"
#include "device/stimuli-json.h"

namespace morvik::devkit {
namespace {

std::int64_t inMilliseconds(TimePoint time) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

const char* wordOf(const RunningApp& app) {
  if (app.phase() == RunPhase::kBroken || app.phase() == RunPhase::kEnded) return "ended";
  switch (app.state()) {
    case AppState::kConnected:
      return "connected";
    case AppState::kWaiting:
      return "waiting";
    case AppState::kInteractive:
      return "interactive";
    case AppState::kStopping:
      return "stopping";
    default:
      return "started";
  }
}

Json secondsLeft(const std::optional<TimePoint>& end) {
  if (!end) return nullptr;
  const auto left = std::chrono::duration<double>(*end - std::chrono::system_clock::now());
  return std::max(0.0, left.count());
}

Json pauseOf(const RunningApp& app) {
  return app.paused().empty() ? Json(nullptr) : Json(app.paused());
}

Json endOf(const RunningApp& app) {
  if (!app.end()) return nullptr;
  const End& end = *app.end();
  return {{"kind", nameOf(end.kind)},
          {"headline", headlineOf(end)},
          {"sentence", end.sentence},
          {"cure", end.cure},
          {"lines", end.lastLines}};
}

Json findingsOf(const RunningApp& app) {
  Json findings = Json::array();
  for (const FolderTrouble& trouble : app.troubles()) findings.push_back(inWordsWithCure(trouble));
  return findings;
}

Json hintsOf(const RunningApp& app) {
  Json hints = Json::array();
  for (const Hint& hint : app.hints()) hints.push_back(hint.text);
  return hints;
}

const char* kindOf(const LogLine& line) {
  if (line.kind == LineKind::kScript) return "script";
  if (line.kind == LineKind::kNoise) return "noise";
  const bool isForeign = line.kind == LineKind::kOutput || line.level == LogLevel::kForeign;
  return isForeign ? "foreign" : "host";
}

LogLevel levelOfLook(RowLook look) {
  if (look == RowLook::kBad) return LogLevel::kFatal;
  return look == RowLook::kWarning ? LogLevel::kWarning : LogLevel::kUnknown;
}

}  // namespace

RunPage::RunPage(Session& session, SessionDevice& device, const std::string& stateFolder)
    : session_(session), device_(device), page_(*this, stateFolder) {}

bool RunPage::listen(std::uint16_t port, std::string& trouble) {
  const auto failure = page_.listen(port, trouble);
  if (failure == PageServer::Failure::kPortBusy) {
    trouble = "port " + std::to_string(port) + " is in use";
  }
  return !failure;
}

// A page that opens later does not see the application that had the number.
Json RunPage::jsonOf(const Event& event) const {
  Json json = toJson(event);
  if (!json.contains("application")) return json;
  const RunningApp* app = session_.appOf(json["application"].get<AppNumber>());
  if (app != nullptr) json["applicationName"] = app->name();
  return json;
}

void RunPage::happened(const Event& event) {
  page_.happened(jsonOf(event));
  const bool isChange = std::holds_alternative<Changed>(event.what) ||
                        std::holds_alternative<Began>(event.what) ||
                        std::holds_alternative<Ended>(event.what);
  if (isChange) page_.viewChanged();
  const bool isArrival =
      std::holds_alternative<Came>(event.what) || std::holds_alternative<Left>(event.what);
  if (isArrival) page_.applicationsChanged();
}

void RunPage::wrote(const RunningApp& app, const LogLine& line) {
  page_.logged({.time = inMilliseconds(line.time),
                .app = app.name(),
                .level = devkit::wordOf(line.level),
                .kind = kindOf(line),
                .text = line.text});
}

void RunPage::told(const std::string& app, const std::string& mark, const std::string& text,
                   RowLook look) {
  page_.logged({.time = inMilliseconds(std::chrono::system_clock::now()),
                .app = app,
                .level = devkit::wordOf(levelOfLook(look)),
                .kind = mark,
                .text = text});
}

std::string RunPage::title() const {
  std::string title;
  for (const auto& app : session_.apps()) title += (title.empty() ? "" : ", ") + app->name();
  return title;
}

std::string RunPage::mode() const { return device_.isVirtual() ? "run" : "relay"; }

std::int64_t RunPage::now() const { return device_.view().time.count(); }

Json RunPage::view() const { return toJson(device_.view()); }

Json RunPage::stimuli() const { return device_.isVirtual() ? stimuliJson() : Json::array(); }

Json RunPage::applications() const {
  Json applications = Json::array();
  for (const auto& app : session_.apps()) {
    const AppNumber number = session_.numberOf(*app);
    applications.push_back({{"name", app->name()},
                            {"number", number != 0 ? Json(number) : Json(nullptr)},
                            {"slot", applications.size() + 1},
                            {"state", wordOf(*app)},
                            {"paused", pauseOf(*app)},
                            {"since", inMilliseconds(app->since())},
                            {"autokill", secondsLeft(app->autokillAt())},
                            {"end", endOf(*app)},
                            {"findings", findingsOf(*app)},
                            {"hints", hintsOf(*app)}});
  }
  return applications;
}

Outcome RunPage::stimulate(const std::string& name, const Json& arguments,
                           std::optional<unsigned> app) {
  Json stimulus{{"stimulus", name}, {"arguments", arguments}};
  if (app) stimulus["app"] = *app;
  return device_.request(stimulus);
}

Outcome RunPage::act(const PageAct& act) {
  RunningApp* app = session_.app(act.app);
  if (app == nullptr) return {.done = false, .text = "there is no application " + act.app};
  if (act.action == "stop") app->stop();
  if (act.action == "restart") app->restart();
  if (act.action == "launch") app->launch(act.launchType.empty() ? "plain" : act.launchType);
  return {.done = true, .text = ""};
}

}  // namespace morvik::devkit
