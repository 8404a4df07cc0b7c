// How time goes on. The applications are told the time; when each has said that it is at rest, and
// meanwhile nothing has come from them, then nothing is under way anywhere: time may be another.
#include "test/stage.h"

#include <algorithm>
#include <array>

#include <nlohmann/json.hpp>

#include "device/event-json.h"
#include "device/text.h"
#include "test/replayed-device.h"

namespace morvik::devkit {
namespace {

// What an application that begins writes in one go is in one record, and so are its messages; a
// message that is on its way is looked for again after a moment.
constexpr guint kMomentMs = 1;

// Beside the copy of the application, whose name it cannot be: hidden folders are not copied.
constexpr const char* kClockSocket = ".clock";

Json endInJson(const End& end) {
  return {{"kind", nameOf(end.kind)}, {"status", end.status}, {"headline", headlineOf(end)},
          {"why", end.sentence},      {"cure", end.cure},     {"lastLines", end.lastLines}};
}

std::string stateWord(const RunningApp& app) {
  constexpr std::array kWords{"ending", "running", "broken", "ended"};
  if (app.phase() == RunPhase::kEnded && !app.end()) return "idle";
  if (app.phase() != RunPhase::kRunning) return kWords.at(static_cast<std::size_t>(app.phase()));
  if (app.state() == AppState::kStopping) return "stopping";
  return app.state() == AppState::kInteractive ? "interactive" : "running";
}

}  // namespace

Stage::Stage(const StagePlan& plan) : time_(plan.start), news_(Json::array()) {}

// Applications end before the device that they would miss.
Stage::~Stage() {
  then_ = nullptr;
  session_.reset();
  hears_.reset();
  device_.reset();
}

bool Stage::begin(const StagePlan& plan, const StageTools& tools, std::string& trouble) {
  if (!copy_.make(plan.folder, plan.files, trouble)) return false;
  if (!clocks_.listen(copy_.place() / kClockSocket, trouble)) return false;
  clocks_.tell(time_.time());
  device_ = plan.replay.empty() ? makeVirtualDevice(time_, trouble)
                                : makeReplayedDevice(plan.replay, time_, trouble);
  if (!device_) return false;
  Observer& ofDevice = *this;
  RunningAppObserver& ofApplications = *this;
  hears_ = std::make_unique<Observation>(device_->events(), ofDevice);
  session_ = std::make_unique<Session>(ofApplications, *device_);
  if (!session_->prepare(sessionPlan(plan, tools), trouble)) return false;
  device_->setAppFolders(session_->folders());
  session_->start(plan.types);
  return true;
}

// The memory checks of a program that is built with them want to be loaded first, which is not so
// behind a library that is preloaded. What is left when a test ends its application in the middle
// is no leak.
SessionPlan Stage::sessionPlan(const StagePlan& plan, const StageTools& tools) const {
  return {
      .folders = std::vector(plan.types.size(), copy_.path()),
      .instances = plan.instances,
      .host = tools.host,
      .environment = {std::string(kClockVariable) + '=' + (copy_.place() / kClockSocket).string(),
                      "LD_PRELOAD=" + tools.clock, "TZ=UTC",
                      "ASAN_OPTIONS=detect_leaks=0:verify_asan_link_order=0"}};
}

Outcome Stage::stimulate(Json request) {
  if (request.contains("app")) {
    const RunningApp& app = *session_->apps().at(request["app"].get<std::size_t>());
    const AppNumber number = session_->numberOf(app);
    if (number == 0) return refused(app.name() + " is not connected");
    request["app"] = number;
  }
  return device_->request(request);
}

void Stage::launch(std::size_t app, const std::string& type) {
  session_->apps().at(app)->launch(type);
}

// --- time

void Stage::step(Nanoseconds until, Then then) {
  until_ = until;
  then_ = std::move(then);
  goOn();
}

void Stage::goOn() {
  somethingHappened_ = false;
  clocks_.tell(time_.time());
  look();
}

// Whether an application may yet do something at this time.
bool Stage::isBusy(const RunningApp& app) const {
  if (app.phase() == RunPhase::kEnded || app.phase() == RunPhase::kBroken) return false;
  return !clocks_.reportOf(app.process());
}

// Behind everything that is ready to be read: only then it is known that nothing came.
void Stage::look() {
  if (then_ && session_ &&
      std::ranges::none_of(session_->apps(), [this](const auto& app) { return isBusy(*app); })) {
    lookLater(0);
  }
}

void Stage::lookLater(guint milliseconds) {
  looking_.reset(milliseconds > 0 ? g_timeout_source_new(milliseconds) : g_idle_source_new());
  g_source_set_priority(looking_.get(), G_PRIORITY_LOW);
  g_source_set_callback(looking_.get(), onLook, this, nullptr);
  g_source_attach(looking_.get(), g_main_context_get_thread_default());
}

gboolean Stage::onLook(gpointer self) {
  auto& stage = *static_cast<Stage*>(self);
  const auto& apps = stage.session_->apps();
  if (std::ranges::any_of(apps, [&](const auto& app) { return stage.isBusy(*app); })) {
    return G_SOURCE_REMOVE;
  }
  if (stage.device_->isDelivering()) {
    stage.lookLater(kMomentMs);
  } else if (stage.somethingHappened_) {
    stage.goOn();
  } else {
    stage.takeTime();
  }
  return G_SOURCE_REMOVE;
}

// Nothing is under way. An application that never rests has the time that really passes, and takes
// the others with it.
void Stage::takeTime() {
  Nanoseconds next = std::min(time_.next(), until_);
  Nanoseconds passed = time_.time();
  bool allRest = true;
  for (const auto& app : session_->apps()) {
    const auto report = clocks_.reportOf(app->process());
    if (!report) continue;
    next = std::min(next, Nanoseconds(report->next));
    passed = std::max(passed, Nanoseconds(report->time));
    allRest = allRest && report->atRest == 1;
  }
  if (passed > time_.time()) time_.moveTo(passed);
  if (!news_.empty() || viewIsOld_ || time_.time() >= until_) return finish();
  if (allRest) time_.moveTo(std::max(next, passed));
  goOn();
}

void Stage::finish() { std::exchange(then_, nullptr)(); }

// --- what happens

std::size_t Stage::indexOf(const RunningApp& app) const {
  const auto& apps = session_->apps();
  return static_cast<std::size_t>(
      std::ranges::find(apps, &app, [](const auto& one) { return one.get(); }) - apps.begin());
}

Json& Stage::addNews(const char* kind, const RunningApp& app) {
  somethingHappened_ = true;
  return news_.emplace_back(Json{{"kind", kind}, {"app", indexOf(app)}});
}

void Stage::happened(const Event& event) {
  somethingHappened_ = true;
  viewIsOld_ = true;
  if (!session_) return;
  if (const auto* received = std::get_if<Received>(&event.what)) {
    if (const RunningApp* app = session_->appOf(received->application)) {
      addNews("message", *app)["message"] = toJson(*received->message);
    }
  }
  if (const auto* trouble = std::get_if<Trouble>(&event.what)) tellDeparture(*trouble);
  session_->hear(event);
}

// Where an application leaves the recording. One that has gone is told of as the first.
void Stage::tellDeparture(const Trouble& trouble) {
  if (device_->isVirtual() || session_->apps().empty()) return;
  const RunningApp* app = trouble.application ? session_->appOf(*trouble.application) : nullptr;
  if (app == nullptr) app = session_->apps().front().get();
  addNews("departure", *app)["text"] = trouble.text;
}

void Stage::launching(const RunningApp& app) {
  launchedAt_[&app] = time_.time();
  addNews("launching", app);
}

void Stage::wrote(const RunningApp& app, const LogLine& line) {
  somethingHappened_ = true;
  if (line.kind == LineKind::kScript) addNews("log", app)["text"] = line.text;
}

void Stage::hinted(const RunningApp& app, const Hint& hint) {
  Json& news = addNews("hint", app);
  news["hint"] = nameOf(hint.kind);
  news["text"] = hint.place.empty() ? hint.text : hint.place + ": " + hint.text;
}

void Stage::found(const RunningApp& app, const FolderTrouble& trouble) {
  addNews("trouble", app)["text"] = inWordsWithCure(trouble);
}

// In the time that the application has.
void Stage::ended(const RunningApp& app, const End& end) {
  End told = end;
  told.launchedAt = TimePoint(std::chrono::duration_cast<TimePoint::duration>(launchedAt_[&app]));
  told.endedAt = TimePoint(std::chrono::duration_cast<TimePoint::duration>(time_.time()));
  addNews("end", app)["end"] = endInJson(told);
}

void Stage::saved(const RunningApp& /*app*/, const std::set<std::string>& /*files*/) {}

void Stage::noted(const RunningApp& app, const std::string& text) {
  addNews("note", app)["text"] = text;
}

void Stage::changed(const RunningApp& app) {
  addNews("state", app)["state"] = stateWord(app);
  look();
}

Json Stage::stateOf(const RunningApp& app) const {
  return {{"name", app.name()}, {"state", stateWord(app)}};
}

Json Stage::report() {
  Json report{{"now", time_.now().count()}, {"news", std::exchange(news_, Json::array())}};
  if (!session_) return report;
  for (const auto& app : session_->apps()) report["apps"].push_back(stateOf(*app));
  if (std::exchange(viewIsOld_, false)) report["view"] = toJson(device_->view());
  return report;
}

std::string Stage::whoIsBusy() const {
  std::string names;
  if (!session_) return names;
  for (const auto& app : session_->apps()) {
    if (isBusy(*app)) names += (names.empty() ? "" : ", ") + app->name();
  }
  return names;
}

}  // namespace morvik::devkit
