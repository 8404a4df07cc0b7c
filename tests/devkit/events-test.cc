// Observers that come, go, fail and act while they are told.
#include "device/events.h"

#include <stdexcept>

#include "bench.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

using std::chrono::milliseconds;

// Keeps the notes that it hears, and then does what the test wants.
class Listener : public Observer {
 public:
  void happened(const Event& event) override {
    if (const auto* note = std::get_if<Noted>(&event.what)) {
      heard.push_back(note->text);
      if (then) then(note->text);
    } else if (const auto* trouble = std::get_if<Trouble>(&event.what)) {
      heard.push_back("trouble: " + trouble->text);
    }
  }

  std::vector<std::string> heard;
  std::function<void(const std::string& text)> then;
};

class EventsTest : public ::testing::Test {
 protected:
  void raise(const std::string& text) { events_.raise(Noted{text}); }

  milliseconds now_{5};
  Events events_{[this] { return now_; }};
  Listener first_;
  Listener second_;
  Listener third_;
};

TEST_F(EventsTest, everybodyHearsAllInOneOrder) {
  events_.add(first_);
  events_.add(second_);
  events_.add(first_);
  raise("a");
  raise("b");
  EXPECT_THAT(first_.heard, ElementsAre("a", "b"));
  EXPECT_THAT(second_.heard, ElementsAre("a", "b"));
}

TEST_F(EventsTest, areNumberedAndCarryTheirTime) {
  KeptEvents kept;
  raise("nobody hears it");
  events_.add(kept);
  raise("a");
  now_ = milliseconds(7);
  raise("b");
  ASSERT_EQ(kept.all.size(), 2U);
  EXPECT_EQ(kept.all[0].number, 2U);
  EXPECT_EQ(kept.all[0].time, milliseconds(5));
  EXPECT_EQ(kept.all[1].number, 3U);
  EXPECT_EQ(kept.all[1].time, milliseconds(7));
}

TEST_F(EventsTest, whoIsRemovedHearsNothingMore) {
  events_.add(first_);
  events_.remove(second_);
  raise("a");
  events_.remove(first_);
  raise("b");
  EXPECT_THAT(first_.heard, ElementsAre("a"));
}

TEST_F(EventsTest, anObservationLastsAsLongAsItLives) {
  {
    const Observation observation(events_, first_);
    raise("a");
  }
  raise("b");
  EXPECT_THAT(first_.heard, ElementsAre("a"));
}

TEST_F(EventsTest, anObserverMayRemoveItselfWhileItIsTold) {
  first_.then = [&](const std::string& /*text*/) { events_.remove(first_); };
  events_.add(first_);
  events_.add(second_);
  raise("a");
  raise("b");
  EXPECT_THAT(first_.heard, ElementsAre("a"));
  EXPECT_THAT(second_.heard, ElementsAre("a", "b"));
}

TEST_F(EventsTest, anObserverMayRemoveOthersWhileItIsTold) {
  second_.then = [&](const std::string& /*text*/) {
    events_.remove(first_);
    events_.remove(third_);
  };
  for (Listener* listener : {&first_, &second_, &third_}) events_.add(*listener);
  raise("a");
  raise("b");
  EXPECT_THAT(first_.heard, ElementsAre("a"));
  EXPECT_THAT(second_.heard, ElementsAre("a", "b"));
  EXPECT_THAT(third_.heard, IsEmpty());
}

TEST_F(EventsTest, whoIsAddedWhileAnEventIsToldHearsTheNextOne) {
  first_.then = [&](const std::string& text) {
    if (text != "a") return;
    raise("raised before it came");
    for (Listener* listener : {&second_, &third_}) events_.add(*listener);
    raise("b");
  };
  events_.add(first_);
  raise("a");
  EXPECT_THAT(second_.heard, ElementsAre("b"));
  EXPECT_THAT(third_.heard, ElementsAre("b"));
}

TEST_F(EventsTest, manyMayBeAddedWhileAnEventIsTold) {
  std::deque<Listener> many(100);
  first_.then = [&](const std::string& text) {
    if (text != "a") return;
    for (Listener& listener : many) events_.add(listener);
  };
  events_.add(first_);
  events_.add(second_);
  raise("a");
  raise("b");
  EXPECT_THAT(second_.heard, ElementsAre("a", "b"));
  for (const Listener& listener : many) EXPECT_THAT(listener.heard, ElementsAre("b"));
}

TEST_F(EventsTest, whatAnObserverRaisesIsToldWhenAllHaveHeardTheFirst) {
  first_.then = [&](const std::string& text) {
    if (text == "a") {
      raise("b");
      raise("c");
    }
  };
  events_.add(first_);
  events_.add(second_);
  raise("a");
  EXPECT_THAT(first_.heard, ElementsAre("a", "b", "c"));
  EXPECT_THAT(second_.heard, ElementsAre("a", "b", "c"));
}

TEST_F(EventsTest, oneThatThrowsIsRemovedAndTheOthersHearOfIt) {
  first_.then = [](const std::string& /*text*/) { throw std::runtime_error("no paper"); };
  second_.then = [](const std::string& /*text*/) { throw 7; };
  for (Listener* listener : {&first_, &second_, &third_}) events_.add(*listener);
  raise("a");
  raise("b");
  EXPECT_THAT(first_.heard, ElementsAre("a"));
  EXPECT_THAT(second_.heard, ElementsAre("a"));
  EXPECT_THAT(third_.heard,
              ElementsAre("a", "trouble: an observer failed and is told nothing more: no paper",
                          "trouble: an observer failed and is told nothing more: something that "
                          "is no exception",
                          "b"));
}

TEST_F(EventsTest, nothingIsToldDuringAPause) {
  events_.add(first_);
  {
    const Events::Pause outer(events_);
    {
      const Events::Pause inner(events_);
      raise("a");
    }
    EXPECT_THAT(first_.heard, IsEmpty());
    events_.add(second_);
    raise("b");
  }
  EXPECT_THAT(first_.heard, ElementsAre("a", "b"));
  EXPECT_THAT(second_.heard, ElementsAre("b"));
}

// An observer that acts on the device, as a page does.
class Meddler : public Observer {
 public:
  explicit Meddler(Device& device) : device_(device) {}
  void happened(const Event& event) override {
    const auto* sent = std::get_if<Sent>(&event.what);
    if (sent == nullptr || !sent->message->has_buttoncallback() || done_) return;
    done_ = true;
    EXPECT_TRUE(stimulate(device_, "drop").done);
    device_.applicationLeft(1);
    device_.applicationLeft(2);
  }

 private:
  Device& device_;
  bool done_ = false;
};

TEST(EventsOfTheDevice, anObserverMayActOnTheDeviceWhileAllAreTold) {
  Bench bench;
  Meddler meddler(bench.device);
  bench.device.events().add(meddler);
  EXPECT_EQ(bench.stimulus("button SIMPLE").size(), 2U);
  EXPECT_THAT(bench.device.applications(), IsEmpty());
  EXPECT_EQ(bench.events.of<Left>().size(), 2U);
}

TEST(EventsOfTheDevice, tellACommandFromItsArrivalToItsEnd) {
  Bench bench;
  bench.command("led { fade { color: 'blue' period: 500 } }");
  bench.pass(milliseconds(500));
  std::vector<std::size_t> kinds;
  for (const Event& event : bench.events.all) kinds.push_back(event.what.index());
  const auto kind = [](const Event::What& what) { return what.index(); };
  EXPECT_THAT(kinds, ElementsAre(kind(Received{}), kind(Changed{}), kind(Began{}), kind(Sent{}),
                                 kind(Ended{}), kind(Sent{})));
  const Underway begun = bench.events.of<Began>().at(0).underway;
  EXPECT_EQ(begun.work, Work::kLed);
  EXPECT_EQ(begun.application, 1U);
  EXPECT_EQ(begun.length, milliseconds(500));
  EXPECT_EQ(begun.request, bench.events.of<Received>().at(0).message->id());
  const Ended ended = bench.events.of<Ended>().at(0);
  EXPECT_EQ(ended.code, zeph::TERMINATED);
  EXPECT_EQ(ended.underway.begun, begun.begun);
}

TEST(EventsOfTheDevice, tellOfAnEndThatAnAnswerTells) {
  Bench bench;
  bench.command("asr { dictionary: 'a' }");
  bench.stimulus("noise");
  ASSERT_EQ(bench.events.of<Ended>().size(), 1U);
  EXPECT_EQ(bench.events.of<Ended>()[0].code, std::nullopt);
}

TEST(EventsOfTheDevice, tellWhenASoundRestsAndGoesOn) {
  Bench bench;
  bench.command("multimedia { play { url: 'a' } }");
  bench.command("multimedia { pause {} }");
  EXPECT_EQ(bench.device.works().find(Work::kSound)->length, std::nullopt);
  EXPECT_EQ(bench.events.of<Changed>().back().part, "work");
  bench.pass(milliseconds(700));
  bench.command("multimedia { resume {} }");
  ASSERT_EQ(bench.events.of<Began>().size(), 2U);
  const Underway first = bench.events.of<Began>()[0].underway;
  const Underway again = bench.events.of<Began>()[1].underway;
  EXPECT_EQ(again.begun - first.begun, milliseconds(700));
  EXPECT_EQ(again.length, milliseconds(3000));
}

TEST(EventsOfTheDevice, tellOfAnApplicationFromItsComingToItsLeaving) {
  Bench bench;
  bench.device.applicationCame(3);
  bench.device.applicationLeft(3, "it was rude");
  ASSERT_EQ(bench.events.of<Came>().size(), 1U);
  EXPECT_EQ(bench.events.of<Came>()[0].application, 3U);
  ASSERT_EQ(bench.events.of<Trouble>().size(), 1U);
  EXPECT_EQ(bench.events.of<Trouble>()[0].text, "it was rude");
  EXPECT_EQ(std::get<Left>(bench.events.all.back().what).application, 3U);
}

}  // namespace
}  // namespace morvik::test
