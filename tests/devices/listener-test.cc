// The listener pattern through a listener made here: what it hears, when it stays, and addListener.
#include "devices/listener.h"

#include "host/morvik-data.h"
#include "support/text-message.h"
#include "support/unit/log-texts.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

int listenersAlive = 0;

// Hears schedule events and tells their uuid.
class ScheduleListener : public ScriptListener {
 public:
  explicit ScheduleListener(v8::Local<v8::Function> scriptFunction)
      : ScriptListener(scriptFunction) {
    ++listenersAlive;
  }
  ~ScheduleListener() override { --listenersAlive; }
  ScheduleListener(const ScheduleListener&) = delete;
  ScheduleListener& operator=(const ScheduleListener&) = delete;

  bool onMessage(const zeph::ZephMsg& message) override {
    if (!message.has_scheduleevent()) return true;
    const v8::HandleScope handles(v8::Isolate::GetCurrent());
    return function.call({toScript(message.scheduleevent().uuid())});
  }
};

class ListenerTest : public ScriptTest {
 protected:
  ListenerTest() {
    listenersAlive = 0;
    expose("addListener", addListener<ScheduleListener>);
  }

  void happen(const std::string& uuid) {
    deliver(zephMsg("id: 'm' scheduleEvent { uuid: '" + uuid + "' }"));
  }
};

TEST_F(ListenerTest, addListenerTakesOneFunction) {
  const char* const wrong[] = {"", "1", "'f'", "{}", "null", "undefined", "f, f", "f, 1", "1, f"};
  for (const char* arguments : wrong) {
    EXPECT_EQ(run(std::string("var f = function() {}; addListener(") + arguments + ")"),
              "throws: Wrong arguments")
        << arguments;
  }
  EXPECT_EQ(run("try { addListener(); } catch (e) { typeof e; }"), "string");
  EXPECT_THAT(log.texts(), ElementsAre());
  EXPECT_EQ(instance.listeners, nullptr);
}

TEST_F(ListenerTest, addListenerNeedsNoInteractiveModeAndLogsTheListener) {
  for (const bool interactive : {false, true}) {
    if (interactive) becomeInteractive();
    log.clear();
    EXPECT_EQ(run("addListener(function() {})"), "undefined");
    const GList* last = g_list_last(instance.listeners);
    ASSERT_NE(last, nullptr);
    EXPECT_THAT(levelled(log.lines()),
                ElementsAre("DEBUG adding listener : [" + pointerText(last->data) + "]"));
  }
  EXPECT_EQ(g_list_length(instance.listeners), 2U);
  EXPECT_FALSE(sent());
}

TEST_F(ListenerTest, aListenerHearsItsOwnEventsOnlyAndStays) {
  run("addListener(function(uuid) {"
      "  log(uuid + ' ' + arguments.length + (this === arguments.callee)); return true; })");
  const char* const others[] = {"", "id: 'm'", "buttonCallback { type: SIMPLE }",
                                "response { code: OK }", "interactiveMode { action: START }"};
  for (const char* other : others) deliver(zephMsg(other));
  EXPECT_THAT(logged(), ElementsAre());
  EXPECT_EQ(listenersAlive, 1);
  for (const char* uuid : {"a", "b"}) happen(uuid);
  EXPECT_THAT(logged(), ElementsAre("a 1true", "b 1true"));
}

TEST_F(ListenerTest, aListenerStaysOnExactlyTrueOnly) {
  const std::pair<const char*, bool> answers[] = {
      {"true", true},
      {"!0", true},
      {"", false},
      {"false", false},
      {"undefined", false},
      {"null", false},
      {"1", false},
      {"'true'", false},
      {"{}", false},
      {"new Boolean(true)", false},
      {"Promise.resolve(true)", false},
      {"function() { return true; }", false},
  };
  for (const auto& [value, stays] : answers) {
    run(std::string("addListener(function() { return ") + value + "; })");
    EXPECT_EQ(listenersAlive, 1);
    happen("a");
    EXPECT_EQ(listenersAlive, stays ? 1 : 0) << value;
    instance.releaseListeners();
  }
}

TEST_F(ListenerTest, aFunctionWithoutAReturnHearsOneEvent) {
  run("addListener(log)");
  for (const char* uuid : {"a", "b"}) happen(uuid);
  EXPECT_THAT(logged(), ElementsAre("a"));
}

TEST_F(ListenerTest, aListenerThatThrowsIsReportedAndGoesAndTheOthersHearOn) {
  run("addListener(function(uuid) { throw 'oops'; });"
      "addListener(function(uuid) { log(uuid); return true; });");
  for (const char* uuid : {"a", "b"}) happen(uuid);
  EXPECT_THAT(logged(), ElementsAre("a", "b"));
  EXPECT_EQ(listenersAlive, 1);
  const auto warnings = log.texts(G_LOG_LEVEL_WARNING);
  EXPECT_EQ(std::count(warnings.begin(), warnings.end(), "undefined:1: oops"), 1);
}

TEST_F(ListenerTest, aListenerMayAddAnotherThatHearsFromTheNextMessageOn) {
  run("addListener(function(uuid) {"
      "  addListener(function(uuid) { log('added ' + uuid); return true; });"
      "  log(uuid); })");
  happen("a");
  EXPECT_THAT(logged(), ElementsAre("a"));
  happen("b");
  EXPECT_THAT(logged(), ElementsAre("a", "added b"));
}

TEST_F(ListenerTest, aReplyReachesItsFunctionFirstAndThenTheListeners) {
  becomeInteractive();
  run("addListener(log); ping(log);");
  answer(sent().value_or(zeph::ZephMsg()),
         zephMsg("response { code: OK } scheduleEvent { uuid: 'a' }"));
  EXPECT_THAT(logged(), ElementsAre("OK", "a"));
}

}  // namespace
}  // namespace morvik::test
