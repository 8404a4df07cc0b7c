// The fixture around an application's script.
#include "support/unit/script-test.h"

#include <sys/socket.h>
#include <unistd.h>

#include "channel/callback-table.h"
#include "channel/dispatch.h"
#include "channel/frame.h"
#include "features/features.h"
#include "host/app-context.h"
#include "host/engine.h"
#include "host/globals.h"
#include "host/object-tree.h"
#include "support/unit/granted.h"

namespace morvik::test {
namespace {

// Forking a process in which the engine stands is not possible: a death test starts anew. Said when
// the tests begin, because the test library's own set-up comes behind that of this file.
class DeathTestsStartAnew : public testing::Environment {
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};
[[maybe_unused]] const auto* const environment =
    testing::AddGlobalTestEnvironment(new DeathTestsStartAnew);

// One engine for a whole process, as in the program. Its pointer is really stored, or else a leak
// check at a process's end finds none.
void engineKeptForLife() {
  [[gnu::used]] static Engine* engine = [] {
    Engine::prepare();
    return new Engine;
  }();
}

}  // namespace

struct ScriptTest::Engaged {
  explicit Engaged(v8::Isolate* isolate) : handles(isolate) {}
  v8::HandleScope handles;
  v8::Local<v8::Context> context;
};

ScriptTest::ScriptTest() {
  engineKeptForLife();
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) abort();
  instance.socket = ends[0];
  server = ends[1];
  instance.options = &options;
  instance.appName = "app";
  instance.mainLoop = g_main_loop_new(nullptr, FALSE);
  engaged_ = std::make_unique<Engaged>(isolate());
  const auto global = buildGlobalTemplate();
  const auto morvik = v8::ObjectTemplate::New(isolate());
  addMorvikFunctions(morvik);
  instance.descriptor = granted(accessNames());
  buildDeviceTree(global, morvik, *instance.descriptor);
  addGlobals(global, morvik, instance);
  engaged_->context = newAppContext(global);
  engaged_->context->Global()->SetAlignedPointerInInternalField(0, &instance);
}

ScriptTest::~ScriptTest() {
  instance.releaseListeners();
  releaseCallbacks();
  g_main_loop_unref(instance.mainLoop);
  close(instance.socket);
  close(server);
}

v8::Isolate* ScriptTest::isolate() { return v8::Isolate::GetCurrent(); }

v8::Local<v8::Context> ScriptTest::context() { return engaged_->context; }

std::string ScriptTest::run(const std::string& source) {
  const ScriptRun scriptRun(isolate());
  const v8::Context::Scope entered(context());
  v8::TryCatch tryCatch(isolate());
  v8::Local<v8::Script> script;
  v8::Local<v8::Value> result;
  if (v8::Script::Compile(context(), toScript(source)).ToLocal(&script) &&
      script->Run(context()).ToLocal(&result)) {
    return *v8::String::Utf8Value(isolate(), result);
  }
  return std::string("throws: ") + *v8::String::Utf8Value(isolate(), tryCatch.Exception());
}

std::vector<std::string> ScriptTest::logged() const {
  constexpr std::string_view kPrefix = "JSLOG: ";
  std::vector<std::string> texts;
  for (const std::string& text : log.texts(G_LOG_LEVEL_MESSAGE)) {
    if (text.starts_with(kPrefix)) texts.push_back(text.substr(kPrefix.size()));
  }
  return texts;
}

v8::Local<v8::Object> ScriptTest::object(const std::string& expression) {
  const v8::Context::Scope entered(context());
  const auto script =
      v8::Script::Compile(context(), toScript("(" + expression + ")")).ToLocalChecked();
  return script->Run(context()).ToLocalChecked().As<v8::Object>();
}

std::string ScriptTest::inTree(const std::vector<std::string>& accesses,
                               const std::string& expression) {
  const v8::HandleScope handles(isolate());
  const auto global = v8::ObjectTemplate::New(isolate());
  const auto morvik = v8::ObjectTemplate::New(isolate());
  buildDeviceTree(global, morvik, *granted(accesses));
  global->Set(isolate(), "morvik", morvik);
  const auto tree = v8::Context::New(isolate(), nullptr, global);
  const v8::Context::Scope entered(tree);
  const auto script = v8::Script::Compile(tree, toScript(expression)).ToLocalChecked();
  return *v8::String::Utf8Value(isolate(), script->Run(tree).ToLocalChecked());
}

void ScriptTest::expectThrows(const std::string& call, const std::string& text) {
  log.clear();
  EXPECT_EQ(run("try { " + call + "; 'no exception'; } catch (e) { typeof e + ': ' + e; }"),
            "string: " + text);
}

void ScriptTest::setGlobal(const char* name, v8::Local<v8::Value> value) {
  const v8::Context::Scope entered(context());
  context()->Global()->Set(context(), toScript(name), value).Check();
}

void ScriptTest::expose(const char* name, v8::FunctionCallback function) {
  const v8::Context::Scope entered(context());
  setGlobal(name, v8::Function::New(context(), function).ToLocalChecked());
}

void ScriptTest::becomeInteractive(const std::string& id) { instance.interactiveID = id; }

std::optional<zeph::ZephMsg> ScriptTest::sent() {
  std::array<std::uint8_t, kFrameHeaderSize> header{};
  if (recv(server, header.data(), header.size(), MSG_DONTWAIT | MSG_WAITALL) !=
      static_cast<ssize_t>(header.size())) {
    return std::nullopt;
  }
  std::string body(bodyLength(header), '\0');
  if (!body.empty()) recv(server, body.data(), body.size(), MSG_WAITALL);
  zeph::ZephMsg message;
  EXPECT_TRUE(message.ParseFromString(body));
  return message;
}

// Over the wire form, so that what is not serialised is not delivered.
void ScriptTest::deliver(const zeph::ZephMsg& message) {
  zeph::ZephMsg received;
  EXPECT_TRUE(received.ParsePartialFromString(message.SerializePartialAsString()));
  dispatch(instance, received);
}

void ScriptTest::answer(const zeph::ZephMsg& request, zeph::ZephMsg message) {
  message.set_id("answer");
  message.set_correlationid(request.id());
  deliver(message);
}

void ScriptTest::respond(const zeph::ZephMsg& request, zeph::VReturnCode code) {
  zeph::ZephMsg message;
  message.mutable_response()->set_code(code);
  answer(request, message);
}

void ScriptTest::runLoopUntil(const std::function<bool()>& condition) {
  const gint64 deadline = g_get_monotonic_time() + gint64{10} * G_USEC_PER_SEC;
  while (!condition() && g_get_monotonic_time() < deadline) {
    g_main_context_iteration(nullptr, FALSE);
  }
  ASSERT_TRUE(condition()) << "not within ten seconds";
}

}  // namespace morvik::test
