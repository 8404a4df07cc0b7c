// A launcher's life: its lines, its applications' lines, and the ends of them all.
#include "run/launch.h"

#include <fcntl.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>

#include "run/config-file.h"
#include "run/launch-line.h"

namespace morvik::devkit {
namespace {

// How long an application may take to end when it is told.
constexpr guint kPatienceMs = 2000;
constexpr int kMostCounted = 3;

struct Pipe {
  FileDescriptor reading;
  FileDescriptor writing;
};

// What does not fit must not be waited for.
Pipe makePipe() {
  std::array<int, 2> ends{-1, -1};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return {};
  fcntl(ends[1], F_SETFL, O_NONBLOCK);
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

bool writeWhole(const FileDescriptor& to, const std::string& text) {
  return write(to.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

// Each line, and the empty one that ends the launcher.
std::string inputOf(const std::vector<std::string>& lines) {
  std::string input;
  for (const std::string& line : lines) input += line + '\n';
  return input + '\n';
}

std::string beyond(const std::string& text, const std::string& beginning) {
  return text.starts_with(beginning) ? text.substr(beginning.size()) : "";
}

LaunchProblem problemOf(int error) {
  if (error == ENOENT) return LaunchProblem::kHostMissing;
  const bool noProgram = error == EACCES || error == ENOEXEC || error == ENOTDIR;
  return noProgram ? LaunchProblem::kHostNotExecutable : LaunchProblem::kNoProcess;
}

std::string problemText(LaunchProblem problem, const std::string& host, int error) {
  if (problem == LaunchProblem::kHostMissing) return host;
  return host + " cannot be run: " + std::strerror(error);
}

// The arguments as the launcher takes them.
std::vector<std::string> argumentsOf(const LaunchPlan& plan) {
  std::vector<std::string> arguments{plan.host, "--debug=7", "--app_folder=" + plan.appFolder};
  arguments.insert(arguments.end(), plan.hostArguments.begin(), plan.hostArguments.end());
  return arguments;
}

}  // namespace

Launch::~Launch() {
  if (patience_) g_source_destroy(patience_.get());
  if (over_ || !launcher_) return;
  signalAll(SIGTERM);
  for (const auto& [pid, app] : apps_) static_cast<void>(app.process->waitForEnd(kPatienceMs));
  signalAll(SIGKILL);
  for (const auto& [pid, app] : apps_) static_cast<void>(app.process->waitForEnd(-1));
  // The launcher's number stands for its group for as long as it is not reaped.
  while (!launcherReaped_ && (waitpid(-launcher_->pid(), nullptr, 0) > 0 || errno == EINTR)) {
  }
  for (const auto& [pid, app] : apps_) static_cast<void>(app.process->reap());
}

void Launch::start(LaunchPlan plan) {
  plan_ = std::move(plan);
  startedAt_ = std::chrono::system_clock::now();
  if (!refuseLines() || !spawnLauncher()) tellOver();
}

// False when no line is left.
bool Launch::refuseLines() {
  std::vector<std::string> good;
  for (const std::string& line : plan_.lines) {
    if (const auto trouble = troubleWithLine(line)) {
      failOne(devkit::appOf(line), LaunchProblem::kLineRefused, *trouble);
    } else {
      good.push_back(line);
    }
  }
  plan_.lines = std::move(good);
  for (const std::string& line : plan_.lines) awaited_.push_back(devkit::appOf(line));
  return !plan_.lines.empty();
}

// What the launcher and its applications write to.
bool Launch::makeStreams() {
  const auto ended = [this] { settle(); };
  errors_ = std::make_unique<RecordSocket>(
      RecordSocket::Kind::kRecords,
      [this](pid_t pid, std::string_view bytes) { records_.take(pid, bytes); }, ended);
  output_ = std::make_unique<RecordSocket>(
      RecordSocket::Kind::kBytes,
      [this](pid_t pid, std::string_view bytes) { lines_.take(pid, bytes); }, ended);
  return errors_->writer().valid() && output_->writer().valid();
}

bool Launch::spawnLauncher() {
  Pipe input = makePipe();
  if (!makeStreams() || !input.writing.valid() ||
      !writeWhole(input.writing, inputOf(plan_.lines))) {
    failAll(LaunchProblem::kNoProcess,
            std::string("There are no streams for it: ") + std::strerror(errno));
    return false;
  }
  const Spawned spawned = spawn({argumentsOf(plan_), plan_.environment, input.reading.get(),
                                 output_->writer().get(), errors_->writer().get()});
  errors_->closeWriter();
  output_->closeWriter();
  if (spawned.pid == 0) {
    const LaunchProblem problem = problemOf(spawned.error);
    failAll(problem, problemText(problem, plan_.host, spawned.error));
    return false;
  }
  input_ = std::move(input.writing);
  launcher_ = std::make_unique<Process>(spawned.pid, [this] { settle(); });
  return true;
}

void Launch::failAll(LaunchProblem problem, const std::string& text) {
  for (const std::string& app : std::exchange(awaited_, {})) failOne(app, problem, text);
}

void Launch::failOne(const std::string& app, LaunchProblem problem, const std::string& text) {
  Evidence evidence;
  evidence.app = app;
  evidence.launchedAt = startedAt_;
  evidence.endedAt = std::chrono::system_clock::now();
  evidence.problem = problem;
  evidence.problemText = text;
  evidence.endedBy = endedBy_;
  observer_.ended(explain(evidence));
}

void Launch::onRecord(pid_t pid, std::string_view record) {
  hear(lineOfStandardError(record), pid);
}

void Launch::onOutput(pid_t pid, std::string_view line) { hear(lineOfStandardOutput(line), pid); }

void Launch::hear(LogLine line, pid_t pid) {
  line.time = std::chrono::system_clock::now();
  line.pid = pid;
  if (pid != 0 && pid != launcher_->pid()) return hearApplication(appOf(pid), std::move(line));
  hearLauncher(line);
  observer_.wrote(line);
}

// A launcher counts before it looks at the limit.
void Launch::hearLauncher(const LogLine& line) {
  if (line.level == LogLevel::kForeign) return;
  const std::string launchLine = beyond(line.text, "setCmdLine ");
  if (!launchLine.empty()) announced_ = devkit::appOf(launchLine);
  const std::string count = beyond(line.text, "nbChild ");
  int number = 0;
  std::from_chars(count.data(), count.data() + count.size(), number);
  if (number < kMostCounted) return;
  const auto refused = std::ranges::find(awaited_, announced_);
  if (refused == awaited_.end()) return;
  awaited_.erase(refused);
  failOne(announced_, LaunchProblem::kLauncherFull, "");
}

Launch::App& Launch::appOf(pid_t pid) {
  if (App* app = known(pid)) return *app;
  App& app = apps_[pid];
  app.process = std::make_unique<Process>(pid, [this] { settle(); });
  Evidence& evidence = app.collector.evidence();
  evidence.pid = pid;
  evidence.launchedAt = startedAt_;
  return app;
}

Launch::App* Launch::known(pid_t pid) {
  const auto found = apps_.find(pid);
  return found != apps_.end() ? &found->second : nullptr;
}

// The first thing that an application says is its folder.
void Launch::introduce(App& app, const LogLine& line) {
  Evidence& evidence = app.collector.evidence();
  const std::string name = beyond(line.text, "running app: " + plan_.appFolder + '/');
  evidence.app = name.empty() && !awaited_.empty() ? awaited_.front() : name;
  std::erase(awaited_, evidence.app);
  evidence.configIsBroken = configIsBroken(plan_.appFolder + '/' + evidence.app + "/config.bin");
  observer_.began(evidence.app, evidence.pid);
  if (evidence.configIsBroken) observer_.hinted(brokenConfigHint(evidence.app));
}

void Launch::hearApplication(App& app, LogLine line) {
  if (app.collector.evidence().app.empty()) introduce(app, line);
  line.app = app.collector.evidence().app;
  app.collector.hear(line);
  observer_.wrote(line);
  for (Hint& hint : app.hints.take(line)) {
    hint.app = line.app;
    observer_.hinted(hint);
  }
}

// Who has ended is looked at before the streams are read to their ends, so that last words come
// before the end.
void Launch::settle() {
  if (over_) return;
  std::vector<pid_t> ended;
  for (const auto& [pid, app] : apps_) {
    if (!app.finished && app.process->hasEnded()) ended.push_back(pid);
  }
  errors_->drain();
  output_->drain();
  for (const pid_t pid : ended) settleApp(apps_.at(pid));
  settleLauncher();
}

// A launcher that still runs may take the status; once it is gone it is ours or nobody's.
void Launch::settleApp(App& app) {
  const bool launcherGone = launcher_->hasEnded();
  const auto status = app.process->reap();
  if (!status && !launcherGone) return;
  const pid_t pid = app.process->pid();
  records_.finish(pid);
  app.finished = true;
  Evidence& evidence = app.collector.evidence();
  evidence.endedAt = std::chrono::system_clock::now();
  evidence.waitStatus = status;
  evidence.endedBy = endedBy_;
  observer_.ended(explain(evidence));
}

// As long as an application has not shown itself, the launcher's number is needed for its group.
void Launch::settleLauncher() {
  if (!launcher_->hasEnded()) return;
  input_.close();
  if (!awaited_.empty() && !errors_->ended()) return;
  if (!awaited_.empty()) explainMissing();
  if (!launcherReaped_) static_cast<void>(launcher_->reap());
  launcherReaped_ = true;
  const bool allFinished =
      std::ranges::all_of(apps_, [](const auto& entry) { return entry.second.finished; });
  if (allFinished && errors_->ended()) tellOver();
}

// Processes that ended without a word, or none at all.
void Launch::explainMissing() {
  int status = 0;
  for (pid_t pid = 0; (pid = waitpid(-launcher_->pid(), &status, WNOHANG)) > 0;) {
    if (pid == launcher_->pid()) {
      launcherReaped_ = true;
    } else if (!awaited_.empty()) {
      explainSilent(pid, status);
    }
  }
  const bool wanted = endedBy_ != EndedBy::kItself;
  failAll(wanted ? LaunchProblem::kNone : LaunchProblem::kNoProcess,
          "The launcher ended and has no process for it");
}

void Launch::explainSilent(pid_t pid, int status) {
  Evidence evidence;
  evidence.app = awaited_.front();
  awaited_.erase(awaited_.begin());
  evidence.pid = pid;
  evidence.launchedAt = startedAt_;
  evidence.endedAt = std::chrono::system_clock::now();
  evidence.waitStatus = status;
  evidence.endedBy = endedBy_;
  observer_.ended(explain(evidence));
}

void Launch::tellOver() {
  if (over_) return;
  over_ = true;
  records_.finishAll();
  lines_.finishAll();
  if (patience_) g_source_destroy(patience_.get());
  observer_.over();
}

void Launch::end(EndedBy why) {
  if (over_ || !launcher_) return;
  endedBy_ = why;
  signalAll(SIGTERM);
  if (patience_) return;
  patience_.reset(g_timeout_source_new(kPatienceMs));
  g_source_set_callback(patience_.get(), onPatienceOver, this, nullptr);
  g_source_attach(patience_.get(), g_main_context_get_thread_default());
}

gboolean Launch::onPatienceOver(gpointer launch) {
  static_cast<Launch*>(launch)->signalAll(SIGKILL);
  return G_SOURCE_CONTINUE;
}

// The group's number is its launcher's, which nobody else gets before that is reaped.
void Launch::signalAll(int number) {
  if (!launcherReaped_) kill(-launcher_->pid(), number);
  for (const auto& [pid, app] : apps_) {
    if (launcherReaped_ && !app.finished) static_cast<void>(app.process->send(number));
  }
}

std::map<pid_t, std::string> Launch::applications() const {
  std::map<pid_t, std::string> names;
  for (const auto& [pid, app] : apps_) {
    if (!app.finished) names[pid] = app.collector.evidence().app;
  }
  return names;
}

const Evidence* Launch::evidenceOf(pid_t pid) const {
  const auto found = apps_.find(pid);
  return found != apps_.end() ? &found->second.collector.evidence() : nullptr;
}

void Launch::connected(pid_t pid) {
  if (App* app = known(pid)) app->collector.connected();
}

void Launch::left(pid_t pid, ServerLoss loss, const std::string& why) {
  if (App* app = known(pid)) app->collector.left(loss, why);
}

}  // namespace morvik::devkit
