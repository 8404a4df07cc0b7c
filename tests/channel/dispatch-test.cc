// The two roads of a received message, their order, and the walk over the listeners.
#include "channel/dispatch.h"

#include <functional>

#include "channel/callback-table.h"
#include "channel/timers.h"
#include "host/morvik-data.h"
#include "support/matchers.h"
#include "support/text-message.h"
#include "support/unit/log-texts.h"

namespace morvik::test {
namespace {

using Journal = std::vector<std::string>;

// Hears a message as `hear` tells it to, and notes when it goes.
class Listener : public ZephMsgListener {
 public:
  Listener(std::string name, Journal& journal, std::function<bool()> hear)
      : name_(std::move(name)), journal_(journal), hear_(std::move(hear)) {}
  ~Listener() override { journal_.push_back(name_ + " is gone"); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  bool onMessage(const zeph::ZephMsg& message) override {
    journal_.push_back(name_ + " hears " + message.id());
    return hear_();
  }

 private:
  std::string name_;
  Journal& journal_;
  std::function<bool()> hear_;
};

void noteReply(void* data, const zeph::ZephMsg& message) {
  static_cast<Journal*>(data)->push_back("reply " + message.id());
}

class DispatchTest : public testing::Test {
 protected:
  DispatchTest() { g_log_set_default_handler(noteWarning, &journal); }
  ~DispatchTest() override {
    instance.releaseListeners();
    releaseCallbacks();
    removeTimers();
    g_log_set_default_handler(g_log_default_handler, nullptr);
  }

  void add(
      const std::string& name, std::function<bool()> hear = [] { return true; }) {
    instance.addListener(std::make_unique<Listener>(name, journal, std::move(hear)));
  }

  void await(const std::string& id) {
    auto entry = std::make_shared<CallbackEntry>();
    entry->function = noteReply;
    entry->data = std::shared_ptr<void>(&journal, [](void*) {});
    registerCallback(id, std::move(entry));
  }

  // What happened since the last call.
  Journal dispatched(const std::string& text) {
    journal.clear();
    dispatch(instance, zephMsg(text));
    return std::exchange(journal, {});
  }

  Journal journal;
  MorvikData instance;

 private:
  static void noteWarning(const gchar* /*domain*/, GLogLevelFlags level, const gchar* text,
                          gpointer journal) {
    if (level <= G_LOG_LEVEL_WARNING) {
      static_cast<Journal*>(journal)->push_back(levelName(level) + (" " + std::string(text)));
    }
  }
};

struct Road {
  const char* message;
  Journal journal;
  int timers;
};

const char* const kLost = "WARNING NO CORRELATION FOUND";
const char* const kStopped = "WARNING interactive mode stopped, autokill in 300000ms";

const Road kRoads[] = {
    {"id: 'm'", {"listener hears m"}, 0},
    {"", {"listener hears "}, 0},
    {"id: 'm' buttonCallback { type: SIMPLE }", {"listener hears m"}, 0},
    {"id: 'm' correlationId: 'known'", {"reply m", "listener hears m"}, 0},
    {"id: 'm' correlationId: 'known' buttonCallback { type: SIMPLE }",
     {"reply m", "listener hears m"},
     0},
    {"id: 'm' correlationId: 'lost'", {kLost, "listener hears m"}, 0},
    {"id: 'm' correlationId: ''", {kLost, "listener hears m"}, 0},
    {"id: 'm' interactiveMode { action: START }", {}, 0},
    {"id: 'm' interactiveMode { }", {}, 0},
    {"id: 'm' interactiveMode { } buttonCallback { type: SIMPLE }", {}, 0},
    {"id: 'm' interactiveMode { action: STOP }", {kStopped}, 1},
    {"id: 'm' interactiveMode { action: STOP } buttonCallback { type: SIMPLE }", {kStopped}, 1},
    {"id: 'm' correlationId: 'known' interactiveMode { action: STOP }", {"reply m", kStopped}, 1},
    {"id: 'm' correlationId: 'known' interactiveMode { action: START }", {"reply m"}, 0},
    {"id: 'm' correlationId: 'lost' interactiveMode { action: START }", {kLost}, 0},
    {"id: 'm' correlationId: 'lost' interactiveMode { action: STOP }", {kLost, kStopped}, 1},
};

TEST_F(DispatchTest, repliesComeFirstAndNoticesReachNoListener) {
  add("listener");
  await("known");
  for (const Road& road : kRoads) {
    EXPECT_EQ(dispatched(road.message), road.journal) << road.message;
    EXPECT_EQ(removeTimers(), road.timers) << road.message;
  }
}

TEST_F(DispatchTest, beforeAnyRegistrationEveryCorrelationIsLost) {
  EXPECT_THAT(dispatched("id: 'm' correlationId: 'some-id'"), ElementsAre(kLost));
}

TEST_F(DispatchTest, anEntryHearsEveryReply) {
  await("known");
  EXPECT_THAT(dispatched("id: 'm' correlationId: 'known'"), ElementsAre("reply m"));
  EXPECT_THAT(dispatched("id: 'n' correlationId: 'known'"), ElementsAre("reply n"));
}

TEST_F(DispatchTest, withoutListenersNothingHappens) {
  EXPECT_THAT(dispatched("id: 'm'"), ElementsAre());
}

TEST_F(DispatchTest, listenersHearInTheOrderOfRegistration) {
  for (const char* name : {"first", "second", "third"}) add(name);
  EXPECT_THAT(dispatched("id: 'm'"),
              ElementsAre("first hears m", "second hears m", "third hears m"));
}

TEST_F(DispatchTest, aListenerThatAnswersNoIsGoneAndTheOthersHearOn) {
  const std::pair<const char*, Journal> rows[] = {
      {"first", {"first hears m", "first is gone", "second hears m", "third hears m"}},
      {"second", {"first hears m", "second hears m", "second is gone", "third hears m"}},
      {"third", {"first hears m", "second hears m", "third hears m", "third is gone"}},
  };
  for (const auto& [leaves, expected] : rows) {
    for (const std::string name : {"first", "second", "third"}) {
      add(name, [leaves = leaves, name] { return name != leaves; });
    }
    EXPECT_EQ(dispatched("id: 'm'"), expected);
    EXPECT_EQ(dispatched("id: 'n'").size(), 2U) << leaves;
    instance.releaseListeners();
  }
}

TEST_F(DispatchTest, allMayLeaveAtOnce) {
  for (const char* name : {"first", "second"}) add(name, [] { return false; });
  EXPECT_THAT(dispatched("id: 'm'"),
              ElementsAre("first hears m", "first is gone", "second hears m", "second is gone"));
  EXPECT_EQ(instance.listeners, nullptr);
  EXPECT_THAT(dispatched("id: 'n'"), ElementsAre());
}

TEST_F(DispatchTest, oneAddedByTheLastListenerHearsTheNextMessage) {
  for (const bool stays : {true, false}) {
    add("adder", [this, stays, once = true]() mutable {
      if (std::exchange(once, false)) add("added");
      return stays;
    });
    const Journal now = dispatched("id: 'm'");
    EXPECT_EQ(now.front(), "adder hears m");
    EXPECT_THAT(now, testing::Not(testing::Contains("added hears m")));
    EXPECT_THAT(dispatched("id: 'n'"), testing::Contains("added hears n"));
    instance.releaseListeners();
  }
}

TEST_F(DispatchTest, oneAddedBeforeTheLastListenerJoinsTheEnd) {
  add("adder", [this, once = true]() mutable {
    if (std::exchange(once, false)) add("added");
    return true;
  });
  add("last");
  EXPECT_THAT(dispatched("id: 'm'"), ElementsAre("adder hears m", "last hears m", "added hears m"));
}

TEST_F(DispatchTest, aReplyMayAddAListenerThatHearsTheSameMessage) {
  const std::function<void()> addOne = [this] { add("added"); };
  auto entry = std::make_shared<CallbackEntry>();
  entry->function = [](void* data, const zeph::ZephMsg&) {
    (*static_cast<const std::function<void()>*>(data))();
  };
  entry->data = std::make_shared<std::function<void()>>(addOne);
  registerCallback("known", std::move(entry));
  EXPECT_THAT(dispatched("id: 'm' correlationId: 'known'"), ElementsAre("added hears m"));
}

TEST(ListenersLogTest, addingAndCallingAreLogged) {
  const CapturedLog log;
  Journal journal;
  MorvikData instance;
  auto listener = std::make_unique<Listener>("listener", journal, [] { return true; });
  const std::string pointer = "[" + pointerText(listener.get()) + "]";
  instance.addListener(std::move(listener));
  dispatch(instance, zephMsg("id: 'm'"));
  EXPECT_THAT(levelled(log.lines()), ElementsAre("DEBUG adding listener : " + pointer,
                                                 "DEBUG calling listener : " + pointer));
  instance.releaseListeners();
}

}  // namespace
}  // namespace morvik::test
