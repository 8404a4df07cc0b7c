// The hot paths of an application, each run so many times between two marks for callgrind, which
// counts instructions: steady numbers on a machine that is busy with other things.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <v8.h>
#include <valgrind/callgrind.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <string>

#include "channel/callback-table.h"
#include "channel/connection.h"
#include "channel/frame.h"
#include "channel/message.h"
#include "channel/pump.h"
#include "host/engine.h"
#include "host/globals.h"
#include "host/launch-options.h"
#include "host/logging.h"
#include "host/morvik-data.h"
#include "host/object-tree.h"
#include "host/rehearsal.h"
#include "host/script.h"
#include "support/temporary-folder.h"
#include "support/unit/granted.h"

// The log's daemon takes everything: what the system does is not counted, and nobody listens.
extern "C" int sendmmsg(int /*socket*/, mmsghdr* /*records*/, unsigned count, int /*flags*/) {
  return static_cast<int>(count);
}

namespace morvik::test {
namespace {

constexpr int kTimes = 500;
constexpr int kTimesOfContexts = 25;  // each makes a context, which is a hundred times the work

void require(bool condition) {
  if (!condition) std::abort();
}

// Something that a connect finds.
void listenForRecords(const std::string& path) {
  const int socket = ::socket(AF_UNIX, SOCK_DGRAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  require(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
}

// An application that may do everything, and the device's end of its connection.
class Application {
 public:
  Application() {
    int ends[2];
    require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0);
    instance_.socket = ends[0];
    device_ = ends[1];
    instance_.interactiveID = "3f0a0f5e-8a38-4f9e-b0a0-0a8a1f3d3a11";
    instance_.options = &options_;
    instance_.descriptor = granted(gatedNames());
    context_ = v8::Context::New(isolate_, nullptr, globals());
    context_->Enter();
    context_->Global()->SetAlignedPointerInInternalField(0, &instance_);
  }

  void run(const char* script) {
    const ScriptRun run(isolate_);
    const auto source = v8::String::NewFromUtf8(isolate_, script).ToLocalChecked();
    require(!v8::Script::Compile(context_, source).ToLocalChecked()->Run(context_).IsEmpty());
  }

  // A function of the script, by its name.
  ScriptFunction function(const char* name) {
    return ScriptFunction(
        context_->Global()->Get(context_, toScript(name)).ToLocalChecked().As<v8::Function>());
  }

  // One turn of the pump, with a message or without.
  void turn(const zeph::ZephMsg& message) {
    const std::string body = message.SerializePartialAsString();
    const auto header = frameHeader(static_cast<std::uint32_t>(body.size()));
    std::string frame(header.begin(), header.end());
    frame += body;
    require(send(device_, frame.data(), frame.size(), 0) > 0);
    onSocketIdle(&instance_);
  }

  // What the application has sent.
  zeph::ZephMsg receive() {
    const ssize_t length = recv(device_, bytes_.data(), bytes_.size(), 0);
    require(length > static_cast<ssize_t>(kFrameHeaderSize));
    zeph::ZephMsg message;
    message.ParsePartialFromArray(bytes_.data() + kFrameHeaderSize,
                                  static_cast<int>(length) - static_cast<int>(kFrameHeaderSize));
    return message;
  }

 private:
  v8::Local<v8::ObjectTemplate> globals() {
    const auto global = buildGlobalTemplate();
    const auto morvik = v8::ObjectTemplate::New(isolate_);
    addMorvikFunctions(morvik);
    buildDeviceTree(global, morvik, *instance_.descriptor);
    addGlobals(global, morvik, instance_);
    return global;
  }

  v8::Isolate* isolate_ = v8::Isolate::GetCurrent();
  v8::HandleScope handles_{isolate_};
  LaunchOptions options_;
  MorvikData instance_;
  v8::Local<v8::Context> context_;
  int device_ = -1;
  std::array<char, 65536> bytes_{};
};

// What comes first is not counted: functions that are bound late, memory that is taken once.
template <class Work>
void count(const std::string& name, Work work, int times = kTimes) {
  for (int i = 0; i < times; ++i) work();
  CALLGRIND_ZERO_STATS;
  for (int i = 0; i < times; ++i) work();
  static std::deque<std::string> keptForLife;  // the text is read later
  CALLGRIND_DUMP_STATS_AT(keptForLife.emplace_back(name + ' ' + std::to_string(times)).c_str());
}

zeph::ZephMsg message() {
  zeph::ZephMsg message;
  message.set_id("0f4d5c1e-51b4-4b7e-9a3c-0123456789ab");
  return message;
}

void countMessages() {
  const auto sent = newZephMsg("3f0a0f5e-8a38-4f9e-b0a0-0a8a1f3d3a11");
  sent->mutable_led()->mutable_light()->set_color("red");
  count("a-fresh-message", [] { newZephMsg(nullptr); });
  count("a-message-parsed", [body = sent->SerializeAsString()] {
    zeph::ZephMsg received;
    parseZephMsg({reinterpret_cast<const std::uint8_t*>(body.data()), body.size()}, received);
  });
  count("a-reply-awaited", [&] {
    registerCallback(sent->id(), awaiting([](void*, const zeph::ZephMsg&) {}, nullptr), 0);
  });
}

void countScript(Application& app) {
  app.run(
      "function nothing() {} function drawn() { uuid(); } function light() {"
      " morvik.led.light('red'); } function pinged() { ping(nothing); }"
      "morvik.button.addListener(function(type) { return true; });"
      "morvik.rfid.addListener(function(tag) { return true; });");
  count("a-call-into-script", [function = app.function("nothing")] { function.call(); });
  count("a-call-out-of-script", [function = app.function("drawn")] { function.call(); });
  count("a-request", [&, function = app.function("light")] {
    function.call();
    app.receive();
  });
  count("a-round-trip", [&, function = app.function("pinged")] {
    function.call();
    zeph::ZephMsg reply = message();
    reply.set_correlationid(app.receive().id());
    reply.mutable_response()->set_code(zeph::OK);
    app.turn(reply);
  });
}

void countEvents(Application& app) {
  zeph::ZephMsg button = message();
  button.mutable_buttoncallback()->set_type(zeph::ButtonCallback::SIMPLE);
  count("a-button-event", [&] { app.turn(button); });
  zeph::ZephMsg tag = message();
  tag.mutable_rfidcallback()->set_id("d0021a053b463984");
  count(
      "a-tag-event", [&] { app.turn(tag); }, kTimesOfContexts);
}

}  // namespace
}  // namespace morvik::test

int main() {
  using namespace morvik;  // NOLINT(google-build-using-namespace)
  const test::TemporaryFolder folder;
  const std::string path = folder / "log";
  test::listenForRecords(path);
  static LaunchOptions quiet;
  quiet.debug = 0;
  openLog(quiet, path.c_str());
  Engine::prepare(rehearse);
  const Engine engine;
  test::Application app;
  test::countMessages();
  test::countScript(app);
  test::countEvents(app);
  return 0;
}
