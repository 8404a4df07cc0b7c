// From save to launch to end, and over again.
#include "run/running-app.h"

#include <algorithm>
#include <utility>

#include "run/launch-line.h"

namespace morvik::devkit {
namespace {

// As the host has it.
constexpr std::chrono::seconds kTimeToBecomeInteractive{10};
constexpr std::chrono::minutes kTimeAfterStopNotice{5};

TimePoint now() { return std::chrono::system_clock::now(); }

}  // namespace

RunningApp::RunningApp(RunningAppObserver& observer, RunningAppPlan plan)
    : observer_(observer), plan_(std::move(plan)), since_(now()) {}

RunningApp::~RunningApp() {
  if (settling_) g_source_destroy(settling_.get());
}

bool RunningApp::watch(std::string& trouble) {
  watch_ = std::make_unique<FolderWatch>(plan_.folder, [this](const std::set<std::string>& files) {
    observer_.saved(*this, files);
    restart();
  });
  return watch_->start(trouble);
}

void RunningApp::launch(const std::string& type) {
  wanted_ = type;
  std::ranges::replace(*wanted_, ' ', '_');
  if (!launch_ || launch_->isOver()) return settleSoon();
  enter(RunPhase::kEnding, state_);
  launch_->end(EndedBy::kRestart);
}

void RunningApp::stop() {
  wanted_.reset();
  if (!launch_ || launch_->isOver()) return;
  enter(RunPhase::kEnding, state_);
  launch_->end(EndedBy::kQuit);
}

void RunningApp::left(ServerLoss loss, const std::string& why) {
  if (launch_) launch_->left(process_, loss, why);
}

// A launch must not go while it tells of its end.
void RunningApp::settleSoon() {
  if (settling_) g_source_destroy(settling_.get());
  settling_.reset(g_idle_source_new());
  g_source_set_priority(settling_.get(), G_PRIORITY_DEFAULT);
  g_source_set_callback(settling_.get(), onSettled, this, nullptr);
  g_source_attach(settling_.get(), g_main_context_get_thread_default());
}

gboolean RunningApp::onSettled(gpointer self) {
  auto* app = static_cast<RunningApp*>(self);
  app->launch_.reset();
  if (app->wanted_) app->begin();
  return G_SOURCE_REMOVE;
}

void RunningApp::begin() {
  type_ = *std::exchange(wanted_, std::nullopt);
  end_.reset();
  hints_.clear();
  process_ = 0;
  compiled_ = false;
  pause_ = {};
  if (!check() || !prepareBesideServer()) return;
  enter(RunPhase::kRunning, AppState::kLaunched);
  observer_.launching(*this);
  const std::string instance = beside_ ? beside_->address() : plan_.instance;
  LaunchObserver& self = *this;
  launch_ = std::make_unique<Launch>(self);
  launch_->start({.host = plan_.host,
                  .appFolder = plan_.appFolder,
                  .lines = {LaunchLine{plan_.name, type_, instance}.text()},
                  .environment = plan_.environment,
                  .hostArguments = plan_.hostArguments});
}

bool RunningApp::check() {
  troubles_ = plan_.check(plan_.folder);
  for (const FolderTrouble& trouble : troubles_) observer_.found(*this, trouble);
  if (!refusesLaunch(troubles_)) return true;
  enter(RunPhase::kBroken, AppState::kLaunched);
  return false;
}

// A fresh one for each launch: its plan may have been saved as well.
bool RunningApp::prepareBesideServer() {
  beside_.reset();
  if (!wantsBesideServer(plan_.folder)) return true;
  BesidePlan plan;
  std::string trouble;
  if (readBesidePlan(plan_.folder, plan, trouble)) {
    beside_ = std::make_unique<BesideServer>(
        std::move(plan), [this](const std::string& line) { observer_.noted(*this, line); });
    if (beside_->start(trouble)) return true;
  }
  giveUp({.file = "beside.json", .text = trouble});
  return false;
}

void RunningApp::giveUp(FolderTrouble trouble) {
  troubles_.push_back(std::move(trouble));
  observer_.found(*this, troubles_.back());
  enter(RunPhase::kBroken, AppState::kLaunched);
}

void RunningApp::enter(RunPhase phase, AppState state) {
  if (phase == phase_ && state == state_) return;
  phase_ = phase;
  state_ = state;
  since_ = now();
  if (phase == RunPhase::kRunning && state == AppState::kStopping) stoppedAt_ = since_;
  observer_.changed(*this);
}

std::optional<TimePoint> RunningApp::autokillAt() const {
  if (phase_ != RunPhase::kRunning || process_ == 0) return std::nullopt;
  if (!paused().empty()) return std::nullopt;
  if (state_ == AppState::kInteractive) return std::nullopt;
  if (state_ == AppState::kStopping) return stoppedAt_ + kTimeAfterStopNotice;
  return startedAt_ + kTimeToBecomeInteractive;
}

void RunningApp::connected() {
  if (launch_) launch_->connected(process_);
  lookAtState();
}

void RunningApp::began(const std::string& /*app*/, pid_t pid) {
  process_ = pid;
  startedAt_ = now();
  observer_.changed(*this);
}

void RunningApp::wrote(const LogLine& line) {
  if (line.kind == LineKind::kHost && line.text == "running app: " + plan_.name) {
    compiled_ = true;
    startedAt_ = now();
  }
  observer_.wrote(*this, line);
  lookAtPause(line);
  lookAtState();
}

// The host's clock stands still in a pause.
void RunningApp::lookAtPause(const LogLine& line) {
  const std::string before = paused();
  const auto lasted = pause_.take(line);
  if (lasted) {
    startedAt_ += *lasted;
    stoppedAt_ += *lasted;
  }
  if (before != paused()) observer_.changed(*this);
}

void RunningApp::lookAtState() {
  const Evidence* evidence = launch_ && process_ != 0 ? launch_->evidenceOf(process_) : nullptr;
  if (evidence != nullptr && phase_ == RunPhase::kRunning) enter(phase_, evidence->state);
}

// Of a main.js that could not even be compiled nothing runs, and nothing will: there is no reason
// to wait for the host's patience.
void RunningApp::hinted(const Hint& hint) {
  hints_.push_back(hint);
  observer_.hinted(*this, hint);
  observer_.changed(*this);
  if (hint.kind != HintKind::kThrew || compiled_ || phase_ != RunPhase::kRunning) return;
  enter(RunPhase::kBroken, AppState::kStarted);
  launch_->end(EndedBy::kRestart);
}

void RunningApp::ended(const End& end) {
  process_ = 0;
  pause_ = {};
  if (phase_ == RunPhase::kBroken) return;
  end_ = end;
  enter(RunPhase::kEnded, state_);
  observer_.ended(*this, end);
  observer_.changed(*this);
}

void RunningApp::over() { settleSoon(); }

}  // namespace morvik::devkit
