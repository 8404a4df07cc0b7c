// Events from one thread to another, and the bell.
#include "debug/client-queue.h"

#include <thread>

#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

using Kind = ClientEvent::Kind;

bool anyEvent(const ClientEvent& /*event*/) { return true; }
bool noNewcomer(const ClientEvent& event) { return event.kind != Kind::kCame; }

void putNewcomerWhoSays(ClientQueue& queue, const std::string& text) {
  queue.put({.kind = Kind::kCame, .text = ""});
  queue.put({.kind = Kind::kSaid, .text = text});
}

TEST(ClientQueue, givesEventsInTheirOrder) {
  ClientQueue queue;
  putNewcomerWhoSays(queue, "one");
  ClientEvent event;
  EXPECT_TRUE(queue.take(anyEvent, event));
  EXPECT_EQ(event.kind, Kind::kCame);
  EXPECT_EQ(queue.await(anyEvent).text, "one");
  EXPECT_FALSE(queue.take(anyEvent, event));
}

TEST(ClientQueue, leavesWhatMayNotBeTakenWhereItIs) {
  ClientQueue queue;
  putNewcomerWhoSays(queue, "behind");
  ClientEvent event;
  EXPECT_FALSE(queue.take(noNewcomer, event));
  EXPECT_TRUE(queue.take(anyEvent, event));
  EXPECT_TRUE(queue.take(noNewcomer, event));
  EXPECT_EQ(event.text, "behind");
}

TEST(ClientQueue, ringsOnceUntilSomebodyLooks) {
  ClientQueue queue;
  int rung = 0;
  queue.put({});
  queue.setWake([&rung] { ++rung; });
  queue.put({});
  queue.put({});
  EXPECT_EQ(rung, 1);
  queue.looks();
  queue.put({});
  EXPECT_EQ(rung, 2);
  queue.setWake({});
  queue.looks();
  queue.put({});
  EXPECT_EQ(rung, 2);
}

TEST(ClientQueue, waitsForAnotherThread) {
  ClientQueue queue;
  std::thread other([&queue] { queue.put({.kind = Kind::kSaid, .text = "from there"}); });
  EXPECT_EQ(queue.await(anyEvent).text, "from there");
  other.join();
}

}  // namespace
}  // namespace morvik::test
