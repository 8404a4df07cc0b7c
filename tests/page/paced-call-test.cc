// A call that many ask for and that is made seldom.
#include "page/paced-call.h"

#include <gtest/gtest.h>

#include "devkit/loop.h"

namespace morvik::test {

using namespace devkit;
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

TEST(PacedCallTest, isMadeOnceForAllWhoAsked) {
  Loop loop;
  int calls = 0;
  PacedCall call(milliseconds(1), [&calls] { ++calls; });
  loop.runReady();
  EXPECT_EQ(calls, 0) << "nobody asked";
  call.ask();
  call.ask();
  EXPECT_EQ(calls, 0) << "not from within";
  loop.runReady();
  EXPECT_EQ(calls, 1) << "the first one does not wait";
  loop.runReady();
  EXPECT_EQ(calls, 1);
}

TEST(PacedCallTest, waitsForItsIntervalAfterACall) {
  Loop loop;
  Clock::time_point first;
  int calls = 0;
  PacedCall call(milliseconds(30), [&] {
    if (++calls == 1) first = Clock::now();
  });
  call.ask();
  ASSERT_TRUE(loop.runUntil([&calls] { return calls == 1; }));
  call.ask();
  ASSERT_TRUE(loop.runUntil([&calls] { return calls == 2; }));
  EXPECT_GE(Clock::now() - first, milliseconds(29));
}

TEST(PacedCallTest, mayBeAskedForFromWithin) {
  Loop loop;
  int calls = 0;
  PacedCall* self = nullptr;
  PacedCall call(milliseconds(1), [&] {
    if (++calls < 3) self->ask();
  });
  self = &call;
  call.ask();
  EXPECT_TRUE(loop.runUntil([&calls] { return calls == 3; }));
}

TEST(PacedCallTest, isNotMadeAfterItsEnd) {
  Loop loop;
  int calls = 0;
  {
    PacedCall call(milliseconds(0), [&calls] { ++calls; });
    call.ask();
  }
  loop.runReady();
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace morvik::test
