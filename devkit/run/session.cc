// Folders to applications, and connections to applications.
#include "run/session.h"

#include <algorithm>

#include "device/text.h"
#include "run/duration.h"
#include "run/process.h"
#include "run/socket-owner.h"

namespace morvik::devkit {

namespace fs = std::filesystem;

namespace {

constexpr char kAddress[] = "DEVICE";

using SystemClock = std::chrono::system_clock;

std::string stateInWords(const RunningApp& app) {
  const std::string since = " for " + inWords(SystemClock::now() - app.since());
  if (app.phase() == RunPhase::kBroken) return "waits" + since + " for a save that mends it";
  if (app.phase() == RunPhase::kEnded) return "ended" + since;
  if (app.phase() == RunPhase::kEnding) return "being ended" + since;
  std::string words = wordsOf(app.state()) + since;
  if (!app.paused().empty()) words += ", paused " + app.paused();
  if (const auto end = app.autokillAt()) {
    const auto left = std::max(*end - SystemClock::now(), SystemClock::duration::zero());
    words += ", ends by itself in " + inWords(left);
  }
  return words;
}

}  // namespace

Session::Session(RunningAppObserver& observer, const SessionDevice& device)
    : observer_(observer), device_(device) {}

Session::~Session() = default;

bool Session::prepare(const SessionPlan& plan, std::string& trouble) {
  becomeReaper();
  links_ = LinkFolder::make(trouble);
  if (!links_) return false;
  for (std::size_t index = 0; index < plan.folders.size(); ++index) {
    const fs::path& folder = plan.folders[index];
    const auto name = links_->link(folder, trouble);
    if (!name) {
      trouble.insert(0, folder.string() + ": ");
      return false;
    }
    const std::string instance = index < plan.instances.size() ? plan.instances[index] : kAddress;
    add({fs::canonical(folder), *name, links_->path(), plan.host, withAddress(instance), plan.check,
         plan.environment,
         index < plan.hostArguments.size() ? plan.hostArguments[index]
                                           : std::vector<std::string>()});
  }
  return true;
}

void Session::add(RunningAppPlan plan) {
  apps_.push_back(std::make_unique<RunningApp>(observer_, std::move(plan)));
}

std::string Session::withAddress(std::string instance) const {
  const std::size_t at = instance.find(kAddress);
  if (at == std::string::npos) return instance;
  return instance.replace(at, sizeof(kAddress) - 1, "127.0.0.1:" + std::to_string(device_.port()));
}

void Session::start() {
  for (const auto& app : apps_) {
    std::string trouble;
    if (!app->watch(trouble)) observer_.noted(*app, "saves are not seen: " + trouble);
    app->restart();
  }
}

void Session::start(const std::vector<std::optional<std::string>>& types) {
  for (std::size_t index = 0; index < std::min(types.size(), apps_.size()); ++index) {
    if (types[index]) apps_[index]->launch(*types[index]);
  }
}

AppFolders Session::folders() const {
  AppFolders folders;
  for (const auto& app : apps_) folders[app->name()] = app->folder();
  return folders;
}

RunningApp* Session::app(const std::string& name) const {
  const auto found = std::ranges::find(apps_, name, [](const auto& app) { return app->name(); });
  return found != apps_.end() ? found->get() : nullptr;
}

RunningApp* Session::appOf(AppNumber number) {
  const auto known = owners_.find(number);
  if (known != owners_.end()) return known->second;
  std::vector<pid_t> processes;
  for (const auto& app : apps_) processes.push_back(app->process());
  const pid_t owner = ownerOfConnection(device_.portOf(number), device_.port(), processes);
  const auto found =
      std::ranges::find(apps_, owner, [](const auto& app) { return app->process(); });
  if (owner == 0 || found == apps_.end()) return nullptr;
  return owners_[number] = found->get();
}

AppNumber Session::numberOf(const RunningApp& app) const {
  AppNumber number = 0;
  for (const auto& [candidate, owner] : owners_) {
    if (owner == &app) number = candidate;
  }
  return number;
}

void Session::hear(const Event& event) {
  if (const auto* came = std::get_if<Came>(&event.what)) {
    if (RunningApp* app = appOf(came->application)) app->connected();
  } else if (const auto* trouble = std::get_if<Trouble>(&event.what)) {
    lost(*trouble);
  } else if (const auto* stimulated = std::get_if<Stimulated>(&event.what)) {
    if (stimulated->name == "drop") dropped(stimulated->only);
  } else if (const auto* left = std::get_if<Left>(&event.what)) {
    owners_.erase(left->application);
  }
}

// The host listens to the last connection of an application; what becomes of older ones ends
// nothing.
void Session::lost(const Trouble& trouble) {
  if (trouble.loss == ServerLoss::kNone || !trouble.application) return;
  RunningApp* app = appOf(*trouble.application);
  if (app != nullptr && numberOf(*app) == *trouble.application)
    app->left(trouble.loss, trouble.why);
}

void Session::dropped(std::optional<AppNumber> only) {
  for (const auto& [number, app] : owners_) {
    if (!only || *only == number) app->left(ServerLoss::kEnded, "it was told to drop it");
  }
}

std::string Session::inWords() const {
  std::string lines;
  for (const auto& app : apps_) {
    const AppNumber number = numberOf(*app);
    lines += app->name() + "  " + stateInWords(*app) +
             (number != 0 ? ", " + appName(number) + " for the device" : "") + '\n';
  }
  return lines;
}

std::string shownNameOf(const fs::path& folder) {
  std::error_code error;
  return launchName(fs::weakly_canonical(folder, error).filename());
}

}  // namespace morvik::devkit
