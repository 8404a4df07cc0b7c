// The main loop, script and pauses all look for what a debugger says.
#include "debug/inspector.h"

#include <glib.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "debug/inspector-text.h"
#include "debug/paused-clock.h"
#include "device/owned.h"
#include "host/script.h"

namespace morvik::devkit {
namespace {

using v8_inspector::StringView;

constexpr int kGroup = 1;  // there is one context in one group
constexpr double kMillisecondsOfSecond = 1000;

// As the host tells a place in its log.
std::string placeNow(v8::Isolate* isolate) {
  const v8::HandleScope handles(isolate);
  const auto stack = v8::StackTrace::CurrentStackTrace(isolate, 1);
  if (stack->GetFrameCount() == 0) return "a place without a script";
  const auto frame = stack->GetFrame(isolate, 0);
  const v8::String::Utf8Value name(isolate, frame->GetScriptName());
  const std::string script = *name != nullptr ? *name : "a script without a name";
  return script + ":" + std::to_string(frame->GetLineNumber());
}

std::string textIn(v8::Isolate* isolate, v8::Local<v8::Value> value) {
  const v8::String::Utf8Value text(isolate, value);
  return *text != nullptr ? *text : "";
}

// A heap snapshot takes some thirty times the room of what it shows, more than an application may
// have. It gets that room for as long as it is taken; nothing of the application's runs meanwhile.
class RoomForSnapshot {
 public:
  RoomForSnapshot() {
    if (getrlimit(RLIMIT_DATA, &given_) != 0 || given_.rlim_cur == RLIM_INFINITY) return;
    rlimit more = given_;
    more.rlim_cur = std::min(given_.rlim_cur + kRoom, given_.rlim_max);
    setrlimit(RLIMIT_DATA, &more);
  }
  ~RoomForSnapshot() { setrlimit(RLIMIT_DATA, &given_); }
  RoomForSnapshot(const RoomForSnapshot&) = delete;
  RoomForSnapshot& operator=(const RoomForSnapshot&) = delete;

 private:
  static constexpr rlim_t kRoom = rlim_t{1024} * 1024 * 1024;

  rlimit given_{};
};

bool wantsSnapshot(const std::string& message) {
  return message.find("\"HeapProfiler.") != std::string::npos;
}

}  // namespace

Inspector::Inspector(v8::Isolate* isolate, v8::Local<v8::Context> context, ClientQueue& queue,
                     Send send, std::string folder, const std::string& title)
    : isolate_(isolate),
      context_(isolate, context),
      queue_(queue),
      send_(std::move(send)),
      folder_(std::move(folder)),
      inspector_(v8_inspector::V8Inspector::create(isolate, this)) {
  inspector_->contextCreated({context, kGroup, bufferOf(title)->string()});
  takeCalls();
}

Inspector::~Inspector() {
  queue_.setWake({});
  const v8::HandleScope handles(isolate_);
  inspector_->contextDestroyed(context_.Get(isolate_));
  session_.reset();
}

// The main loop may sleep, or script may run without end: whichever it is, one of the two is heard.
void Inspector::takeCalls() {
  queue_.setWake([this] {
    isolate_->RequestInterrupt(
        [](v8::Isolate* /*isolate*/, void* self) { static_cast<Inspector*>(self)->look(); }, this);
    lookLater();
  });
  look();
}

void Inspector::lookLater() {
  g_idle_add_full(
      G_PRIORITY_HIGH,
      [](gpointer self) -> gboolean {
        static_cast<Inspector*>(self)->look();
        return G_SOURCE_REMOVE;
      },
      this, nullptr);
}

// A debugger that comes while something of the one before it still runs must wait.
bool Inspector::mayTake(const ClientEvent& event) const {
  return event.kind != ClientEvent::Kind::kCame || !session_;
}

void Inspector::look() {
  queue_.looks();
  if (left_) settle();
  ClientEvent event;
  while (queue_.take([this](const ClientEvent& next) { return mayTake(next); }, event)) obey(event);
}

void Inspector::obey(const ClientEvent& event) {
  switch (event.kind) {
    case ClientEvent::Kind::kCame:
      session_ = inspector_->connect(kGroup, this, {});
      g_message("debugger: attached");
      return;
    case ClientEvent::Kind::kSaid:
      return dispatch(event.text);
    case ClientEvent::Kind::kLeft:
      return leave();
    case ClientEvent::Kind::kForsaken:
      forsaken_ = true;
      return;
  }
}

// What a message runs counts as a run of script, with the end that the host gives every one.
void Inspector::dispatch(const std::string& message) {
  if (!session_ || left_) return;
  {
    const ScriptRun run(isolate_);
    const auto room =
        wantsSnapshot(message) ? std::optional<RoomForSnapshot>(std::in_place) : std::nullopt;
    ++running_;
    session_->dispatchProtocolMessage(protocolView(message));
    --running_;
  }
  settle();
}

// Nobody is left who could resume it. A session of which a message still runs, as when that has
// come upon a breakpoint, must not go yet.
void Inspector::leave() {
  g_message("debugger: left");
  left_ = true;
  resumed_ = true;
  if (session_) {
    const v8::HandleScope handles(isolate_);
    session_->dispatchProtocolMessage(protocolView(R"({"id":0,"method":"Debugger.disable"})"));
  }
  settle();
}

void Inspector::settle() {
  if (!left_ || running_ > 0 || paused_) return;
  session_.reset();
  left_ = false;
  look();
}

// The main loop does not turn meanwhile, so nothing is read from the device's connection and no
// timer comes; and as the clock stands still, none is due when it goes on. A pause that nobody can
// end any more ends by itself, and the application meets what has become of its surroundings.
void Inspector::hold(const std::string& where, const bool& done) {
  g_message("debugger: paused %s", where.c_str());
  const StoppedClock clock;
  const auto may = [this](const ClientEvent& next) { return mayTake(next); };
  while (!done && !forsaken_) obey(queue_.await(may));
  g_message("debugger: goes on after %" G_GINT64_FORMAT " ms",
            static_cast<gint64>(clock.stoodFor().count()));
}

void Inspector::waitForDebugger() {
  hold("before main.js, until a debugger comes", mayStart_);
  if (session_) session_->schedulePauseOnNextStatement(bufferOf("Break on start")->string(), {});
}

// What is left of a session cannot go here, where the engine still works with it.
void Inspector::runMessageLoopOnPause(int /*group*/) {
  if (left_ || forsaken_) return;
  paused_ = true;
  resumed_ = false;
  hold("at " + placeNow(isolate_), resumed_);
  paused_ = false;
  if (left_) lookLater();
}

v8::Local<v8::Context> Inspector::ensureDefaultContextInGroup(int /*group*/) {
  return context_.Get(isolate_);
}

// Names as the host gives them, below the application's folder. What has no name, as a line of the
// console, gets none.
std::unique_ptr<v8_inspector::StringBuffer> Inspector::resourceNameToUrl(const StringView& name) {
  const std::string file = utf8Of(name);
  if (file.empty() || file.find("://") != std::string::npos) return nullptr;
  const GText escaped(g_uri_escape_string(file.c_str(), "/", FALSE));
  return bufferOf(folder_ + "/" + escaped.get());
}

double Inspector::currentTimeMS() {
  const std::chrono::duration<double, std::milli> now =
      std::chrono::system_clock::now().time_since_epoch();
  return now.count();
}

// For what a heap profile tells while it is taken. Known by its data, as the engine cancels it.
void Inspector::startRepeatingTimer(double seconds, TimerCallback callback, void* data) {
  struct Timer {
    TimerCallback callback;
    void* data;
  };
  GSource* source = g_timeout_source_new(static_cast<guint>(seconds * kMillisecondsOfSecond));
  g_source_set_callback(
      source,
      [](gpointer timer) -> gboolean {
        static_cast<Timer*>(timer)->callback(static_cast<Timer*>(timer)->data);
        return G_SOURCE_CONTINUE;
      },
      new Timer{callback, data}, [](gpointer timer) { delete static_cast<Timer*>(timer); });
  g_source_attach(source, nullptr);
  timers_[data].reset(source);
}

void Inspector::cancelTimer(void* data) {
  const auto timer = timers_.extract(data);
  if (!timer.empty()) g_source_destroy(timer.mapped().get());
}

void Inspector::sendResponse(int /*call*/, std::unique_ptr<v8_inspector::StringBuffer> message) {
  if (!left_) send_(utf8Of(message->string()));
}

void Inspector::sendNotification(std::unique_ptr<v8_inspector::StringBuffer> message) {
  if (!left_) send_(utf8Of(message->string()));
}

void Inspector::thrown(const v8::TryCatch& tryCatch) {
  const auto message = tryCatch.Message();
  if (message.IsEmpty()) return;
  const auto context = isolate_->GetCurrentContext();
  const auto text = bufferOf(textIn(isolate_, message->Get()));
  const auto name = bufferOf(textIn(isolate_, message->GetScriptOrigin().ResourceName()));
  const auto url = resourceNameToUrl(name->string());
  const auto stack = message->GetStackTrace();
  inspector_->exceptionThrown(
      context, bufferOf("Uncaught")->string(), tryCatch.Exception(), text->string(),
      url ? url->string() : StringView(),
      static_cast<unsigned>(message->GetLineNumber(context).FromMaybe(0)),
      static_cast<unsigned>(message->GetStartColumn(context).FromMaybe(0) + 1),
      stack.IsEmpty() ? nullptr : inspector_->createStackTrace(stack),
      message->GetScriptOrigin().ScriptId());
}

}  // namespace morvik::devkit
