// Everything put together; each thing that happens goes to the log and to the page.
#include "desk.h"

#include <glib-unix.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "app-words.h"
#include "device/requests.h"
#include "device/text.h"
#include "run/strangers.h"

namespace morvik::devkit {
namespace {

int columnsOfTerminal() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) return 0;
  constexpr int kUsualColumns = 80;
  return size.ws_col > 0 ? size.ws_col : kUsualColumns;
}

std::vector<std::string> namesOf(const std::vector<std::filesystem::path>& folders) {
  std::vector<std::string> names{"device"};
  for (const auto& folder : folders) names.push_back(shownNameOf(folder));
  return names;
}

// The device knows numbers, the session names.
bool asksForApps(const std::string& line) {
  const GText text(g_strdup(line.c_str()));
  return g_strstrip(text.get()) == std::string_view("apps");
}

gboolean quitLater(gpointer untilTold) {
  static_cast<UntilTold*>(untilTold)->quit();
  return G_SOURCE_REMOVE;
}

gboolean quitByHangUp(gpointer untilTold) {
  static_cast<UntilTold*>(untilTold)->quit();
  return G_SOURCE_CONTINUE;
}

}  // namespace

// Whoever reads the output may go away: then a write fails, and the process lives to end the
// others.
Desk::Desk(DeskPlan plan)
    : plan_(std::move(plan)),
      view_([this](const std::string& bytes) { write(bytes); }, style(),
            namesOf(plan_.session.folders)),
      log_(view_, std::move(plan_.filter),
           [this](const std::string& app, const std::string& mark, const std::string& text,
                  RowLook look) {
             if (page_) page_->told(app, mark, text, look);
           }) {
  std::signal(SIGPIPE, SIG_IGN);
}

// Applications end before the device that they would miss.
Desk::~Desk() {
  keys_.reset();
  lines_.reset();
  control_.reset();
  session_.reset();
  page_.reset();
  hears_.reset();
  recorder_.reset();
  device_.reset();
}

MergedView::Style Desk::style() const {
  const char* refused = std::getenv("NO_COLOR");
  const bool plain = refused != nullptr && *refused != '\0';
  if (plain || isatty(STDOUT_FILENO) != 1) return {};
  return {.colors = true, .columns = columnsOfTerminal};
}

// Past the standard library, whose buffers do not tell each time that nobody reads.
void Desk::write(const std::string& bytes) {
  for (std::size_t at = 0; writable_ && at < bytes.size();) {
    const ssize_t count = ::write(STDOUT_FILENO, bytes.data() + at, bytes.size() - at);
    if (count > 0) at += static_cast<std::size_t>(count);
    writable_ = count > 0 || errno == EINTR;
  }
  if (!writable_) untilTold_.quit();
}

std::optional<std::string> Desk::run() {
  const guint hangUp = g_unix_signal_add(SIGHUP, quitByHangUp, &untilTold_);
  if (plan_.seconds > 0)
    g_timeout_add_seconds(static_cast<guint>(plan_.seconds), quitLater, &untilTold_);
  auto trouble = begin();
  if (!trouble && writable_) untilTold_.run();
  g_source_remove(hangUp);
  return trouble;
}

std::optional<std::string> Desk::begin() {
  std::string trouble;
  device_ = plan_.realDevice.empty()
                ? makeVirtualDevice(plan_.devicePort, plan_.stateFolder, trouble)
                : makeRelayedDevice(plan_.realDevice, trouble);
  if (!device_) return trouble;
  Observer& ofDevice = *this;
  RunningAppObserver& ofApplications = *this;
  hears_ = std::make_unique<Observation>(device_->events(), ofDevice);
  if (!plan_.record.empty()) {
    recorder_ = Recorder::begin(plan_.record,
                                {.began = device_->view().time, .isReal = !device_->isVirtual()},
                                device_->events(), trouble);
    if (!recorder_) return trouble;
  }
  session_ = std::make_unique<Session>(ofApplications, *device_);
  if (!session_->prepare(plan_.session, trouble)) return trouble;
  device_->setAppFolders(session_->folders());
  if (auto reason = beginPage()) return reason;
  beginControl();
  greet();
  if (plan_.openPage) openPage();
  beginKeys();
  session_->start();
  return std::nullopt;
}

std::optional<std::string> Desk::beginPage() {
  if (!plan_.page) return std::nullopt;
  page_ = std::make_unique<RunPage>(*session_, *device_, plan_.stateFolder);
  std::string trouble;
  if (!page_->listen(*plan_.page, trouble))
    return "no page: " + trouble + ". Choose another port: --page=PORT, or --no-page.";
  return std::nullopt;
}

// Without it the desk does its work all the same.
void Desk::beginControl() {
  const RequestWays ways{[this] { return device_->view().time; },
                         [this] { return device_->view(); },
                         [this](std::string_view line) { return outcomeOf(line); },
                         [this](const Json& stimulus) { return device_->request(stimulus); }};
  std::string title = "run";
  for (const auto& app : session_->apps()) title += ' ' + app->name();
  std::string text;
  control_ = offerControl(
      {title, device_->events(), [ways](std::string_view line) { return answerTo(ways, line); }},
      text);
  if (!text.empty()) view_.showText(text);
}

void Desk::greet() {
  std::string text;
  if (page_) text += "The device is on this page: " + page_->address() + "\n";
  text += device_->isVirtual() ? "The virtual device" : "The relay to " + plan_.realDevice;
  text +=
      " listens on 127.0.0.1:" + std::to_string(device_->port()) + ". Ctrl-C ends everything.\n";
  text += plan_.greeting;
  if (isatty(STDIN_FILENO) == 1) text += "Keys: " + KeyMenu::hint() + "\n";
  view_.showText(text);
}

// What is no terminal gives lines for the device, as it does to a device that stands alone.
void Desk::beginKeys() {
  keyMode_ = std::make_unique<KeyMode>(STDIN_FILENO);
  if (!keyMode_->isOn()) {
    lines_ = std::make_unique<LineReader>(
        STDIN_FILENO, [this](std::string_view line) { stimulate(std::string(line)); });
    return;
  }
  std::vector<std::string> names;
  for (const auto& app : session_->apps()) names.push_back(app->name());
  menu_ = std::make_unique<KeyMenu>(std::move(names));
  keys_ = std::make_unique<Keys>(
      STDIN_FILENO, [this](const std::string& key) { press(key); }, [this] { untilTold_.quit(); });
}

void Desk::press(const std::string& key) {
  const auto command = menu_->take(key);
  view_.ask(menu_->prompt());
  if (command) obey(*command);
}

void Desk::obey(const KeyCommand& command) {
  switch (command.kind) {
    case KeyCommand::Kind::kRestart:
      return session_->apps().at(command.app)->restart();
    case KeyCommand::Kind::kLaunch:
      return session_->apps().at(command.app)->launch(command.text);
    case KeyCommand::Kind::kButton:
      return stimulate("button SIMPLE");
    case KeyCommand::Kind::kStimulus:
      return stimulate(command.text);
    case KeyCommand::Kind::kPage:
      return openPage();
    case KeyCommand::Kind::kHelp:
      return view_.showText(KeyMenu::help());
    case KeyCommand::Kind::kQuit:
      return untilTold_.quit();
  }
}

void Desk::stimulate(const std::string& line) {
  const Outcome outcome = outcomeOf(line);
  if (!outcome.text.empty()) view_.showText(outcome.text);
}

Outcome Desk::outcomeOf(std::string_view line) {
  if (asksForApps(std::string(line))) return {.done = true, .text = session_->inWords()};
  if (auto outcome = actOnApps(*session_, line)) return *outcome;
  return device_->stimulate(line);
}

// The browser is its user's from then on.
void Desk::openPage() {
  if (!page_) return view_.showText("There is no page: --no-page was asked for.\n");
  const std::string trouble = openInBrowser(page_->address());
  view_.showText(trouble.empty()
                     ? "The browser opens " + page_->address() + "\n"
                     : "No browser opens (" + trouble + "). Open " + page_->address() + "\n");
}

void Desk::launching(const RunningApp& app) { log_.launching(app); }

void Desk::wrote(const RunningApp& app, const LogLine& line) {
  log_.wrote(app, line);
  if (page_) page_->wrote(app, line);
}

void Desk::hinted(const RunningApp& app, const Hint& hint) { log_.hinted(app, hint); }

void Desk::found(const RunningApp& app, const FolderTrouble& trouble) { log_.found(app, trouble); }

void Desk::ended(const RunningApp& app, const End& end) {
  log_.ended(app, end);
  if (isAuthors(end)) return;
  if (const auto trouble = history_.add(end)) log_.noted(app, *trouble);
}

void Desk::saved(const RunningApp& app, const std::set<std::string>& files) {
  log_.saved(app, files);
}

void Desk::noted(const RunningApp& app, const std::string& text) { log_.noted(app, text); }

void Desk::changed(const RunningApp& app) {
  if (app.phase() == RunPhase::kBroken) log_.noted(app, "waiting for the next save");
  if (page_) page_->applicationsChanged();
}

std::string Desk::nameOf(AppNumber application) {
  const RunningApp* app = session_ ? session_->appOf(application) : nullptr;
  return app != nullptr ? app->name() : appName(application);
}

void Desk::happened(const Event& event) {
  showEvent(event);
  if (page_) page_->happened(event);
  if (session_) session_->hear(event);
}

void Desk::showEvent(const Event& event) {
  if (const auto* came = std::get_if<Came>(&event.what)) {
    log_.told(nameOf(came->application), "connected", RowLook::kFaint);
  } else if (const auto* received = std::get_if<Received>(&event.what)) {
    log_.passed(nameOf(received->application), Direction::kFromApplication, *received->message);
  } else if (const auto* sent = std::get_if<Sent>(&event.what);
             sent != nullptr && !isRepeated(*sent)) {
    log_.passed(sent->together.empty() ? nameOf(sent->application) : "all",
                Direction::kToApplication, *sent->message);
  } else if (const auto* doubted = std::get_if<Doubted>(&event.what)) {
    log_.doubted(nameOf(doubted->application), doubted->doubt);
  } else if (const auto* noted = std::get_if<Noted>(&event.what)) {
    log_.told("device", noted->text, RowLook::kFaint);
  } else if (const auto* trouble = std::get_if<Trouble>(&event.what)) {
    log_.told(trouble->application ? nameOf(*trouble->application) : "device", trouble->text,
              RowLook::kBad);
  }
}

}  // namespace morvik::devkit
