// The root of one application: the launch line's syntax, and the walk over the listeners.
#include "host/morvik-data.h"

#include <zeph-message.pb.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/unit/captured-log.h"
#include "support/unit/log-texts.h"

namespace morvik::test {
namespace {

TEST(MorvikDataTest, startsWithNothing) {
  const MorvikData instance;
  EXPECT_EQ(instance.socket, -1);
  EXPECT_FALSE(instance.interactiveID);
  EXPECT_EQ(instance.listeners, nullptr);
  EXPECT_EQ(instance.descriptor, nullptr);
  EXPECT_EQ(instance.appName + instance.launchType + instance.instanceName + instance.cmdline, "");
}

TEST(MorvikDataTest, splitsALaunchLineAtItsFirstTwoBlanks) {
  const struct {
    const char* line;
    const char* appName;
    const char* launchType;
    const char* instanceName;
    std::vector<std::string> logged;  // behind the first line
  } rows[] = {
      {"app", "app", "", "", {}},
      {"", "", "", "", {}},
      {"app button", "app", "button", "", {"APP NAME app"}},  // no line for this launch type
      {"app ", "app", "", "", {"APP NAME app"}},
      {"app button one",
       "app",
       "button",
       "one",
       {"APP NAME app", "LAUNCH_TYPE button", "INSTANCE_NAME one"}},
      {"app button one two  three ",
       "app",
       "button",
       "one two  three ",
       {"APP NAME app", "LAUNCH_TYPE button", "INSTANCE_NAME one two  three "}},
      {"app  one", "app", "", "one", {"APP NAME app", "LAUNCH_TYPE ", "INSTANCE_NAME one"}},
      {"app button ",
       "app",
       "button",
       "",
       {"APP NAME app", "LAUNCH_TYPE button", "INSTANCE_NAME "}},
      {" button", "", "button", "", {"APP NAME "}},
      {" button one",
       "",
       "button",
       "one",
       {"APP NAME ", "LAUNCH_TYPE button", "INSTANCE_NAME one"}},
      {"  ", "", "", "", {"APP NAME ", "LAUNCH_TYPE ", "INSTANCE_NAME "}},
      {"app\tbutton 'a b'",
       "app\tbutton",
       "'a",
       "b'",
       {"APP NAME app\tbutton", "LAUNCH_TYPE 'a", "INSTANCE_NAME b'"}},
      {"\xff\xc3 \xe9", "\xff\xc3", "\xe9", "", {"APP NAME \xff\xc3"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    const CapturedLog log;
    MorvikData instance;
    instance.setCmdLine(row.line);
    EXPECT_EQ(instance.cmdline, row.line);
    EXPECT_EQ(instance.appName, row.appName);
    EXPECT_EQ(instance.launchType, row.launchType);
    EXPECT_EQ(instance.instanceName, row.instanceName);
    std::vector<std::string> expected = {std::string("setCmdLine ") + row.line};
    expected.insert(expected.end(), row.logged.begin(), row.logged.end());
    EXPECT_EQ(log.texts(G_LOG_LEVEL_DEBUG), expected);
    EXPECT_EQ(log.lines().size(), expected.size());
  }
}

// Notes that it was called and that it was released.
class NotingListener : public ZephMsgListener {
 public:
  NotingListener(std::string name, std::vector<std::string>& notes, std::function<bool()> answer)
      : name_(std::move(name)), notes_(notes), answer_(std::move(answer)) {}
  ~NotingListener() override { notes_.push_back("~" + name_); }
  bool onMessage(const zeph::ZephMsg& message) override {
    notes_.push_back(name_ + message.id());
    return answer_();
  }

 private:
  std::string name_;
  std::vector<std::string>& notes_;
  std::function<bool()> answer_;
};

class ListenersTest : public testing::Test {
 protected:
  ~ListenersTest() override { instance.releaseListeners(); }

  ZephMsgListener* add(const std::string& name, std::function<bool()> answer) {
    auto listener = std::make_unique<NotingListener>(name, notes, std::move(answer));
    ZephMsgListener* element = listener.get();
    instance.addListener(std::move(listener));
    return element;
  }
  void deliver(const std::string& id) {
    zeph::ZephMsg message;
    message.set_id(id);
    instance.onMessage(message);
  }

  CapturedLog log;
  std::vector<std::string> notes;
  MorvikData instance;
};

bool stay() { return true; }
bool go() { return false; }

std::string withPointer(const char* text, const ZephMsgListener* listener) {
  return std::string(text) + " : [" + pointerText(listener) + "]";
}

TEST_F(ListenersTest, areNamedInTheLogByTheirPointers) {
  const ZephMsgListener* first = add("a", stay);
  const ZephMsgListener* second = add("b", stay);
  deliver("1");
  EXPECT_THAT(
      log.texts(G_LOG_LEVEL_DEBUG),
      ElementsAre(withPointer("adding listener", first), withPointer("adding listener", second),
                  withPointer("calling listener", first), withPointer("calling listener", second)));
}

TEST_F(ListenersTest, oneThatAnswersFalseIsReleasedAndTheWalkGoesOn) {
  const struct {
    std::vector<std::string> leaving;
    std::vector<std::string> notes;
    guint left;
  } rows[] = {
      {{"a"}, {"a1", "~a", "b1", "c1", "b2", "c2"}, 2},
      {{"b"}, {"a1", "b1", "~b", "c1", "a2", "c2"}, 2},
      {{"c"}, {"a1", "b1", "c1", "~c", "a2", "b2"}, 2},
      {{"a", "b"}, {"a1", "~a", "b1", "~b", "c1", "c2"}, 1},
      {{"a", "b", "c"}, {"a1", "~a", "b1", "~b", "c1", "~c"}, 0},
  };
  for (const auto& row : rows) {
    for (const char* name : {"a", "b", "c"}) {
      const bool leaves =
          std::find(row.leaving.begin(), row.leaving.end(), name) != row.leaving.end();
      add(name, [leaves] { return !leaves; });
    }
    notes.clear();
    deliver("1");
    deliver("2");
    EXPECT_EQ(notes, row.notes);
    EXPECT_EQ(g_list_length(instance.listeners), row.left);
    instance.releaseListeners();
  }
}

TEST_F(ListenersTest, oneAddedDuringTheWalkJoinsTheEnd) {
  bool added = false;
  add("a", [this, &added] {
    if (!added) add("late", stay);
    return added = true;
  });
  add("b", stay);
  deliver("1");
  EXPECT_THAT(notes, ElementsAre("a1", "b1", "late1"));
}

TEST_F(ListenersTest, oneAddedByTheLastFirstHearsTheNextMessage) {
  bool added = false;
  add("a", stay);
  add("b", [this, &added] {
    if (!added) add("late", stay);
    return added = true;
  });
  deliver("1");
  EXPECT_THAT(notes, ElementsAre("a1", "b1"));
  deliver("2");
  EXPECT_THAT(notes, ElementsAre("a1", "b1", "a2", "b2", "late2"));
}

TEST_F(ListenersTest, oneAddedByAListenerThatLeavesIsKept) {
  add("a", [this] {
    add("late", stay);
    return false;
  });
  deliver("1");
  deliver("2");
  EXPECT_THAT(notes, ElementsAre("a1", "~a", "late2"));
}

TEST_F(ListenersTest, withoutAnyNothingHappens) {
  deliver("1");
  EXPECT_THAT(log.lines(), ElementsAre());
  EXPECT_EQ(instance.listeners, nullptr);
}

TEST_F(ListenersTest, areAllReleasedTogether) {
  add("a", stay);
  add("b", go);
  instance.releaseListeners();
  EXPECT_THAT(notes, ElementsAre("~a", "~b"));
  EXPECT_EQ(instance.listeners, nullptr);
}

}  // namespace
}  // namespace morvik::test
