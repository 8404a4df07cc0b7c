// The hot paths of an application, each run so many times between two marks for callgrind, which
// counts instructions: steady numbers on a machine that is busy with other things.
#include <sys/socket.h>
#include <sys/un.h>
#include <valgrind/callgrind.h>

#include <cstring>
#include <deque>
#include <string>

#include "channel/callback-table.h"
#include "channel/message.h"
#include "host/engine.h"
#include "host/launch-options.h"
#include "host/logging.h"
#include "host/rehearsal.h"
#include "host/script.h"
#include "support/temporary-folder.h"
#include "support/whole/whole-application.h"

// The log's daemon takes everything: what the system does is not counted, and nobody listens.
extern "C" int sendmmsg(int /*socket*/, mmsghdr* /*records*/, unsigned count, int /*flags*/) {
  return static_cast<int>(count);
}

namespace morvik::test {
namespace {

constexpr int kTimes = 500;
constexpr int kTimesOfContexts = 25;  // each makes a context, which is a hundred times the work

// Something that a connect finds.
void listenForRecords(const std::string& path) {
  const int socket = ::socket(AF_UNIX, SOCK_DGRAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  require(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
}

// What comes first is not counted: functions that are bound late, memory that is taken once.
template <class Work>
void count(const std::string& name, Work work, int times = kTimes) {
  for (int i = 0; i < times; ++i) work();
  CALLGRIND_ZERO_STATS;
  for (int i = 0; i < times; ++i) work();
  static std::deque<std::string> keptForLife;  // the text is read later
  CALLGRIND_DUMP_STATS_AT(keptForLife.emplace_back(name + ' ' + std::to_string(times)).c_str());
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

void countScript(WholeApplication& app) {
  app.run(
      "function nothing() {} function drawn() { uuid(); } function light() {"
      " morvik.led.light('red'); } function pinged() { ping(nothing); }"
      "morvik.button.addListener(function(type) { return true; });"
      "morvik.rfid.addListener(function(tag) { return true; });");
  count("a-call-into-script", [function = app.function("nothing")] { function.call(); });
  count("a-call-out-of-script", [function = app.function("drawn")] { function.call(); });
  count("a-request", [&, function = app.function("light")] {
    function.call();
    app.sent();
  });
  count("a-round-trip", [&, function = app.function("pinged")] {
    function.call();
    zeph::ZephMsg reply = deviceMessage();
    reply.set_correlationid(app.sent().id());
    reply.mutable_response()->set_code(zeph::OK);
    app.hear(reply);
  });
}

// The most of an event that becomes an object.
void makeContext() {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const v8::HandleScope handles(isolate);
  v8::Context::New(isolate);
}

void countEvents(WholeApplication& app) {
  zeph::ZephMsg button = deviceMessage();
  button.mutable_buttoncallback()->set_type(zeph::ButtonCallback::SIMPLE);
  count("a-button-event", [&] { app.hear(button); });
  zeph::ZephMsg tag = deviceMessage();
  tag.mutable_rfidcallback()->set_id("d0021a053b463984");
  count(
      "a-tag-event", [&] { app.hear(tag); }, kTimesOfContexts);
  count("a-context", makeContext, kTimesOfContexts);
}

}  // namespace
}  // namespace morvik::test

// What throws here ends the check, as it should.
int main() {               // NOLINT(bugprone-exception-escape)
  using namespace morvik;  // NOLINT(google-build-using-namespace)
  const test::TemporaryFolder folder;
  const std::string path = folder / "log";
  test::listenForRecords(path);
  static LaunchOptions quiet;
  quiet.debug = 0;
  openLog(quiet, path.c_str());
  Engine::prepare(rehearse);
  const Engine engine;
  test::WholeApplication app;
  test::countMessages();
  test::countScript(app);
  test::countEvents(app);
  return 0;
}
