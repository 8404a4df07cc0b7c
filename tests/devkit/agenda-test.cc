// Things to come, on a real loop.
#include "server/agenda.h"

#include "loop.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

using std::chrono::milliseconds;

TEST(Agenda, doesThingsOnceInTheOrderOfTheirTimes) {
  Loop loop;
  Agenda agenda;
  std::vector<std::string> done;
  agenda.after(milliseconds(30), [&] { done.emplace_back("late"); });
  agenda.after(milliseconds(0), [&] { done.emplace_back("soon"); });
  EXPECT_TRUE(done.empty());
  EXPECT_TRUE(loop.runUntil([&] { return done.size() == 2; }));
  EXPECT_THAT(done, ::testing::ElementsAre("soon", "late"));
}

TEST(Agenda, doesNothingAfterItsEnd) {
  Loop loop;
  bool done = false;
  const auto guarded = std::make_shared<int>(0);
  {
    Agenda agenda;
    agenda.after(milliseconds(0), [&done, guarded] { done = true; });
    EXPECT_EQ(guarded.use_count(), 2);
  }
  EXPECT_EQ(guarded.use_count(), 1);
  loop.runReady();
  EXPECT_FALSE(done);
}

TEST(Agenda, tellsTheTimeOfDayByAClockThatAgreesWithIt) {
  Loop loop;
  Agenda agenda;
  const milliseconds before(g_get_real_time() / 1000);
  const milliseconds planned = agenda.now();
  EXPECT_LE(std::chrono::abs(planned - before), std::chrono::seconds(10));
  milliseconds done{0};
  agenda.after(milliseconds(30), [&] { done = agenda.now(); });
  EXPECT_TRUE(loop.runUntil([&] { return done.count() != 0; }));
  EXPECT_GE(done - planned, milliseconds(29)) << "30, cut to whole milliseconds";
}

TEST(Agenda, mayPlanAgainAndEndFromWithin) {
  Loop loop;
  auto agenda = std::make_unique<Agenda>();
  bool done = false;
  agenda->after(milliseconds(0), [&] {
    agenda->after(milliseconds(0), [&] {
      agenda.reset();
      done = true;
    });
  });
  EXPECT_TRUE(loop.runUntil([&] { return done; }));
}

}  // namespace
}  // namespace morvik::test
