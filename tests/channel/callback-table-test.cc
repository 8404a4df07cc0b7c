// Awaited replies: which ids are the same key, how entries age, and what a reply function may do to
// its own entry.
#include "channel/callback-table.h"

#include "channel/dispatch.h"
#include "host/morvik-data.h"
#include "support/matchers.h"
#include "support/text-message.h"
#include "support/unit/log-texts.h"

namespace morvik::test {
namespace {

class CallbackTableTest : public testing::Test {
 protected:
  ~CallbackTableTest() override { releaseCallbacks(); }

  CapturedLog log;
};

void hearNothing(void* /*data*/, const zeph::ZephMsg& /*message*/) {}

std::shared_ptr<CallbackEntry> newEntry(std::shared_ptr<void> data = nullptr,
                                        ReplyFunction function = hearNothing) {
  auto entry = std::make_shared<CallbackEntry>();
  entry->function = function;
  entry->data = std::move(data);
  return entry;
}

zeph::ZephMsg replyTo(const std::string& id) {
  zeph::ZephMsg message;
  message.set_correlationid(id);
  return message;
}

TEST_F(CallbackTableTest, nothingIsFoundBeforeTheFirstRegistration) {
  EXPECT_EQ(findCallback(replyTo("some-id")), nullptr);
  EXPECT_EQ(findCallback(zeph::ZephMsg()), nullptr);
}

TEST_F(CallbackTableTest, anEntryStaysAfterItIsFound) {
  const auto entry = newEntry();
  registerCallback("some-id", entry);
  entry->time = 5;
  EXPECT_EQ(findCallback(replyTo("some-id")), entry);
  EXPECT_EQ(findCallback(replyTo("some-id")), entry);
  EXPECT_EQ(entry->time, 5);
  EXPECT_EQ(findCallback(replyTo("other-id")), nullptr);
}

TEST_F(CallbackTableTest, registrationSetsTheTime) {
  const auto entry = newEntry();
  entry->time = 5;
  const std::time_t before = std::time(nullptr);
  registerCallback("some-id", entry);
  EXPECT_GE(entry->time, before);
  EXPECT_LE(entry->time, std::time(nullptr));
}

// What ages are counted from; any second does.
constexpr std::time_t kBegin = 1700000000;

// Whether an entry is still there when another one is registered at the age.
bool survivesAt(std::time_t age) {
  const auto entry = newEntry();
  registerCallback("aged", entry, kBegin);
  registerCallback("another", newEntry(), kBegin + age);
  return findCallback(replyTo("aged")) == entry;
}

TEST_F(CallbackTableTest, aRegistrationSweepsWhatIsOlderThanTenHours) {
  const std::pair<std::time_t, bool> ages[] = {{-5, true},    {0, true},      {35999, true},
                                               {36000, true}, {36001, false}, {1000000, false}};
  for (const auto& [age, survives] : ages) {
    EXPECT_EQ(survivesAt(age), survives) << age;
    releaseCallbacks();
  }
}

// Which of the ids "0", "1", ... up to `count` are still in the table.
std::vector<int> remaining(int count) {
  std::vector<int> ids;
  for (int id = 0; id < count; ++id) {
    if (findCallback(replyTo(std::to_string(id)))) ids.push_back(id);
  }
  return ids;
}

TEST_F(CallbackTableTest, aSweepTakesEachEntryAtItsOwnAge) {
  const std::time_t times[] = {0, 0, 10, 20, 20, 30};
  int id = 0;
  for (const std::time_t time : times) {
    registerCallback(std::to_string(id++), newEntry(), kBegin + time);
  }
  const std::pair<std::time_t, std::vector<int>> sweeps[] = {{0, {0, 1, 2, 3, 4, 5}},
                                                             {1, {2, 3, 4, 5}},
                                                             {10, {2, 3, 4, 5}},
                                                             {11, {3, 4, 5}},
                                                             {20, {3, 4, 5}},
                                                             {21, {5}},
                                                             {31, {}}};
  for (const auto& [beyond, ids] : sweeps) {
    registerCallback("sweeping", newEntry(), kBegin + kMaxEntryAge + beyond);
    EXPECT_EQ(remaining(6), ids) << beyond;
  }
}

// Entries from before the step lie ahead of the clock, and stay until it has caught up with them.
TEST_F(CallbackTableTest, aClockThatIsSetBackSweepsByTheTimeThatEachEntryGot) {
  registerCallback("0", newEntry(), kBegin + 50000);
  registerCallback("1", newEntry(), kBegin);
  registerCallback("2", newEntry(), kBegin + 100);
  const std::pair<std::time_t, std::vector<int>> sweeps[] = {
      {36000, {0, 1, 2}}, {36001, {0, 2}}, {36101, {0}}, {50000 + 36000, {0}}, {50000 + 36001, {}}};
  for (const auto& [now, ids] : sweeps) {
    registerCallback("sweeping", newEntry(), kBegin + now);
    EXPECT_EQ(remaining(3), ids) << now;
  }
}

// The place among the ages goes with the entry that had it.
TEST_F(CallbackTableTest, anIdThatIsRegisteredAgainIsYoungAgain) {
  registerCallback("0", newEntry(), kBegin);
  registerCallback("1", newEntry(), kBegin + 10);
  registerCallback("0", newEntry(), kBegin + 20);
  registerCallback("sweeping", newEntry(), kBegin + 36011);
  EXPECT_THAT(remaining(2), ElementsAre(0));
  registerCallback("sweeping", newEntry(), kBegin + 36021);
  EXPECT_THAT(remaining(2), ElementsAre());
}

TEST_F(CallbackTableTest, anIdThatIsRegisteredAgainAfterTheClockWasSetBackIsOlder) {
  registerCallback("0", newEntry(), kBegin + 20);
  registerCallback("0", newEntry(), kBegin);
  registerCallback("sweeping", newEntry(), kBegin + 36001);
  EXPECT_THAT(remaining(1), ElementsAre());
}

TEST_F(CallbackTableTest, onlyARegistrationSweeps) {
  const auto entry = newEntry();
  registerCallback("aged", entry, 0);
  EXPECT_EQ(findCallback(replyTo("aged")), entry);
  EXPECT_EQ(findCallback(replyTo("other")), nullptr);
  EXPECT_EQ(findCallback(replyTo("aged")), entry);
}

TEST_F(CallbackTableTest, aSweptEntryIsReleasedWithItsData) {
  auto data = std::make_shared<int>(1);
  const std::weak_ptr<int> watch = data;
  registerCallback("aged", newEntry(std::move(data)), 0);
  EXPECT_FALSE(watch.expired());
  registerCallback("another", newEntry());
  EXPECT_TRUE(watch.expired());
}

TEST_F(CallbackTableTest, allIsReleasedAtTheEnd) {
  auto data = std::make_shared<int>(1);
  const std::weak_ptr<int> watch = data;
  registerCallback("some-id", newEntry(std::move(data)));
  releaseCallbacks();
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(findCallback(replyTo("some-id")), nullptr);
  releaseCallbacks();
}

struct Keys {
  const char* what;
  std::string registered;
  std::string asked;
  bool same;
};

// g_str_hash multiplies by 33, so "bB" and "c!" weigh the same: 98 * 33 + 66 == 99 * 33 + 33.
TEST_F(CallbackTableTest, anIdIsItsHashAndItsFirstFourBytes) {
  using namespace std::string_literals;
  const Keys rows[] = {
      {"the same id", "0b9cd3f6-1", "0b9cd3f6-1", true},
      {"equal hash and start", "0b9c-bB", "0b9c-c!", true},
      {"equal start, another hash", "0b9c-bB", "0b9c-bC", false},
      {"equal hash, another start", "bB-0b9c", "c!-0b9c", false},
      {"equal hash, the fourth byte differs", "000bB", "000c!", false},
      {"equal hash, the fifth byte differs", "0000bB", "0000c!", true},
      {"three bytes", "abc", "abc", true},
      {"one byte", "a", "a", true},
      {"no byte", "", "", true},
      {"one short of the other", "abc", "abcd", false},
      {"shorter than four bytes and equal in hash", "bB", "c!", false},
      {"shorter, and zeroes up to four bytes", "ab", "ab\0\0"s, true},
      {"shorter, and something behind a zero", "ab", "ab\0x"s, false},
      {"something behind a zero beyond four bytes", "abcd", "abcd\0x"s, true},
  };
  for (const Keys& row : rows) {
    const auto entry = newEntry();
    registerCallback(row.registered, entry);
    EXPECT_EQ(findCallback(replyTo(row.asked)), row.same ? entry : nullptr) << row.what;
    releaseCallbacks();
  }
}

TEST_F(CallbackTableTest, aSecondEntryUnderOneKeyTakesThePlaceOfTheFirst) {
  ASSERT_EQ(g_str_hash("0b9c-bB"), g_str_hash("0b9c-c!"));
  auto data = std::make_shared<int>(1);
  const std::weak_ptr<int> watch = data;
  registerCallback("0b9c-bB", newEntry(std::move(data)));
  const auto second = newEntry();
  registerCallback("0b9c-c!", second);
  EXPECT_EQ(findCallback(replyTo("0b9c-bB")), second);
  EXPECT_EQ(findCallback(replyTo("0b9c-c!")), second);
  EXPECT_TRUE(watch.expired());
}

struct Call {
  void* data;
  const zeph::ZephMsg* message;
};
std::vector<Call> calls;

void hearCall(void* data, const zeph::ZephMsg& message) { calls.push_back({data, &message}); }

TEST_F(CallbackTableTest, aCallWritesFourLinesAndHandsOnDataAndMessage) {
  const auto data = std::make_shared<int>(1);
  const zeph::ZephMsg message;
  calls.clear();
  callCallback(newEntry(data, hearCall), message);
  EXPECT_THAT(
      levelled(log.lines()),
      ElementsAre("DEBUG zephmsg callback handler",
                  "DEBUG function pointer: " + pointerText(reinterpret_cast<const void*>(hearCall)),
                  "DEBUG callback data: " + pointerText(data.get()),
                  "DEBUG response: " + pointerText(&message)));
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_EQ(calls[0].data, data.get());
  EXPECT_EQ(calls[0].message, &message);
}

// What a reply function finds and leaves behind: its data must last until it returns.
struct Script {
  std::string id;
  std::string registers;  // the id of a request that the reply function sends
  std::string heard;
};
std::string heardLast;

void registerWithinTheReply(void* data, const zeph::ZephMsg& message) {
  auto& script = *static_cast<Script*>(data);
  const std::time_t time = findCallback(message)->time;
  registerCallback(script.registers, newEntry(), time + kMaxEntryAge + 1);
  script.heard = "heard by " + script.id;
  heardLast = script.heard;
}

TEST_F(CallbackTableTest, anEntryThatLeavesTheTableDuringItsCallOutlivesTheCall) {
  for (const char* registers : {"swept", "own-id"}) {
    auto script = std::make_shared<Script>(Script{"own-id", registers, ""});
    const std::weak_ptr<Script> watch = script;
    registerCallback("own-id", newEntry(std::move(script), registerWithinTheReply));
    heardLast.clear();
    MorvikData instance;
    dispatch(instance, replyTo("own-id"));
    EXPECT_EQ(heardLast, "heard by own-id");
    EXPECT_TRUE(watch.expired()) << registers;
    releaseCallbacks();
  }
}

}  // namespace
}  // namespace morvik::test
